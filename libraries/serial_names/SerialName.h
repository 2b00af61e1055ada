#pragma once

#include <string>

/** Of what a serial port can be called by. */
inline constexpr int kHighestSerialNumber = 9999;

/** The name with a number, the other way round than SerialNumber: 3 gives "COM3". Any thread. */
std::string SerialName(int number);
