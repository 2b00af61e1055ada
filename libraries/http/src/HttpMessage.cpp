#include "libraries/http/src/ContentTypes.h"
#include "libraries/http/src/FileAccess.h"
#include "libraries/http/src/Text.h"

#include <algorithm>

#include <hv/HttpMessage.h>

namespace hv {

bool StringCaseLess::operator()(std::string_view left, std::string_view right) const {
    return std::lexicographical_compare(
        left.begin(), left.end(), right.begin(), right.end(),
        [](char a, char b) { return internal::LowerCase(a) < internal::LowerCase(b); });
}

}  // namespace hv

void HttpMessage::SetHeader(const char* key, const std::string& value) {
    std::string& stored = headers[key];
    stored = value;
    std::replace_if(
        stored.begin(), stored.end(), [](char c) { return c == '\r' || c == '\n' || c == '\0'; }, ' ');
}

std::string HttpMessage::GetHeader(const char* key, const std::string& defvalue) const {
    const auto found = headers.find(std::string_view(key));
    return found == headers.end() ? defvalue : found->second;
}

void HttpMessage::SetBody(const std::string& text) {
    body = text;
}

void HttpMessage::SetContentType(const char* type) {
    SetHeader("Content-Type", type);
}

void HttpMessage::SetContentType(http_content_type type) {
    SetContentType(http_content_type_str(type));
}

std::string HttpRequest::GetParam(const char* key, const std::string& defvalue) const {
    const auto found = query_params.find(key);
    return found == query_params.end() ? defvalue : found->second;
}

namespace {

constexpr std::uint64_t kReadAtOnce = std::uint64_t{64} * 1024;

// Whether a file could be read into the text, up to the size that it had when it was opened.
bool ReadWhole(const hv::internal::FileHandle& file, std::string& text) {
    text.resize(static_cast<std::size_t>(file.Size()));
    std::size_t have = 0;
    while (have < text.size()) {
        const std::ptrdiff_t got = file.Read(have, text.data() + have, text.size() - have);
        if (got < 0) {
            text.clear();
            return false;
        }
        if (got == 0) {
            break;
        }
        have += static_cast<std::size_t>(got);
    }
    text.resize(have);
    return true;
}

}  // namespace

int HttpResponse::File(const char* filepath) {
    auto opened = hv::internal::OpenFile(filepath);
    if (!opened) {
        return HTTP_STATUS_NOT_FOUND;
    }
    body.clear();
    pieces = {};
    file.reset();
    if (opened.Size() > kReadAtOnce) {
        file = std::make_shared<hv::internal::FileHandle>(std::move(opened));
    } else if (!ReadWhole(opened, body)) {
        return HTTP_STATUS_NOT_FOUND;
    }
    if (headers.find(std::string_view("Content-Type")) == headers.end()) {
        SetContentType(hv::internal::WithCharset(hv::internal::ContentTypeOfFile(filepath)).c_str());
    }
    return HTTP_STATUS_OK;
}
