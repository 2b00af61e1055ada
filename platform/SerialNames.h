#pragma once

#include <string>

/**
 * The number in the name of a serial port: "COM" and a number from 1 to 9999, without leading zeros. 0 for
 * any other text, which names no port. Any thread.
 */
int SerialNumber(const std::string& comPort);

/**
 * Sets the file of the table of serial names. Called once, before the first use of a serial line or of
 * ListSerialDevices. Any thread. On Windows the system keeps the names, and this does nothing.
 *
 * On Linux the name of a port means the device or link /dev/COM7 if that exists, otherwise the entry of the
 * table, a JSON object:
 *
 *     {"COM5": {"identity": "usb 0403:6001 serial A1234 interface 00", "device": "/dev/ttyUSB0"},
 *      "COM7": "/dev/ttyS6",
 *      "COM8": {"device": "/dev/serial/by-path/pci-0000:00:14.0-usb-0:1:1.0-port0"}}
 *
 * An entry with an identity is created when a port is seen for the first time, and means that port wherever
 * it is plugged in; its device is the one under which the port was last seen. An entry without an identity
 * belongs to an administrator, and means the device that it names. A file that changed is read again at the
 * next use; a missing file is an empty table.
 */
void SetSerialNameTable(const std::string& file);

/**
 * Path of the device that a port name means at this moment, ready to be opened; empty when there is none. Any
 * text may be given: a text that is not a port name means no device. Any thread.
 *
 * Linux: "COM5" gives "/dev/ttyUSB0", for example; each call checks again whether that is the port of this
 * name. Windows: "COM5" gives "\\.\COM5", whether or not it exists.
 */
std::string FindSerialDevice(const std::string& comPort);
