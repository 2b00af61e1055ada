#pragma once

#include <string>

/**
 * Tells the port communication library where the table of serial names lies; called once, before the first
 * use of a serial line. Any thread.
 *
 * On Linux a port name, "COM7" say, means the device /dev/COM7 where that exists, else the entry of the
 * table: a JSON object that maps port names to the path of a device, or to an object with that path as
 * "device":
 *
 *     {"COM5": "/dev/serial/by-id/usb-FTDI_1234-if00-port0", "COM7": {"device": "/dev/ttyUSB0"}}
 *
 * A file that changed is read again at the next use of a port; one that is missing is an empty table. On
 * Windows the system knows the names, and the table is not read.
 */
void SetSerialNameTable(const std::string& file);
