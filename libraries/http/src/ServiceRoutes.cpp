#include "libraries/http/src/ServiceRoutes.h"

#include "libraries/http/src/Text.h"

#include <algorithm>

namespace hv::internal {

namespace {

bool IsName(std::string_view segment) {
    return segment.size() >= 2 && segment.front() == '{' && segment.back() == '}';
}

}  // namespace

ServiceRoutes::ServiceRoutes(const HttpService& service) {
    for (const auto& route : service.routes) {
        const auto rule = service.bodyRules.find(route.path);
        const bool hasRule = route.method == HTTP_POST && rule != service.bodyRules.end();
        const Method method{route.method, route.handler, hasRule ? rule->second : nullptr};
        if (route.path.find('{') == std::string::npos) {
            m_exact[route.path].push_back(method);
            continue;
        }
        auto row = std::find_if(m_patterns.begin(), m_patterns.end(),
                                [&](const Pattern& pattern) { return pattern.path == route.path; });
        if (row == m_patterns.end()) {
            row = m_patterns.insert(row, {route.path, {}});
        }
        row->methods.push_back(method);
    }
}

bool ServiceRoutes::Fits(std::string_view pattern, std::string_view path, QueryParams* params) {
    if (std::count(pattern.begin(), pattern.end(), '/') != std::count(path.begin(), path.end(), '/')) {
        return false;
    }
    while (!pattern.empty() || !path.empty()) {
        const std::string_view wanted = TakeUntil(pattern, '/');
        const std::string_view segment = TakeUntil(path, '/');
        if (!IsName(wanted)) {
            if (wanted != segment) {
                return false;
            }
        } else if (params != nullptr) {
            (*params)[std::string(wanted.substr(1, wanted.size() - 2))] = segment;
        }
    }
    return true;
}

RouteMatch ServiceRoutes::Choose(const Methods& methods, http_method method) {
    const http_method wanted = method == HTTP_HEAD ? HTTP_GET : method;
    RouteMatch match;
    match.known = true;
    for (const auto& [known, handler, rule] : methods) {
        if (known == wanted) {
            match.handler = &handler;
            match.rule = rule.get();
        }
        match.allow += match.allow.empty() ? "" : ", ";
        match.allow += known == HTTP_GET ? "GET, HEAD" : "POST";
    }
    return match;
}

RouteMatch ServiceRoutes::Find(http_method method, std::string_view path, QueryParams& params) const {
    if (const auto exact = m_exact.find(path); exact != m_exact.end()) {
        return Choose(exact->second, method);
    }
    for (const auto& pattern : m_patterns) {
        if (Fits(pattern.path, path, nullptr)) {
            Fits(pattern.path, path, &params);
            return Choose(pattern.methods, method);
        }
    }
    return {};
}

}  // namespace hv::internal
