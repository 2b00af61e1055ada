#pragma once

#include <hv/HttpMessage.h>

// The routes of the values that devices say; docs/http-api.md describes bodies and replies.

int GetEquipmentValues(HttpRequest* request, HttpResponse* response);
int GetEquipmentConfig(HttpRequest* request, HttpResponse* response);
int SetEquipmentConfig(HttpRequest* request, HttpResponse* response);
