#include "simulation/HttpClient.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>

namespace simulation {

std::string HttpReply::Header(std::string_view name) const {
    const auto same = [](char a, char b) {
        return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
    };
    const std::string key = "\r\n" + std::string(name) + ":";
    const auto found = std::search(head.begin(), head.end(), key.begin(), key.end(), same);
    if (found == head.end()) {
        return {};
    }
    const std::size_t begin =
        head.find_first_not_of(' ', static_cast<std::size_t>(found - head.begin()) + key.size());
    return head.substr(begin, head.find("\r\n", begin) - begin);
}

std::string HttpClient::Request(const std::string& method, const std::string& path, const std::string& body,
                                const std::string& headers) {
    std::string text = method + " " + path + " HTTP/1.1\r\nHost: localhost\r\n" + headers;
    if (method != "GET") {
        text += "Content-Type: application/json\r\nContent-Length: " + std::to_string(body.size()) + "\r\n";
    }
    return text + "\r\n" + body;
}

void HttpClient::Write(std::string_view bytes) {
    const bool ended = m_socket.IsOpen() && m_received.empty() && m_socket.WaitReadable(milliseconds(0));
    if (!m_socket.IsOpen() || ended) {
        m_socket = Socket::Connect(m_port, m_from);
        m_received.clear();
    }
    m_socket.Send(bytes);
}

HttpReply HttpClient::Exchange(std::string_view bytes) {
    Write(bytes);
    return ReadReply();
}

HttpReply HttpClient::ReadReply() {
    HttpReply reply;
    const auto readMore = [this] {
        const std::string bytes = m_socket.Receive();
        m_received += bytes;
        return !bytes.empty();
    };
    std::size_t end = 0;
    while ((end = m_received.find("\r\n\r\n")) == std::string::npos) {
        if (!readMore()) {
            return reply;
        }
    }
    reply.head = m_received.substr(0, end + 2);
    m_received.erase(0, end + 4);
    reply.status = static_cast<int>(
        std::strtol(reply.head.c_str() + std::min<std::size_t>(9, reply.head.size()), nullptr, 10));
    const std::string length = reply.Header("Content-Length");
    const bool bodyless = reply.status < 200 || reply.status == 204 || reply.status == 304;
    const std::size_t size = !bodyless && length.empty() ? std::string::npos : std::stoul("0" + length);
    while (m_received.size() < size && readMore()) {
    }
    reply.body = m_received.substr(0, size);
    m_received.erase(0, size);
    return reply;
}

}  // namespace simulation
