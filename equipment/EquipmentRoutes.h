#pragma once

#include <functional>
#include <map>
#include <string>

#include <hv/HttpMessage.h>

/**
 * The routes with the method GET that tell what the equipment does, path to handler. They are bound after
 * those of the system's own tables, and left out of the operation log, since browsers ask again and again.
 * Filled when the module is loaded and only read afterwards.
 */
extern const std::map<std::string, std::function<int(HttpRequest*, HttpResponse*)>> g_equipmentGetRoutes;
