#include "platform/PortProbe.h"
#include "simulation/Machine.h"
#include "simulation/Socket.h"

#include <limits>

#include <gtest/gtest.h>

namespace {

using simulation::Socket;

TEST(PortProbe, TellsWhatAListenerWouldMeet) {
    const int free = simulation::FreePort();
    const Socket listener = Socket::Listen();
    const Socket elsewhere = Socket::Listen(0, 1, "127.0.0.2");
    const std::pair<const char*, int> taken[] = {
        {"has a listener", listener.LocalPort()},
        {"has a listener on another address", elsewhere.LocalPort()},
        {"below the first", 0},
        {"negative", -1},
        {"above the last", 65536},
        {"a free one and 65536", 65536 + free},
        {"the largest number", std::numeric_limits<int>::max()},
    };
    for (const auto& [name, port] : taken) {
        EXPECT_EQ(ProbePort(port), EnPortState::Taken) << name;
        EXPECT_FALSE(IsPortFree(port)) << name;
    }
    EXPECT_EQ(ProbePort(free), EnPortState::Free);
    EXPECT_TRUE(IsPortFree(free));
    EXPECT_NO_THROW(Socket::Listen(free)) << "the look has let go of it";
}

TEST(PortProbe, PassesOverConnectionsOfAnEarlierRunThatLinger) {
    Socket listener = Socket::Listen();
    const int port = listener.LocalPort();
    Socket client = Socket::Connect(port);
    Socket server = listener.Accept();
    listener.Close();
    server.Close();  // the first to close lingers
    EXPECT_EQ(client.Receive(), "");
    client.Close();
    EXPECT_EQ(ProbePort(port), EnPortState::Free);
}

TEST(PortProbe, KnowsTheListenersOfThisProcess) {
    Socket listener = Socket::Listen();
    const int port = listener.LocalPort();
    const Socket client = Socket::Connect(port);
    const std::optional<bool> here =
        simulation::Differences::kTellsWhoListens ? std::optional(true) : std::nullopt;
    EXPECT_EQ(IsListeningHere(port), here);
    EXPECT_EQ(IsListeningHere(client.LocalPort()), false) << "a connection is no listener";
    const Socket connection = listener.Accept();
    listener.Close();
    EXPECT_EQ(IsListeningHere(port), false) << "nor is what it has accepted";
}

}  // namespace
