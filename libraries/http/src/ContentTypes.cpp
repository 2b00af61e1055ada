#include "libraries/http/src/ContentTypes.h"

#include "libraries/http/src/Text.h"

#include <algorithm>
#include <array>
#include <utility>

#include <hv/httpdef.h>

namespace {

struct SuffixRow {
    std::string_view suffix;
    const char* type;
};

// Sorted by suffix.
constexpr std::array kSuffixes = {
    SuffixRow{"aac", "audio/aac"},
    SuffixRow{"avif", "image/avif"},
    SuffixRow{"bin", "application/octet-stream"},
    SuffixRow{"bmp", "image/bmp"},
    SuffixRow{"css", "text/css"},
    SuffixRow{"csv", "text/csv"},
    SuffixRow{"eot", "application/vnd.ms-fontobject"},
    SuffixRow{"flac", "audio/flac"},
    SuffixRow{"gif", "image/gif"},
    SuffixRow{"gltf", "model/gltf+json"},
    SuffixRow{"gz", "application/gzip"},
    SuffixRow{"htm", "text/html"},
    SuffixRow{"html", "text/html"},
    SuffixRow{"ico", "image/x-icon"},
    SuffixRow{"jpeg", "image/jpeg"},
    SuffixRow{"jpg", "image/jpeg"},
    SuffixRow{"js", "application/javascript"},
    SuffixRow{"json", "application/json"},
    SuffixRow{"m4a", "audio/mp4"},
    SuffixRow{"map", "application/json"},
    SuffixRow{"md", "text/markdown"},
    SuffixRow{"mjs", "application/javascript"},
    SuffixRow{"mov", "video/quicktime"},
    SuffixRow{"mp3", "audio/mpeg"},
    SuffixRow{"mp4", "video/mp4"},
    SuffixRow{"ogg", "audio/ogg"},
    SuffixRow{"otf", "font/otf"},
    SuffixRow{"pdf", "application/pdf"},
    SuffixRow{"png", "image/png"},
    SuffixRow{"svg", "image/svg+xml"},
    SuffixRow{"tif", "image/tiff"},
    SuffixRow{"tiff", "image/tiff"},
    SuffixRow{"ttf", "font/ttf"},
    SuffixRow{"txt", "text/plain"},
    SuffixRow{"wasm", "application/wasm"},
    SuffixRow{"wav", "audio/wav"},
    SuffixRow{"webm", "video/webm"},
    SuffixRow{"webmanifest", "application/manifest+json"},
    SuffixRow{"webp", "image/webp"},
    SuffixRow{"woff", "font/woff"},
    SuffixRow{"woff2", "font/woff2"},
    SuffixRow{"xhtml", "application/xhtml+xml"},
    SuffixRow{"xml", "application/xml"},
    SuffixRow{"zip", "application/zip"},
};

constexpr std::array<std::pair<http_content_type, const char*>, 6> kTypes = {{
    {TEXT_PLAIN, "text/plain"},
    {TEXT_HTML, "text/html"},
    {TEXT_CSS, "text/css"},
    {APPLICATION_JAVASCRIPT, "application/javascript"},
    {APPLICATION_JSON, "application/json"},
    {APPLICATION_OCTET_STREAM, "application/octet-stream"},
}};

}  // namespace

const char* http_content_type_str(http_content_type type) {
    const auto* row =
        std::find_if(kTypes.begin(), kTypes.end(), [&](const auto& r) { return r.first == type; });
    return row == kTypes.end() ? "" : row->second;
}

http_content_type http_content_type_enum(const char* text) {
    const std::string_view whole = text == nullptr ? "" : text;
    const std::string_view name = hv::internal::Trimmed(whole.substr(0, whole.find(';')));
    const auto* row = std::find_if(kTypes.begin(), kTypes.end(), [&](const auto& r) {
        return hv::internal::EqualsCaseless(name, r.second);
    });
    return row == kTypes.end() ? CONTENT_TYPE_UNDEFINED : row->first;
}

const char* http_content_type_str_by_suffix(const char* suffix) {
    const std::string_view wanted = suffix == nullptr ? "" : suffix;
    const auto* row =
        std::lower_bound(kSuffixes.begin(), kSuffixes.end(), wanted,
                         [](const SuffixRow& r, std::string_view key) { return r.suffix < key; });
    return row == kSuffixes.end() || row->suffix != wanted ? "" : row->type;
}

namespace hv::internal {

std::string ContentTypeOfFile(std::string_view fileName) {
    fileName.remove_prefix(fileName.find_last_of("/\\") + 1);
    const std::size_t dot = fileName.rfind('.');
    std::string type;
    if (dot != std::string_view::npos) {
        type = http_content_type_str_by_suffix(LowerCase(fileName.substr(dot + 1)).c_str());
    }
    return type.empty() ? "application/octet-stream" : type;
}

std::string WithCharset(const std::string& contentType) {
    return contentType.starts_with("text/") ? contentType + "; charset=utf-8" : contentType;
}

bool IsCompressible(std::string_view contentType) {
    constexpr std::array<std::string_view, 4> names = {"application/javascript", "application/wasm",
                                                       "application/vnd.ms-fontobject", "font/ttf"};
    return contentType.starts_with("text/") || contentType.ends_with("json") ||
           contentType.ends_with("xml") || std::find(names.begin(), names.end(), contentType) != names.end();
}

}  // namespace hv::internal
