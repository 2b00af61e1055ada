#include "libraries/http/src/StaticFiles.h"

#include "libraries/http/src/ContentTypes.h"
#include "libraries/http/src/HttpDate.h"
#include "libraries/http/src/Text.h"
#include "libraries/http/src/UrlText.h"
#include "platform/FileNames.h"

#include <algorithm>
#include <array>

namespace hv::internal {

namespace {

constexpr std::int64_t kNanoseconds = 1'000'000'000;

bool IsPlainName(std::string_view name) {
    const bool odd = std::any_of(name.begin(), name.end(), [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte < 0x20 || byte == 0x7F || c == '\\' || c == ':' || c == '/';
    });
    return !odd && !name.empty() && name.back() != '.' && name.back() != ' ' && !IsDeviceName(name);
}

std::string_view HeaderOf(const HttpRequest& request, std::string_view name) {
    const auto found = request.headers.find(name);
    return found == request.headers.end() ? std::string_view() : std::string_view(found->second);
}

// Whether a list such as "gzip, br;q=0.8" takes the coding.
bool Accepts(std::string_view list, std::string_view coding) {
    while (!list.empty()) {
        std::string_view weight = TakeUntil(list, ',');
        const std::string_view name = Trimmed(TakeUntil(weight, ';'));
        if (EqualsCaseless(name, coding)) {
            weight = Trimmed(weight);
            return !weight.starts_with("q=0") || weight.find_first_of("123456789") != std::string_view::npos;
        }
    }
    return false;
}

FileHandle OpenBest(const HttpRequest& request, const std::string& folder, const std::string& name,
                    HttpResponse& response, DiskWait wait) {
    const std::string type = ContentTypeOfFile(name);
    response.SetContentType(WithCharset(type).c_str());
    if (type == "text/html") {
        response.SetHeader("Cache-Control", "no-cache");
    }
    if (IsCompressible(type)) {
        response.SetHeader("Vary", "Accept-Encoding");
        const std::string_view accepted = HeaderOf(request, "Accept-Encoding");
        constexpr std::array<std::pair<const char*, const char*>, 2> codings = {
            {{"br", ".br"}, {"gzip", ".gz"}}};
        for (const auto& [coding, suffix] : codings) {
            if (!Accepts(accepted, coding)) {
                continue;
            }
            FileHandle file = OpenFileBeneath(folder, name + suffix, wait);
            if (file || file.IsUnknown()) {
                response.SetHeader("Content-Encoding", coding);
                return file;
            }
        }
    }
    return OpenFileBeneath(folder, name, wait);
}

// Whether a list such as "\"a\", W/\"b\"" names the tag, or any (RFC 9110, 8.8.3.2).
bool Names(std::string_view list, const std::string& tag, bool takesWeak) {
    while (!list.empty()) {
        std::string_view one = Trimmed(TakeUntil(list, ','));
        if (takesWeak && one.starts_with("W/")) {
            one.remove_prefix(2);
        }
        if (one == "*" || one == tag) {
            return true;
        }
    }
    return false;
}

bool IsOther(const HttpRequest& request, const std::string& tag, std::time_t modified) {
    if (const std::string_view tags = HeaderOf(request, "If-Match"); !tags.empty()) {
        return !Names(tags, tag, false);
    }
    const auto since = ParseHttpDate(HeaderOf(request, "If-Unmodified-Since"));
    return since && modified > *since;
}

bool IsUnchanged(const HttpRequest& request, const std::string& tag, std::time_t modified) {
    if (const std::string_view tags = HeaderOf(request, "If-None-Match"); !tags.empty()) {
        return Names(tags, tag, true);
    }
    const auto since = ParseHttpDate(HeaderOf(request, "If-Modified-Since"));
    return since && modified <= *since;
}

enum class RangeKind { Whole, Part, Impossible };

// One range of bytes (RFC 9110, 14.1.2); several ranges, or invalid ones, mean the whole file.
RangeKind ReadRange(std::string_view text, std::uint64_t size, std::uint64_t& offset, std::uint64_t& length) {
    if (!text.starts_with("bytes=") || text.find(',') != std::string_view::npos) {
        return RangeKind::Whole;
    }
    text.remove_prefix(6);
    const std::size_t dash = text.find('-');
    if (dash == std::string_view::npos) {
        return RangeKind::Whole;
    }
    const std::string_view from = Trimmed(text.substr(0, dash));
    const std::string_view to = Trimmed(text.substr(dash + 1));
    const auto first = ParseDecimal(from);
    const auto last = ParseDecimal(to);
    if ((!first && !from.empty()) || (!last && !to.empty()) || (!first && !last) ||
        (first && last && *last < *first)) {
        return RangeKind::Whole;
    }
    if (!first) {
        length = std::min(*last, size);
        offset = size - length;
        return length == 0 ? RangeKind::Impossible : RangeKind::Part;
    }
    if (*first >= size) {
        return RangeKind::Impossible;
    }
    offset = *first;
    length = last ? std::min(*last - offset, size - offset - 1) + 1 : size - offset;
    return RangeKind::Part;
}

void Describe(const HttpRequest& request, HttpResponse& response, FilePart& part) {
    const FileHandle& file = part.file;
    const auto modified = static_cast<std::time_t>(file.Modified() / kNanoseconds);
    const std::string tag = "\"" + std::to_string(file.Modified()) + "-" + std::to_string(file.Size()) + "\"";
    response.SetHeader("ETag", tag);
    response.SetHeader("Last-Modified", HttpDate(modified));
    response.SetHeader("Accept-Ranges", "bytes");
    part.length = file.Size();
    // In the order of RFC 9110, 13.2.2.
    const int status = IsOther(request, tag, modified)       ? 412
                       : IsUnchanged(request, tag, modified) ? 304
                                                             : 200;
    if (status != 200) {
        response.status_code = static_cast<http_status>(status);
        part.length = 0;
        return;
    }
    const std::string_view unless = HeaderOf(request, "If-Range");
    if (request.method != HTTP_GET || (!unless.empty() && unless != tag && unless != HttpDate(modified))) {
        return;
    }
    const std::string size = std::to_string(file.Size());
    switch (ReadRange(HeaderOf(request, "Range"), file.Size(), part.offset, part.length)) {
        case RangeKind::Part:
            response.status_code = static_cast<http_status>(206);
            response.SetHeader("Content-Range", "bytes " + std::to_string(part.offset) + "-" +
                                                    std::to_string(part.offset + part.length - 1) + "/" +
                                                    size);
            break;
        case RangeKind::Impossible:
            response.status_code = static_cast<http_status>(416);
            response.SetHeader("Content-Range", "bytes */" + size);
            part.offset = 0;
            part.length = 0;
            break;
        case RangeKind::Whole:
            break;
    }
}

}  // namespace

std::optional<std::string> StaticFileName(std::string_view path) {
    std::string name;
    while (!path.empty()) {
        const bool more = path.find('/') != std::string_view::npos;
        const auto element = PercentDecoded(TakeUntil(path, '/'));
        if (!element || !IsPlainName(*element)) {
            return std::nullopt;
        }
        name += *element;
        if (more) {
            name += '/';
        }
    }
    if (name.empty() || name.back() == '/') {
        name += "index.html";
    }
    return name;
}

FileFound StaticFiles::Answer(const HttpRequest& request, std::string_view path, HttpResponse& response,
                              FilePart& part, DiskWait wait) const {
    for (const auto& [prefix, folder] : m_folders) {
        std::string_view rest = path;
        if (!rest.starts_with(prefix)) {
            continue;
        }
        rest.remove_prefix(prefix.size());
        if (!prefix.ends_with('/')) {
            if (!rest.starts_with('/')) {
                continue;
            }
            rest.remove_prefix(1);
        }
        const auto name = StaticFileName(rest);
        if (!name) {
            continue;
        }
        part.file = OpenBest(request, folder, *name, response, wait);
        if (!part.file) {
            response.headers.clear();
            if (part.file.IsUnknown()) {
                part.file = {};
                return FileFound::Unknown;
            }
            continue;
        }
        if (request.method != HTTP_GET && request.method != HTTP_HEAD) {
            response.headers.clear();
            response.status_code = static_cast<http_status>(405);
            response.SetHeader("Allow", "GET, HEAD");
            return FileFound::Yes;
        }
        Describe(request, response, part);
        return FileFound::Yes;
    }
    return FileFound::No;
}

}  // namespace hv::internal
