#include "CommFixture.h"
#include "platform/SerialDevices.h"
#include "platform/SerialNames.h"
#include "simulation/PtyPair.h"
#include "simulation/TemporaryFolder.h"

#include <algorithm>
#include <array>
#include <future>
#include <optional>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <asm/termbits.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

using simulation::PtyPair;

class SerialLine : public testing::Test, protected CommFixture {
  protected:
    SerialLine() {
        Table(nlohmann::json{{"COM7", m_link}, {"COM8", {{"device", m_link}}}}.dump());
        SetSerialNameTable(m_table);
    }

    void Table(const std::string& text) { simulation::WriteFile(m_table, text); }
    int SendSerial(const std::string& text, std::uint32_t speed = 115200, const std::string& name = "COM7") {
        return registry.SendSerial({"", name, speed}, text, true, 0);
    }

    simulation::TemporaryFolder m_folder;
    std::string m_link = m_folder.Path() / "line";
    std::string m_table = m_folder.Path() / "SerialPorts.json";
};

TEST_F(SerialLine, SendsRawBytesWithTheSettingsOfEachCommand) {
    const PtyPair line(m_link);
    const int probe = open(m_link.c_str(), O_RDWR | O_NOCTTY);
    std::string sent;
    for (const unsigned speed : {9600U, 115200U, 12345U}) {
        EXPECT_EQ(SendSerial("a\r\n\x03\x04z", speed), 0);
        sent += "a\r\n\x03\x04z";
        termios2 settings{};
        ASSERT_EQ(ioctl(probe, TCGETS2, &settings), 0);
        EXPECT_EQ(settings.c_ospeed, speed);
        EXPECT_EQ(settings.c_lflag & (ICANON | ECHO | ISIG), 0U);
    }
    EXPECT_EQ(line.Received().WaitBytes(sent.size()), sent);
}

TEST_F(SerialLine, RefusesSettingsThatNoLineHas) {
    const PtyPair line(m_link);
    const SSerialPortConfig good{"", "COM7", 12345, 8, ParityMark, StopBitsTwo};
    EXPECT_EQ(registry.CheckSerial(good), 0);
    EXPECT_EQ(registry.SendSerial(good, "a", true, 0), 0);
    for (const SSerialPortConfig& config : ImpossibleSettings()) {
        EXPECT_EQ(registry.CheckSerial(config), 87);
        EXPECT_EQ(registry.SendSerial(config, "a", true, 0), 87);
    }
    EXPECT_EQ(registry.SendSerial(good, "1G", false, 0), 13);
    EXPECT_EQ(line.Received().WaitBytes(1), "a");
}

TEST_F(SerialLine, FindsThePortThatItsNameMeansNow) {
    for (const std::string name : {"COM7", "COM", "COM7/../null", ""}) {
        EXPECT_EQ(SendSerial("a", 9600, name), 2) << name;
    }
    std::optional<PtyPair> line(m_link);
    EXPECT_EQ(registry.CheckSerial({"", "COM7"}), 0);
    EXPECT_EQ(SendSerial("plugged", 9600, "COM8"), 0);
    EXPECT_EQ(line->Received().WaitBytes(7), "plugged");
    EXPECT_EQ(SendSerial("a"), 5) << "open here under another name";
    Table("{}");
    EXPECT_EQ(SendSerial("a", 9600, "COM8"), 1167) << "the name is gone while its line is open";
    EXPECT_EQ(SendSerial("a", 9600, "COM8"), 2);
    Table("[broken");
    EXPECT_EQ(SendSerial("a"), 2);
    Table(nlohmann::json{{"COM7", "/dev/null"}, {"COM8", m_table}}.dump());
    EXPECT_EQ(SendSerial("a", 9600, "COM7"), 2) << "no serial line";
    EXPECT_EQ(SendSerial("a", 9600, "COM8"), 2) << "a file";
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
    EXPECT_EQ(registry.CheckSerial({"", "COM7"}), 5);
    EXPECT_EQ(SendSerial("a"), 5);
    close(other);
    EXPECT_EQ(registry.CheckSerial({"", "COM7"}), 0);
    CommFixture another;
    EXPECT_EQ(another.registry.CheckSerial({"", "COM7"}), 0) << "the first check left it open";
    EXPECT_EQ(SendSerial("a"), 0);
}

TEST_F(SerialLine, NoticesThatTheLineWasUnplugged) {
    for (int round = 0; round < 10; ++round) {
        std::optional<PtyPair> line(m_link);
        ASSERT_EQ(SendSerial("before"), 0) << round;
        ASSERT_EQ(line->Received().WaitBytes(6), "before");
        line.reset();
        EXPECT_EQ(round % 2 == 0 ? SendSerial("gone") : 1167, 1167);
        line.emplace(m_link);
        EXPECT_EQ(SendSerial("after"), 0) << round;
        EXPECT_EQ(line->Received().WaitBytes(5), "after");
        registry.DeleteAll();
    }
}

/** A line whose other side takes nothing. */
class BlockedSerialLine : public SerialLine {
  protected:
    BlockedSerialLine() : m_other(posix_openpt(O_RDWR | O_NOCTTY)) {
        unlockpt(m_other);
        std::filesystem::create_symlink(ptsname(m_other), m_link);
    }
    ~BlockedSerialLine() override { close(m_other); }

    const std::string m_content = std::string(100000, 'x');
    int m_other;
};

TEST_F(BlockedSerialLine, TimesOutAndServesTheNextCommand) {
    EXPECT_EQ(SendSerial(m_content, 4000000), 121);
    std::string all(1 << 20, '\0');
    fcntl(m_other, F_SETFL, O_NONBLOCK);
    while (read(m_other, all.data(), all.size()) > 0) {
    }
    EXPECT_EQ(SendSerial("next", 4000000), 0);
    EXPECT_EQ(std::string(all.data(), static_cast<std::size_t>(read(m_other, all.data(), all.size()))),
              "next");
}

TEST_F(BlockedSerialLine, EndsASendThatIsCutByADelete) {
    // Ten seconds, if it were not cut.
    auto sender = std::async(std::launch::async, [&] { return SendSerial(m_content, 50); });
    ASSERT_TRUE(simulation::WaitUntil([&] {
        pollfd output{m_other, POLLIN, 0};
        return poll(&output, 1, 0) == 1;
    }));
    EXPECT_EQ(registry.CheckSerial({"", "COM7", 50}), 0) << "busy, so it is there";
    registry.DeleteAll();
    EXPECT_EQ(sender.get(), 995);
}

}  // namespace
