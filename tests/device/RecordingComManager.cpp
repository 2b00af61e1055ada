#include "tests/device/RecordingComManager.h"

#include "platform/ComManager.h"
#include "platform/PortsTogether.h"
#include "platform/VainWaits.h"
#include "userdata/UserData.h"

#include <atomic>
#include <system_error>

namespace {

std::atomic<bool> g_fails = false;

std::vector<std::string>& RecordedCalls() {
    static std::vector<std::string> calls;
    return calls;
}

bool IsRefused(const SNetPortConfig& config) {
    return config.port == 1 || config.dstPort == 1;
}

std::string NameOf(const SNetPortConfig& config) {
    return std::to_string(config.dstPort);
}

/** Notes a call, and how the interfaces stood at that moment: the names in their order. */
void Record(const std::string& call) {
    std::string names;
    const nlohmann::json document = CUserData::GetInstance().GetInterfaceConfig();
    for (const auto& element : document["configList"]) {
        const bool isNet = element["controlType"] == "netPortInfo";
        names +=
            (names.empty() ? "" : ",") + (isNet ? element["netPortInfo"]["netPortName"].get<std::string>()
                                                : element["comInfo"]["comName"].get<std::string>());
    }
    RecordedCalls().push_back(call + " {" + names + "}");
}

/** A command must not wait for dead devices without a bound for the whole click. */
std::string Bounded() {
    return CVainWaits::OfThread() != nullptr ? "" : " without a bound";
}

}  // namespace

std::vector<std::string> TakePortCalls() {
    return std::exchange(RecordedCalls(), {});
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
    Record("InitNetSocket " + NameOf(config) + (CPortsTogether::OfThread() != nullptr ? " together" : ""));
    return !IsRefused(config);
}

bool CComManager::CheckSerial(SSerialPortConfig& config) {
    Record("CheckSerial " + config.comPort);
    return config.comPort != "COM1";
}

int CComManager::SendNetData(SNetPortConfig& config, std::string& content, bool isText, int asciiEncode) {
    RecordedCalls().push_back("SendNetData " + NameOf(config) + " " + content +
                              (isText ? " text " : " hex ") + std::to_string(asciiEncode) + Bounded());
    return IsRefused(config) ? kRefusedError : 0;
}

int CComManager::SendSerialData(SSerialPortConfig& config, std::string& content, bool isText,
                                int asciiEncode) {
    RecordedCalls().push_back("SendSerialData " + config.comPort + " " + content +
                              (isText ? " text " : " hex ") + std::to_string(asciiEncode) + Bounded());
    return config.comPort == "COM1" ? 2 : 0;
}

void CComManager::DeleteUserTcp(SNetPortConfig& config) {
    Record("DeleteUserTcp " + NameOf(config));
}

void CComManager::DeleteAllConnect() {
    Record("DeleteAllConnect");
}
