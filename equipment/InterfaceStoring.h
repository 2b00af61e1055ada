#pragma once

#include <hv/HttpMessage.h>

/**
 * Adds or changes an interface whose device may be away: the checks of names and end points are those of the
 * other routes, but the interface is stored whether or not it can be opened. docs/http-api.md describes body
 * and reply.
 */
int StoreInterface(HttpRequest* request, HttpResponse* response);
