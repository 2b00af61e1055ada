#include "platform/ComManager.h"

#include "libraries/comm/PortRegistry.h"
#include "platform/PortReports.h"
#include "platform/ProcessEnd.h"

namespace {

/** The one registry: never destroyed, since threads that outlive the end of main may still call. */
comm::CPortRegistry& Registry() {
    static comm::CPortRegistry* const registry = [] {
        auto* made = new comm::CPortRegistry(comm::SCommSettings());
        CallAtProcessEnd([] { Registry().Stop(); });
        return made;
    }();
    return *registry;
}

}  // namespace

CComManager* CComManager::getInstance() {
    static auto* manager = new CComManager;
    return manager;
}

CComManager::CComManager() {
    Registry();
}

bool CComManager::InitNetSocket(SNetPortConfig& config) {
    return Registry().OpenNet(config) == 0;
}

bool CComManager::CheckSerial(SSerialPortConfig& config) {
    return Registry().CheckSerial(config) == 0;
}

int CComManager::SendNetData(SNetPortConfig& config, std::string& content, bool isText, int asciiEncode) {
    return Registry().SendNet(config, content, isText, asciiEncode);
}

int CComManager::SendSerialData(SSerialPortConfig& config, std::string& content, bool isText,
                                int asciiEncode) {
    return Registry().SendSerial(config, content, isText, asciiEncode);
}

void CComManager::DeleteUserTcp(SNetPortConfig& config) {
    Registry().DeleteTcp(config);
}

void CComManager::DeleteAllConnect() {
    Registry().DeleteAll();
}

SPortReport ReportOfPort(const SNetPortConfig& record) {
    return Registry().Report(record);
}

SPortReport ReportOfPort(const SSerialPortConfig& record) {
    return Registry().Report(record);
}
