// What a device that lets one wait costs the others.

#include "platform/VainWaits.h"
#include "simulation/Equipment.h"
#include "tests/comm/CommFixture.h"

#include <future>
#include <vector>

#include <gtest/gtest.h>

namespace {

using simulation::milliseconds;
using simulation::SilentDevice;
using simulation::Socket;

constexpr milliseconds kBound(2000);

comm::SCommSettings ShortPauses() {
    comm::SCommSettings settings = CommFixture::Settings(kBound);
    settings.joinPause = settings.stallPause = milliseconds(100);
    settings.probePause = settings.longestProbePause = milliseconds(50);
    return settings;
}

TEST(SilentDevice, HoldsOneCallAndFailsAtOnceUntilItAnswers) {
    CommFixture comm(ShortPauses());
    SilentDevice device;
    const simulation::TcpListener live;
    const auto record = CommFixture::Client(device.Port());
    std::vector<std::future<int>> clicks(4);
    for (auto& click : clicks) {
        click = comm.SendLater(record, "a");
    }
    EXPECT_EQ(comm.Send(CommFixture::Client(live.Port()), "click"), 0);
    EXPECT_EQ(live.Received().WaitBytes(5), "click");
    ExpectOneToWait(clicks, kBound);
    const auto begin = comm::Clock::now();
    while (comm::Clock::now() - begin < 2 * ShortPauses().retryPause) {
        ASSERT_EQ(comm.Send(record, "a"), 10060);
    }
    EXPECT_LT(comm::Clock::now() - begin, kBound) << "a click had to wait";

    device.Wake();
    Socket peer = device.Accept();  // without a click
    EXPECT_TRUE(simulation::WaitUntil([&] { return comm.Send(record, "click") == 0; }));
    EXPECT_EQ(peer.Receive(), "click");
}

TEST(SilentDevice, IsLeftAloneUntilAClickMeetsItAndAfterItsRecordIsDeleted) {
    for (const bool isUsed : {false, true}) {
        comm::SCommSettings settings = ShortPauses();
        settings.bound = milliseconds(200);
        CommFixture comm(settings);
        SilentDevice device;
        const auto record = CommFixture::Client(device.Port());
        EXPECT_EQ(comm.Open(record), 10060);
        EXPECT_EQ(comm.registry.PortCount(), 0U);
        if (isUsed) {
            EXPECT_EQ(comm.Send(record, "a"), 10060);
            EXPECT_EQ(comm.Open(record), 10060) << "tried for as long as any other";
            comm.registry.DeleteTcp(record);
        }
        device.Wake();
        EXPECT_FALSE(device.IsTried(milliseconds(200))) << isUsed;
        EXPECT_EQ(comm.Open(record), 0) << isUsed;
    }
}

TEST(SilentDevice, IsOpenedAtOnceWhenItAnswersAgain) {
    CommFixture comm(ShortPauses());
    SilentDevice device;
    const auto record = CommFixture::Client(device.Port());
    {
        const CVainWaits waits(milliseconds(1));
        EXPECT_EQ(comm.Send(record, "a"), 10060);
    }
    auto opening = std::async(std::launch::async, [&] { return comm.Open(record); });
    device.Wake();
    EXPECT_EQ(opening.get(), 0) << "joined the attempt of the click, or made its own";
}

TEST(SilentDevice, ThatStopsReadingHoldsOneCall) {
    CommFixture comm(ShortPauses());
    Socket listener = Socket::Listen();
    const auto record = CommFixture::Client(listener.LocalPort());
    auto stuck = comm.SendLater(record, std::string(1 << 22, 'x'));
    Socket peer = listener.Accept();
    EXPECT_TRUE(
        simulation::WaitUntil([&] { return comm.Send(record, "") == 0 && peer.WaitReadable(kBound); }));
    EXPECT_EQ(comm.Send(record, "a"), 10060);
    EXPECT_FALSE(IsReady(stuck)) << "had to wait for the command that is stuck";
    EXPECT_EQ(stuck.get(), 10060);
}

TEST(SilentDevice, CostsARunOfCommandsNoMoreThanItsBound) {
    comm::SCommSettings settings = ShortPauses();
    settings.bound = milliseconds(1000);
    CommFixture comm(settings);
    const SilentDevice device;
    const simulation::TcpListener live;
    const auto begin = comm::Clock::now();
    {
        const CVainWaits waits(milliseconds(2000));
        for (int i = 1; i <= 20; ++i) {
            auto record = CommFixture::Client(device.Port());
            record.ipAddress = "127.0.0." + std::to_string(i);  // each a device of its own
            EXPECT_EQ(comm.Send(record, "a"), 10060) << i;
        }
        // All time is used up: a device that is not connected yet may have to be clicked again.
        EXPECT_TRUE(
            simulation::WaitUntil([&] { return comm.Send(CommFixture::Client(live.Port()), "1") == 0; }));
    }
    EXPECT_LT(comm::Clock::now() - begin, milliseconds(10000)) << "twenty waits";
    EXPECT_EQ(live.Received().WaitBytes(1), "1");
}

}  // namespace
