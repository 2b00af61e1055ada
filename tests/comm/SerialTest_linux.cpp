#include "platform/SerialDevices.h"
#include "tests/comm/RecordingListener.h"
#include "tests/comm/SerialFixture.h"

#include <array>

#include <asm/termbits.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

TEST_F(SerialLine, HasTheSettingsOfEachCommand) {
    const PtyPair line(m_link);
    const int probe = open(m_link.c_str(), O_RDWR | O_NOCTTY);
    for (const unsigned speed : {9600U, 115200U, 12345U}) {
        EXPECT_EQ(Send("a", speed), 0);
        termios2 settings{};
        ASSERT_EQ(ioctl(probe, TCGETS2, &settings), 0);
        EXPECT_EQ(settings.c_ospeed, speed);
        EXPECT_EQ(settings.c_lflag & (ICANON | ECHO | ISIG), 0U);
    }
    close(probe);
    const SSerialPortConfig unusual{"", "COM7", 12345, 8, ParityMark, StopBitsTwo};
    EXPECT_EQ(m_comm->registry.CheckSerial(unusual), 0);
    EXPECT_EQ(m_comm->registry.SendSerial(unusual, "b", true, 0), 0);
    EXPECT_EQ(line.Received().WaitBytes(4), "aaab");
}

TEST_F(SerialLine, ReportsItsStateAndWhatItHears) {
    const SSerialPortConfig config{"", "COM7", 115200};
    const auto report = [&] { return m_comm->registry.Report(config); };
    CRecordingListener& heard = CRecordingListener::Get();
    EXPECT_EQ(Send("a"), 2);
    EXPECT_EQ(report().state, EnPortState::Failed);
    EXPECT_EQ(report().lastError, 2);
    std::optional<PtyPair> line(m_link);
    ASSERT_EQ(Send("ab"), 0);
    heard.Expect(report().port, "state 4 | sent 2:a | state 2 | sent 0:ab");
    line->Send("heard");
    heard.Expect(report().port, "from :heard");
    EXPECT_TRUE(simulation::WaitUntil([&] { return report().bytesIn == 5; }));
    EXPECT_EQ(report().state, EnPortState::Open);
    EXPECT_EQ(report().bytesOut, 2U);
    line.reset();
    EXPECT_TRUE(simulation::WaitUntil([&] { return report().state == EnPortState::Failed; }));
    EXPECT_EQ(report().lastError, 1167);
}

TEST_F(SerialLine, FindsThePortThatItsNameMeansNow) {
    for (const std::string name : {"COM", "COM7/../null", ""}) {
        EXPECT_EQ(Send("a", 9600, name), 2) << name;
    }
    std::optional<PtyPair> line(m_link);
    EXPECT_EQ(Check(), 0);
    EXPECT_EQ(Send("plugged", 9600, "COM8"), 0);
    EXPECT_EQ(line->Received().WaitBytes(7), "plugged");
    EXPECT_EQ(Send("a"), 5) << "open here under another name";
    Table("{}");
    EXPECT_EQ(Send("a", 9600, "COM8"), 1167) << "the name is gone while its line is open";
    EXPECT_EQ(Send("a", 9600, "COM8"), 2);
    Table("[broken");
    EXPECT_EQ(Send("a"), 2);
    Table(nlohmann::json{{"COM7", "/dev/null"}, {"COM8", m_table}}.dump());
    EXPECT_EQ(Send("a", 9600, "COM7"), 2) << "no serial line";
    EXPECT_EQ(Send("a", 9600, "COM8"), 2) << "a file";
}

TEST_F(SerialLine, IsListedAndFoundWhileTheTableChanges) {
    const PtyPair line(m_link);
    const auto look = [&] {
        int found = 0;
        for (int round = 0; round < 20; ++round) {
            const auto devices = ListSerialDevices();
            const bool isListed = std::any_of(devices.begin(), devices.end(),
                                              [](const auto& device) { return device.portName == L"COM7"; });
            found += isListed && FindSerialDevice("COM7") == m_link ? 1 : 0;
        }
        return found;
    };
    std::array<std::future<int>, 4> threads;
    for (auto& thread : threads) {
        thread = std::async(std::launch::async, look);
    }
    for (int round = 0; round < 50; ++round) {
        simulation::WriteFile(m_table + ".new", nlohmann::json{{"COM7", m_link}, {"COM9", round}}.dump());
        std::filesystem::rename(m_table + ".new", m_table);
    }
    for (auto& thread : threads) {
        EXPECT_EQ(thread.get(), 20);
    }
}

TEST_F(SerialLine, LeavesAPortToTheProgramThatHasIt) {
    const PtyPair line(m_link);
    const int other = open(m_link.c_str(), O_RDWR | O_NOCTTY);
    ASSERT_EQ(flock(other, LOCK_EX | LOCK_NB), 0);
    EXPECT_EQ(Check(), 5);
    EXPECT_EQ(Send("a"), 5);
    close(other);
    EXPECT_EQ(Check(), 0);
    CommFixture another;
    EXPECT_EQ(another.registry.CheckSerial({"", "COM7"}), 0) << "the first check left it open";
    EXPECT_EQ(Send("a"), 0);
}

/** A line whose other side takes nothing. */
class BlockedSerialLine : public SerialLine {
  protected:
    BlockedSerialLine() {
        unlockpt(m_other);
        std::filesystem::create_symlink(ptsname(m_other), m_link);
    }
    ~BlockedSerialLine() override { close(m_other); }

    const std::string m_content = std::string(100000, 'x');
    const int m_other = posix_openpt(O_RDWR | O_NOCTTY);
};

TEST_F(BlockedSerialLine, TimesOutAndServesTheNextCommand) {
    EXPECT_EQ(Send(m_content, 4000000), 121);
    std::string all(1 << 20, '\0');
    fcntl(m_other, F_SETFL, O_NONBLOCK);
    while (read(m_other, all.data(), all.size()) > 0) {
    }
    EXPECT_EQ(Send("next", 4000000), 0);
    ASSERT_EQ(read(m_other, all.data(), all.size()), 4);
    EXPECT_TRUE(all.starts_with("next"));
}

TEST_F(BlockedSerialLine, EndsASendThatIsCutByADelete) {
    // Ten seconds, if it were not cut.
    auto sender = std::async(std::launch::async, [&] { return Send(m_content, 50); });
    ASSERT_TRUE(simulation::WaitUntil([&] {
        pollfd output{m_other, POLLIN, 0};
        return poll(&output, 1, 0) == 1;
    }));
    EXPECT_EQ(Check(50), 0) << "busy, so it is there";
    m_comm->registry.DeleteAll();
    EXPECT_EQ(sender.get(), 995);
}

}  // namespace
