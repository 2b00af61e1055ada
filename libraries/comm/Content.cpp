#include "libraries/comm/Content.h"

#include "libraries/comm/ErrorNumbers.h"

#include <algorithm>

namespace comm {

namespace {

constexpr std::string_view kSeparators = " \t\r\n,;:-";

/** What ends a token: a separator, or what begins the next token without one. */
constexpr std::string_view kTokenEnds = " \t\r\n,;:-\\$";

int DigitValue(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return -1;
}

/** Takes a prefix or the suffix off a token, one of them at most. */
void Strip(std::string_view& token) {
    if (token.front() == '$') {
        token.remove_prefix(1);
    } else if (token.size() >= 2 && (token[1] == 'x' || token[1] == 'X') &&
               (token[0] == '0' || (token[0] == '\\' && token[1] == 'x'))) {
        token.remove_prefix(2);
    } else if (token.back() == 'h' || token.back() == 'H') {
        token.remove_suffix(1);
    }
}

bool AppendToken(std::string_view token, std::string& out) {
    Strip(token);
    if (token.empty() || (token.size() > 1 && token.size() % 2 != 0)) {
        return false;
    }
    const std::size_t width = token.size() == 1 ? 1 : 2;
    for (std::size_t at = 0; at < token.size(); at += width) {
        const int first = DigitValue(token[at]);
        const int last = DigitValue(token[at + width - 1]);
        if (first < 0 || last < 0) {
            return false;
        }
        out.push_back(static_cast<char>(width == 1 ? last : first * 16 + last));
    }
    return true;
}

bool AppendHexadecimal(std::string_view content, std::string& out) {
    std::size_t at = 0;
    while ((at = content.find_first_not_of(kSeparators, at)) != std::string_view::npos) {
        // No search goes beyond the token: the content can be long, and have a token for each two characters.
        const std::size_t end = std::min(content.find_first_of(kTokenEnds, at + 1), content.size());
        if (!AppendToken(content.substr(at, end - at), out)) {
            return false;
        }
        at = end;
    }
    return true;
}

/** One byte for each character; a character up to U+00FF is one byte, or C2 or C3 and a second byte. */
bool AppendLatin1(std::string_view text, std::string& out) {
    for (std::size_t at = 0; at < text.size(); ++at) {
        const auto byte = static_cast<unsigned char>(text[at]);
        if (byte < 0x80) {
            out.push_back(text[at]);
            continue;
        }
        if ((byte != 0xC2 && byte != 0xC3) || at + 1 == text.size()) {
            return false;
        }
        const auto next = static_cast<unsigned char>(text[++at]);
        if ((next & 0xC0U) != 0x80) {
            return false;
        }
        out.push_back(static_cast<char>((byte & 3U) << 6U | (next & 0x3FU)));
    }
    return true;
}

bool IsAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

}  // namespace

EnError ContentToBytes(std::string_view content, bool isText, int asciiEncode, std::string& storage,
                       std::string_view& bytes) {
    bytes = {};
    if (content.empty()) {
        return ErrorNone;
    }
    if (isText && (asciiEncode < 0 || asciiEncode > 2)) {
        return ErrorBadContent;
    }
    if (isText && (asciiEncode == 0 || IsAscii(content))) {
        bytes = content;
        return ErrorNone;
    }
    storage.clear();
    storage.reserve(content.size());
    const bool good = !isText            ? AppendHexadecimal(content, storage)
                      : asciiEncode == 1 ? AppendLatin1(content, storage)
                                         : AppendGb18030(content, storage);
    if (!good) {
        return ErrorBadContent;
    }
    bytes = storage;
    return ErrorNone;
}

}  // namespace comm
