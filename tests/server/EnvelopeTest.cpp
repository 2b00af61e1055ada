#include "server/ClientsManager.h"
#include "server/RouterMgr.h"

#include <memory>

#include <gtest/gtest.h>

namespace {

TEST(Envelope, BytesOnTheWire) {
    struct SRow {
        nlohmann::json data;
        const char* body;
    };
    const SRow rows[] = {
        {nullptr, R"({"code":20000,"message":"m"})"},
        {nlohmann::json::array(), R"({"code":20000,"data":[],"message":"m"})"},
        {0, R"({"code":20000,"data":0,"message":"m"})"},
        {"", R"({"code":20000,"data":"","message":"m"})"},
        {{{"b", "页面"}, {"a", 1.5}}, R"({"code":20000,"data":{"a":1.5,"b":"页面"},"message":"m"})"},
    };
    for (const SRow& row : rows) {
        SCOPED_TRACE(row.body);
        HttpResponse response;
        SResponseData content{row.data, "m"};
        EXPECT_EQ(RouterMgr::WriteEnvelope(&response, CodeSuccess, content), 200);
        EXPECT_EQ(response.body, row.body);
        EXPECT_EQ(response.GetHeader("content-type"), "application/json; charset=utf-8");
    }
}

TEST(Envelope, AClientIdHasNoSeparator) {
    HttpRequest request;
    request.client_addr = {"10.0.0.5", 51234};
    EXPECT_EQ(MakeClientId(request), "10.0.0.551234");
}

TEST(ClientsManager, CountsConnectionsByHost) {
    CClientsManager clients;
    const auto one = std::make_shared<hv::WebSocketChannel>();
    const auto two = std::make_shared<hv::WebSocketChannel>();
    EXPECT_FALSE(clients.IsClientConnected(""));
    clients.DeleteClient(one);
    clients.AddClient(one);
    clients.AddClient(two);
    clients.DeleteClient(one);
    EXPECT_TRUE(clients.IsClientConnected(""));
    EXPECT_FALSE(clients.IsClientConnected("localhost"));
    clients.DeleteClient(two);
    EXPECT_FALSE(clients.IsClientConnected(""));
}

}  // namespace
