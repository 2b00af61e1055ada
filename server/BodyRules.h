#pragma once

#include "platform/WebRequests.h"

/** The limits for the body of a write of an ordinary size, from a client that may write. */
SBodyRule BodyRuleOfWrites();

/** As above, for a write that replaces a document. */
SBodyRule BodyRuleOfDocuments();

/** The limits for the body of a route's requests. @param routeKey  of a POST route, an EnRouteKey */
SBodyRule BodyRuleOf(int routeKey);
