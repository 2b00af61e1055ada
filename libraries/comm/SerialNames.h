#pragma once

#include <string>

namespace comm {

/** True for COM and one to four digits: what a port name can be. Any thread. */
bool IsSerialName(const std::string& comPort);

}  // namespace comm
