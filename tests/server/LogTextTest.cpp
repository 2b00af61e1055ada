#include "server/ClientsManager.h"
#include "server/LogText.h"

#include <gtest/gtest.h>

namespace {

TEST(LogText, BracketsAndBlanks) {
    EXPECT_EQ(FormatLogText(), "");
    EXPECT_EQ(FormatLogText(20000, ""), "[20000] [] ");
    EXPECT_EQ(FormatLogText("[HTTP Server] Failed to start!", std::string("0.0.0.0"), 8086, -1),
              "[[HTTP Server] Failed to start!] [0.0.0.0] [8086] [-1] ");
    EXPECT_EQ(FormatLogText("{0} {1}", "x"), "[{0} {1}] [x] ");
}

TEST(LogText, PeerHost) {
    const std::pair<const char*, const char*> rows[] = {
        {"", ""},
        {"host", "host"},
        {"192.168.1.20:51234", "192.168.1.20"},
        {":80", ""},
        {"[fe80::1]:51234", "fe80::1"},
        {"[fe80::1]", "fe80::1"},
        {"fe80::1", "fe80:"},
    };
    for (const auto& [text, host] : rows) {
        EXPECT_EQ(ExtractPeerHost(text), host) << text;
    }
}

}  // namespace
