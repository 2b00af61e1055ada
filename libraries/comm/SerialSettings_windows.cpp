#include "libraries/comm/SerialSettings_windows.h"

#include <array>

namespace comm {

namespace {

constexpr std::array<BYTE, 5> kParity = {NOPARITY, ODDPARITY, EVENPARITY, MARKPARITY, SPACEPARITY};
constexpr std::array<BYTE, 3> kStopBits = {ONESTOPBIT, ONE5STOPBITS, TWOSTOPBITS};

}  // namespace

void BuildSettings(const SSerialPortConfig& config, DCB& settings) {
    settings = {};
    settings.DCBlength = sizeof settings;
    settings.fBinary = TRUE;
    settings.BaudRate = config.baudRate;
    settings.ByteSize = config.wordLength;
    settings.fParity = config.parity != ParityNone ? TRUE : FALSE;
    settings.Parity = kParity.at(config.parity);
    settings.StopBits = kStopBits.at(config.stopBits);
    // Not used, but a system refuses settings in which the two are the same.
    settings.XonChar = 0x11;
    settings.XoffChar = 0x13;
    // Both lines up, as some devices take their power or their leave to send from them.
    settings.fDtrControl = DTR_CONTROL_ENABLE;
    settings.fRtsControl = RTS_CONTROL_ENABLE;
}

bool HasTaken(const DCB& asked, const DCB& taken) {
    const DWORD want = asked.BaudRate;
    const DWORD have = taken.BaudRate;
    const std::uint64_t difference = want > have ? want - have : have - want;
    return difference * 100 <= std::uint64_t{want} * 3;
}

}  // namespace comm
