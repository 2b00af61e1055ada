#pragma once

#include <functional>
#include <map>
#include <string>

#include <hv/HttpMessage.h>

using VersionRoutes = std::map<std::string, std::function<int(HttpRequest*, HttpResponse*)>>;

// The routes of the generations, path to handler. They are bound after those of the system's own tables. The
// tables are filled when the module is loaded and only read afterwards.

/** With the method GET. They are left out of the operation log. */
extern const VersionRoutes kVersionGetRoutes;

/** With the method POST. They are writes like any other, with the same check. */
extern const VersionRoutes kVersionPostRoutes;
