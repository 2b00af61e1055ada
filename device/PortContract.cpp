#include "device/PortContract.h"

#include "platform/ComManager.h"
#include "platform/RavLog.h"
#include "userdata/UserData.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <string>
#include <thread>
#include <vector>

namespace {

/** Maximum of ports that are opened at the same time. */
constexpr std::size_t kOpenersLimit = 1024;

}  // namespace

SNetFailureCodes NetFailureCodes(EnNetMode mode) {
    switch (mode) {
        case NetModeTcpClient:
            return {CodeTcpClientInitFailed, CodeTcpSendFailed};
        case NetModeTcpServer:
            return {CodeTcpServerInitFailed, CodeTcpSendFailed};
        case NetModeUdp:
            return {CodeUdpInitFailed, CodeUdpSendFailed};
    }
    return {CodeBadRequest, CodeTcpSendFailed};
}

EnResponseCode CheckNetPortConflict(const SNetPortConfig& config, bool exists, int nodeId) {
    CUserData& userData = CUserData::GetInstance();
    if (userData.IsInterfaceNameUsed(config.netPortName, exists, nodeId)) {
        return CodeNameTaken;
    }
    return userData.IsNetConfigDuplicate(config, exists, nodeId) ? CodeDuplicateConfig : CodeSuccess;
}

EnResponseCode CheckSerialPortConflict(const SSerialPortConfig& config, bool exists, int nodeId) {
    CUserData& userData = CUserData::GetInstance();
    if (userData.IsInterfaceNameUsed(config.comName, exists, nodeId)) {
        return CodeNameTaken;
    }
    return userData.IsSerialConfigDuplicate(config, exists, nodeId) ? CodeDuplicateConfig : CodeSuccess;
}

int RespondNetPortFailure(HttpResponse* response, EnNetMode mode, bool atInit, SResponseData& content,
                          SRequestTrace& trace) {
    const SNetFailureCodes codes = NetFailureCodes(mode);
    if (codes.atInit == CodeBadRequest) {
        trace.detail = "unknown network type: " + std::to_string(mode);
        return RouterMgr::Respond(response, CodeBadRequest, content, trace);
    }
    return RouterMgr::Respond(response, atInit ? codes.atInit : codes.atSend, content, trace);
}

void ReopenNetPorts() {
    const auto ports = CUserData::GetInstance().GetNetPortMap();
    std::vector<SNetPortConfig> configs;
    configs.reserve(ports.size());
    for (const auto& row : ports) {
        configs.push_back(row.second);
    }
    if (configs.empty()) {
        return;
    }
    try {
        CComManager::getInstance();  // built here: an exception in an opener would end the process
    } catch (const std::exception& error) {
        RavLog::WriteSystemLog(RavLog::Error, "ports",
                               std::string("no port is opened before its first command: ") + error.what());
        return;
    }
    std::atomic<std::size_t> next = 0;
    const auto openPorts = [&configs, &next] {
        for (std::size_t i = next++; i < configs.size(); i = next++) {
            CComManager::getInstance()->InitNetSocket(configs[i]);
        }
    };
    std::vector<std::jthread> openers;
    try {
        for (std::size_t i = 1; i < std::min(configs.size(), kOpenersLimit); ++i) {
            openers.emplace_back(openPorts);
        }
    } catch (const std::exception& error) {
        RavLog::WriteSystemLog(RavLog::Warn, "ports",
                               std::string("not all ports are opened side by side: ") + error.what());
    }
    openPorts();
}
