// The routes that add, change and delete interfaces. A new configuration is tried on the port first and
// stored only after the port has accepted it, so that a refused request leaves everything as it was.

#include "config/JsonNumber.h"
#include "device/InterfaceRecords.h"
#include "device/PortContract.h"
#include "platform/ComManager.h"
#include "platform/GeneratorId.h"
#include "server/ClientsManager.h"
#include "server/LogText.h"
#include "server/RouterMgr.h"
#include "userdata/UserData.h"

namespace {

int AddNetPort(nlohmann::json& body, HttpResponse* response, SRequestTrace& trace) {
    const int nodeId = TakeNodeId();
    SNetPortConfig config;
    if (!ReadNetPort(body["data"]["info"], config, trace)) {
        return RouterMgr::Respond(response, CodeBadRequest, trace);
    }
    const EnResponseCode conflict = CheckNetPortConflict(config, false, nodeId);
    if (conflict != CodeSuccess) {
        return RouterMgr::Respond(response, conflict, trace);
    }
    if (!CComManager::getInstance()->InitNetSocket(config)) {
        SResponseData empty;
        return RespondNetPortFailure(response, config.netMode, true, empty, trace);
    }
    CUserData::GetInstance().SetNetPortConfig(nodeId, config);
    return RouterMgr::Respond(response, CodeSuccess, trace);
}

int AddSerialPort(nlohmann::json& body, HttpResponse* response, SRequestTrace& trace) {
    const int nodeId = TakeNodeId();
    SSerialPortConfig config;
    if (!ReadSerialPort(body["data"]["info"], config, trace)) {
        return RouterMgr::Respond(response, CodeBadRequest, trace);
    }
    const EnResponseCode conflict = CheckSerialPortConflict(config, false, nodeId);
    if (conflict != CodeSuccess) {
        return RouterMgr::Respond(response, conflict, trace);
    }
    if (!CComManager::getInstance()->CheckSerial(config)) {
        return RouterMgr::Respond(response, CodeSerialCheckFailed, trace);
    }
    CUserData::GetInstance().SetSerialPortConfig(nodeId, config);
    return RouterMgr::Respond(response, CodeSuccess, trace);
}

int EditNetPort(nlohmann::json& body, HttpResponse* response, SRequestTrace& trace) {
    nlohmann::json& data = body["data"];
    const int nodeId = JsonToInt32(data["nodeId"]);
    SNetPortConfig config;
    if (!ReadNetPort(data["info"], config, trace)) {
        return RouterMgr::Respond(response, CodeBadRequest, trace);
    }
    CUserData& userData = CUserData::GetInstance();
    SNetPortConfig old;
    const bool exists = userData.GetNetPortConfig(nodeId, old);
    const EnResponseCode conflict = CheckNetPortConflict(config, exists, nodeId);
    if (conflict != CodeSuccess) {
        return RouterMgr::Respond(response, conflict, trace);
    }
    if (!CComManager::getInstance()->InitNetSocket(config)) {
        SResponseData empty;
        return RespondNetPortFailure(response, config.netMode, true, empty, trace);
    }
    userData.RemoveInterface(nodeId, CUserData::RemovalReplaced);
    userData.SetNetPortConfig(nodeId, config);
    if (exists) {
        CloseIfUnused(old);
    }
    return RouterMgr::Respond(response, CodeSuccess, trace);
}

int EditSerialPort(nlohmann::json& body, HttpResponse* response, SRequestTrace& trace) {
    nlohmann::json& data = body["data"];
    const int nodeId = JsonToInt32(data["nodeId"]);
    SSerialPortConfig config;
    if (!ReadSerialPort(data["info"], config, trace)) {
        return RouterMgr::Respond(response, CodeBadRequest, trace);
    }
    CUserData& userData = CUserData::GetInstance();
    SSerialPortConfig old;
    const bool exists = userData.GetSerialPortConfig(nodeId, old);
    const EnResponseCode conflict = CheckSerialPortConflict(config, exists, nodeId);
    if (conflict != CodeSuccess) {
        return RouterMgr::Respond(response, conflict, trace);
    }
    if (!CComManager::getInstance()->CheckSerial(config)) {
        return RouterMgr::Respond(response, CodeSerialCheckFailed, trace);
    }
    SNetPortConfig formerNetPort;
    const bool wasNetPort = userData.GetNetPortConfig(nodeId, formerNetPort);
    userData.RemoveInterface(nodeId, CUserData::RemovalReplaced);
    if (wasNetPort) {
        CloseIfUnused(formerNetPort);
    }
    userData.SetSerialPortConfig(nodeId, config);
    return RouterMgr::Respond(response, CodeSuccess, trace);
}

int DeletePort(nlohmann::json& body, HttpResponse* response, SRequestTrace& trace) {
    const int nodeId = JsonToInt32(body["nodeId"]);
    CUserData& userData = CUserData::GetInstance();
    SNetPortConfig config;
    const bool isNetPort = userData.GetNetPortConfig(nodeId, config);
    if (isNetPort && (config.netMode == NetModeTcpClient || config.netMode == NetModeTcpServer)) {
        CComManager::getInstance()->DeleteUserTcp(config);
    }
    userData.RemoveInterface(nodeId, CUserData::RemovalDeleted);
    CGeneratorId::getInstance()->ReleaseId(nodeId);
    return RouterMgr::Respond(response, CodeSuccess, trace);
}

}  // namespace

int RouterMgr::AddNetPortInfo(HttpRequest* request, HttpResponse* response) {
    return HandleWrite(request, response, {.requiredKey = "data", .errorLine = "Edit NetPort error: "},
                       [=](auto& body, auto& trace) { return AddNetPort(body, response, trace); });
}

int RouterMgr::AddComInfo(HttpRequest* request, HttpResponse* response) {
    return HandleWrite(request, response, {.requiredKey = "data", .errorLine = "Edit SerialCom error: "},
                       [=](auto& body, auto& trace) { return AddSerialPort(body, response, trace); });
}

int RouterMgr::EditNetPortInfo(HttpRequest* request, HttpResponse* response) {
    return HandleWrite(request, response, {.requiredKey = "data"},
                       [=](auto& body, auto& trace) { return EditNetPort(body, response, trace); });
}

int RouterMgr::EditComInfo(HttpRequest* request, HttpResponse* response) {
    return HandleWrite(request, response, {.requiredKey = "data", .errorLine = "Edit SerialCom error: "},
                       [=](auto& body, auto& trace) { return EditSerialPort(body, response, trace); });
}

int RouterMgr::DeleteInterfaceConfig(HttpRequest* request, HttpResponse* response) {
    return HandleWrite(request, response, {.requiredKey = "nodeId"},
                       [=](auto& body, auto& trace) { return DeletePort(body, response, trace); });
}

int RouterMgr::DeleteAllInterfaceConfig(HttpRequest* request, HttpResponse* response) {
    if (request == nullptr || response == nullptr) {
        return HTTP_STATUS_OK;
    }
    SRequestTrace trace{MakeClientId(*request), request->path, {}};
    WriteOperationLog(trace.client, trace.path, std::string());
    if (!CClientsManager::GetInstance()->IsClientConnected(request->client_addr.ip)) {
        return Respond(response, CodeNoConnection, trace);
    }
    CUserData::GetInstance().ClearInterfaces();
    CComManager::getInstance()->DeleteAllConnect();
    CGeneratorId::getInstance()->Clean();
    return Respond(response, CodeSuccess, trace);
}
