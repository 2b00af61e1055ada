#include "CommFixture.h"
#include "support/Equipment.h"

#include <gtest/gtest.h>

namespace {

TEST(Udp, SendsOneDatagramForOneCommand) {
    CommFixture comm;
    support::Socket device = support::Socket::Udp();
    for (const std::string address : {"", "127.0.0.1"}) {
        for (const std::size_t size : {1U, 65507U}) {
            const SNetPortConfig record{"", address, "127.0.0.1", 0, device.LocalPort(), NetModeUdp};
            EXPECT_EQ(comm.Send(record, std::string(size, 'x')), 0) << address << size;
            EXPECT_EQ(device.Receive().size(), size) << address;
        }
    }
}

TEST(Udp, SharesALocalPortAmongRecordsAndKeepsItWhenATcpRecordIsDeleted) {
    CommFixture comm;
    support::Socket one = support::Socket::Udp();
    support::Socket two = support::Socket::Udp();
    const int local = support::FreePort();
    for (const auto* device : {&one, &two}) {
        EXPECT_EQ(comm.Open(CommFixture::Udp(local, device->LocalPort())), 0);
    }
    comm.registry.DeleteTcp(CommFixture::Udp(local, one.LocalPort()));
    CommFixture other;
    EXPECT_EQ(other.Open(CommFixture::Udp(local, 1)), 10048) << "still bound";
    EXPECT_EQ(comm.Send(CommFixture::Udp(local, one.LocalPort()), "one"), 0);
    EXPECT_EQ(comm.Send(CommFixture::Udp(local, two.LocalPort()), "two"), 0);
    EXPECT_EQ(one.Receive() + two.Receive(), "onetwo");
    comm.registry.DeleteAll();
    EXPECT_EQ(other.Open(CommFixture::Udp(local, 1)), 0);
}

}  // namespace
