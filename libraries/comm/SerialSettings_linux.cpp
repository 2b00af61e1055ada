#include "libraries/comm/SerialSettings.h"

#include <array>

#include <asm/termbits.h>

namespace comm {

namespace {

constexpr tcflag_t kForm = CSIZE | CSTOPB | PARENB | PARODD | CMSPAR;

constexpr std::array<tcflag_t, 9> kSize = {0, 0, 0, 0, 0, CS5, CS6, CS7, CS8};

constexpr std::array<tcflag_t, 5> kParity = {0, PARENB | PARODD, PARENB, PARENB | PARODD | CMSPAR,
                                             PARENB | CMSPAR};

}  // namespace

void BuildSettings(const SSerialPortConfig& config, termios2& settings) {
    settings.c_iflag = IGNBRK | IGNPAR;
    settings.c_oflag = 0;
    settings.c_lflag = 0;
    // Modem lines are ignored, and stay as they are when the line is closed: some devices reset on that.
    settings.c_cflag = CREAD | CLOCAL | kSize.at(config.wordLength) | kParity.at(config.parity);
    if (config.stopBits != StopBitsOne) {
        settings.c_cflag |= CSTOPB;
    }
    // BOTHER: the speed as a number, so that any speed can be asked for.
    settings.c_cflag |= BOTHER | (BOTHER << IBSHIFT);
    settings.c_ispeed = config.baudRate;
    settings.c_ospeed = config.baudRate;
    settings.c_cc[VMIN] = 1;  // reading nothing then means that the device went away
    settings.c_cc[VTIME] = 0;
}

bool HasTaken(const termios2& asked, const termios2& taken) {
    if (((asked.c_cflag ^ taken.c_cflag) & kForm) != 0) {
        return false;
    }
    const std::uint64_t want = asked.c_ospeed;
    const std::uint64_t have = taken.c_ospeed;
    const auto difference = want > have ? want - have : have - want;
    return difference * 100 <= want * 3;
}

}  // namespace comm
