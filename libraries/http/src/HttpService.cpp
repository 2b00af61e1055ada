#include <algorithm>

#include <hv/HttpService.h>

namespace hv {

namespace {

void Bind(std::vector<HttpRoute>& routes, http_method method, const char* path, http_sync_handler handler) {
    const auto same = std::find_if(routes.begin(), routes.end(), [&](const HttpRoute& route) {
        return route.method == method && route.path == path;
    });
    if (same != routes.end()) {
        same->handler = std::move(handler);
    } else {
        routes.push_back({method, path, std::move(handler)});
    }
}

}  // namespace

void HttpService::GET(const char* path, http_sync_handler handler) {
    Bind(routes, HTTP_GET, path, std::move(handler));
}

void HttpService::POST(const char* path, http_sync_handler handler) {
    Bind(routes, HTTP_POST, path, std::move(handler));
}

void HttpService::Static(const char* prefix, const char* dir) {
    staticFolders.push_back({prefix, dir});
}

}  // namespace hv
