// Error reports of browsers, and the debug console.

#include "simulation/Machine.h"
#include "tests/integration/Served.h"

#include <list>
#include <set>
#include <sstream>
#include <thread>

#include <gtest/gtest.h>

namespace {

using nlohmann::json;
using namespace simulation;

const std::string kReport = "/api/log/reportClientError";
const std::string kConsole = "/api/device/setDeveloperMode";
constexpr std::string_view kDone = R"({"code":20000,"message":""})";
constexpr std::string_view kRefusedReport = R"({"code":30101,"message":""})";

using ClientErrors = Served;
using Console = Served;

/** The records of ClientError.log from the path of the request on; empty ones for lines of another form. */
std::vector<std::string> Records(const HostProcess& host) {
    const std::string form = "[0000-00-00 00:00:00] [ClientError] client=127.0.0.1";
    std::vector<std::string> records;
    std::istringstream lines(host.UserFile("ClientError.log"));
    for (std::string line; std::getline(lines, line);) {
        bool isWhole = line.size() > form.size() && line.find('\r') == line.size() - 1;
        for (std::size_t i = 0; isWhole && i < form.size(); ++i) {
            isWhole = line[i] == form[i] || (i < 20 && form[i] == '0' && line[i] >= '0' && line[i] <= '9');
        }
        const std::size_t path = line.find(" path=" + kReport);
        records.push_back(isWhole && path != std::string::npos ? line.substr(path + 6, line.size() - path - 7)
                                                               : "");
    }
    return records;
}

TEST_F(ClientErrors, AreRecordsOfOneLine) {
    std::vector<std::string> expected;
    for (const json& row : json::parse(ReadFile(std::filesystem::path(TEST_TABLES) / "reports.json"))) {
        EXPECT_EQ(browser.Http().Post(kReport, row[0].dump()).body, kDone);
        expected.push_back(kReport + row[1].get<std::string>());
    }
    EXPECT_EQ(browser.Http().Post(kReport, "{\"data\":").body, kRefusedReport);
    EXPECT_EQ(Records(host), expected);
    EXPECT_EQ(host.Stop(), 0);
    const std::string log = host.UserFile("Log/Server.log");
    EXPECT_NE(log.find("[Error]"), std::string::npos);
    EXPECT_NE(log.find("[RouterMgr::ReportClientError][] [[ClientError] client=127.0.0.1"),
              std::string::npos);
    EXPECT_NE(log.find(" path=" + kReport + " code=500 message=a\nb\tc\r] \n"), std::string::npos) << log;
    EXPECT_NE(host.UserFile("Log/Operation.log").find("] [20000] [client error logged] \n"),
              std::string::npos);
}

TEST(ClientErrorFile, IsNeededOnlyWhenThereCanBeOne) {
    HostProcess host;
    std::filesystem::create_directories(host.UserData() / "ClientError.log");
    host.Start();
    {
        Browser browser(host);
        EXPECT_EQ(browser.Http().Post(kReport, R"({"message":"kept"})").body, kDone);
        if (Differences::kRemovesOpenFiles) {
            std::filesystem::rename(host.UserData(), host.Home() / "moved");  // the logs write on in there
        } else {
            std::filesystem::remove(host.UserData() / "ClientError.log");
        }
        EXPECT_EQ(browser.Http().Post(kReport, R"({"message":"again"})").body, kDone);
    }
    EXPECT_EQ(Records(host), std::vector{kReport + " message=again"}) << "the folder is made anew";
    EXPECT_EQ(host.Stop(), 0);
}

TEST_F(ClientErrors, OfFourClientsAtOnceNeverMix) {
    constexpr int count = 500;
    {
        std::list<std::jthread> threads;
        for (int client = 0; client < 4; ++client) {
            threads.emplace_back([this, client] {
                HttpClient http(host.HttpPort());
                for (int i = 0; i < count; ++i) {
                    const json report = {{"code", client * count + i}, {"message", std::string(300, 'm')}};
                    EXPECT_EQ(http.Post(kReport, report.dump()).body, kDone);
                }
            });
        }
    }
    const auto records = Records(host);
    const std::set<std::string> different(records.begin(), records.end());
    EXPECT_EQ(records.size(), 4U * static_cast<std::size_t>(count));
    EXPECT_EQ(different.size(), records.size());
    EXPECT_FALSE(different.contains("")) << "a line that is not whole";
}

TEST_F(Console, ShowsBothLogsWhileItIsOn) {
    HttpClient& client = browser.Http();
    const auto shown = [this](const std::string& text) {
        return host.Process().ErrorOutput().find(text) != std::string::npos;
    };
    const auto log = [this](const std::string& name) { return host.UserFile("Log/" + name); };
    EXPECT_EQ(client.Post(kConsole, R"({"data":{"isDeveloperMode":true}})").body, kDone);
    const Browser other(host);  // leaves a record in Server.log
    client.Get("/api/getResource/seen");
    const std::string foreign = "POST /foreign HTTP/1.1\r\nHost: a\r\nOrigin: http://b\r\n";
    EXPECT_EQ(client.Exchange(foreign + "Content-Length: 0\r\n\r\n").status, 403);  // one in System.log
    EXPECT_EQ(client.Post(kConsole, R"({"data":{"isDeveloperMode":1}})").body, kRefusedReport);
    ASSERT_TRUE(WaitUntil([&] { return shown("isDeveloperMode") || shown("type must be"); }));
    EXPECT_TRUE(shown("[LogRoot][Info]")) << host.Process().ErrorOutput();
    EXPECT_TRUE(shown("/api/getResource/seen] [422] \n"));
    EXPECT_FALSE(shown("LogSystem"));

    EXPECT_EQ(client.Post(kConsole, R"({"data":{"isDeveloperMode":false}})").body, kDone);
    ASSERT_TRUE(WaitUntil([&] {  // what was on its way then
        client.Get("/api/getResource/past");
        return log("Operation.log").find("past] [422]") != std::string::npos;
    }));
    client.Get("/api/getResource/hidden");
    EXPECT_EQ(host.Stop(), 0);
    EXPECT_NE(log("Operation.log").find("/hidden] [422]"), std::string::npos);
    EXPECT_NE(log("System.log").find("/foreign"), std::string::npos);
    EXPECT_FALSE(shown("/hidden"));
}

}  // namespace
