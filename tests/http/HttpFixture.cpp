#include "tests/http/HttpFixture.h"

#include "platform/RavLog.h"

#include <fstream>
#include <mutex>
#include <system_error>

bool Client::Send(std::string_view bytes) {
    try {
        m_socket.Send(bytes);
        return true;
    } catch (const std::system_error&) {
        return false;
    }
}

HttpReply Client::Read(bool hasBody) {
    HttpReply reply;
    std::size_t end = 0;
    while ((end = m_input.find("\r\n\r\n")) == std::string::npos) {
        const std::string more = m_socket.Receive();
        if (more.empty()) {
            return reply;
        }
        m_input += more;
    }
    reply.head = Take(end + 4);
    reply.status = std::stoi(reply.head.substr(9));
    const std::string length = reply.Header("Content-Length");
    reply.body = hasBody && !length.empty() ? Take(std::stoul(length)) : "";
    return reply;
}

std::string Client::Take(std::size_t size) {
    while (m_input.size() < size) {
        const std::string more = m_socket.Receive();
        if (more.empty()) {
            break;
        }
        m_input += more;
    }
    std::string taken = m_input.substr(0, size);
    m_input.erase(0, taken.size());
    return taken;
}

std::string Get(const std::string& target, const std::string& headers) {
    return "GET " + target + " HTTP/1.1\r\nHost: localhost\r\n" + headers + "\r\n";
}

std::string Post(const std::string& target, const std::string& body, const std::string& headers) {
    return "POST " + target +
           " HTTP/1.1\r\nHost: localhost\r\nContent-Length: " + std::to_string(body.size()) + "\r\n" +
           headers + "\r\n" + body;
}

namespace {

std::string Unescaped(std::string_view cell) {
    std::string text;
    for (std::size_t i = 0; i < cell.size(); ++i) {
        if (cell[i] == '\\' && i + 1 < cell.size() && std::string_view("rntx").find(cell[i + 1]) < 4) {
            const char kind = cell[++i];
            text += kind == 'r'   ? '\r'
                    : kind == 'n' ? '\n'
                    : kind == 't'
                        ? '\t'
                        : static_cast<char>(std::stoi(std::string(cell.substr(i + 1, 2)), nullptr, 16));
            i += kind == 'x' ? 2 : 0;
        } else if (cell[i] == '{') {
            const std::size_t star = cell.find('*', i);
            const std::size_t end = cell.find('}', i);
            const std::string repeated = Unescaped(cell.substr(star + 1, end - star - 1));
            for (int count = std::stoi(std::string(cell.substr(i + 1))); count > 0; --count) {
                text += repeated;
            }
            i = end;
        } else {
            text += cell[i];
        }
    }
    return text;
}

std::mutex g_logMutex;
std::vector<std::string> g_log;

}  // namespace

std::vector<std::vector<std::string>> Rows(const std::string& file) {
    std::ifstream in(std::string(HTTP_TEST_DATA) + file);
    std::vector<std::vector<std::string>> rows;
    for (std::string line; std::getline(in, line);) {
        if (line.starts_with('#')) {
            continue;
        }
        auto& row = rows.emplace_back();
        for (std::size_t from = 0; from < line.size();) {
            const std::size_t bar = std::min(line.find(" | ", from), line.size());
            const std::string cell = line.substr(from, bar - from);
            row.push_back(cell == "." ? "" : Unescaped(cell.substr(0, cell.find_last_not_of(' ') + 1)));
            row.back() = row.back() == "." ? "" : row.back();
            from = bar + 3;
        }
    }
    EXPECT_FALSE(rows.empty()) << file;
    return rows;
}

std::vector<std::string> TakeLog() {
    const std::lock_guard lock(g_logMutex);
    return std::exchange(g_log, {});
}

// Stands in for the system log.
void RavLog::WriteSystemLog(EnLogLevel /*level*/, std::string_view /*place*/, std::string_view text) {
    const std::lock_guard lock(g_logMutex);
    g_log.emplace_back(text);
}
