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
using simulation::Browser;
using simulation::HostOptions;
using simulation::HostProcess;
using simulation::HttpClient;
using simulation::HttpReply;

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
    bool isInside = false;
    const auto setRequest = [&next](const std::string& line) {
        next.method = line.substr(0, line.find(' '));
        next.path = line.substr(line.find(' ') + 1);
    };
    bool isCode = false;  // between fences of another language
    for (std::string line; std::getline(lines, line);) {
        if (isCode || (line.starts_with("```") && line != "```")) {
            isCode = line != "```";
        } else if (line == "```") {
            if (isInside) {
                examples.push_back(next);
                next = {{}, next.method, next.path, {}, {}, {}};
            }
            isInside = !isInside;
        } else if (line.starts_with("### ")) {
            setRequest(line.substr(4));
        } else if (line.starts_with("<!-- ")) {
            next.condition = line;
        } else if (isInside && (line.starts_with(kArrow) || !next.reply.empty())) {
            const std::size_t begin = line.starts_with(kArrow) ? kArrow.size() : line.find_first_not_of(' ');
            next.reply.push_back(line.substr(begin));
        } else if (isInside && (line.starts_with("GET /") || line.starts_with("POST /"))) {
            setRequest(line);
        } else if (isInside && next.body.empty() && line.starts_with("If-")) {
            next.headers += line + "\r\n";
        } else if (isInside) {
            next.body += line + "\n";
        }
    }
    return examples;
}

/** The system's sentence for a refused connection, without its line end. */
std::string Refused() {
    const std::string text = simulation::ErrorText(10061);
    return text.substr(0, text.find('\r'));
}

/** What the document calls by other names than this machine. */
std::string Translated(std::string text, int projectorPort) {
    const std::pair<std::string, std::string> names[] = {
        {"10.0.0.7", "127.0.0.1"},
        {"4352", std::to_string(projectorPort)},
        {"Example Maker", kMakerNameEnglish},
        {"https://www.example.com/?language=en", kMakerWebsiteEnglish},
        {"+1 555 0100", kMakerPhone},
        {"info@example.com", kMakerEmail},
        {"No connection could be made because the target machine actively refused it.", Refused()},
    };
    for (const auto& [from, to] : names) {
        for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
            text.replace(at, from.size(), to);
        }
    }
    return text;
}

/** A list of ports without those that this machine has of its own. */
std::string OnlyRelayPort(const std::string& list) {
    json reply = json::parse(list);
    json& ports = reply.at("data").at("comList");
    ports.erase(std::remove_if(ports.begin(), ports.end(),
                               [](const json& port) {
                                   return port != json{{"comPort", "COM5"}};
                               }),
                ports.end());
    return reply.dump();
}

/** A reply is a status with headers, or the lines of a JSON text. */
void ExpectReply(const Example& example, const HttpReply& reply, int projectorPort) {
    const std::string what = example.method + " " + example.path + " " + example.body;
    ASSERT_FALSE(example.reply.empty()) << what;
    if (example.reply[0][0] != '{') {
        EXPECT_EQ(std::to_string(reply.status), example.reply[0]) << what;
        for (std::size_t i = 1; i < example.reply.size(); ++i) {
            const std::string& line = example.reply[i];
            const std::size_t colon = line.find(": ");
            EXPECT_EQ(reply.Header(line.substr(0, colon)), line.substr(colon + 2)) << what;
        }
        return;
    }
    std::string text;
    for (const std::string& line : example.reply) {
        text += line;
    }
    EXPECT_EQ(reply.status, 200) << what;
    EXPECT_EQ(reply.body, Translated(text, projectorPort)) << what;
}

TEST(ApiExamples, AreTrue) {
    HostOptions options;
    options.ownInstallation = true;
    HostProcess host(options);
    simulation::WriteFile(host.Installation() / "dist/index.html", "<!doctype html>");
    simulation::WriteFile(host.Installation() / "Resource/Version.info",
                          "Varnholt\n1.0.0\n412\n2026-11-21 12:00:00\n");
    simulation::WriteFile(host.Installation() / "Resource/manuals/projector.pdf", "%PDF");
    const simulation::PtyPair line(host.Home() / "line");
    simulation::WriteFile(host.UserData() / "SerialPorts.json",
                          nlohmann::json{{"COM5", line.Device().string()}}.dump());
    std::optional<simulation::TcpListener> projector(std::in_place);
    const int port = projector->Port();
    host.Start();
    Browser browser(host);
    const std::string document = simulation::ReadFile(kSources / "docs/http-api.md");
    for (const Example& example : ReadExamples(document)) {
        if (example.condition.find("switched off") != std::string::npos) {
            EXPECT_EQ(projector->Received().WaitBytes(7), "PWR ON\r");
            projector.reset();
        }
        HttpReply reply = browser.Http().Exchange(HttpClient::Request(
            example.method, example.path, Translated(example.body, port), example.headers));
        if (example.path == "/api/getServerComList") {
            if (!simulation::Differences::kHasPortList) {
                continue;
            }
            reply.body = OnlyRelayPort(reply.body);
        }
        ExpectReply(example, reply, port);
    }
    EXPECT_FALSE(projector.has_value()) << "all examples were read";
}

TEST(ApiExamples, TellOfEachRoute) {
    const std::string document = simulation::ReadFile(kSources / "docs/http-api.md");
    const std::string table = simulation::ReadFile(kSources / "server/RouteTable.cpp");
    int routes = 0;
    for (std::size_t at = 0; (at = table.find("\"/", at)) != std::string::npos; ++routes) {
        const std::string path = table.substr(at + 1, table.find('"', at + 1) - at - 1);
        EXPECT_NE(document.find(path.substr(path.rfind('/') + 1)), std::string::npos) << path;
        at += path.size();
    }
    EXPECT_GT(routes, 20);
}

}  // namespace
