#pragma once

#include <hv/HttpMessage.h>

// What interfaces send and receive, and sending without a component. docs/http-api.md describes bodies and
// replies.

/** The last traffic of an interface. */
int ReadTraffic(HttpRequest* request, HttpResponse* response);

/** Sends a command through an interface. */
int SendThroughInterface(HttpRequest* request, HttpResponse* response);

/** Lets the traffic of an interface be written to Traffic.log for a while. */
int SwitchTrafficFile(HttpRequest* request, HttpResponse* response);
