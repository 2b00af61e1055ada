#include "device/InterfaceRecords.h"

#include "platform/ComManager.h"
#include "platform/GeneratorId.h"
#include "userdata/UserData.h"

namespace {

/** Longest name of an interface in bytes; far more than a page can show. */
constexpr std::size_t kLongestName = 4096;

}  // namespace

bool ReadNetPort(const nlohmann::json& info, SNetPortConfig& config, SRequestTrace& trace) {
    if (!ParseNetPortRequest(info, config)) {
        return false;
    }
    if (config.netPortName.size() > kLongestName) {
        trace.detail = "the interface's name is too long";
        return false;
    }
    return true;
}

bool ReadSerialPort(const nlohmann::json& info, SSerialPortConfig& config, SRequestTrace& trace) {
    if (!ParseSerialPortRequest(info, config)) {
        return false;
    }
    if (config.comName.size() > kLongestName) {
        trace.detail = "the interface's name is too long";
        return false;
    }
    return true;
}

void CloseIfUnused(SNetPortConfig& old) {
    if (old.netMode != NetModeUdp && !CUserData::GetInstance().IsNetConfigDuplicate(old, false, 0)) {
        CComManager::getInstance()->DeleteUserTcp(old);
    }
}

int TakeNodeId() {
    const CUserData& userData = CUserData::GetInstance();
    SNetPortConfig netPort;
    SSerialPortConfig serialPort;
    int nodeId = 0;
    do {
        nodeId = CGeneratorId::getInstance()->GetId();
    } while (userData.GetNetPortConfig(nodeId, netPort) || userData.GetSerialPortConfig(nodeId, serialPort));
    return nodeId;
}
