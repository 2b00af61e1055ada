#include "equipment/Traffic.h"
#include "equipment/TrafficFile.h"

#include <thread>

#include <gtest/gtest.h>

namespace {

bool All(const STrafficEntry& /*entry*/) {
    return true;
}

/** The bytes of entries, each followed by a bar. */
std::string Joined(const CTrafficRing::SRead& read) {
    std::string text;
    for (const STrafficEntry& entry : read.entries) {
        text += entry.bytes + '|';
    }
    return text;
}

TEST(Traffic, KeepsWhoSentWhatAndGivesWhatIsNew) {
    CTraffic traffic(0);
    const std::string longCommand = std::string(254, 'x') + "灯";  // cut between its characters
    {
        const CSendOrigin origin({EnSendSource::Component, 3, 7, "click", longCommand, "10.0.0.5"});
        traffic.OnSent(1, "on", 10061);
    }
    traffic.OnSent(1, std::string(5000, 'y'), 0);
    const auto read = traffic.Read(1, 0, All);
    ASSERT_EQ(read.entries.size(), 2U);
    const STrafficEntry& click = read.entries[0];
    EXPECT_EQ(click.nodeId + click.component, 10);
    EXPECT_EQ(click.command, std::string(254, 'x'));
    EXPECT_EQ(TrafficLine(click).substr(4), " 6F 6E \"on\" error 10061 component 7 trigger click command " +
                                                std::string(254, 'x') + " client 10.0.0.5");
    EXPECT_EQ(read.entries[1].bytes, std::string(4096, 'y'));
    EXPECT_TRUE(read.entries[1].isCut);
    EXPECT_EQ(read.last, read.entries[1].id);
    traffic.OnSent(1, "off", 0);
    EXPECT_EQ(Joined(traffic.Read(1, read.last, All)), "off|");
    EXPECT_EQ(Joined(traffic.Read(1, ~std::uint64_t{0}, All)).size(), 3U + 4097U + 4U)
        << "a number of a time when the clock was ahead";
    traffic.OnEnded(1);
    EXPECT_EQ(traffic.Used(), 0U);
    EXPECT_EQ(traffic.Read(1, read.last, All).last, read.last);
}

TEST(Traffic, JoinsAStreamUntilItHasBeenRead) {
    CTraffic traffic(0);
    const SPortPeer one{1, "10.0.0.5:1", false};
    const SPortPeer two{2, "10.0.0.6:1", false};
    for (const char* part : {"a", "b"}) {
        traffic.OnReceived(1, one, part);
    }
    traffic.OnReceived(1, two, "c");
    traffic.OnSent(1, "?", 0);
    traffic.OnReceived(1, two, "d");
    const auto read = traffic.Read(1, 0, All);
    EXPECT_EQ(read.entries.front().peer, "10.0.0.5:1");
    traffic.OnReceived(1, two, "e");
    // On a machine that stands still for 20 ms between a and b they are two.
    EXPECT_TRUE(Joined(read) == "ab|c|?|d|" || Joined(read) == "a|b|c|?|d|") << Joined(read);
    EXPECT_EQ(Joined(traffic.Read(1, read.last, All)), "e|");
    for (int i = 0; i < 2; ++i) {
        traffic.OnReceived(2, {3, "10.0.0.7:1", true}, "whole");
    }
    EXPECT_EQ(Joined(traffic.Read(2, 0, All)), "whole|whole|");
}

TEST(Traffic, StaysWithinItsBoundsUnderFloods) {
    constexpr std::uint64_t kPorts = 8;
    constexpr std::size_t kLimit = std::size_t{1} << 20U;  // less than the rings may have, each by itself
    CTraffic traffic(kLimit);
    std::atomic<bool> isDone = false;
    std::vector<std::thread> threads;
    for (std::uint64_t i = 0; i < 3; ++i) {
        threads.emplace_back([&, i] {
            for (std::uint64_t n = 0; n < 6000; ++n) {
                const std::uint64_t port = (n + i) % kPorts;
                if (n % 100 == 0) {
                    traffic.OnEnded(port);
                }
                traffic.OnReceived(port, {n, "10.0.0.5:1", false}, std::string(n % 1500, 'x'));
                traffic.OnSent(port, "on", 0);
            }
        });
    }
    std::thread reader([&] {
        for (std::uint64_t port = 0; !isDone; port = (port + 1) % kPorts) {
            std::uint64_t last = 0;
            for (const STrafficEntry& entry : traffic.Read(port, 0, All).entries) {
                EXPECT_GT(entry.id, last);
                last = entry.id;
                EXPECT_EQ(entry.bytes.find_first_not_of(entry.out ? "on" : "x"), std::string::npos);
            }
            EXPECT_LE(traffic.Used(), kLimit + 3 * CTrafficRing::kChunk);  // while it is asked for
        }
    });
    for (std::thread& thread : threads) {
        thread.join();
    }
    isDone = true;
    reader.join();

    for (int n = 0; n < 1000; ++n) {
        traffic.OnSent(1, std::string(4096, 'z'), 0);
    }
    const auto full = traffic.Read(1, 1, All);
    EXPECT_TRUE(full.isMissed);
    EXPECT_GT(full.dropped, 900U);
    EXPECT_LE(full.entries.size() * 4096, std::size_t{256} * 1024);
    EXPECT_FALSE(traffic.Read(1, traffic.Last(), All).isMissed);
    for (std::uint64_t port = 100; port < 400; ++port) {
        traffic.OnSent(port, "x", 0);
        EXPECT_EQ(Joined(traffic.Read(port, 0, All)), "x|") << "a new port takes from the others";
    }
    EXPECT_LE(traffic.Used(), kLimit);
    const auto emptied = traffic.Read(100, 1, All);
    EXPECT_TRUE(emptied.isMissed) << "the oldest of many small ones";
    EXPECT_FALSE(traffic.Read(100, emptied.last, All).isMissed) << "what is gone is told once";
    EXPECT_EQ(Joined(traffic.Read(399, 1, All)), "x|");
}

}  // namespace
