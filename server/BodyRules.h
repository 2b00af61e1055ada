#pragma once

#include "platform/WebRequests.h"

/** What the body of a route's requests has to keep to. @param routeKey  of a POST route, an EnRouteKey */
SBodyRule BodyRuleOf(int routeKey);
