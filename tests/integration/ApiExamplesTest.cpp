// The examples of docs/http-api.md, made against the built host from top to bottom.

#include "simulation/Browser.h"
#include "simulation/Equipment.h"
#include "simulation/Machine.h"
#include "simulation/PtyPair.h"

#include <algorithm>
#include <optional>
#include <sstream>

#include <gtest/gtest.h>

#include <webapi/Maker.h>

namespace {

using nlohmann::json;
using namespace simulation;

const std::filesystem::path kSources = std::filesystem::path(TEST_TABLES) / "../..";
const std::string kArrow = "→ ";

/** One block between fences: a request line if it is not that of the heading, a body, and the reply. */
struct Example {
    std::string condition;  ///< the comment before it
    std::string method;
    std::string path;
    std::string headers;
    std::string body;
    std::vector<std::string> reply;
};

std::vector<Example> ReadExamples(const std::string& document) {
    std::vector<Example> examples;
    std::istringstream lines(document);
    Example next;
    std::string fence;  // which has begun the block that the line is in
    for (std::string line; std::getline(lines, line);) {
        const bool isInside = fence == "```";  // not in code of another language
        const bool isRequest = isInside && (line.starts_with("GET /") || line.starts_with("POST /"));
        const bool isFirstOfReply = isInside && line.starts_with(kArrow);
        if (line.starts_with("```")) {
            if (isInside) {
                examples.push_back(next);
                next = {{}, next.method, next.path, {}, {}, {}};
            }
            fence = fence.empty() ? line : "";
        } else if (isFirstOfReply || (isInside && !next.reply.empty())) {
            next.reply.push_back(line.substr(isFirstOfReply ? kArrow.size() : line.find_first_not_of(' ')));
        } else if (isRequest || (fence.empty() && line.starts_with("### "))) {
            std::istringstream(isRequest ? line : line.substr(4)) >> next.method >> next.path;
        } else if (line.starts_with("<!-- ")) {
            next.condition = line;
        } else if (isInside) {
            const bool isHeader = next.body.empty() && line.starts_with("If-");
            (isHeader ? next.headers : next.body) += line + (isHeader ? "\r\n" : "\n");
        }
    }
    return examples;
}

/** What the document calls by other names than this machine. */
std::string Translated(std::string text, int projectorPort) {
    const std::string refused = ErrorText(10061);
    const std::pair<std::string, std::string> names[] = {
        {"10.0.0.7", "127.0.0.1"},
        {"4352", std::to_string(projectorPort)},
        {"Example Maker", kMakerNameEnglish},
        {"https://www.example.com/?language=en", kMakerWebsiteEnglish},
        {"+1 555 0100", kMakerPhone},
        {"info@example.com", kMakerEmail},
        {"No connection could be made because the target machine actively refused it.",
         refused.substr(0, refused.find('\r'))},
    };
    for (const auto& [from, to] : names) {
        for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
            text.replace(at, from.size(), to);
        }
    }
    return text;
}

/** A reply is a status with headers, or the lines of a JSON text. */
void ExpectReply(const Example& example, const HttpReply& reply, int projectorPort) {
    ASSERT_FALSE(example.reply.empty());
    if (example.reply[0][0] == '{') {
        std::string text;
        for (const std::string& line : example.reply) {
            text += line;
        }
        EXPECT_EQ(reply.status, 200);
        EXPECT_EQ(reply.body, Translated(text, projectorPort));
        return;
    }
    EXPECT_EQ(std::to_string(reply.status), example.reply[0]);
    for (std::size_t i = 1; i < example.reply.size(); ++i) {
        const std::size_t colon = example.reply[i].find(": ");
        EXPECT_EQ(reply.Header(example.reply[i].substr(0, colon)), example.reply[i].substr(colon + 2));
    }
}

TEST(ApiExamples, AreTrue) {
    HostProcess host({.ownInstallation = true});
    WriteFile(host.Installation() / "dist/index.html", "<!doctype html>");
    WriteFile(host.Installation() / "Resource/Version.info", "Varnholt\n1.0.0\n412\n2026-11-21 12:00:00\n");
    WriteFile(host.Installation() / "Resource/manuals/projector.pdf", "%PDF");
    const PtyPair line(host.Home() / "line");
    WriteFile(host.UserData() / "SerialPorts.json", nlohmann::json{{"COM5", line.Device().string()}}.dump());
    WriteFile(host.UserData() / "Backup/2026-11-22_14-05-33/layout.json", "{}");
    std::optional<TcpListener> projector(std::in_place);
    const int port = projector->Port();
    host.Start();
    Browser browser(host);
    const std::string document = ReadFile(kSources / "docs/http-api.md");
    for (const Example& example : ReadExamples(document)) {
        SCOPED_TRACE(example.method + " " + example.path + " " + example.body);
        if (example.condition.find("switched off") != std::string::npos) {
            EXPECT_EQ(projector->Received().WaitBytes(7), "PWR ON\r");
            projector.reset();
        }
        HttpReply reply = browser.Http().Exchange(HttpClient::Request(
            example.method, example.path, Translated(example.body, port), example.headers));
        if (example.path == "/api/getServerComList") {
            if (!Differences::kHasPortList) {
                continue;
            }
            json list = json::parse(reply.body);  // without the ports that this machine has of its own
            json& ports = list.at("data").at("comList");
            const json relay = {{"comPort", "COM5"}};
            ports =
                json::array_t(static_cast<std::size_t>(std::count(ports.begin(), ports.end(), relay)), relay);
            reply.body = list.dump();
        }
        ExpectReply(example, reply, port);
    }
    EXPECT_FALSE(projector.has_value()) << "all examples were read";
}

TEST(ApiExamples, TellOfEachRoute) {
    const std::string document = ReadFile(kSources / "docs/http-api.md");
    std::string table;
    for (const char* file :
         {"server/RouteTable.cpp", "equipment/EquipmentRoutes.cpp", "versions/api/VersionRoutes.cpp"}) {
        table += ReadFile(kSources / file);
    }
    int routes = 0;
    for (std::size_t at = 0; (at = table.find("\"/", at)) != std::string::npos; ++routes) {
        const std::string path = table.substr(at + 1, table.find('"', at + 1) - at - 1);
        EXPECT_NE(document.find(path.substr(path.rfind('/') + 1)), std::string::npos) << path;
        at += path.size();
    }
    EXPECT_GT(routes, 20);
}

}  // namespace
