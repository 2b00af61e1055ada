#include "device/PortContract.h"

#include "platform/ComManager.h"
#include "platform/PortsTogether.h"
#include "platform/RavLog.h"
#include "userdata/UserData.h"

#include <exception>
#include <string>

namespace {

/** Maximum of ports that are opened at the same time: each takes a descriptor. */
constexpr int kMostAtOnce = 1024;

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

void OpenNetPorts(const NetPortMap& ports) {
    try {
        // NOLINTNEXTLINE(clang-analyzer-core.StackAddressEscape): the end of "together" puts back what was
        for (auto next = ports.begin(); next != ports.end();) {
            const CPortsTogether together;
            for (int i = 0; i < kMostAtOnce && next != ports.end(); ++i, ++next) {
                SNetPortConfig config = next->second;
                static_cast<void>(
                    CComManager::getInstance()->InitNetSocket(config));  // its first command tries again
            }
        }
    } catch (const std::exception& error) {
        RavLog::WriteSystemLog(RavLog::Error, "ports",
                               std::string("no port is opened before its first command: ") + error.what());
    }
}

void ReopenNetPorts() {
    OpenNetPorts(CUserData::GetInstance().GetNetPortMap());
}
