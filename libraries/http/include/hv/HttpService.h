#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include <hv/HttpMessage.h>

struct SBodyRule;

namespace hv {

/** One row of a service's route table. */
struct HttpRoute {
    http_method method;
    std::string path;  ///< "{name}" stands for one segment, which may be empty
    http_sync_handler handler;
};

/** One folder of static files. */
struct HttpStaticFolder {
    std::string prefix;
    std::string folder;
};

/** Routes and static folders of a server. Filled before the server runs, only read afterwards. */
struct HttpService {
    std::vector<HttpRoute> routes;
    std::vector<HttpStaticFolder> staticFolders;
    std::map<std::string, std::shared_ptr<const SBodyRule>> bodyRules;  ///< by the path of a POST route

    /**
     * Binds a handler to a path; a later one for the same method and path replaces an earlier one. HEAD goes
     * to the handler of GET, and its reply is sent without the body.
     */
    void GET(const char* path, http_sync_handler handler);
    void POST(const char* path, http_sync_handler handler);

    /**
     * Maps a URL prefix to a folder; "/" inside it is its index.html. Routes take precedence. Never serves a
     * file outside the folder, even if a link in the folder leads there.
     */
    void Static(const char* prefix, const char* dir);
};

}  // namespace hv
