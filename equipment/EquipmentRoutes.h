#pragma once

#include <functional>
#include <map>
#include <string>

#include <hv/HttpMessage.h>

using EquipmentRoutes = std::map<std::string, std::function<int(HttpRequest*, HttpResponse*)>>;

// The routes about the equipment, path to handler. They are bound after those of the system's own tables. The
// tables are filled when the module is loaded and only read afterwards.

/** With the method GET. They are left out of the operation log, since browsers ask again and again. */
extern const EquipmentRoutes kEquipmentGetRoutes;

/** With the method POST. They are writes like any other, with the same check. */
extern const EquipmentRoutes kEquipmentPostRoutes;

/** The route of the latter that replaces a document. */
inline constexpr const char* kEquipmentDocumentRoute = "/api/equipment/config";
