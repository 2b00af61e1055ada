#pragma once

#include <string>

/** The highest number that the name of a serial port can have. */
inline constexpr int kHighestSerialNumber = 9999;

/** The name of a serial port from its number, the reverse of SerialNumber: 3 gives "COM3". Any thread. */
std::string SerialName(int number);
