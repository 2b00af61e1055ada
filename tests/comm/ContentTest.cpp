#include "libraries/comm/Content.h"
#include "simulation/Machine.h"
#include "simulation/TableText.h"

#include <fstream>
#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

TEST(Content, TurnsIntoTheBytesOfTheVectorFile) {
    std::ifstream file(COMM_CONTENT_VECTORS);
    const auto vectors = nlohmann::json::parse(file);
    ASSERT_GT(vectors.size(), 30U);
    for (const auto& vector : vectors) {
        if (vector["asciiEncode"] == 2 && !simulation::Differences::kHasGb18030) {
            continue;
        }
        const auto content = vector["content"].get<std::string>();
        std::string storage;
        std::string_view bytes;
        const int error = comm::ContentToBytes(content, vector["contentFormat"] == 0,
                                               vector["asciiEncode"].get<int>(), storage, bytes);
        EXPECT_EQ(error, vector.value("error", 0)) << vector["name"];
        EXPECT_EQ(bytes, simulation::FromHex(vector.value("bytes", ""))) << vector["name"];
    }
}

// Minutes, should each token be looked for in all that follows it.
TEST(Content, ReadsMillionsOfTokensInOnePass) {
    for (const std::string token : {"$0", "00 ", "\\x0"}) {
        std::string content;
        for (int count = 0; count < 2000000; ++count) {
            content += token;
        }
        std::string storage;
        std::string_view bytes;
        EXPECT_EQ(comm::ContentToBytes(content, false, 0, storage, bytes), 0) << token;
        EXPECT_EQ(bytes, std::string(2000000, '\0')) << token;
    }
}

TEST(Content, RefusesTextThatIsNotUtf8WhereItHasToBeConverted) {
    for (const std::string_view text : {"\xC3", "a\xC3(", "\xFF", "\x80", "\xED\xA0\x80", "ok \xE5\xBC"}) {
        for (const int encoding : {1, 2}) {
            std::string storage;
            std::string_view bytes;
            EXPECT_EQ(comm::ContentToBytes(text, true, encoding, storage, bytes), 13) << text << encoding;
        }
    }
}

}  // namespace
