#pragma once

#include "platform/PortRecords.h"

#include <windows.h>

namespace comm {

/** Sets raw mode, without flow control, and the settings of a record, which are valid. */
void BuildSettings(const SSerialPortConfig& config, DCB& settings);

/** True when a device has taken the speed, within 3 %; it refuses other settings that it lacks. */
bool HasTaken(const DCB& asked, const DCB& taken);

}  // namespace comm
