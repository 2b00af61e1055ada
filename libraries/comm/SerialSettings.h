#pragma once

#include "libraries/comm/ErrorNumbers.h"
#include "platform/PortRecords.h"

#include <chrono>
#include <cstddef>

struct termios2;

namespace comm {

/** 0, or ErrorBadSetting for a speed of 0 or for word length, parity or stop bits that no line has. */
[[nodiscard]] EnError CheckSettings(const SSerialPortConfig& config);

/** How long bytes take on a line with valid settings. */
std::chrono::microseconds TimeOnLine(const SSerialPortConfig& config, std::size_t bytes);

/** True when two records ask for the same line settings. */
bool SameSettings(const SSerialPortConfig& a, const SSerialPortConfig& b);

/** Sets raw mode, without flow control, and the settings of a record, which are valid. Linux. */
void BuildSettings(const SSerialPortConfig& config, termios2& settings);

/** True when a device has taken the settings: same format of a character, speed within 3 %. Linux. */
bool HasTaken(const termios2& asked, const termios2& taken);

}  // namespace comm
