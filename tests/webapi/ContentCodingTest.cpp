#include "webapi/ContentCoding.h"

#include <utility>

#include <gtest/gtest.h>

namespace {

TEST(ContentCoding, GzipIsTakenByWhoSaysSo) {
    const std::pair<const char*, bool> rows[] = {
        {"", false},
        {"gzip", true},
        {"GZip , br", true},
        {"x-gzip", true},
        {"deflate, br;q=1.0", false},
        {"gzip;q=0", false},
        {"gzip;q=0.000, *", false},
        {"gzip ; q=0.001", true},
        {"gzip;Q=1.", true},
        {"*", true},
        {"*;q=0", false},
        {"identity, gzip;q=0.5", false},
        {"identity;q=0.5, gzip", true},
        {"gzip;q=0.5, identity;q=0.50", true},
        {"gzip;q=1.001", false},
        {"gzip;q=", false},
        {"gzip;q=0.1234", false},
        {"gzip;level=9", false},
        {",;,=,q", false},
        {"gzipped", false},
    };
    for (const auto& [accepted, takes] : rows) {
        EXPECT_EQ(TakesGzip(accepted), takes) << accepted;
    }
}

}  // namespace
