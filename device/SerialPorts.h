#pragma once

#include "platform/SerialDevices.h"

#include <cstdint>
#include <string>
#include <vector>

/** One serial port of the machine. Texts are narrow, see platform/NarrowText.h. */
struct SSerialPortInfo {
    std::int32_t comNumber = 0;  ///< the number behind the letters of portName
    std::string portName;        ///< "COM3", as it goes into the comPort of an interface
    std::string description;
    std::string portType;  ///< see ClassifySerialPort; "USB Serial" when the friendly name holds "USB"
    // Set to nothing else, and read by nobody.
    std::uint8_t flag = 0;
    std::uint32_t firstRate = 9600;
    std::uint32_t secondRate = 9600;
    std::uint16_t dataBits = 8;
    std::uint8_t secondFlag = 0;
};

/**
 * The serial ports that are present now, in the system's order; looks anew each time. Any thread.
 * @throw std::exception as DescribeSerialPorts does
 */
std::vector<SSerialPortInfo> EnumerateSerialPorts();

/**
 * The records of these devices, in their order. A device whose name has fewer than three characters, or holds
 * no "COM" (in capitals), gets none.
 * @throw std::invalid_argument  no number stands at the fourth character of a name
 * @throw std::out_of_range      that number is too large for an int
 */
std::vector<SSerialPortInfo> DescribeSerialPorts(const std::vector<SSerialDevice>& devices);

/**
 * The type of a port: "RS485" or "RS422" when the description or the hardware id says so, "USB-to-RS-232"
 * when the hardware id names a known converter chip, else "RS232". Upper and lower case are the same. Any
 * thread.
 */
std::string ClassifySerialPort(const std::wstring& hardwareId, const std::wstring& description);
