#pragma once

#include "platform/WebRequests.h"

/** The limits for the body of a route's requests. @param routeKey  of a POST route, an EnRouteKey */
SBodyRule BodyRuleOf(int routeKey);
