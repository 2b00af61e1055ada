#include "libraries/comm/SerialSettings.h"

#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <asm/termbits.h>

namespace {

TEST(SerialSettings, AreBuiltForTheDriverAndReadBack) {
    const std::vector<std::pair<SSerialPortConfig, tcflag_t>> cases = {
        {{"", "", 9600, 8, ParityNone, StopBitsOne}, CS8},
        {{"", "", 12345, 7, ParityEven, StopBitsTwo}, CS7 | PARENB | CSTOPB},
        {{"", "", 9600, 6, ParityOdd, StopBitsOne}, CS6 | PARENB | PARODD},
        {{"", "", 4000000, 5, ParityMark, StopBitsOneAndHalf}, CS5 | PARENB | PARODD | CMSPAR | CSTOPB},
        {{"", "", 50, 8, ParitySpace, StopBitsOne}, CS8 | PARENB | CMSPAR},
    };
    for (const auto& [config, form] : cases) {
        termios2 asked{};
        asked.c_lflag = ICANON | ECHO;
        asked.c_oflag = OPOST;
        comm::BuildSettings(config, asked);
        EXPECT_EQ(asked.c_cflag & (CSIZE | PARENB | PARODD | CMSPAR | CSTOPB | CRTSCTS), form)
            << config.baudRate;
        EXPECT_EQ(asked.c_lflag | asked.c_oflag, 0U);
        termios2 taken = asked;
        taken.c_ospeed += config.baudRate / 50;
        EXPECT_TRUE(comm::HasTaken(asked, taken)) << "2 % off";
        taken.c_ospeed += config.baudRate / 25;
        EXPECT_FALSE(comm::HasTaken(asked, taken)) << "6 % off";
        taken = asked;
        taken.c_cflag ^= CMSPAR;
        EXPECT_FALSE(comm::HasTaken(asked, taken)) << "another parity";
    }
    EXPECT_EQ(comm::TimeOnLine({"", "", 1100, 7, ParityEven, StopBitsTwo}, 100), std::chrono::seconds(1));
}

}  // namespace
