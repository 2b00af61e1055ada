#include "CommFixture.h"
#include "platform/ComManager.h"
#include "support/Equipment.h"

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace {

using support::EnDeviceMode;
using support::Socket;
using support::TcpListener;

const std::string g_megabyte(1 << 20, 'x');

TEST(TcpClient, RefusesWhatCannotBeConnected) {
    const int closed = support::FreePort();
    const support::SilentDevice silent;
    struct SCase {
        const char* name;
        SNetPortConfig record;
        int error;
    };
    const std::vector<SCase> cases = {
        {"closed port", CommFixture::Client(closed), 10061},
        {"closed port, IPv6", CommFixture::Client(closed, "::1"), 10061},
        {"itself", {"", "127.0.0.1", "127.0.0.1", closed, closed, NetModeTcpClient}, 10061},
        {"nobody answers", CommFixture::Client(silent.Port()), 10060},
        {"foreign local address", {"", "192.0.2.1", "127.0.0.1", 0, closed, NetModeTcpClient}, 10049},
        {"local address of the other version", {"", "::1", "127.0.0.1", 0, closed, NetModeTcpClient}, 10049},
        {"local address that is none", {"", "here", "127.0.0.1", 0, closed, NetModeTcpClient}, 10049},
        {"no address", CommFixture::Client(closed, ""), 10049},
        {"port 0", CommFixture::Client(0), 10049},
        {"port 65536", CommFixture::Client(65536), 10049},
        {"local port -1", {"", "", "127.0.0.1", -1, closed, NetModeTcpClient}, 10049},
        {"impossible name", CommFixture::Client(closed, "a..b"), 11001},
        {"mode 7", {"", "", "127.0.0.1", 0, closed, static_cast<EnNetMode>(7)}, 87},
    };
    CommFixture comm;
    for (const auto& [name, record, error] : cases) {
        EXPECT_EQ(comm.registry.OpenNet(record), error) << name;
        EXPECT_EQ(comm.Send(record, "a"), error) << name;
        EXPECT_EQ(comm.Send(record, ""), record.netMode == 7 ? 87 : 0) << name;
        EXPECT_EQ(comm.registry.SendNet(record, "4", false, 0), error) << name;
        EXPECT_EQ(comm.registry.SendNet(record, "4G", false, 0), record.netMode == 7 ? 87 : 13) << name;
    }
}

TEST(TcpClient, ReachesAHostNameAndAFixedLocalPortAgainAndAgain) {
    TcpListener device;
    const int local = support::FreePort();
    for (const SNetPortConfig& record :
         {CommFixture::Client(device.Port(), "localhost"),
          SNetPortConfig{"", "127.0.0.1", "127.0.0.1", local, device.Port(), NetModeTcpClient}}) {
        CommFixture comm;
        for (int round = 0; round < 3; ++round) {
            device.Received().Clear();
            EXPECT_EQ(comm.registry.OpenNet(record), 0) << record.dstIpAddress << round;
            EXPECT_EQ(comm.Send(record, "click"), 0) << record.dstIpAddress << round;
            EXPECT_EQ(device.Received().WaitBytes(5), "click");
            comm.registry.DeleteTcp(record);
        }
    }
}

TEST(TcpClient, DeliversOnceWhenTheDeviceEndedTheConnectionBefore) {
    struct SCase {
        const char* name;
        std::function<void(Socket&)> fault;
    };
    const std::vector<SCase> cases = {
        {"closed", [](Socket& peer) { peer.Close(); }},
        {"reset", [](Socket& peer) { peer.Reset(); }},
        {"end behind data",
         [](Socket& peer) {
             peer.Send(std::string(100000, 'd'));
             peer.Close();
         }},
        {"only its sending half", [](Socket& peer) { peer.ShutdownSend(); }},
    };
    for (const auto& [name, fault] : cases) {
        for (int round = 0; round < 20; ++round) {
            CommFixture comm;
            Socket listener = Socket::Listen();
            const auto record = CommFixture::Client(listener.LocalPort());
            ASSERT_EQ(comm.registry.OpenNet(record), 0) << name;
            Socket before = listener.Accept();
            fault(before);
            EXPECT_EQ(comm.Send(record, "click"), 0) << name;
            Socket after = listener.Accept();
            EXPECT_EQ(ReceiveUpTo(after, 5), "click") << name;
            EXPECT_FALSE(listener.WaitReadable(std::chrono::milliseconds(0)))
                << name << ": a third connection";
        }
    }
}

TEST(TcpClient, GivesUpADeviceThatStopsReadingAndNeverRepeatsATornCommand) {
    CommFixture comm;
    Socket listener = Socket::Listen();
    const auto record = CommFixture::Client(listener.LocalPort());
    EXPECT_EQ(comm.Send(record, g_megabyte), 10060);
    Socket torn = listener.Accept();
    EXPECT_EQ(comm.Send(record, "next"), 0);
    Socket next = listener.Accept();
    EXPECT_EQ(ReceiveUpTo(next, 4), "next");
    EXPECT_LT(ReceiveUpTo(torn, g_megabyte.size()).size(), g_megabyte.size());
}

TEST(TcpClient, ConnectsAtMostOnceAPauseToADeviceThatAcceptsAndCloses) {
    for (const auto mode : {EnDeviceMode::Hangup, EnDeviceMode::Reset}) {
        const comm::SCommSettings settings = CommFixture::Settings();
        CommFixture comm(settings);
        const TcpListener device(mode);
        const int lines = LogLines();
        const auto start = comm::Clock::now();
        int resets = 0;
        while (resets < 500) {
            const int error = comm.Send(CommFixture::Client(device.Port()), "a");
            EXPECT_TRUE(error == 0 || error == 10054) << error;
            resets += error == 10054 ? 1 : 0;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));  // the pace of the clicks
        }
        const auto pauses = (comm::Clock::now() - start) / settings.retryPause;
        EXPECT_LE(device.Accepted(), pauses + 2);
        EXPECT_LE(LogLines() - lines, 10) << "more than a minute's share of the log";
    }
}

TEST(TcpClient, DrainsADeviceThatNeverStopsTalking) {
    CommFixture comm;
    Socket listener = Socket::Listen();
    const auto record = CommFixture::Client(listener.LocalPort());
    ASSERT_EQ(comm.registry.OpenNet(record), 0);
    Socket peer = listener.Accept();
    for (int sent = 0; sent < 50; ++sent) {
        peer.Send(g_megabyte);  // throws when nobody reads
    }
    EXPECT_EQ(comm.Send(record, "click"), 0);
    EXPECT_EQ(ReceiveUpTo(peer, 5), "click");
}

TEST(TcpClient, ServesALiveDeviceWhileClicksOnADeadOneWait) {
    CommFixture comm(CommFixture::Settings(std::chrono::milliseconds(2000)));
    const support::SilentDevice dead;
    const TcpListener live;
    std::atomic<int> ended = 0;
    std::vector<int> errors(4);
    std::vector<std::thread> clicks;
    for (int& error : errors) {
        clicks.emplace_back([&comm, &dead, &ended, &error] {
            error = comm.Send(CommFixture::Client(dead.Port()), "a");
            ++ended;
        });
    }
    EXPECT_EQ(comm.Send(CommFixture::Client(live.Port()), "click"), 0);
    EXPECT_EQ(live.Received().WaitBytes(5), "click");
    EXPECT_EQ(ended, 0) << "the live device had to wait for the dead one";
    for (auto& click : clicks) {
        click.join();
    }
    EXPECT_EQ(errors, std::vector<int>(4, 10060));
}

TEST(TcpClient, EndsASendThatIsCutByADelete) {
    CommFixture comm(CommFixture::Settings(support::kMaxTestWait));
    const support::SilentDevice silent;
    Socket full = Socket::Listen();
    for (int round = 0; round < 300; ++round) {
        const bool connecting = round % 3 == 0;
        const auto record = CommFixture::Client(connecting ? silent.Port() : full.LocalPort());
        std::atomic<bool> started = false;
        int error = -1;
        std::thread sender([&] {
            started = true;
            error = comm.Send(record, g_megabyte);
        });
        Socket peer;
        if (connecting) {
            support::WaitUntil([&] { return started.load(); });
        } else {
            peer = full.Accept();
        }
        std::atomic<bool> ended = false;
        std::thread deleter([&] {  // again and again: the first may come before the sender
            while (!ended) {
                round % 2 == 0 ? comm.registry.DeleteTcp(record) : comm.registry.DeleteAll();
                std::this_thread::yield();
            }
        });
        sender.join();
        ended = true;
        deleter.join();
        ASSERT_EQ(error, 995) << round;
    }
}

TEST(TcpClient, KeepsTheOrderOfEachThreadAndMixesNothing) {
    constexpr int threads = 4;
    constexpr int messages = 500;
    CommFixture comm(CommFixture::Settings(support::kMaxTestWait));
    TcpListener device;
    std::vector<std::thread> senders;
    std::atomic<int> failures = 0;
    for (int thread = 0; thread < threads; ++thread) {
        senders.emplace_back([&, thread] {
            for (int i = 1000; i < 1000 + messages; ++i) {
                const std::string text =
                    std::to_string(thread) + std::to_string(i) + std::string(94, '.') + '\n';
                failures += comm.Send(CommFixture::Client(device.Port()), text) == 0 ? 0 : 1;
            }
        });
    }
    for (auto& sender : senders) {
        sender.join();
    }
    const std::string all = device.Received().WaitBytes(threads * messages * 100);
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(device.Accepted(), 1);
    ASSERT_EQ(all.size(), threads * messages * 100U);
    std::vector<int> next(threads, 1000);
    for (std::size_t at = 0; at < all.size(); at += 100) {
        const auto thread = static_cast<std::size_t>(all[at] - '0');
        ASSERT_LT(thread, next.size());
        ASSERT_EQ(all.substr(at + 1, 99), std::to_string(next[thread]++) + std::string(94, '.') + '\n');
    }
}

TEST(TcpClient, AnswersAtOnceAfterTheEndOfTheLibrary) {
    CommFixture comm(CommFixture::Settings(support::kMaxTestWait));
    const support::SilentDevice silent;
    int error = -1;
    std::thread sender([&] { error = comm.Send(CommFixture::Client(silent.Port()), "a"); });
    comm.registry.Stop();
    sender.join();
    EXPECT_EQ(error, 995);
    EXPECT_EQ(comm.registry.OpenNet(CommFixture::Server(0)), 995);
    EXPECT_EQ(comm.registry.CheckSerial({"", "COM1"}), 995);
}

TEST(ComManager, HandsItsOperationsOn) {
    TcpListener device;
    auto record = CommFixture::Client(device.Port());
    auto closed = CommFixture::Client(support::FreePort());
    SSerialPortConfig serial{"", "COM9999"};
    std::string text = "6869";
    CComManager* manager = CComManager::getInstance();
    EXPECT_TRUE(manager->InitNetSocket(record));
    EXPECT_FALSE(manager->InitNetSocket(closed));
    EXPECT_FALSE(manager->CheckSerial(serial));
    EXPECT_EQ(manager->SendSerialData(serial, text, false, 0), 2);
    EXPECT_EQ(manager->SendNetData(record, text, false, 0), 0);
    manager->DeleteUserTcp(record);
    EXPECT_EQ(manager->SendNetData(record, text, true, 0), 0);
    manager->DeleteAllConnect();
    EXPECT_EQ(device.Received().WaitBytes(6), "hi6869");
    EXPECT_EQ(device.Accepted(), 2);
}

}  // namespace
