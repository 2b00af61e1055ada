#include "server/RouteTable.h"

#include "server/RouterMgr.h"

const std::map<int, std::string> g_getRoutes = {
    {RouteIndex, "/"},
    {RouteGetPageLayoutInfo, "/api/centralControl/getPageLayoutInfo"},
    {RouteGetMaterialList, "/api/centralControl/getMaterialList"},
    {RouteGetComponentInteractionInfo, "/api/centralControl/getComponentInteractionInfo"},
    {RouteGetCentralControlInterfaceList, "/api/centralControl/getCentralControlInterfaceList"},
    {RouteGetServerVersion, "/api/getServerVersion"},
    {RouteGetUserLanguage, "/api/user/getUserLanguage"},
    {RouteGetConfigList, "/api/centralControl/getConfigList"},
    {RouteGetResource, "/api/getResource/{fileName}"},
    {RouteGetServerComList, "/api/getServerComList"},
};

const std::map<int, std::string> g_postRoutes = {
    {RouteSetCentralControlWebLayout, "/api/centralControl/setCentralControlWebLayout"},
    {RouteSetMaterialList, "/api/centralControl/setMaterialList"},
    {RouteUpdateComponentInteraction, "/api/centralControl/updateComponentInteraction"},
    {RouteUseComponent, "/api/centralControl/useComponent"},
    {RouteUseInfraredCommand, "/api/centralControl/useInfraredCommand"},
    {RouteDeleteInfraredCommand, "/api/centralControl/deleteInfraredCommand"},
    {RouteEditInfraredCommandName, "/api/centralControl/editInfraredCommandName"},
    {RouteImportInfraredCommandFile, "/api/centralControl/importInfraredCommandFile"},
    {RouteExportInfraredCommandFile, "/api/centralControl/exportInfraredCommandFile"},
    {RouteEditComInfo, "/api/centralControl/editComInfo"},
    {RouteEditNetPortInfo, "/api/centralControl/editNetPortInfo"},
    {RouteAddComInfo, "/api/centralControl/addComInfo"},
    {RouteAddNetPortInfo, "/api/centralControl/addNetPortInfo"},
    {RouteSetUserLanguage, "/api/user/setUserLanguage"},
    {RouteDeleteAllInterfaceConfig, "/api/centralControl/deleteAllInterfaceConfig"},
    {RouteDeleteInterfaceConfig, "/api/centralControl/deleteInterfaceConfig"},
    {RouteSetDeveloperMode, "/api/device/setDeveloperMode"},
    {RouteReportClientError, "/api/log/reportClientError"},
};

const std::map<int, std::function<int(HttpRequest*, HttpResponse*)>> g_routeHandlers = {
    {RouteFallbackFile, RouterMgr::FallbackFileHandler},  // no path leads here
    {RouteIndex, RouterMgr::IndexPageHandler},
    {RouteGetPageLayoutInfo, RouterMgr::GetPageLayoutInfo},
    {RouteGetMaterialList, RouterMgr::GetMaterialList},
    {RouteGetComponentInteractionInfo, RouterMgr::GetComponentInteractionInfo},
    {RouteSetCentralControlWebLayout, RouterMgr::SetCentralControlWebLayout},
    {RouteSetMaterialList, RouterMgr::SetMaterialList},
    {RouteUpdateComponentInteraction, RouterMgr::UpdateComponentInteraction},
    {RouteUseComponent, RouterMgr::UseComponent},
    {RouteUseInfraredCommand, RouterMgr::UseInfraredCommand},
    {RouteDeleteInfraredCommand, RouterMgr::DeleteInfraredCommand},
    {RouteEditInfraredCommandName, RouterMgr::EditInfraredCommandName},
    {RouteImportInfraredCommandFile, RouterMgr::ImportInfraredCommandFile},
    {RouteExportInfraredCommandFile, RouterMgr::ExportInfraredCommandFile},
    {RouteEditComInfo, RouterMgr::EditComInfo},
    {RouteEditNetPortInfo, RouterMgr::EditNetPortInfo},
    {RouteAddComInfo, RouterMgr::AddComInfo},
    {RouteAddNetPortInfo, RouterMgr::AddNetPortInfo},
    {RouteGetCentralControlInterfaceList, RouterMgr::GetCentralControlInterfaceList},
    {RouteGetServerVersion, RouterMgr::GetServerVersion},
    {RouteSetUserLanguage, RouterMgr::SetUserLanguage},
    {RouteGetUserLanguage, RouterMgr::GetUserLanguage},
    {RouteGetConfigList, RouterMgr::GetConfigList},
    {RouteDeleteAllInterfaceConfig, RouterMgr::DeleteAllInterfaceConfig},
    {RouteDeleteInterfaceConfig, RouterMgr::DeleteInterfaceConfig},
    {RouteGetResource, RouterMgr::GetResourceHandler},
    {RouteSetDeveloperMode, RouterMgr::SetDeveloperMode},
    {RouteReportClientError, RouterMgr::ReportClientError},
    {RouteGetServerComList, RouterMgr::GetServerComList},
};
