#include "libraries/comm/SerialSettings_windows.h"

#include <tuple>
#include <vector>

#include <gtest/gtest.h>

namespace {

TEST(SerialSettings, AreBuiltForTheDriverAndReadBack) {
    const std::vector<std::tuple<SSerialPortConfig, BYTE, BYTE>> cases = {
        {{"", "", 9600, 8, ParityNone, StopBitsOne}, NOPARITY, ONESTOPBIT},
        {{"", "", 12345, 7, ParityEven, StopBitsTwo}, EVENPARITY, TWOSTOPBITS},
        {{"", "", 9600, 6, ParityOdd, StopBitsOne}, ODDPARITY, ONESTOPBIT},
        {{"", "", 4000000, 5, ParityMark, StopBitsOneAndHalf}, MARKPARITY, ONE5STOPBITS},
        {{"", "", 50, 8, ParitySpace, StopBitsOne}, SPACEPARITY, ONESTOPBIT},
    };
    for (const auto& [config, parity, stopBits] : cases) {
        DCB asked{};
        asked.fOutX = TRUE;
        asked.fOutxCtsFlow = TRUE;
        comm::BuildSettings(config, asked);
        EXPECT_EQ(asked.DCBlength, sizeof asked);
        EXPECT_EQ(asked.BaudRate, config.baudRate);
        EXPECT_EQ(asked.ByteSize, config.wordLength);
        EXPECT_EQ(asked.Parity, parity) << config.baudRate;
        EXPECT_EQ(asked.fParity != FALSE, parity != NOPARITY) << config.baudRate;
        EXPECT_EQ(asked.StopBits, stopBits) << config.baudRate;
        EXPECT_TRUE(asked.fBinary && !asked.fOutX && !asked.fOutxCtsFlow) << "raw, without flow control";
        EXPECT_NE(asked.XonChar, asked.XoffChar) << "equal ones are refused";
        DCB taken = asked;
        taken.BaudRate += config.baudRate / 50;
        EXPECT_TRUE(comm::HasTaken(asked, taken)) << "2 % off";
        taken.BaudRate += config.baudRate / 25;
        EXPECT_FALSE(comm::HasTaken(asked, taken)) << "6 % off";
    }
}

}  // namespace
