#include "include/CenterServer.h"

#include "device/PortContract.h"
#include "equipment/EquipmentRoutes.h"
#include "equipment/Traffic.h"
#include "equipment/values/ConfigStore.h"
#include "platform/ProcessMemory.h"
#include "platform/SerialNames.h"
#include "server/BodyRules.h"
#include "server/ClientsManager.h"
#include "server/LogText.h"
#include "server/RouteTable.h"
#include "versions/api/VersionRoutes.h"

#include <hv/hpath.h>

namespace {

/** Maximum of request handlers that run at once. */
constexpr int kHttpWorkerThreads = 4;

}  // namespace

CCenterServer::CCenterServer(CClientsManager* clients, const SGlobalConfig* config)
    : m_clientsManager(clients), m_config(config) {
    if (m_clientsManager == nullptr) {
        m_clientsManager = CClientsManager::GetInstance();
    }
    if (m_config == nullptr) {
        m_config = &GetConfigInstance();
    }
}

CCenterServer::CCenterServer(const CCenterServer& other) = default;

CCenterServer& CCenterServer::operator=(const CCenterServer& other) = default;

CCenterServer::~CCenterServer() {
    StopServer();
}

void CCenterServer::InitServer() {
    if (m_clientsManager == nullptr || m_config == nullptr) {
        WriteRootLog(RavLog::Error, "CCenterServer::InitServer",
                     FormatLogText("[HTTP Server] Invalid dependencies for InitServer."));
        return;
    }
    PrepareMemory();
    SetSerialNameTable(HPath::join(m_config->user_data_path, "SerialPorts.json"));
    StartEquipmentValues();
    StartTraffic();
    ReopenNetPorts();

    m_wsService.onopen = [this](const auto& channel, const auto& /*request*/) {
        if (m_clientsManager != nullptr) {
            m_clientsManager->AddClient(channel);
        }
    };
    m_wsService.onmessage = OnWebSocketMessage;
    m_wsService.onclose = [this](const auto& channel) {
        if (m_clientsManager != nullptr) {
            m_clientsManager->DeleteClient(channel);
        }
    };
    m_wsServer.ws = &m_wsService;
    if (m_config->websocket_port != 0) {
        m_wsServer.port = m_config->websocket_port;
    }
    m_httpService.Static("/", m_config->webui_path.c_str());

    const auto registerRoute = [this](bool isGet, const std::string& path, int key) {
        const auto row = g_routeHandlers.find(key);
        if (row == g_routeHandlers.end()) {
            WriteRootLog(RavLog::Error, "CCenterServer::InitServer::RegisterRoute",
                         FormatLogText("[HTTP Server] Missing route handler.", key, path));
            return;
        }
        if (isGet) {
            m_httpService.GET(path.c_str(), row->second);
        } else {
            m_httpService.POST(path.c_str(), row->second);
            SetBodyRule(m_httpService, path.c_str(), BodyRuleOf(key));
        }
    };
    for (const auto& [key, path] : g_getRoutes) {
        registerRoute(true, path, key);
    }
    for (const auto& [key, path] : g_postRoutes) {
        registerRoute(false, path, key);
    }
    for (const auto& [path, handler] : kVersionGetRoutes) {
        m_httpService.GET(path.c_str(), handler);
    }
    for (const auto& [path, handler] : kVersionPostRoutes) {
        m_httpService.POST(path.c_str(), handler);
        SetBodyRule(m_httpService, path.c_str(), BodyRuleOfWrites());
    }
    for (const auto& [path, handler] : kEquipmentGetRoutes) {
        m_httpService.GET(path.c_str(), handler);
    }
    for (const auto& [path, handler] : kEquipmentPostRoutes) {
        m_httpService.POST(path.c_str(), handler);
        SetBodyRule(m_httpService, path.c_str(), BodyRuleOfWrites());
    }
    SetBodyRule(m_httpService, kEquipmentDocumentRoute, BodyRuleOfDocuments());
    m_httpServer.service = &m_httpService;
    m_httpServer.port = m_config->http_port;
    m_httpServer.worker_threads = kHttpWorkerThreads;
}

void CCenterServer::Running() {
    http_server_run(&m_wsServer, 0);
    const int result = http_server_run(&m_httpServer, 0);
    if (result != 0) {
        WriteRootLog(
            RavLog::Error, "CCenterServer::Running",
            FormatLogText("[HTTP Server] Failed to start!", m_httpServer.host, m_httpServer.port, result));
        return;
    }
    WriteRootLog(RavLog::Info, "CCenterServer::Running",
                 FormatLogText("[HTTP Server] Started Successfully!", m_httpServer.host, m_httpServer.port));
}

void CCenterServer::StopServer() {
    http_server_stop(&m_httpServer);
    http_server_stop(&m_wsServer);
}
