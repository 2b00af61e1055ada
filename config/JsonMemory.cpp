#include "config/JsonMemory.h"

#include "config/JsonDepth.h"

#include <algorithm>

namespace {

// Bytes from the allocator, on a 64-bit system. The capacity of an array grows by doubling.
constexpr std::uint64_t kElement = 40;  // a place in an array, or the comma before a member
constexpr std::uint64_t kArray = 32;
constexpr std::uint64_t kObject = 64;
constexpr std::uint64_t kString = 48;        // of a value; also counted for a key, as part of its member
constexpr std::uint64_t kRestOfMember = 16;  // in addition to its string and its comma
constexpr std::uint64_t kInPlace = 15;       // longer texts take memory of their own
constexpr std::uint64_t kLongText = 24;      // in addition to the text
constexpr std::uint64_t kIndentation = 4;
constexpr std::uint64_t kCopies = 2;    // of the values: one is held, one is saved
constexpr std::uint64_t kTextRoom = 3;  // a growing text, and its former buffer of half the size

/** Bytes up to the end of a string that begins at the position; moves the position to its last quote. */
std::uint64_t LengthOfString(std::string_view text, std::size_t& place) {
    const std::size_t begin = ++place;
    while (place < text.size() && text[place] != '"') {
        place += text[place] == '\\' ? 2 : 1;
    }
    return std::min(place, text.size()) - begin;
}

std::uint64_t Sum(std::uint64_t values, std::uint64_t saved) {
    return kCopies * values + kTextRoom * saved;
}

}  // namespace

std::uint64_t EstimateJsonMemory(std::string_view text) {
    std::uint64_t values = 0;
    std::uint64_t saved = 0;
    std::uint64_t depth = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        ++saved;
        const char c = text[i];
        switch (c) {
            case '"': {
                const std::uint64_t length = LengthOfString(text, i);
                values += kString + (length > kInPlace ? length + kLongText : 0);
                saved += length + 1;
                break;
            }
            case ':':
                values += kRestOfMember;
                ++saved;
                break;
            case ',':
                values += kElement;
                saved += kIndentation * depth + 1;
                break;
            case '[':
            case '{':
                if (++depth > kMaxJsonDepth) {
                    return 0;  // refused before anything is made from it
                }
                values += c == '[' ? kArray : kObject;
                if (i + 1 < text.size() && text[i + 1] != ']' && text[i + 1] != '}') {
                    values += kElement;
                    saved += kIndentation * depth + 1;
                }
                break;
            case ']':
            case '}':
                if (depth <= 1) {
                    return Sum(values, saved);  // no parser goes further
                }
                --depth;
                saved += kIndentation * depth + 1;
                break;
            default:
                break;
        }
    }
    return Sum(values, saved);
}
