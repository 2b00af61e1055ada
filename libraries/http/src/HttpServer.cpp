// The running servers, by the ids that records carry: a record may be copied, so it owns nothing.
#include "libraries/http/src/ErrorReport.h"
#include "libraries/http/src/Server.h"
#include "platform/Mutex.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <map>
#include <memory>
#include <new>

#include <hv/HttpServer.h>

namespace {

using hv::internal::Server;

constexpr int kCannotListen = -22;

CMutex g_mutex;

using Servers = std::map<std::uintptr_t, std::shared_ptr<Server>>;

Servers& Running() REQUIRES_LOCK(g_mutex) {
    // Never destroyed: a server may be stopped by a destructor that runs at the end of the process. In place,
    // since that stop must not need memory.
    alignas(Servers) static std::byte place[sizeof(Servers)];
    static auto& servers = *new (place) Servers();
    return servers;
}

std::uintptr_t IdOf(const http_server_t& record) {
    return reinterpret_cast<std::uintptr_t>(record.privdata);
}

}  // namespace

void hv::internal::AskForRoomEverywhere() {
    const CLock lock(g_mutex);
    for (const auto& [id, server] : Running()) {
        server->AskForRoom();
    }
}

int http_server_run(http_server_t* record, int wait) {
    if (record == nullptr) {
        return kCannotListen;
    }
    if (record->port == 0) {
        return 0;
    }
    std::shared_ptr<Server> server;
    bool started = false;
    try {
        const CLock lock(g_mutex);
        if (Running().contains(IdOf(*record))) {
            return kCannotListen;  // it is running already
        }
        static std::uintptr_t lastId = 0;
        server = std::make_shared<Server>(*record);
        const auto place = Running().emplace(++lastId, server).first;
        try {
            started = server->Start();
        } catch (const std::exception& error) {
            hv::internal::ReportError("The server can't start: ", error.what());
        }
        if (!started) {
            Running().erase(place);
        }
        record->privdata =
            reinterpret_cast<void*>(started ? lastId : 0);  // NOLINT(performance-no-int-to-ptr)
    } catch (const std::exception& error) {
        hv::internal::ReportError("The server can't start: ", error.what());
        return kCannotListen;
    }
    if (!started) {
        server->Stop();  // some of its threads may serve already when the system has no more of them
        return kCannotListen;
    }
    if (wait != 0) {
        server->WaitUntilStopped();
    }
    return 0;
}

int http_server_stop(http_server_t* record) {
    if (record == nullptr) {
        return 0;
    }
    std::shared_ptr<Server> server;
    {
        const CLock lock(g_mutex);
        const auto place = Running().find(IdOf(*record));
        record->privdata = nullptr;
        if (place == Running().end()) {
            return 0;
        }
        server = std::move(place->second);
        Running().erase(place);
    }
    server->Stop();
    return 0;
}
