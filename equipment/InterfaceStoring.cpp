#include "equipment/InterfaceStoring.h"

#include "config/JsonNumber.h"
#include "device/InterfaceRecords.h"
#include "device/PortContract.h"
#include "equipment/Refusal.h"
#include "userdata/UserData.h"

#include <optional>

namespace {

using nlohmann::json;

constexpr std::int32_t kHighestPort = 65535;

/** What is stored under a node id now. */
struct SFormer {
    std::optional<SNetPortConfig> net;
    std::optional<SSerialPortConfig> serial;

    bool Exists() const { return net || serial; }
};

SFormer FormerOf(std::int32_t nodeId) {
    const CUserData& data = CUserData::GetInstance();
    SFormer former;
    SNetPortConfig net;
    SSerialPortConfig serial;
    if (data.GetNetPortConfig(nodeId, net)) {
        former.net = std::move(net);
    } else if (data.GetSerialPortConfig(nodeId, serial)) {
        former.serial = std::move(serial);
    }
    return former;
}

void Check(EnResponseCode conflict) {
    if (conflict != CodeSuccess) {
        throw CRefusal({}, {}, conflict);
    }
}

// What no device could ever make right: the other routes find it out when they open the port.

void CheckSettings(const SNetPortConfig& config) {
    const bool isListener = config.netMode == NetModeTcpServer;
    if (config.port < (isListener ? 1 : 0) || config.port > kHighestPort ||
        config.dstPort < (isListener ? 0 : 1) || config.dstPort > kHighestPort) {
        throw CRefusal("A port is a number from 1 to 65535.", "端口应为 1 到 65535 之间的数字。");
    }
    if (!isListener && config.dstIpAddress.empty()) {
        throw CRefusal("The address of the device is missing.", "缺少设备地址。");
    }
}

void CheckSettings(const SSerialPortConfig& config) {
    if (config.comPort.empty()) {
        throw CRefusal("The name of the serial port is missing.", "缺少串口名称。");
    }
    if (config.baudRate == 0 || config.wordLength < 5 || config.wordLength > 8) {
        throw CRefusal("A serial line has a baud rate above 0, and 5 to 8 data bits.",
                       "串口的波特率应大于 0，数据位应为 5 到 8。");
    }
}

template <typename Record>
Record ReadRecord(const json& info, bool (*read)(const json&, Record&, SRequestTrace&)) {
    Record config;
    SRequestTrace trace;
    if (!read(info, config, trace)) {
        throw CRefusal("The settings of the interface are incomplete, or its name is too long.",
                       "接口设置不完整，或名称过长。");
    }
    CheckSettings(config);
    return config;
}

void Replace(std::int32_t nodeId, SFormer& former, const auto& store) {
    if (former.Exists()) {
        CUserData::GetInstance().RemoveInterface(nodeId, CUserData::RemovalReplaced);
    }
    store();
    if (former.net) {
        CloseIfUnused(*former.net);
    }
}

json Store(json& body) {
    json& data = body.at("data");
    const bool isEdit = data.contains("nodeId");
    const std::int32_t edited = isEdit ? JsonToInt32(data["nodeId"]) : 0;
    SFormer former = isEdit ? FormerOf(edited) : SFormer();
    if (isEdit && !former.Exists()) {
        throw CRefusal("This interface does not exist any more. Add it anew.",
                       "该接口已不存在，请重新添加。");
    }
    CUserData& userData = CUserData::GetInstance();
    if (data.at("kind") == "net") {
        const auto config = ReadRecord<SNetPortConfig>(data.at("info"), ReadNetPort);
        Check(CheckNetPortConflict(config, isEdit, edited));
        const std::int32_t nodeId = isEdit ? edited : TakeNodeId();
        Replace(nodeId, former, [&] { userData.SetNetPortConfig(nodeId, config); });
        OpenNetPorts({{nodeId, config}});  // what comes of it is the interface's state
        return {{"nodeId", nodeId}};
    }
    if (data.at("kind") == "serial") {
        const auto config = ReadRecord<SSerialPortConfig>(data.at("info"), ReadSerialPort);
        Check(CheckSerialPortConflict(config, isEdit, edited));
        const std::int32_t nodeId = isEdit ? edited : TakeNodeId();
        Replace(nodeId, former, [&] { userData.SetSerialPortConfig(nodeId, config); });
        return {{"nodeId", nodeId}};
    }
    throw CRefusal("The kind of an interface is \"net\" or \"serial\".",
                   "接口类型应为 \"net\" 或 \"serial\"。");
}

}  // namespace

int StoreInterface(HttpRequest* request, HttpResponse* response) {
    return WriteEquipment(request, response, Store);
}
