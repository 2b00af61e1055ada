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
    const struct {
        const char* name;
        int port;
        EnPortState state;
    } rows[] = {
        {"free", free, EnPortState::Free},
        {"free after a look", free, EnPortState::Free},
        {"has a listener", listener.LocalPort(), EnPortState::Taken},
        {"has a listener on another address", elsewhere.LocalPort(), EnPortState::Taken},
        {"below the first", 0, EnPortState::Taken},
        {"negative", -1, EnPortState::Taken},
        {"above the last", 65536, EnPortState::Taken},
        {"a free one and 65536", 65536 + free, EnPortState::Taken},
        {"the largest number", std::numeric_limits<int>::max(), EnPortState::Taken},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(ProbePort(row.port), row.state) << row.name;
        EXPECT_EQ(IsPortFree(row.port), row.state == EnPortState::Free) << row.name;
    }
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
