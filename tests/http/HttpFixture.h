#pragma once

#include "libraries/http/src/Limits.h"
#include "simulation/HttpClient.h"
#include "simulation/TableText.h"
#include "simulation/TemporaryFolder.h"

#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hv/WebSocketServer.h>
#include <nlohmann/json.hpp>

using simulation::Expanded;
using simulation::FromHex;
using simulation::HttpReply;
using testing::ElementsAre;
using testing::HasSubstr;

/**
 * A raw client: sends any bytes, and reads replies, frames, or everything up to the end of the connection.
 */
class Client {
  public:
    explicit Client(int port, const char* from = "127.0.0.1")
        : m_socket(simulation::Socket::Connect(port, from)) {}

    /** Sends bytes; it is no failure if the server has refused and closed already. */
    bool Send(std::string_view bytes);

    /** The next reply; status 0 when the connection ends instead. */
    HttpReply Read(bool hasBody = true);

    HttpReply Ask(std::string_view request, bool hasBody = true) { return Send(request), Read(hasBody); }

    /** The next bytes, fewer only at the end of the connection. */
    std::string Take(std::size_t size);

    /** Everything up to the end of the connection. */
    std::string Rest() { return Take(~std::size_t{0}); }

    simulation::Socket& Socket() { return m_socket; }

  private:
    bool Receive();

    simulation::Socket m_socket;
    std::string m_input;
};

/** A request: its line without the version, further headers with their line ends, and what follows. */
inline std::string Request(const std::string& line, const std::string& headers = "",
                           const std::string& body = "") {
    return line + " HTTP/1.1\r\nHost: a\r\n" + headers + "\r\n" + body;
}

inline std::string Get(const std::string& target, const std::string& headers = "") {
    return Request("GET " + target, headers);
}

inline std::string Post(const std::string& target, const std::string& body) {
    return simulation::HttpClient::Request("POST", target, body);
}

constexpr const char* kChunked = "Transfer-Encoding: chunked\r\n";

/** A handler that replies with this text. */
inline http_sync_handler Says(const std::string& text) {
    return [text](HttpRequest*, HttpResponse* response) {
        response->SetBody(text);
        return 200;
    };
}

/** Rows of a table in the data folder. */
inline nlohmann::json Rows(const std::string& file) {
    return nlohmann::json::parse(simulation::ReadFile(std::string(HTTP_TEST_DATA) + file));
}

/** Rows of origins.json, with the machine's name for OWN; "panel.example.com" is made an allowed host. */
nlohmann::json OriginRows();

/** A server of its own for each test, with limits that the test may lower before Run. */
class HttpTest : public ::testing::Test {
  protected:
    void TearDown() override {
        http_server_stop(&server);
        limits = saved;
    }

    void Run() {
        server.service = &service;
        server.port = simulation::FreePort();
        ASSERT_EQ(0, http_server_run(&server, 0));
    }

    Client Connect() { return Client(server.port); }
    std::string Path(const std::string& name) { return (folder.Path() / name).string(); }
    void Write(const std::string& name, std::string_view text) { simulation::WriteFile(Path(name), text); }

    const hv::internal::Limits saved = hv::internal::LimitsOfNewServers();
    hv::internal::Limits& limits = hv::internal::LimitsOfNewServers();
    hv::HttpService service;
    hv::WebSocketService webSockets;
    http_server_t server;
    simulation::TemporaryFolder folder;
};

/** The lines of the system log since the last call. */
std::vector<std::string> TakeLog();
