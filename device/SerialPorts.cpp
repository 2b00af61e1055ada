#include "device/SerialPorts.h"

#include "platform/NarrowText.h"

#include <algorithm>
#include <array>
#include <cwctype>

namespace {

bool Holds(const std::wstring& text, const wchar_t* part) {
    return text.find(part) != std::wstring::npos;
}

std::wstring Lower(std::wstring text) {
    std::transform(text.begin(), text.end(), text.begin(), [](wchar_t c) {
        return static_cast<wchar_t>(std::towlower(static_cast<std::wint_t>(c)));
    });
    return text;
}

}  // namespace

std::vector<SSerialPortInfo> EnumerateSerialPorts() {
    return DescribeSerialPorts(ListSerialDevices());
}

std::vector<SSerialPortInfo> DescribeSerialPorts(const std::vector<SSerialDevice>& devices) {
    constexpr std::size_t numberAt = 3;  // wherever "COM" stands
    std::vector<SSerialPortInfo> ports;
    for (const SSerialDevice& device : devices) {
        if (device.portName.size() < numberAt || !Holds(device.portName, L"COM")) {
            continue;
        }
        SSerialPortInfo port;
        port.portName = NarrowText(device.portName);
        port.comNumber = std::stoi(device.portName.substr(numberAt));
        port.description = NarrowText(device.description);
        port.portType = ClassifySerialPort(device.hardwareId, device.description);
        if (Holds(device.friendlyName.empty() ? device.description : device.friendlyName, L"USB")) {
            port.portType = "USB Serial";
        }
        ports.push_back(std::move(port));
    }
    return ports;
}

std::string ClassifySerialPort(const std::wstring& hardwareId, const std::wstring& description) {
    const std::wstring id = Lower(hardwareId);
    const std::wstring text = Lower(description);
    struct SRow {
        const std::wstring& text;
        const wchar_t* part;
        const char* type;
    };
    // The first matching row decides. The digits alone are enough, at any position.
    const std::array rows = {
        SRow{text, L"485", "RS485"},         SRow{id, L"485", "RS485"},
        SRow{text, L"rs485", "RS485"},       SRow{id, L"rs485", "RS485"},
        SRow{text, L"422", "RS422"},         SRow{id, L"422", "RS422"},
        SRow{text, L"rs422", "RS422"},       SRow{id, L"rs422", "RS422"},
        SRow{id, L"ftdi", "USB-to-RS-232"},  SRow{id, L"pl2303", "USB-to-RS-232"},
        SRow{id, L"cp210", "USB-to-RS-232"}, SRow{id, L"ch340", "USB-to-RS-232"},
        SRow{id, L"ch341", "USB-to-RS-232"}, SRow{id, L"prolific", "USB-to-RS-232"},
    };
    const auto* row =
        std::find_if(rows.begin(), rows.end(), [](const SRow& one) { return Holds(one.text, one.part); });
    return row == rows.end() ? "RS232" : row->type;
}
