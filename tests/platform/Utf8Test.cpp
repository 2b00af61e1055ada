#include "platform/Utf8.h"

#include <string>

#include <gtest/gtest.h>

namespace {

TEST(Utf8, IsTakenApartByCharacters) {
    struct Row {
        const char* name;
        std::string bytes;
        std::u32string characters;
    };
    const Row rows[] = {
        {"one to four bytes", "a\u00e9\u4e32\U0001f600", U"a\u00e9\u4e32\U0001f600"},
        {"the last of each length", "\x7f\u07ff\uffff\U0010ffff", U"\x7f\u07ff\uffff\U0010ffff"},
        {"a NUL", std::string("\0a", 2), std::u32string(U"\0a", 2)},
        {"overlong", "\xc0\xaf\xe0\x80\xaf", U"\ufffd\ufffd\ufffd\ufffd\ufffd"},
        {"a surrogate", "\xed\xa0\x80", U"\ufffd\ufffd\ufffd"},
        {"above U+10FFFF", "\xf4\x90\x80\x80", U"\ufffd\ufffd\ufffd\ufffd"},
        {"cut short", "\xe4\xb8", U"\ufffd\ufffd"},
        {"a bad byte between good ones", "a\xff\u4e32", U"a\ufffd\u4e32"},
    };
    for (const auto& [name, bytes, characters] : rows) {
        std::u32string taken;
        for (std::string_view rest = bytes; !rest.empty();) {
            taken += TakeUtf8Character(rest);
        }
        EXPECT_EQ(taken, characters) << name;
    }
}

}  // namespace
