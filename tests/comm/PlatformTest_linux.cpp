#include "libraries/comm/ErrorNumbers.h"
#include "libraries/comm/SerialSettings.h"

#include <array>
#include <cerrno>
#include <utility>
#include <vector>

#include <boost/asio/error.hpp>
#include <gtest/gtest.h>

#include <asm/termbits.h>

namespace {

TEST(ErrorNumbers, AreThoseOfWindows) {
    const std::vector<std::array<int, 3>> cases = {
        {0, 0, 0},
        {ECONNREFUSED, 10061, 31},
        {ETIMEDOUT, 10060, 31},
        {ECONNRESET, 10054, 31},
        {EPIPE, 10054, 31},
        {EHOSTUNREACH, 10065, 31},
        {ENETUNREACH, 10051, 31},
        {EADDRINUSE, 10048, 31},
        {EIO, 31, 1167},
        {EADDRNOTAVAIL, 10049, 31},
        {EMSGSIZE, 10040, 31},
        {EACCES, 10013, 5},
        {ENOENT, 31, 2},
        {ENODEV, 31, 2},
        {EBUSY, 31, 5},
        {EMFILE, 10024, 4},
        {EINVAL, 10022, 87},
    };
    for (const auto& [code, socket, serial] : cases) {
        EXPECT_EQ(comm::SocketError({code, boost::system::system_category()}), socket) << code;
        EXPECT_EQ(comm::SerialError(code), serial) << code;
    }
    EXPECT_EQ(comm::SocketError(boost::asio::error::eof), 10054);
    EXPECT_EQ(comm::SocketError(boost::asio::error::host_not_found), 11001);
}

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
        EXPECT_EQ(asked.c_ospeed, config.baudRate);
        EXPECT_EQ(asked.c_cflag & CBAUD, tcflag_t{BOTHER});
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
    EXPECT_EQ(comm::TimeOnLine({"", "", 9600, 8, ParityNone, StopBitsOne}, 960), std::chrono::seconds(1));
    EXPECT_EQ(comm::TimeOnLine({"", "", 1100, 7, ParityEven, StopBitsTwo}, 100), std::chrono::seconds(1));
}

}  // namespace
