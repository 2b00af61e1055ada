// Files of the web root: what is served, how it is cached, and what is never served.
#include "simulation/Machine.h"
#include "tests/http/HttpFixture.h"

#include <utility>

namespace {

class StaticTest : public HttpTest {
  protected:
    void SetUp() override {
        for (const auto& row : Rows("files.json")) {
            Write(row[0], row[1].get<std::string>());
        }
        simulation::MakeLink(Path("outside.txt"), Path("www/absolute"));
        simulation::MakeLink("../outside.txt", Path("www/relative"));
        simulation::MakeLink(folder.Path(), Path("www/up"));
        m_hasLinks = simulation::MakeLink("sub/index.html", Path("www/inside"));
        service.Static("/", Path("www").c_str());
        Run();
    }

    bool m_hasLinks = false;
};

TEST_F(StaticTest, NeverLeavesTheFolder) {
    Client client = Connect();
    for (const auto& path : Rows("hostile_paths.json")) {
        const HttpReply reply = client.Ask(Get(path));
        EXPECT_EQ(404, reply.status) << path;
        EXPECT_EQ("", reply.body) << path;
    }
    if (m_hasLinks) {
        EXPECT_EQ("sub", client.Ask(Get("/inside")).body) << "a link that stays inside";
    }
}

TEST_F(StaticTest, ServesAndValidates) {
    Client client = Connect();
    const HttpReply page = client.Ask(Get("/"));
    EXPECT_EQ("<html>", page.body);
    EXPECT_EQ("text/html; charset=utf-8", page.Header("Content-Type"));
    EXPECT_EQ("no-cache", page.Header("Cache-Control"));
    EXPECT_EQ("sub", client.Ask(Get("/sub/")).body);
    EXPECT_EQ("image/png", client.Ask(Get("/sub/a%20b.png")).Header("Content-Type"));
    const HttpReply script = client.Ask(Get("/app.js"));
    EXPECT_EQ("", script.Header("Cache-Control"));
    for (const auto& row : Rows("conditions.json")) {
        std::string header = row[3];
        for (const auto& [name, value] :
             {std::pair("TAG", script.Header("ETag")), {"DATE", script.Header("Last-Modified")}}) {
            const std::size_t at = header.find(name);
            header = at == std::string::npos ? header : header.replace(at, std::string(name).size(), value);
        }
        const HttpReply reply = client.Ask(Get("/app.js", header + "\r\n"));
        EXPECT_EQ(row[0], reply.status) << header;
        EXPECT_EQ(row[1], reply.Header("Content-Range")) << header;
        EXPECT_EQ(row[2], reply.body) << header;
        EXPECT_EQ("Accept-Encoding", reply.Header("Vary")) << header;
        EXPECT_EQ("application/javascript", reply.Header("Content-Type")) << header;
    }
    const HttpReply head = client.Ask(Request("HEAD /app.js", "Range: bytes=1-2\r\n"), false);
    EXPECT_EQ("10", head.Header("Content-Length"));
    EXPECT_EQ("0123456789", client.Ask(Get("/app.js")).body) << "no body came behind the head";
}

}  // namespace
