#pragma once

#include "platform/SerialDevices.h"

#include <cstdint>
#include <string>
#include <vector>

/** One serial port of the machine. Texts are narrow, see platform/NarrowText.h. */
struct SSerialPortInfo {
    std::int32_t comNumber = 0;  ///< the number after the letters of portName
    std::string portName;        ///< "COM3", as it goes into the comPort of an interface
    std::string description;
    std::string portType;  ///< see ClassifySerialPort; "USB Serial" when the friendly name contains "USB"
    // These members always have these values, and nobody reads them.
    std::uint8_t flag = 0;
    std::uint32_t firstRate = 9600;
    std::uint32_t secondRate = 9600;
    std::uint16_t dataBits = 8;
    std::uint8_t secondFlag = 0;
};

/**
 * The serial ports that are present now, in the system's order; each call looks again. Any thread.
 * @throw std::exception as DescribeSerialPorts does
 */
std::vector<SSerialPortInfo> EnumerateSerialPorts();

/**
 * The records of these devices, in their order. A device gets no record when its name has fewer than three
 * characters, or does not contain "COM" (in capitals).
 * @throw std::invalid_argument  a name has no number at its fourth character
 * @throw std::out_of_range      that number is too large for an int
 */
std::vector<SSerialPortInfo> DescribeSerialPorts(const std::vector<SSerialDevice>& devices);

/**
 * The type of a port: "RS485" or "RS422" when the description or the hardware id says so, "USB-to-RS-232"
 * when the hardware id names a known converter chip, otherwise "RS232". Case is ignored. Any thread.
 */
std::string ClassifySerialPort(const std::wstring& hardwareId, const std::wstring& description);
