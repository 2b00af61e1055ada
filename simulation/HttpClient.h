#pragma once

#include "simulation/Socket.h"

namespace simulation {

/** One reply of the server. */
struct HttpReply {
    int status = 0;    ///< 0: the connection ended before a whole head was there
    std::string head;  ///< status line and headers as received, each with its line end
    std::string body;

    /** Value of a header, ignoring the case of its name; empty when it is absent. */
    std::string Header(std::string_view name) const;
};

/** One keep-alive connection, opened again when the server has closed it. One thread. */
class HttpClient {
  public:
    explicit HttpClient(int port, const char* from = "127.0.0.1") : m_port(port), m_from(from) {}

    HttpReply Get(const std::string& path) { return Exchange(Request("GET", path, "")); }
    HttpReply Post(const std::string& path, const std::string& body) {
        return Exchange(Request("POST", path, body));
    }

    /** Sends any bytes and reads one reply. */
    HttpReply Exchange(std::string_view bytes);

    /** Sends any bytes; ReadReply fetches the reply later. */
    void Write(std::string_view bytes);
    HttpReply ReadReply();

    /** The bytes of a plain request; headers: further ones, each with its line end. */
    static std::string Request(const std::string& method, const std::string& path, const std::string& body,
                               const std::string& headers = {});

    Socket& Connection() { return m_socket; }

  private:
    int m_port;
    const char* m_from;
    Socket m_socket;
    std::string m_received;
};

}  // namespace simulation
