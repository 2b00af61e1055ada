#include "userdata/InterfaceModel.h"

#include "config/JsonNumber.h"
#include "config/StandardOutput.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace {

using nlohmann::json;

template <typename Value>
struct SNamedValue {
    std::string_view name;
    Value value;
};

constexpr auto kNetModes = std::to_array<SNamedValue<EnNetMode>>(
    {{"TCP_Client", NetModeTcpClient}, {"TCP_Server", NetModeTcpServer}, {"UDP", NetModeUdp}});

constexpr auto kParities = std::to_array<SNamedValue<EnParity>>({{"None", ParityNone},
                                                                 {"Odd", ParityOdd},
                                                                 {"Even", ParityEven},
                                                                 {"Mark", ParityMark},
                                                                 {"Space", ParitySpace}});

constexpr auto kStopBits = std::to_array<SNamedValue<EnStopBits>>(
    {{"1", StopBitsOne}, {"1.5", StopBitsOneAndHalf}, {"2", StopBitsTwo}});

/** The value of a name; the first value of the table for an unknown name. */
template <typename Table>
auto ValueOf(const Table& table, std::string_view name) {
    for (const auto& entry : table) {
        if (entry.name == name) {
            return entry.value;
        }
    }
    return table.front().value;
}

/** The name of a value; empty when it has none. */
template <typename Table, typename Value>
std::string_view NameOf(const Table& table, Value value) {
    for (const auto& entry : table) {
        if (entry.value == value) {
            return entry.name;
        }
    }
    return {};
}

EnStopBits ReadStopBits(const json& value) {
    const bool isOneAndHalf = value.is_number_float() && value.get<double>() == 1.5;
    return ValueOf(kStopBits, isOneAndHalf ? "1.5" : std::to_string(JsonToInt32(value)));
}

json WriteStopBits(EnStopBits stopBits) {
    switch (stopBits) {
        case StopBitsOne:
            return 1;
        case StopBitsTwo:
            return 2;
        default:
            return 1.5;
    }
}

std::string UpperCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char byte) {
        return byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - 'a' + 'A') : byte;
    });
    return text;
}

}  // namespace

bool ParseNetPortRequest(nlohmann::json object, SNetPortConfig& record) try {
    record.netMode = ValueOf(kNetModes, object["netMode"].get<std::string>());
    record.netPortName = object["netPortName"].get<std::string>();
    record.ipAddress = object["ipAddress"].get<std::string>();
    record.port = JsonToInt32(object["port"]);
    record.dstIpAddress = object["dstIpAddress"].get<std::string>();
    record.dstPort = JsonToInt32(object["dstPort"]);
    return true;
} catch (const std::exception& error) {
    PrintLine(std::string("网口配置解析异常: ") + error.what());
    return false;
}

bool ParseSerialPortRequest(nlohmann::json object, SSerialPortConfig& record) try {
    const std::int32_t wordLength = JsonToInt32(object["wordLength"]);
    std::string comPort = UpperCase(object["comPort"].get<std::string>());
    record.comName = object["comName"].get<std::string>();
    record.comPort = std::move(comPort);
    record.wordLength = static_cast<std::uint8_t>(wordLength);
    record.parity = ValueOf(kParities, object["parity"].get<std::string>());
    record.stopBits = ReadStopBits(object["stopBits"]);
    record.baudRate = static_cast<std::uint32_t>(JsonToInt32(object["baudRate"]));
    return true;
} catch (const std::exception& error) {
    PrintLine(std::string("串口配置解析异常: ") + error.what());
    return false;
}

nlohmann::json MakeNetPortElement(std::int32_t nodeId, const SNetPortConfig& record) {
    json inner = {{"comName", record.netPortName},     {"dstIpAddress", record.dstIpAddress},
                  {"dstPort", record.dstPort},         {"ipAddress", record.ipAddress},
                  {"netPortName", record.netPortName}, {"port", record.port}};
    if (const std::string_view mode = NameOf(kNetModes, record.netMode); !mode.empty()) {
        inner["netMode"] = mode;
    }
    return {{"nodeId", nodeId}, {"controlType", "netPortInfo"}, {"netPortInfo", std::move(inner)}};
}

nlohmann::json MakeSerialPortElement(std::int32_t nodeId, const SSerialPortConfig& record) {
    const std::string_view parity = NameOf(kParities, record.parity);
    json inner = {{"baudRate", record.baudRate},
                  {"comName", record.comName},
                  {"comPort", record.comPort},
                  {"wordLength", record.wordLength},
                  {"parity", parity.empty() ? "none" : parity},
                  {"stopBits", WriteStopBits(record.stopBits)}};
    return {{"nodeId", nodeId}, {"controlType", "comInfo"}, {"comInfo", std::move(inner)}};
}
