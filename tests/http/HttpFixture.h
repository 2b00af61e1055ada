#pragma once

#include "libraries/http/src/Limits.h"
#include "tests/support/HttpClient.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <hv/WebSocketServer.h>

using support::HttpReply;

/** A raw client: sends any bytes, reads replies, frames or up to the end of the connection. */
class Client {
  public:
    explicit Client(int port) : m_socket(support::Socket::Connect(port)) {}

    /** Sends; a server that has refused and closed already is no failure. */
    bool Send(std::string_view bytes);

    /** The next reply; status 0 when the connection ends instead. */
    HttpReply Read(bool hasBody = true);

    HttpReply Ask(std::string_view request, bool hasBody = true) { return Send(request), Read(hasBody); }

    /** The next bytes, fewer only at the end of the connection. */
    std::string Take(std::size_t size);

    /** All up to the end of the connection. */
    std::string Rest() { return Take(~std::size_t{0}); }

    support::Socket& Socket() { return m_socket; }

  private:
    support::Socket m_socket;
    std::string m_input;
};

/** Requests with a Host and what else they need. */
std::string Get(const std::string& target, const std::string& headers = "");
std::string Post(const std::string& target, const std::string& body, const std::string& headers = "");

/** Rows of a file of the data folder: cells between " | ", "." empty, with \r \n \t \xHH and {count*text}. */
std::vector<std::vector<std::string>> Rows(const std::string& file);

/** A server of its own for each test, with limits that the test may lower before Run. */
class HttpTest : public ::testing::Test {
  protected:
    void TearDown() override {
        http_server_stop(&server);
        limits = saved;
    }

    void Run() {
        server.service = &service;
        server.port = support::FreePort();
        ASSERT_EQ(0, http_server_run(&server, 0));
    }

    Client Connect() { return Client(server.port); }
    std::string Path(const std::string& name) { return (folder.Path() / name).string(); }
    void Write(const std::string& name, std::string_view text) { support::WriteFile(Path(name), text); }

    const hv::internal::Limits saved = hv::internal::LimitsOfNewServers();
    hv::internal::Limits& limits = hv::internal::LimitsOfNewServers();
    hv::HttpService service;
    hv::WebSocketService webSockets;
    http_server_t server;
    support::TemporaryFolder folder;
};

/** The lines of the system log since the last call. */
std::vector<std::string> TakeLog();
