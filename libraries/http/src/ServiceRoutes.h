#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include <hv/HttpService.h>

namespace hv::internal {

/** The result of a look-up. */
struct RouteMatch {
    const http_sync_handler* handler = nullptr;  ///< null: none for this method
    const SBodyRule* rule = nullptr;             ///< of its body; null: the server's limit alone
    bool known = false;                          ///< the path has a handler for some method
    std::string allow;                           ///< methods that have one, if this one has none
};

/** Copies of a service's routes, so that the service may be destroyed while a handler runs. Any thread. */
class ServiceRoutes {
  public:
    explicit ServiceRoutes(const HttpService& service);

    /**
     * Looks up a path without its query: exact paths first, then those with "{name}", whose segments are
     * stored in the parameters. HEAD uses the handler of GET.
     */
    RouteMatch Find(http_method method, std::string_view path, QueryParams& params) const;

  private:
    struct Method {
        http_method method;
        http_sync_handler handler;
        std::shared_ptr<const SBodyRule> rule;
    };
    using Methods = std::vector<Method>;

    struct TextHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
    };

    struct Pattern {
        std::string path;
        Methods methods;
    };

    static bool Fits(std::string_view pattern, std::string_view path, QueryParams* params);
    static RouteMatch Choose(const Methods& methods, http_method method);

    std::unordered_map<std::string, Methods, TextHash, std::equal_to<>> m_exact;
    std::vector<Pattern> m_patterns;
};

}  // namespace hv::internal
