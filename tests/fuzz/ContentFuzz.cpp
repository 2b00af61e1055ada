// Any content of a command: an error gives nothing, and what comes out stands for what went in.
#include "libraries/comm/Content.h"
#include "libraries/comm/ErrorNumbers.h"
#include "tests/fuzz/FuzzTarget.h"

#include <algorithm>

namespace {

/** What ContentToBytes makes of it; nothing but an error when it refuses. */
bool Convert(std::string_view content, bool isText, int encoding, std::string& result) {
    std::string storage = "what was there before";
    std::string_view bytes = "and what was seen";
    const int error = comm::ContentToBytes(content, isText, encoding, storage, bytes);
    Require(error == comm::ErrorNone || (error == comm::ErrorBadContent && bytes.empty()));
    result = bytes;
    return error == comm::ErrorNone;
}

std::string Hexadecimal(std::string_view bytes) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        text += {'$', digits[byte >> 4U], digits[byte & 0x0FU]};
    }
    return text;
}

}  // namespace

FUZZ_TARGET(content) {
    std::string first;
    std::string second;
    if (Convert(bytes, false, 0, first)) {
        Require(first.size() <= bytes.size());
        Require(Convert(Hexadecimal(first), false, 0, second) && first == second);
    }
    Require(Convert(bytes, true, 0, first) && first == bytes);
    if (Convert(bytes, true, 1, first)) {
        // One byte for each character: those that go on a character, 80 to BF, are the ones that are saved.
        const auto isMore = [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; };
        Require(first.size() + static_cast<std::size_t>(std::count_if(bytes.begin(), bytes.end(), isMore)) ==
                bytes.size());
    }
    if (Convert(bytes, true, 2, first)) {
        Require(first.size() <= 2 * bytes.size() && first.empty() == bytes.empty());
    }
    Require(bytes.empty() || !Convert(bytes, true, 3, first));
}
