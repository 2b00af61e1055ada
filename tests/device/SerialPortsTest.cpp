#include "device/SerialPorts.h"

#include <fstream>
#include <stdexcept>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using nlohmann::json;

json Cases(const char* key) {
    std::ifstream file(SERIAL_PORT_CASES);
    return json::parse(file).at(key);
}

std::wstring Wide(const json& ascii) {
    const auto text = ascii.get<std::string>();
    return {text.begin(), text.end()};
}

TEST(SerialPorts, AreListedAsTheSystemNamesThem) {
    for (const json& row : Cases("lists")) {
        SCOPED_TRACE(row.at("name"));
        std::vector<SSerialDevice> devices;
        for (const json& device : row.at("devices")) {
            devices.push_back({Wide(device[0]), Wide(device[1]), Wide(device[2]), Wide(device[3])});
        }
        if (row.value("error", "") == "invalid_argument") {
            EXPECT_THROW(DescribeSerialPorts(devices), std::invalid_argument);
            continue;
        }
        if (row.contains("error")) {
            EXPECT_THROW(DescribeSerialPorts(devices), std::out_of_range);
            continue;
        }
        json ports = json::array();
        for (const SSerialPortInfo& port : DescribeSerialPorts(devices)) {
            ports.push_back({port.portName, port.comNumber, port.portType});
        }
        EXPECT_EQ(ports, row.at("ports"));
    }
}

}  // namespace
