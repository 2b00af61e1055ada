// Refuses, like a device that is switched off, local or remote port 1 and a serial port named COM1.
#include "tests/device/RecordingComManager.h"

#include "platform/ComManager.h"
#include "platform/PortListener.h"
#include "platform/PortReports.h"
#include "platform/PortsTogether.h"
#include "platform/VainWaits.h"
#include "userdata/UserData.h"

#include <system_error>

namespace {

bool g_fails = false;
std::string g_calls;

bool IsRefused(const SNetPortConfig& config) {
    return config.port == 1 || config.dstPort == 1;
}

/** Notes a call, and how the interfaces stood at that moment: the names in their order. */
void Record(const std::string& call) {
    std::string names;
    const nlohmann::json document = CUserData::GetInstance().GetInterfaceConfig();
    for (const auto& element : document["configList"]) {
        const bool isNet = element["controlType"] == "netPortInfo";
        const nlohmann::json& name =
            isNet ? element["netPortInfo"]["netPortName"] : element["comInfo"]["comName"];
        names += (names.empty() ? "" : ",") + name.get<std::string>();
    }
    g_calls += call + " {" + names + "}\n";
}

/** Notes a command, which must not wait for dead devices without a bound for the whole click. */
int RecordSend(const std::string& call, const std::string& content, bool isText, int asciiEncode, int error) {
    g_calls += call + " " + content + (isText ? " text " : " hex ") + std::to_string(asciiEncode) +
               (CVainWaits::OfThread() != nullptr ? "\n" : " without a bound\n");
    return error;
}

}  // namespace

std::string TakePortCalls() {
    return std::exchange(g_calls, {});
}

CComManager::CComManager() = default;

void LetPortLibraryFail(bool fails) {
    g_fails = fails;
}

CComManager* CComManager::getInstance() {
    if (g_fails) {
        throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
    }
    static CComManager manager;
    return &manager;
}

bool CComManager::InitNetSocket(SNetPortConfig& config) {
    Record("InitNetSocket " + std::to_string(config.dstPort) +
           (CPortsTogether::OfThread() != nullptr ? " together" : ""));
    return !IsRefused(config);
}

bool CComManager::CheckSerial(SSerialPortConfig& config) {
    Record("CheckSerial " + config.comPort);
    return config.comPort != "COM1";
}

int CComManager::SendNetData(SNetPortConfig& config, std::string& content, bool isText, int asciiEncode) {
    return RecordSend("SendNetData " + std::to_string(config.dstPort), content, isText, asciiEncode,
                      IsRefused(config) ? 10061 : 0);
}

int CComManager::SendSerialData(SSerialPortConfig& config, std::string& content, bool isText,
                                int asciiEncode) {
    return RecordSend("SendSerialData " + config.comPort, content, isText, asciiEncode, 0);
}

void CComManager::DeleteUserTcp(SNetPortConfig& config) {
    Record("DeleteUserTcp " + std::to_string(config.dstPort));
}

void CComManager::DeleteAllConnect() {
    Record("DeleteAllConnect");
}

SPortReport ReportOfPort(const SNetPortConfig& /*record*/) {
    return {};
}

SPortReport ReportOfPort(const SSerialPortConfig& /*record*/) {
    return {};
}

void ListenToPorts(CPortListener* /*listener*/) {}

bool IsDeviceOf(const SNetPortConfig& /*record*/, std::string_view /*address*/) {
    return true;
}
