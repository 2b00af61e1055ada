#include "platform/PortsTogether.h"
#include "simulation/Equipment.h"
#include "tests/comm/CommFixture.h"

namespace {

using simulation::Socket;

bool Becomes(CommFixture& comm, const SNetPortConfig& record, EnPortState state) {
    return simulation::WaitUntil([&] { return comm.registry.Report(record).state == state; });
}

TEST(PortReports, FollowATcpClient) {
    CommFixture comm;
    Socket listener = Socket::Listen();
    const auto record = CommFixture::Client(listener.LocalPort());
    EXPECT_EQ(comm.registry.Report(record).since, SPortReport::Time()) << "not used yet";
    ASSERT_EQ(comm.Send(record, "on"), 0);
    Socket device = listener.Accept();
    EXPECT_EQ(device.Receive(), "on");
    device.Send("ready");
    EXPECT_TRUE(simulation::WaitUntil([&] { return comm.registry.Report(record).bytesIn == 5; }));
    const SPortReport open = comm.registry.Report(record);
    EXPECT_EQ(open.state, EnPortState::Open);
    EXPECT_EQ(open.bytesOut, 2U);
    EXPECT_EQ(open.commandsOut, 1U);
    EXPECT_EQ(open.calls, 0);
    EXPECT_EQ(open.lastError, 0);
    EXPECT_GE(open.lastIn, open.since);

    device.Close();
    EXPECT_TRUE(Becomes(comm, record, EnPortState::Closed)) << "the device has ended it in an orderly way";
    ASSERT_EQ(comm.Send(record, "on"), 0);
    device = listener.Accept();
    EXPECT_EQ(device.Receive(), "on");
    device.Reset();
    // Wine takes a reset for an orderly end.
    EXPECT_TRUE(
        simulation::WaitUntil([&] { return comm.registry.Report(record).state != EnPortState::Open; }));
    listener.Close();
    EXPECT_EQ(comm.Send(record, "on"), 10061);
    const SPortReport failed = comm.registry.Report(record);
    EXPECT_EQ(failed.state, EnPortState::Failed);
    EXPECT_EQ(failed.lastError, 10061);
    EXPECT_EQ(failed.commandsFailed, 1U);
    EXPECT_GE(failed.lastErrorAt, open.since);
}

TEST(PortReports, CountTheDevicesOfATcpServerAndDatagrams) {
    CommFixture comm;
    const auto all = CommFixture::Server(simulation::FreePort());
    const auto second = CommFixture::Server(all.port, "127.0.0.2");
    ASSERT_EQ(comm.Open(all) + comm.Open(second), 0);
    EXPECT_EQ(comm.registry.Report(all).state, EnPortState::Listening);
    const Socket one = Socket::Connect(all.port, "127.0.0.1");
    const Socket two = Socket::Connect(all.port, "127.0.0.2");
    EXPECT_TRUE(simulation::WaitUntil([&] { return comm.registry.Report(all).peers == 2; }));
    EXPECT_EQ(comm.registry.Report(second).peers, 1U);

    Socket device = Socket::Udp();
    const auto udp = CommFixture::Udp(simulation::FreePort(), device.LocalPort());
    ASSERT_EQ(comm.Send(udp, "on"), 0);
    EXPECT_EQ(comm.registry.Report(udp).state, EnPortState::Open);
    const auto back = CommFixture::Udp(device.LocalPort(), udp.port);
    device.Close();
    const std::string datagram(2000, 'x');
    ASSERT_EQ(comm.Send(back, datagram), 0);
    EXPECT_TRUE(simulation::WaitUntil([&] { return comm.registry.Report(udp).bytesIn == 2000; }));
}

TEST(PortReports, NameTheFailureOfASavedInterfaceAtStart) {
    CommFixture comm;
    const auto client = CommFixture::Client(simulation::FreePort());
    const Socket taken = Socket::Listen();
    const auto server = CommFixture::Server(taken.LocalPort());
    {
        CPortsTogether together;
        EXPECT_EQ(comm.Open(client), 0);
        EXPECT_EQ(comm.Open(server), 10048);
    }
    EXPECT_TRUE(Becomes(comm, client, EnPortState::Failed));
    EXPECT_EQ(comm.registry.Report(client).lastError, 10061);
    EXPECT_EQ(comm.registry.Report(server).lastError, 10048);
    comm.registry.DeleteTcp(client);
    comm.registry.DeleteTcp(server);
    EXPECT_EQ(comm.registry.PortCount(), 0U);
}

}  // namespace
