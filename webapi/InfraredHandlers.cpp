// The routes of infrared commands, which this server does not have: to a client they don't exist.

#include "server/RouterMgr.h"

int RouterMgr::UseInfraredCommand(HttpRequest* /*request*/, HttpResponse* /*response*/) {
    return HTTP_STATUS_NOT_FOUND;
}

int RouterMgr::DeleteInfraredCommand(HttpRequest* /*request*/, HttpResponse* /*response*/) {
    return HTTP_STATUS_NOT_FOUND;
}

int RouterMgr::EditInfraredCommandName(HttpRequest* /*request*/, HttpResponse* /*response*/) {
    return HTTP_STATUS_NOT_FOUND;
}

int RouterMgr::ImportInfraredCommandFile(HttpRequest* /*request*/, HttpResponse* /*response*/) {
    return HTTP_STATUS_NOT_FOUND;
}

int RouterMgr::ExportInfraredCommandFile(HttpRequest* /*request*/, HttpResponse* /*response*/) {
    return HTTP_STATUS_NOT_FOUND;
}
