#pragma once

#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

/** A serial line of the machine as WalkSerialLines finds it. Texts are in UTF-8. */
struct SFoundLine {
    std::string device;       ///< "/dev/ttyUSB0"; can change when it is plugged in again
    dev_t node = 0;           ///< number of that device
    std::string identity;     ///< the same whenever and wherever it is plugged in; empty: unknown to udev
    std::string place;        ///< where it is plugged in; distinguishes lines that share an identity
    int builtInNumber = 0;    ///< the COM number of a built-in port; 0 for all others
    std::string kind;         ///< "USB Serial Port": the beginning of the friendly name
    std::string description;  ///< from the hardware database, otherwise from the device itself
    std::string hardwareId;   ///< in the form of Windows
};

/** All lines that have hardware, in the order of their places. Each call looks again. */
std::vector<SFoundLine> WalkSerialLines();

/** The line of one device, "/dev/ttyUSB0"; nothing when there is none now. */
std::optional<SFoundLine> LookAtSerialLine(const std::string& device);

/** Number of a character device; 0 when the path does not lead to one. */
dev_t CharacterDevice(const std::string& path);
