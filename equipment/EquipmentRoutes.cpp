#include "equipment/EquipmentRoutes.h"

#include "equipment/Health.h"
#include "equipment/InterfaceStates.h"
#include "equipment/InterfaceStoring.h"
#include "equipment/Metrics.h"
#include "equipment/TrafficHandlers.h"
#include "equipment/values/ValueRoutes.h"
#include "server/RouterMgr.h"
#include "userdata/Document.h"
#include "webapi/EntityTags.h"

namespace {

int ListInterfaceStates(HttpRequest* request, HttpResponse* response) {
    if (request == nullptr || response == nullptr) {
        return HTTP_STATUS_OK;
    }
    SResponseData content;
    content.data["interfaces"] = InterfaceStates();
    if (IsKnownState(*request, response, CDocumentState(content.data).Tag())) {
        return HTTP_STATUS_NOT_MODIFIED;
    }
    return RouterMgr::WriteEnvelope(response, CodeSuccess, content);
}

int GetHealth(HttpRequest* request, HttpResponse* response) {
    if (request == nullptr || response == nullptr) {
        return HTTP_STATUS_OK;
    }
    SResponseData content;
    content.data = MakeHealth(HealthNow());
    return RouterMgr::WriteEnvelope(response, CodeSuccess, content);
}

int GetMetrics(HttpRequest* request, HttpResponse* response) {
    if (request == nullptr || response == nullptr) {
        return HTTP_STATUS_OK;
    }
    response->SetHeader("Content-Type", "text/plain; version=0.0.4; charset=utf-8");
    response->body = MakeMetrics(HealthNow());
    return HTTP_STATUS_OK;
}

}  // namespace

const EquipmentRoutes kEquipmentGetRoutes = {
    {kEquipmentDocumentRoute, GetEquipmentConfig},      {"/api/equipment/health", GetHealth},
    {"/api/equipment/interfaces", ListInterfaceStates}, {"/api/equipment/traffic/{nodeId}", ReadTraffic},
    {"/api/equipment/values", GetEquipmentValues},      {"/metrics", GetMetrics},
};

const EquipmentRoutes kEquipmentPostRoutes = {
    {"/api/equipment/send", SendThroughInterface},
    {kEquipmentDocumentRoute, SetEquipmentConfig},
    {"/api/equipment/store", StoreInterface},
    {"/api/equipment/traffic/file", SwitchTrafficFile},
};
