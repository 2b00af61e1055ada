#include "libraries/comm/SerialSettings.h"

#include "libraries/comm/ErrorNumbers.h"

namespace comm {

EnError CheckSettings(const SSerialPortConfig& config) {
    const bool good = config.baudRate > 0 && config.wordLength >= 5 && config.wordLength <= 8 &&
                      config.parity <= ParitySpace && config.stopBits <= StopBitsTwo &&
                      // A UART has one and a half stop bits with 5 data bits, two with more.
                      (config.stopBits != StopBitsOneAndHalf || config.wordLength == 5) &&
                      (config.stopBits != StopBitsTwo || config.wordLength != 5);
    return good ? ErrorNone : ErrorBadSetting;
}

std::chrono::microseconds TimeOnLine(const SSerialPortConfig& config, std::size_t bytes) {
    const std::uint64_t bits = 1U + config.wordLength + (config.parity == ParityNone ? 0U : 1U) +
                               (config.stopBits == StopBitsOne ? 1U : 2U);
    return std::chrono::microseconds(bytes * bits * 1000000U / config.baudRate);
}

bool SameSettings(const SSerialPortConfig& a, const SSerialPortConfig& b) {
    return a.baudRate == b.baudRate && a.wordLength == b.wordLength && a.parity == b.parity &&
           a.stopBits == b.stopBits;
}

}  // namespace comm
