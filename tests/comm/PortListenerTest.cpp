#include "tests/comm/CommFixture.h"
#include "tests/comm/RecordingListener.h"

#include <array>

namespace {

using simulation::Socket;

std::string At(const Socket& device) {
    return "from 127.0.0.1:" + std::to_string(device.LocalPort()) + ":";
}

TEST(PortListener, HearsATcpClientItsDeviceAndItsEnd) {
    CRecordingListener& heard = CRecordingListener::Get();
    CommFixture comm;
    Socket listener = Socket::Listen();
    const auto record = CommFixture::Client(listener.LocalPort());
    ASSERT_EQ(comm.Send(record, "?PWR\r"), 0);
    const auto port = comm.registry.Report(record).port;
    Socket device = listener.Accept();
    EXPECT_EQ(device.Receive(), "?PWR\r");
    device.Send("on");
    heard.Expect(port, "state 1 | state 2 | sent 0:?PWR\r | " + At(listener) + "on");
    device.Close();
    heard.Expect(port, "state 0");
    listener.Close();
    EXPECT_EQ(comm.Send(record, "off"), 10061);
    heard.Expect(port, "state 1 | state 4 | sent 10061:off");
    EXPECT_EQ(heard.Peers(port).size(), 1U);
    comm.registry.DeleteTcp(record);
    heard.Expect(port, "ended");
}

TEST(PortListener, TellsTheDevicesOfASharedPortApart) {
    CRecordingListener& heard = CRecordingListener::Get();
    CommFixture comm;
    const auto all = CommFixture::Server(simulation::FreePort());
    ASSERT_EQ(comm.Open(all), 0);
    const auto port = comm.registry.Report(all).port;
    heard.Expect(port, "state 3");
    for (int connection = 1; connection <= 2; ++connection) {
        Socket device = Socket::Connect(all.port, "127.0.0.1");
        device.Send("x");
        heard.Expect(port, At(device) + "x");
    }
    EXPECT_EQ(heard.Peers(port).size(), 2U) << "another connection is another stream";

    const auto udp = CommFixture::Udp(simulation::FreePort(), 9);
    ASSERT_EQ(comm.Open(udp), 0);
    const auto socket = comm.registry.Report(udp).port;
    heard.Expect(socket, "state 2");
    std::array<Socket, 2> devices = {Socket::Udp(), Socket::Udp()};
    for (Socket& device : devices) {
        const auto back = CommFixture::Udp(device.LocalPort(), udp.port);
        device.Close();
        ASSERT_EQ(comm.Send(back, "x"), 0);
        heard.Expect(socket, "from 127.0.0.1:" + std::to_string(back.port) + ":x");
    }
    EXPECT_EQ(heard.Peers(socket).size(), 2U);

    const struct {
        SNetPortConfig record;
        std::string address;
        bool isDevice;
    } rows[] = {
        {CommFixture::Server(1), "10.0.0.5:1", true},
        {CommFixture::Server(1, "10.0.0.5"), "10.0.0.5:4001", true},
        {CommFixture::Server(1, "10.0.0.5"), "10.0.0.55:4001", false},
        {CommFixture::Server(1, "0.0.0.0"), "10.0.0.5:1", true},
        {CommFixture::Server(1, "device.local"), "10.0.0.5:1", true},
        {CommFixture::Udp(1, 4001, "fe80::1"), "[fe80::1]:7", true},
        {CommFixture::Udp(1, 4001, "fe80::1"), "[fe80::2]:7", false},
        {CommFixture::Client(1, "10.0.0.5"), "10.0.0.6:1", true},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(IsDeviceOf(row.record, row.address), row.isDevice) << row.address;
    }
}

}  // namespace
