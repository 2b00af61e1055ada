#include "webapi/EntityTags.h"

std::optional<std::string> HeaderOf(const HttpRequest& request, const char* name) {
    const auto found = request.headers.find(name);
    return found == request.headers.end() ? std::nullopt : std::optional<std::string>(found->second);
}

bool AnyEntityTag(std::string_view list,
                  const std::function<bool(std::string_view tag, bool isWeak)>& matches) {
    for (;;) {
        list.remove_prefix(std::min(list.find_first_not_of(" \t,"), list.size()));
        if (list.starts_with('*')) {
            return matches("*", false);
        }
        const bool isWeak = list.starts_with("W/");
        list.remove_prefix(isWeak ? 2 : 0);
        const std::size_t end = list.starts_with('"') ? list.find('"', 1) : std::string_view::npos;
        if (end == std::string_view::npos) {
            return false;
        }
        if (matches(list.substr(1, end - 1), isWeak)) {
            return true;
        }
        list.remove_prefix(end + 1);
    }
}

bool IsKnownState(const HttpRequest& request, HttpResponse* response, const std::string& tag) {
    response->SetHeader("Cache-Control", "no-cache");
    response->SetHeader("ETag", '"' + tag + '"');
    return AnyEntityTag(
        HeaderOf(request, "If-None-Match").value_or(""),
        [&tag](std::string_view known, bool /*isWeak*/) { return known == tag || known == "*"; });
}
