#include "equipment/EquipmentRoutes.h"

#include "equipment/InterfaceStates.h"
#include "equipment/InterfaceStoring.h"
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

}  // namespace

const EquipmentRoutes g_equipmentGetRoutes = {
    {"/api/equipment/interfaces", ListInterfaceStates},
};

const EquipmentRoutes g_equipmentPostRoutes = {
    {"/api/equipment/store", StoreInterface},
};
