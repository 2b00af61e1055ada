// Serial lines, on each system.
#include "tests/comm/SerialFixture.h"

namespace {

TEST_F(SerialLine, SendsRawBytesOnceItIsThere) {
    EXPECT_EQ(Check(), 2);
    EXPECT_EQ(Send("a"), 2);
    const PtyPair line(m_link);
    EXPECT_EQ(Check(), 0);
    std::string sent;
    for (const unsigned speed : {9600U, 115200U}) {
        EXPECT_EQ(Send("a\r\n\x03\x04z", speed), 0);
        sent += "a\r\n\x03\x04z";
    }
    EXPECT_EQ(line.Received().WaitBytes(sent.size()), sent);
}

TEST_F(SerialLine, RefusesSettingsThatNoLineHas) {
    const PtyPair line(m_link);
    const SSerialPortConfig impossible[] = {{"", "COM7", 0},
                                            {"", "COM7", 9600, 9},
                                            {"", "COM7", 9600, 8, static_cast<EnParity>(5)},
                                            {"", "COM7", 9600, 8, ParityNone, StopBitsOneAndHalf},
                                            {"", "COM7", 9600, 5, ParityNone, StopBitsTwo}};
    for (const SSerialPortConfig& config : impossible) {
        EXPECT_EQ(m_comm->registry.CheckSerial(config), 87);
        EXPECT_EQ(m_comm->registry.SendSerial(config, "a", true, 0), 87);
    }
    EXPECT_EQ(m_comm->registry.SendSerial({"", "COM7"}, "1G", false, 0), 13);
}

TEST_F(SerialLine, NoticesThatTheLineWasUnplugged) {
    for (const bool isTriedMeanwhile : {true, false, true}) {
        std::optional<PtyPair> line(m_link);
        ASSERT_EQ(Send("before"), 0);
        ASSERT_EQ(line->Received().WaitBytes(6), "before");
        line.reset();
        EXPECT_EQ(isTriedMeanwhile ? Send("gone") : 1167, 1167);
        line.emplace(m_link);
        EXPECT_EQ(Send("after"), 0) << isTriedMeanwhile;
        EXPECT_EQ(line->Received().WaitBytes(5), "after");
        m_comm->registry.DeleteAll();
    }
}

}  // namespace
