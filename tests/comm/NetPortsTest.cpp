#include "platform/PortsTogether.h"
#include "simulation/Equipment.h"
#include "tests/comm/CommFixture.h"

#include <vector>

#include <gtest/gtest.h>

namespace {

/** Records of all modes, and what opening them and sending one byte give. */
TEST(NetPorts, TellWhatCannotBeDone) {
    const int closed = simulation::FreePort();
    const int spare = simulation::FreePort();
    const simulation::SilentDevice silent;
    const simulation::Socket taken = simulation::Socket::Listen();
    const simulation::Socket bound = simulation::Socket::Udp();
    const std::string endless(255, 'a');
    struct SCase {
        const char* name;
        SNetPortConfig record;
        int opened;
        int sent;
    };
    const std::vector<SCase> cases = {
        {"client, closed port", CommFixture::Client(closed), 10061, 10061},
        {"client, closed port, IPv6", CommFixture::Client(closed, "::1"), 10061, 10061},
        {"client, itself", {"", "", "127.0.0.1", closed, closed, NetModeTcpClient}, 10061, 10061},
        {"client, nobody answers", CommFixture::Client(silent.Port()), 10060, 10060},
        {"client, no such local", {"", "192.0.2.1", "127.0.0.1", 0, closed, NetModeTcpClient}, 10049, 10049},
        {"client, no address", CommFixture::Client(closed, ""), 10049, 10049},
        {"client, impossible name", CommFixture::Client(closed, "a..b"), 11001, 11001},
        {"server, nobody there", CommFixture::Server(spare), 0, 10057},
        {"server, port in use", CommFixture::Server(taken.LocalPort()), 10048, 10048},
        {"client, endless name", CommFixture::Client(closed, endless), 11001, 11001},
        {"server, endless name", CommFixture::Server(spare, endless), 11001, 11001},
        {"UDP, endless local", {"", endless, "127.0.0.1", 0, closed, NetModeUdp}, 10049, 10049},
        {"UDP, closed port", CommFixture::Udp(0, closed), 0, 0},
        {"UDP, IPv6", CommFixture::Udp(0, closed, "::1"), 0, 0},
        {"UDP, broadcast", CommFixture::Udp(0, closed, "127.255.255.255"), 0, 0},
        {"UDP, impossible name", CommFixture::Udp(0, closed, "a..b"), 0, 11001},
        {"UDP, port in use", CommFixture::Udp(bound.LocalPort(), closed), 10048, 10048},
        {"mode 7", {"", "", "127.0.0.1", 0, closed, static_cast<EnNetMode>(7)}, 87, 87},
    };
    CommFixture comm;
    for (const auto& [name, record, opened, sent] : cases) {
        const std::size_t ports = comm.registry.PortCount();
        EXPECT_EQ(comm.Open(record), opened) << name;
        EXPECT_TRUE(opened == 0 || comm.registry.PortCount() == ports) << name << " is not forgotten";
        EXPECT_EQ(comm.Send(record, "a"), sent) << name;
    }
    const std::size_t ports = comm.registry.PortCount();
    EXPECT_EQ(comm.registry.CheckSerial({"", "COM999"}), 2);
    EXPECT_EQ(comm.registry.PortCount(), ports) << "a serial port that is not there is not forgotten";
    EXPECT_EQ(comm.Send(CommFixture::Client(closed), ""), 0);
    EXPECT_EQ(comm.registry.SendNet(CommFixture::Client(closed), "4G", false, 0), 13);
    EXPECT_EQ(comm.Send(CommFixture::Udp(0, closed), std::string(65508, 'x')), 10040);
}

TEST(NetPorts, AreOpenedTogetherInTheTimeOfTheSlowest) {
    CommFixture comm(comm::SCommSettings{});
    const simulation::SilentDevice silent;
    const simulation::TcpListener live;
    const simulation::Socket taken = simulation::Socket::Listen();
    const auto begin = comm::Clock::now();
    {
        const CPortsTogether together;
        EXPECT_EQ(comm.Open(CommFixture::Server(taken.LocalPort())), 10048) << "nothing to wait for";
        for (int i = 1; i <= 100; ++i) {
            auto record = CommFixture::Client(silent.Port());
            record.ipAddress = "127.0.0." + std::to_string(i);
            EXPECT_EQ(comm.Open(record), 0) << i << " has begun";
            EXPECT_EQ(comm.Open(record), 0) << i << " is under way";
        }
        EXPECT_EQ(comm.Open(CommFixture::Client(live.Port())), 0);
    }
    EXPECT_EQ(comm.registry.PortCount(), 102U) << "what failed is kept for its report";
    EXPECT_LT(comm::Clock::now() - begin, simulation::kMaxTestWait) << "a hundred waits";
    EXPECT_EQ(comm.Send(CommFixture::Client(live.Port()), "click"), 0);
    EXPECT_EQ(live.Received().WaitBytes(5), "click");
}

TEST(NetPorts, StayOpenForARecordThatSpellsTheSameEndPointOtherwise) {
    CommFixture comm;
    simulation::Socket listener = simulation::Socket::Listen();
    for (const EnNetMode mode : {NetModeTcpClient, NetModeTcpServer}) {
        const bool isClient = mode == NetModeTcpClient;
        const int remotePort = isClient ? listener.LocalPort() : 0;
        const int localPort = isClient ? 0 : simulation::FreePort();
        const SNetPortConfig former = {"", "", "127.0.0.1", localPort, remotePort, mode};
        const SNetPortConfig edited = {"", "0.0.0.0", "127.0.0.1", localPort, remotePort, mode};
        ASSERT_EQ(comm.Open(former) + comm.Open(edited), 0) << mode;
        simulation::Socket device = isClient ? listener.Accept() : simulation::Socket::Connect(localPort);
        comm.registry.DeleteTcp(former);
        EXPECT_TRUE(simulation::WaitUntil([&] { return comm.Send(edited, "1") == 0; })) << mode;
        EXPECT_EQ(device.Receive(), "1") << mode;
        comm.registry.DeleteTcp(edited);
        EXPECT_EQ(device.Receive(), "") << mode;
    }
}

TEST(Udp, SharesALocalPortAmongRecordsAndKeepsItWhenATcpRecordIsDeleted) {
    CommFixture comm;
    const std::string longest(65507, 'x');
    simulation::Socket one = simulation::Socket::Udp();
    simulation::Socket two = simulation::Socket::Udp();
    const int local = simulation::FreePort();
    for (const auto* device : {&one, &two}) {
        EXPECT_EQ(comm.Open(CommFixture::Udp(local, device->LocalPort())), 0);
    }
    comm.registry.DeleteTcp(CommFixture::Udp(local, one.LocalPort()));
    SNetPortConfig moved = CommFixture::Udp(local, one.LocalPort());
    moved.ipAddress = "127.0.0.1";
    EXPECT_EQ(comm.Open(moved) + comm.Send(moved, "moved"), 0) << "the socket of an edited record stays";
    EXPECT_EQ(one.Receive(), "moved");
    CommFixture other;
    EXPECT_EQ(other.Open(CommFixture::Udp(local, 1)), 10048) << "still bound";
    EXPECT_EQ(comm.Send(CommFixture::Udp(local, one.LocalPort()), "one"), 0);
    EXPECT_EQ(comm.Send(CommFixture::Udp(local, two.LocalPort()), longest), 0);
    EXPECT_EQ(one.Receive(), "one");
    EXPECT_TRUE(two.Receive() == longest);
    comm.registry.DeleteAll();
    EXPECT_TRUE(simulation::WaitUntil([&] { return other.Open(CommFixture::Udp(local, 1)) == 0; }));
}

}  // namespace
