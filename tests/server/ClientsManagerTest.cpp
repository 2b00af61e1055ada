#include "server/ClientsManager.h"
#include "server/RouterMgr.h"

#include <memory>

#include <gtest/gtest.h>

namespace {

TEST(ClientsManager, AClientIdHasNoSeparator) {
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

TEST(ClientsManager, TakesTheHostOfAPeer) {
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
