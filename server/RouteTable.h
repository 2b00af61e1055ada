#pragma once

#include <functional>
#include <map>
#include <string>

#include <hv/HttpMessage.h>

/** Numbers of the routes: stable within the module, never sent. */
enum EnRouteKey : int {
    RouteFallbackFile = -1,
    RouteIndex = 0,
    RouteGetPageLayoutInfo = 3,
    RouteGetMaterialList = 4,
    RouteGetComponentInteractionInfo = 5,
    RouteSetCentralControlWebLayout = 6,
    RouteSetMaterialList = 7,
    RouteUpdateComponentInteraction = 8,
    RouteUseComponent = 9,
    RouteUseInfraredCommand = 10,
    RouteDeleteInfraredCommand = 11,
    RouteEditInfraredCommandName = 12,
    RouteImportInfraredCommandFile = 13,
    RouteExportInfraredCommandFile = 14,
    RouteEditComInfo = 15,
    RouteEditNetPortInfo = 16,
    RouteAddComInfo = 17,
    RouteAddNetPortInfo = 18,
    RouteGetCentralControlInterfaceList = 19,
    RouteGetServerVersion = 20,
    RouteSetUserLanguage = 21,
    RouteGetUserLanguage = 22,
    RouteGetConfigList = 23,
    RouteDeleteAllInterfaceConfig = 25,
    RouteDeleteInterfaceConfig = 26,
    RouteGetResource = 27,
    RouteGetServerComList = 28,
    RouteSetDeveloperMode = 29,
    RouteReportClientError = 30,
};

// The tables are filled when the module is loaded and only read afterwards.

/** Route key to path, for the routes with the method GET. */
extern const std::map<int, std::string> g_getRoutes;

/** Route key to path, for the routes with the method POST. */
extern const std::map<int, std::string> g_postRoutes;

/** Route key to handler, which returns the HTTP status of the reply. */
extern const std::map<int, std::function<int(HttpRequest*, HttpResponse*)>> g_routeHandlers;
