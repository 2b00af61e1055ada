#include "simulation/Equipment.h"
#include "tests/comm/CommFixture.h"

#include <system_error>

namespace {

using simulation::Socket;

/** Sends until a device that has just connected is known to the server. */
int SendToNew(CommFixture& comm, const SNetPortConfig& record, const std::string& text) {
    int error = 10057;
    simulation::WaitUntil([&] { return (error = comm.Send(record, text)) != 10057; });
    return error;
}

/** Wine frees the port of a listener that was waited on a moment after it was closed. */
bool IsFree(int port) try {
    Socket::Listen(port);
    return true;
} catch (const std::system_error&) {
    return false;
}

TEST(TcpServer, SendsToTheDevicesThatARecordNames) {
    const int port = simulation::FreePort();
    CommFixture comm;
    const auto all = CommFixture::Server(port);
    const auto second = CommFixture::Server(port, "127.0.0.2");
    const auto nobody = CommFixture::Server(port, "127.0.0.3");
    const auto anyone = CommFixture::Server(port, "0.0.0.0");
    ASSERT_EQ(comm.Open(all) + comm.Open(second), 0) << "one listener for both";
    Socket one = Socket::Connect(port, "127.0.0.1");
    EXPECT_EQ(SendToNew(comm, all, "1"), 0);
    Socket two = Socket::Connect(port, "127.0.0.2");
    EXPECT_EQ(SendToNew(comm, second, "2"), 0);
    EXPECT_EQ(comm.Send(nobody, "3"), 10057);
    EXPECT_EQ(comm.Send(anyone, "4"), 0);
    EXPECT_EQ(ReceiveUpTo(one, 2), "14");
    EXPECT_EQ(ReceiveUpTo(two, 2), "24");

    comm.registry.DeleteTcp(all);
    EXPECT_EQ(comm.Send(second, "5"), 0) << "the listener of the other record went away";
    EXPECT_EQ(ReceiveUpTo(two, 1), "5");
    for (const auto& record : {second, nobody, anyone}) {
        comm.registry.DeleteTcp(record);
    }
    EXPECT_EQ(two.Receive(), "") << "the connections end with the last record";
    EXPECT_TRUE(simulation::WaitUntil([&] { return IsFree(port); }));
}

TEST(TcpServer, ForgetsADeviceThatLeft) {
    const auto record = CommFixture::Server(simulation::FreePort());
    CommFixture comm;
    ASSERT_EQ(comm.Open(record), 0);
    for (int round = 0; round < 20; ++round) {
        Socket device = Socket::Connect(record.port);
        ASSERT_EQ(SendToNew(comm, record, "click"), 0);
        EXPECT_EQ(ReceiveUpTo(device, 5), "click");
        round % 2 == 0 ? device.Reset() : device.Close();
        EXPECT_EQ(comm.Send(record, "late"), 10057) << round;
    }
}

TEST(TcpServer, ServesTheOthersWhenOneDeviceIsStuckAndDropsThatOne) {
    const std::string content(1 << 20, 'x');
    const auto record = CommFixture::Server(simulation::FreePort());
    CommFixture comm(CommFixture::Settings(std::chrono::milliseconds(3000)));
    ASSERT_EQ(comm.Open(record), 0);
    std::vector<Socket> devices;
    for (int i = 1; i <= 10; ++i) {
        const std::string from = "127.0.0." + std::to_string(i);
        devices.push_back(Socket::Connect(record.port, from.c_str()));
        ASSERT_EQ(SendToNew(comm, CommFixture::Server(record.port, from), "hello"), 0);
        ASSERT_EQ(ReceiveUpTo(devices.back(), 5), "hello");
    }
    auto sender = comm.SendLater(record, content);
    for (std::size_t i = 1; i < devices.size(); ++i) {
        EXPECT_EQ(ReceiveUpTo(devices[i], content.size()), content) << i;
    }
    EXPECT_FALSE(IsReady(sender)) << "nine had to wait";
    EXPECT_EQ(sender.get(), 0);
    EXPECT_LT(ReceiveUpTo(devices[0], content.size()).size(), content.size());
    EXPECT_EQ(comm.Send(record, "next"), 0);
}

TEST(TcpServer, ServesADeviceWhileTheCommandOfAnotherIsStuck) {
    const int port = simulation::FreePort();
    comm::SCommSettings settings = CommFixture::Settings(std::chrono::milliseconds(2000));
    settings.stallPause = std::chrono::milliseconds(100);
    CommFixture comm(settings);
    const auto stuck = CommFixture::Server(port, "127.0.0.2");
    const auto live = CommFixture::Server(port, "127.0.0.3");
    ASSERT_EQ(comm.Open(stuck) + comm.Open(live), 0);
    Socket deaf = Socket::Connect(port, "127.0.0.2");
    Socket reader = Socket::Connect(port, "127.0.0.3");
    ASSERT_EQ(SendToNew(comm, stuck, "1") + SendToNew(comm, live, "1"), 0);
    ASSERT_EQ(ReceiveUpTo(deaf, 1) + ReceiveUpTo(reader, 1), "11");
    auto sender = comm.SendLater(stuck, std::string(1 << 22, 'x'));
    ASSERT_TRUE(deaf.WaitReadable(simulation::kMaxTestWait));
    EXPECT_EQ(comm.Send(live, "2"), 0);
    EXPECT_EQ(comm.Send(CommFixture::Server(port), "3"), 0) << "to both, of which one gets it";
    EXPECT_EQ(comm.Send(stuck, "4"), 10060) << "one call waits for a device that stops reading";
    EXPECT_FALSE(IsReady(sender));
    EXPECT_EQ(ReceiveUpTo(reader, 2), "23");
    EXPECT_EQ(sender.get(), 10060);
    EXPECT_EQ(comm.Send(stuck, "5"), 10057);
}

}  // namespace
