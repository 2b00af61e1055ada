#include "libraries/comm/Content.h"

#include <array>
#include <cstdio>
#include <fstream>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

std::string Hex(std::string_view bytes) {
    std::string text;
    for (const char byte : bytes) {
        std::array<char, 3> digits{};
        std::snprintf(digits.data(), digits.size(), "%02X", static_cast<unsigned char>(byte));
        text += digits.data();
    }
    return text;
}

TEST(Content, TurnsIntoTheBytesOfTheVectorFile) {
    std::ifstream file(COMM_CONTENT_VECTORS);
    const auto vectors = nlohmann::json::parse(file);
    ASSERT_GT(vectors.size(), 30U);
    for (const auto& vector : vectors) {
        const auto content = vector["content"].get<std::string>();
        std::string storage;
        std::string_view bytes;
        const int error = comm::ContentToBytes(content, vector["contentFormat"] == 0,
                                               vector["asciiEncode"].get<int>(), storage, bytes);
        EXPECT_EQ(error, vector.value("error", 0)) << vector["name"];
        EXPECT_EQ(Hex(bytes), vector.value("bytes", "")) << vector["name"];
    }
}

TEST(Content, RefusesTextThatIsNotUtf8WhereItHasToBeConverted) {
    for (const std::string_view text : {"\xC3", "a\xC3(", "\xFF", "\x80", "\xED\xA0\x80", "ok \xE5\xBC"}) {
        for (const int encoding : {1, 2}) {
            std::string storage;
            std::string_view bytes = "old";
            EXPECT_EQ(comm::ContentToBytes(text, true, encoding, storage, bytes), 13)
                << Hex(text) << encoding;
            EXPECT_TRUE(bytes.empty()) << Hex(text);
        }
    }
}

TEST(Content, ConvertsTextLongerThanAnyBuffer) {
    std::string text;
    for (int i = 0; i < 5000; ++i) {
        text += "a\xE5\xBC\x80";
    }
    std::string storage;
    std::string_view bytes;
    EXPECT_EQ(comm::ContentToBytes(text, true, 2, storage, bytes), 0);
    EXPECT_EQ(bytes.size(), 15000U);
    EXPECT_EQ(bytes.rfind("a\xBF\xAA"), 14997U);
}

}  // namespace
