#include "config/JsonDepth.h"

bool IsNestedTooDeep(std::string_view text) {
    std::size_t depth = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        switch (text[i]) {
            case '"':
                // To the end of the string; a backslash also skips the character after it.
                for (++i; i < text.size() && text[i] != '"'; ++i) {
                    if (text[i] == '\\') {
                        ++i;
                    }
                }
                break;
            case '[':
            case '{':
                if (++depth > kMaxJsonDepth) {
                    return true;
                }
                break;
            case ']':
            case '}':
                // The first value is complete, or the text is invalid JSON: no parser goes further.
                if (depth <= 1) {
                    return false;
                }
                --depth;
                break;
            default:
                break;
        }
    }
    return false;
}
