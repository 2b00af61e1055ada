#include "server/RouteTable.h"

#include "server/RouterMgr.h"

const std::map<int, std::string> g_getRoutes = {
    {RouteGetPageLayoutInfo, "/api/centralControl/getPageLayoutInfo"},
    {RouteGetMaterialList, "/api/centralControl/getMaterialList"},
    {RouteGetComponentInteractionInfo, "/api/centralControl/getComponentInteractionInfo"},
    {RouteGetCentralControlInterfaceList, "/api/centralControl/getCentralControlInterfaceList"},
    {RouteGetConfigList, "/api/centralControl/getConfigList"},
};

const std::map<int, std::string> g_postRoutes = {
    {RouteSetCentralControlWebLayout, "/api/centralControl/setCentralControlWebLayout"},
    {RouteSetMaterialList, "/api/centralControl/setMaterialList"},
    {RouteUpdateComponentInteraction, "/api/centralControl/updateComponentInteraction"},
    {RouteUseComponent, "/api/centralControl/useComponent"},
    {RouteEditComInfo, "/api/centralControl/editComInfo"},
    {RouteEditNetPortInfo, "/api/centralControl/editNetPortInfo"},
    {RouteAddComInfo, "/api/centralControl/addComInfo"},
    {RouteAddNetPortInfo, "/api/centralControl/addNetPortInfo"},
    {RouteDeleteAllInterfaceConfig, "/api/centralControl/deleteAllInterfaceConfig"},
    {RouteDeleteInterfaceConfig, "/api/centralControl/deleteInterfaceConfig"},
};

const std::map<int, std::function<int(HttpRequest*, HttpResponse*)>> g_routeHandlers = {
    {RouteGetPageLayoutInfo, RouterMgr::GetPageLayoutInfo},
    {RouteGetMaterialList, RouterMgr::GetMaterialList},
    {RouteGetComponentInteractionInfo, RouterMgr::GetComponentInteractionInfo},
    {RouteSetCentralControlWebLayout, RouterMgr::SetCentralControlWebLayout},
    {RouteSetMaterialList, RouterMgr::SetMaterialList},
    {RouteUpdateComponentInteraction, RouterMgr::UpdateComponentInteraction},
    {RouteUseComponent, RouterMgr::UseComponent},
    {RouteEditComInfo, RouterMgr::EditComInfo},
    {RouteEditNetPortInfo, RouterMgr::EditNetPortInfo},
    {RouteAddComInfo, RouterMgr::AddComInfo},
    {RouteAddNetPortInfo, RouterMgr::AddNetPortInfo},
    {RouteGetCentralControlInterfaceList, RouterMgr::GetCentralControlInterfaceList},
    {RouteGetConfigList, RouterMgr::GetConfigList},
    {RouteDeleteAllInterfaceConfig, RouterMgr::DeleteAllInterfaceConfig},
    {RouteDeleteInterfaceConfig, RouterMgr::DeleteInterfaceConfig},
};
