#include "CommFixture.h"
#include "simulation/PtyPair.h"
#include "simulation/TemporaryFolder.h"

#include <optional>
#include <string>

#include <gtest/gtest.h>

namespace {

using simulation::PtyPair;

class SerialLine : public testing::Test, protected CommFixture {
  protected:
    int SendSerial(const std::string& text, std::uint32_t speed = 115200) {
        return registry.SendSerial({"", "COM7", speed}, text, true, 0);
    }

    simulation::TemporaryFolder m_folder;
    const std::filesystem::path m_link = m_folder.Path() / "line";
};

TEST_F(SerialLine, SendsRawBytesOnceItIsThere) {
    EXPECT_EQ(registry.CheckSerial({"", "COM7"}), 2);
    EXPECT_EQ(SendSerial("a"), 2);
    const PtyPair line(m_link);
    EXPECT_EQ(registry.CheckSerial({"", "COM7"}), 0);
    std::string sent;
    for (const unsigned speed : {9600U, 115200U}) {
        EXPECT_EQ(SendSerial("a\r\n\x03\x04z", speed), 0);
        sent += "a\r\n\x03\x04z";
    }
    EXPECT_EQ(line.Received().WaitBytes(sent.size()), sent);
}

TEST_F(SerialLine, RefusesSettingsThatNoLineHas) {
    const PtyPair line(m_link);
    for (const SSerialPortConfig& config : ImpossibleSettings()) {
        EXPECT_EQ(registry.CheckSerial(config), 87);
        EXPECT_EQ(registry.SendSerial(config, "a", true, 0), 87);
    }
    EXPECT_EQ(registry.SendSerial({"", "COM7"}, "1G", false, 0), 13);
}

TEST_F(SerialLine, NoticesThatTheLineWasUnplugged) {
    for (int round = 0; round < 3; ++round) {
        std::optional<PtyPair> line(m_link);
        ASSERT_EQ(SendSerial("before"), 0) << round;
        ASSERT_EQ(line->Received().WaitBytes(6), "before");
        line.reset();
        EXPECT_EQ(SendSerial("gone"), 1167) << round;
        line.emplace(m_link);
        EXPECT_EQ(SendSerial("after"), 0) << round;
        EXPECT_EQ(line->Received().WaitBytes(5), "after");
        registry.DeleteAll();
    }
}

}  // namespace
