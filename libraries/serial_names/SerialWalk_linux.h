#pragma once

#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

/** A serial line of the machine as WalkSerialLines finds it. Texts are in UTF-8. */
struct SFoundLine {
    std::string device;       ///< "/dev/ttyUSB0"; may be another one after the next plugging in
    dev_t node = 0;           ///< number of that device
    std::string identity;     ///< the same whenever and wherever it is plugged in; empty: not known to udev
    std::string place;        ///< where it is plugged in; tells those apart that share an identity
    int builtInNumber = 0;    ///< the COM number of a built-in port; 0 for all others
    std::string kind;         ///< "USB Serial Port": what the friendly name begins with
    std::string description;  ///< from the hardware database, else from the device itself
    std::string hardwareId;   ///< in the form of Windows
};

/** All lines that have hardware behind them, in the order of their places. Looks anew each time. */
std::vector<SFoundLine> WalkSerialLines();

/** The line of one device, "/dev/ttyUSB0"; nothing when there is none now. */
std::optional<SFoundLine> LookAtSerialLine(const std::string& device);

/** Number of a character device; 0 when the path leads to none. */
dev_t CharacterDevice(const std::string& path);
