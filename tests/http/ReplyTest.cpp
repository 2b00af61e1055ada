// What goes out: routes, failures, large replies; and the texts that the library hands out.
#include "platform/WebRequests.h"
#include "simulation/Wait.h"
#include "tests/http/HttpFixture.h"

#include <filesystem>
#include <stdexcept>

#include <hv/hpath.h>
#include <hv/hurl.h>

namespace {

class ReplyTest : public HttpTest {
  protected:
    static http_sync_handler Echoes(const std::string& text) {
        return [text](HttpRequest* request, HttpResponse* reply) {
            reply->SetBody(text + "|" + request->GetParam("name", "-") + "|" + request->GetParam("q", "-"));
            return 200;
        };
    }

    static constexpr std::size_t kLarge = std::size_t{32} << 20;
};

TEST_F(ReplyTest, FindsTheRoute) {
    Write("index.html", "page");
    Write("static.txt", "static");
    Write("api/exact", "file");
    service.Static("/", folder.Path().string().c_str());
    service.GET("/", Echoes("root"));
    service.GET("/api/{name}", Echoes("replaced"));
    service.GET("/api/{name}", Echoes("pattern"));
    service.POST("/api/{name}/save", Echoes("save"));
    service.GET("/api/exact", Echoes("exact"));
    service.POST("/both", Echoes("post"));
    service.GET("/both", Echoes("get"));
    service.POST("/gone", [](HttpRequest*, HttpResponse*) { return 404; });
    service.GET("/missing", [](HttpRequest*, HttpResponse*) { return 422; });
    Run();
    Client client = Connect();
    for (const auto& row : Rows("routes.json")) {
        const HttpReply reply = client.Ask(Request(row[3], "Content-Length: 2\r\n", "{}"));
        EXPECT_EQ(row[0], reply.status) << row[3];
        EXPECT_EQ(row[1], reply.Header("Allow")) << row[3];
        EXPECT_EQ(row[2], reply.body) << row[3];
    }
    const auto withoutDate = [](std::string head) { return head.erase(head.find("Date:"), 37); };
    for (const std::string path : {"/", "/both", "/static.txt", "/missing", "/nowhere"}) {
        const std::string head = client.Ask(Request("HEAD " + path), false).head;
        // The reply to the GET would come behind the body, if there were one.
        EXPECT_EQ(withoutDate(client.Ask(Get(path)).head), withoutDate(head)) << path;
    }
}

TEST_F(ReplyTest, SurvivesFailingHandlers) {
    Write("half.bin", std::string(100'000, 'h'));
    service.GET("/throw", [file = Path("half.bin")](HttpRequest*, HttpResponse* response) -> int {
        response->File(file.c_str());
        throw std::runtime_error("out of tea");
    });
    service.GET("/odd", [](HttpRequest*, HttpResponse*) -> int { throw 42; });
    service.GET("/inject", [](HttpRequest*, HttpResponse* response) {
        response->SetHeader("X-Clean", "a\r\nX-Evil: b");
        response->headers["X-Raw"] = "a\r\nX-Evil: b";
        response->SetHeader("Content-Length", "5");
        return 204;
    });
    Run();
    TakeLog();
    Client client = Connect();
    for (const char* path : {"/throw", "/odd"}) {
        const HttpReply reply = client.Ask(Get(path));
        EXPECT_EQ(500, reply.status);
        EXPECT_EQ("", reply.body);
    }
    EXPECT_THAT(TakeLog(), ElementsAre(HasSubstr("/throw failed: out of tea"), HasSubstr("/odd failed")));
    const HttpReply clean = client.Ask(Get("/inject"));
    EXPECT_EQ(204, clean.status);
    EXPECT_EQ("a  X-Evil: b", clean.Header("X-Clean"));
    EXPECT_EQ("", clean.Header("X-Evil") + clean.Header("X-Raw") + clean.Header("Content-Length"));
}

TEST_F(ReplyTest, WritesLargeRepliesAsFastAsTheClientReads) {
    Write("large.bin", std::string(kLarge, 'f'));
    service.Static("/", folder.Path().string().c_str());
    service.GET("/large", Says(std::string(kLarge, 'x')));
    service.GET("/small", Says("small"));
    limits.writeStall = std::chrono::milliseconds(1500);
    limits.sweep = std::chrono::milliseconds(20);
    Run();
    Client deaf = Connect();
    deaf.Send(Get("/large"));
    for (const char* path : {"/large", "/large.bin"}) {
        Client client = Connect();
        client.Send(Get(path));
        EXPECT_TRUE(client.Socket().WaitReadable(simulation::kMaxTestWait));
        EXPECT_EQ(200, Connect().Ask(Get("/small")).status) << "while the large one is held up";
        EXPECT_EQ(kLarge, client.Read().body.size());
        EXPECT_EQ(200, client.Ask(Get("/small")).status);
    }
    EXPECT_TRUE(simulation::WaitUntil([&] { return !deaf.Send("\r"); })) << "who never reads is given up";
}

TEST_F(ReplyTest, SharesATextWithoutACopy) {
    const auto text = std::make_shared<const std::string>(kLarge, 's');
    service.GET("/shared", [text](HttpRequest*, HttpResponse* response) {
        SetReplyText(response, "<", text, ">");
        return 200;
    });
    service.GET("/text", [text](HttpRequest* request, HttpResponse* response) {
        SetReplyText(response, "", request->query_params.empty() ? nullptr : text, "tail");
        response->SetBody("body");
        return request->query_params.empty() ? 200 : 204;
    });
    Run();
    Client client = Connect();
    const HttpReply head = client.Ask(Request("HEAD /shared"), false);
    EXPECT_EQ(std::to_string(kLarge + 2), head.Header("Content-Length"));
    EXPECT_EQ("body", client.Ask(Get("/text")).body);
    EXPECT_EQ(204, client.Ask(Get("/text?none"), false).status);
    const long before = text.use_count();
    std::vector<Client> deaf;
    for (int i = 0; i < 3; ++i) {
        deaf.emplace_back(server.port).Send(Get("/shared"));
    }
    EXPECT_TRUE(simulation::WaitUntil([&] { return text.use_count() == before + 3; }));
    EXPECT_TRUE(client.Ask(Get("/shared")).body == "<" + *text + ">");
    deaf.clear();
    EXPECT_TRUE(simulation::WaitUntil([&] { return text.use_count() == before; })) << "let go of";
}

TEST_F(ReplyTest, IsToBeTakenAtALeastRate) {
    service.GET("/large", Says(std::string(kLarge, 'x')));
    limits.writeStall = std::chrono::hours(1);
    limits.transferWait = limits.sweep = std::chrono::milliseconds(20);
    limits.transferRate = std::uint64_t{1} << 40;
    Run();
    Client deaf = Connect();
    deaf.Send(Get("/large"));
    EXPECT_TRUE(simulation::WaitUntil([&] { return !deaf.Send("\r"); }));
}

TEST_F(ReplyTest, KeepsTheFramingOfFilesThatChangeMeanwhile) {
    std::string text(kLarge, '\0');
    for (std::size_t i = 0; i < text.size(); ++i) {
        text[i] = static_cast<char>(i / 1024 % 251);  // no two pieces are alike
    }
    Write("large.bin", text);
    const std::string file = Path("large.bin");
    service.GET("/file", [file](HttpRequest* request, HttpResponse* response) {
        const int status = response->File(file.c_str());
        if (!request->query_params.empty()) {
            response->SetBody("text");
        }
        return status;
    });
    Run();
    Client client = Connect();
    EXPECT_EQ("text", client.Ask(Get("/file?replaced")).body);
    const HttpReply head = client.Ask(Request("HEAD /file"), false);
    EXPECT_EQ(std::to_string(kLarge), head.Header("Content-Length"));
    EXPECT_TRUE(client.Ask(Get("/file")).body == text);

    client.Send(Get("/file"));
    ASSERT_TRUE(client.Socket().WaitReadable(simulation::kMaxTestWait));
    std::filesystem::resize_file(file, kLarge + 1000);
    EXPECT_TRUE(client.Read().body == text) << "a file that grows";
    EXPECT_EQ(kLarge + 1000, client.Ask(Get("/file")).body.size());

    client.Send(Get("/file"));
    ASSERT_TRUE(client.Socket().WaitReadable(simulation::kMaxTestWait));
    std::filesystem::resize_file(file, 1000);
    const std::string rest = client.Rest();
    EXPECT_LT(rest.size(), kLarge) << "a file that is cut ends the connection";
    EXPECT_EQ("", Connect().Ask(Get("/file")).Header("Connection"));
}

TEST_F(ReplyTest, ReadsFilesIntoReplies) {
    HttpResponse response;
    for (const auto& [name, type] :
         {std::pair("a.PNG", "image/png"), {"b.html", "text/html; charset=utf-8"}}) {
        Write(name, "content");
        response = {};
        EXPECT_EQ(200, response.File(Path(name).c_str()));
        EXPECT_EQ("content", response.body);
        EXPECT_EQ(type, response.GetHeader("content-type"));
    }
    response.SetContentType(TEXT_PLAIN);
    EXPECT_EQ(200, response.File(Path("a.PNG").c_str()));
    EXPECT_EQ("text/plain", response.GetHeader("Content-Type"));
    for (const char* missing : {"none", ""}) {
        EXPECT_EQ(404, response.File(Path(missing).c_str())) << missing;
    }
}

TEST(TextTest, NamesAndTypes) {
    EXPECT_EQ("a b%c/%4", HUrl::unescape("a+b%c%2f%4"));
    EXPECT_EQ("dir/a dir/a /a", HPath::join("dir", "a ") + HPath::join("dir/", "a ") + HPath::join("", "a"));
    for (const auto& row : Rows("types.json")) {
        EXPECT_EQ(row[1], http_content_type_str_by_suffix(row[0].get<std::string>().c_str())) << row[0];
    }
    EXPECT_EQ(TEXT_HTML, http_content_type_enum("text/HTML ; charset=utf-8"));
    sockaddr_u address{};
    address.sin6.sin6_family = AF_INET6;
    address.sin6.sin6_addr.s6_addr[15] = 1;
    address.sin6.sin6_port = htons(80);
    char text[64];
    EXPECT_STREQ("[::1]:80", sockaddr_str(&address, text, sizeof text));
    EXPECT_STREQ("[::", sockaddr_str(&address, text, 4));
}

}  // namespace
