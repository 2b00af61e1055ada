#pragma once

#include <string>

namespace comm {

/** Path of the device that a port name ("COM3") means now; empty when there is none. Any thread. */
std::string FindSerialDevice(const std::string& comPort);

/** True for COM and one to four digits: what a port name can be. */
bool IsSerialName(const std::string& comPort);

}  // namespace comm
