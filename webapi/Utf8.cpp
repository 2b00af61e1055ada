#include "webapi/Utf8.h"

#include "platform/Utf8.h"

#include <stdexcept>
#include <string_view>

std::u8string Utf8FromBytes(const std::string& bytes) {
    for (std::string_view rest = bytes; !rest.empty();) {
        const std::size_t length = rest.front() == '\0' ? 0 : Utf8SequenceLength(rest);
        if (length == 0) {
            throw std::range_error("the text is no UTF-8, or holds a NUL");
        }
        rest.remove_prefix(length);
    }
    return {bytes.begin(), bytes.end()};
}
