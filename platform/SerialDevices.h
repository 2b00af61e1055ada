#pragma once

#include <string>
#include <vector>

/** What the system reports about one serial port. A text that it doesn't report is empty. */
struct SSerialDevice {
    std::wstring portName;      ///< "COM3"; empty when the device has no readable name
    std::wstring friendlyName;  ///< "USB Serial Port (COM3)"
    std::wstring description;   ///< "FT232 Serial (UART) IC"
    std::wstring hardwareId;    ///< the first hardware id: "USB\VID_0403&PID_6001"
};

/**
 * The serial ports that are present at this moment, in the system's order: the caller neither sorts them nor
 * removes duplicates. Each call looks again, so that a port that was plugged in or unplugged shows at once.
 * Empty when there is none, or when the system doesn't provide the list; that is neither thrown nor logged.
 * Any thread; calls wait for each other only while a new port is recorded.
 *
 * Windows: the present devices of the interface class GUID_DEVINTERFACE_COMPORT
 * {86E0D1E0-8089-11D0-9CE4-08003E301F73} by the Setup API, one element for each, in its order. The port name
 * is the value "PortName" (REG_SZ, up to its first zero, buffer of 512 bytes) of the device's hardware key,
 * empty when the key or the value can't be read or has another type. The other texts are the properties
 * SPDRP_FRIENDLYNAME, SPDRP_DEVICEDESC (512 bytes each) and the first string of SPDRP_HARDWAREID (2048
 * bytes), empty when they can't be read.
 *
 * Linux: the lines that udev knows and that have hardware, and the devices that an administrator gave a COM
 * name; see platform/SerialNames.h for the names. Friendly name, description and hardware id are composed in
 * the form that Windows uses. In the order of the numbers.
 */
std::vector<SSerialDevice> ListSerialDevices();
