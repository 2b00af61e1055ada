#include "CommFixture.h"
#include "support/Equipment.h"

#include <vector>

#include <gtest/gtest.h>

namespace {

TEST(Udp, SendsOneDatagramForOneCommand) {
    CommFixture comm;
    support::Socket device = support::Socket::Udp();
    const int port = device.LocalPort();
    const std::string longest(65507, 'x');
    struct SCase {
        const char* name;
        SNetPortConfig record;
        std::string text;
        int error;
        bool arrives;
    };
    const std::vector<SCase> cases = {
        {"short", CommFixture::Udp(0, port), "click", 0, true},
        {"host name", CommFixture::Udp(0, support::FreePort(), "localhost"), "a", 0, false},
        {"from an address", {"", "127.0.0.1", "127.0.0.1", 0, port, NetModeUdp}, "bound", 0, true},
        {"longest", CommFixture::Udp(0, port), longest, 0, true},
        {"too long", CommFixture::Udp(0, port), longest + 'x', 10040, false},
        {"closed port", CommFixture::Udp(0, support::FreePort()), "a", 0, false},
        {"closed port again", CommFixture::Udp(0, support::FreePort()), "a", 0, false},
        {"broadcast", CommFixture::Udp(0, port, "127.255.255.255"), "a", 0, false},
        {"IPv6, closed port", CommFixture::Udp(0, port, "::1"), "a", 0, false},
        {"no address", CommFixture::Udp(0, port, ""), "a", 10049, false},
        {"port 0", CommFixture::Udp(0, 0), "a", 10049, false},
        {"port in use", CommFixture::Udp(port, port), "a", 10048, false},
        {"impossible name", CommFixture::Udp(0, port, "a..b"), "a", 11001, false},
    };
    for (const auto& [name, record, text, error, arrives] : cases) {
        EXPECT_EQ(comm.Send(record, text), error) << name;
        if (arrives) {
            EXPECT_TRUE(device.Receive() == text) << name;
        }
    }
}

TEST(Udp, SharesALocalPortAmongRecordsAndKeepsItWhenATcpRecordIsDeleted) {
    CommFixture comm;
    support::Socket one = support::Socket::Udp();
    support::Socket two = support::Socket::Udp();
    const int local = support::FreePort();
    for (const auto* device : {&one, &two}) {
        EXPECT_EQ(comm.registry.OpenNet(CommFixture::Udp(local, device->LocalPort())), 0);
    }
    comm.registry.DeleteTcp(CommFixture::Udp(local, one.LocalPort()));
    EXPECT_ANY_THROW(support::Socket::Udp(local)) << "still bound";
    EXPECT_EQ(comm.Send(CommFixture::Udp(local, one.LocalPort()), "one"), 0);
    EXPECT_EQ(comm.Send(CommFixture::Udp(local, two.LocalPort()), "two"), 0);
    EXPECT_EQ(one.Receive() + two.Receive(), "onetwo");
    comm.registry.DeleteAll();
    EXPECT_NO_THROW(support::Socket::Udp(local));
}

}  // namespace
