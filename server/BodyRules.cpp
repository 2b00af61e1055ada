#include "server/BodyRules.h"

#include "config/JsonMemory.h"
#include "server/ClientsManager.h"
#include "server/RouteTable.h"
#include "server/RouterMgr.h"

namespace {

/** A page document, with the pictures that it may hold. */
constexpr std::uint64_t kDocumentBytes = std::uint64_t{256} << 20;

/** Whether the route answers without the check that CheckWriteRequest makes. */
bool IsOpenToAll(int routeKey) {
    switch (routeKey) {
        case RouteSetDeveloperMode:
        case RouteUseInfraredCommand:
        case RouteDeleteInfraredCommand:
        case RouteEditInfraredCommandName:
        case RouteImportInfraredCommandFile:
        case RouteExportInfraredCommandFile:
            return true;
        default:
            return false;
    }
}

}  // namespace

SBodyRule BodyRuleOfWrites() {
    SBodyRule rule;
    rule.admits = [](const HttpRequest& request) {
        return CClientsManager::GetInstance()->IsClientConnected(request.client_addr.ip);
    };
    rule.refuse = RouterMgr::RefuseUnconnected;
    rule.cost = [](const std::string& body) { return EstimateJsonMemory(body); };
    return rule;
}

SBodyRule BodyRuleOfDocuments() {
    SBodyRule rule = BodyRuleOfWrites();
    rule.limit = kDocumentBytes;
    return rule;
}

SBodyRule BodyRuleOf(int routeKey) {
    SBodyRule rule = BodyRuleOfWrites();
    if (routeKey == RouteSetCentralControlWebLayout || routeKey == RouteSetMaterialList ||
        routeKey == RouteUpdateComponentInteraction) {
        rule.limit = kDocumentBytes;
    }
    if (IsOpenToAll(routeKey)) {
        rule.admits = nullptr;
        rule.refuse = nullptr;
    }
    return rule;
}
