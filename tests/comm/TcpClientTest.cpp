#include "simulation/Equipment.h"
#include "simulation/Machine.h"
#include "tests/comm/CommFixture.h"

#include <array>
#include <cstdlib>
#include <functional>
#include <thread>

namespace {

using simulation::Socket;
using simulation::TcpListener;

const std::string kMegabyte(1 << 20, 'x');

TEST(TcpClient, ReachesAHostNameAndAFixedLocalPortAgainAndAgain) {
    const TcpListener device;
    const int local = simulation::FreePort();
    std::string sent;
    const SNetPortConfig fixed = {"", "127.0.0.1", "127.0.0.1", local, device.Port(), NetModeTcpClient};
    for (const auto& record : {CommFixture::Client(device.Port(), "localhost"), fixed}) {
        CommFixture comm;
        for (int round = 0; round < 3; ++round) {
            EXPECT_EQ(comm.Open(record) + comm.Send(record, "click"), 0) << record.dstIpAddress << round;
            sent += "click";
            EXPECT_EQ(device.Received().WaitBytes(sent.size()), sent);
            comm.registry.DeleteTcp(record);
        }
    }
}

TEST(TcpClient, DeliversOnceWhenTheDeviceEndedTheConnectionBefore) {
    const std::pair<const char*, std::function<void(Socket&)>> cases[] = {
        {"closed", [](Socket& peer) { peer.Close(); }},
        {"reset", [](Socket& peer) { peer.Reset(); }},
        {"end behind data", [](Socket& peer) { peer.Send(std::string(100000, 'd')), peer.Close(); }},
        {"only its sending half", [](Socket& peer) { peer.ShutdownSend(); }},
    };
    for (const auto& [name, fault] : cases) {
        for (int round = 0; round < 20; ++round) {
            CommFixture comm;
            Socket listener = Socket::Listen();
            const auto record = CommFixture::Client(listener.LocalPort());
            ASSERT_EQ(comm.Open(record), 0) << name;
            Socket before = listener.Accept();
            fault(before);
            EXPECT_EQ(comm.Send(record, "click"), 0) << name;
            Socket after = listener.Accept();
            EXPECT_EQ(ReceiveUpTo(after, 5), "click") << name;
            EXPECT_FALSE(listener.WaitReadable(std::chrono::milliseconds(0))) << name << ": third";
        }
    }
}

TEST(TcpClient, GivesUpADeviceThatStopsReadingAndNeverRepeatsATornCommand) {
    CommFixture comm(CommFixture::Settings(std::chrono::milliseconds(2000)));
    Socket listener = Socket::Listen();
    const auto record = CommFixture::Client(listener.LocalPort());
    EXPECT_EQ(comm.Send(record, kMegabyte), 10060);
    Socket torn = listener.Accept();
    EXPECT_EQ(comm.Send(record, "next"), 0);
    Socket next = listener.Accept();
    EXPECT_EQ(ReceiveUpTo(next, 4), "next");
    EXPECT_LT(ReceiveUpTo(torn, kMegabyte.size()).size(), kMegabyte.size());

    auto sender = comm.SendLater(record, kMegabyte);
    next.Receive();
    next.Reset();
    EXPECT_EQ(sender.get(), 10054);
    EXPECT_FALSE(listener.WaitReadable(std::chrono::milliseconds(0))) << "sent again";
}

TEST(TcpClient, ConnectsAtMostOnceAPauseToADeviceThatAcceptsAndCloses) {
    if (!simulation::Differences::kTellsWhatIsUnacknowledged) {
        GTEST_SKIP() << "a device that closes looks as if it had taken the command";
    }
    for (const auto mode : {simulation::EnDeviceMode::Hangup, simulation::EnDeviceMode::Reset}) {
        CommFixture comm;
        const TcpListener device(mode);
        const auto start = comm::Clock::now();
        int resets = 0;
        while (resets < 500) {
            const int error = comm.Send(CommFixture::Client(device.Port()), "a");
            EXPECT_TRUE(error == 0 || error == 10054) << error;
            resets += error == 10054 ? 1 : 0;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));  // the pace of the clicks
        }
        const auto pauses = (comm::Clock::now() - start) / CommFixture::Settings().retryPause;
        EXPECT_LE(device.Accepted(), pauses + 2);
    }
}

TEST(TcpClient, EndsASendThatIsCutByADelete) {
    if (!simulation::Differences::kStandsManyCuts) {
        GTEST_SKIP() << "hundreds of connections that are cut end the server process of Wine";
    }
    CommFixture comm(CommFixture::Settings(simulation::kMaxTestWait));
    const simulation::SilentDevice silent;
    Socket full = Socket::Listen();
    const int rounds = std::getenv("COMM_MANY_ROUNDS") == nullptr ? 300 : 10000;
    for (int round = 0; round < rounds; ++round) {
        const bool connecting = round % 3 == 0;
        const auto record = CommFixture::Client(connecting ? silent.Port() : full.LocalPort());
        auto sender = comm.SendLater(record, kMegabyte);
        const Socket peer = connecting ? Socket() : full.Accept();
        do {  // again and again: the first delete may come before the sender
            round % 2 == 0 ? comm.registry.DeleteTcp(record) : comm.registry.DeleteAll();
        } while (!IsReady(sender));
        ASSERT_EQ(sender.get(), 995) << round;
    }
}

TEST(TcpClient, KeepsTheOrderOfEachThreadAndMixesNothing) {
    constexpr int messages = 500;
    CommFixture comm(CommFixture::Settings(simulation::kMaxTestWait));
    const TcpListener device;
    const auto text = [](std::size_t thread, int i) {
        return std::to_string(thread) + std::to_string(1000 + i) + std::string(95, '.');
    };
    std::vector<std::future<void>> senders(4);
    for (std::size_t thread = 0; thread < senders.size(); ++thread) {
        senders[thread] = std::async(std::launch::async, [&, thread] {
            for (int i = 0; i < messages; ++i) {
                EXPECT_EQ(comm.Send(CommFixture::Client(device.Port()), text(thread, i)), 0);
            }
        });
    }
    senders.clear();
    const std::string all = device.Received().WaitBytes(4 * messages * 100);
    ASSERT_EQ(all.size(), 4 * messages * 100U);
    std::array<int, 4> next{};
    for (std::size_t at = 0; at < all.size(); at += 100) {
        const auto thread = static_cast<std::size_t>(all[at] - '0');
        ASSERT_EQ(all.substr(at, 100), text(thread, next.at(thread)++));
    }
}

TEST(TcpClient, AnswersAtOnceAfterTheEndOfTheLibrary) {
    CommFixture comm(CommFixture::Settings(simulation::kMaxTestWait));
    const simulation::SilentDevice silent;
    auto sender = comm.SendLater(CommFixture::Client(silent.Port()), "a");
    comm.registry.Stop();
    EXPECT_EQ(sender.get(), 995);
    EXPECT_EQ(comm.Open(CommFixture::Server(0)), 995);
}

}  // namespace
