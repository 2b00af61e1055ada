#include "tests/http/HttpFixture.h"

#include "libraries/http/src/OriginRule.h"
#include "platform/RavLog.h"
#include "platform/WebOrigins.h"

#include <sstream>
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
        if (!Receive()) {
            return reply;
        }
    }
    reply.head = Take(end + 4);
    reply.status = std::stoi(reply.head.substr(9));
    const std::string length = reply.Header("Content-Length");
    reply.body = hasBody && !length.empty() ? Take(std::stoul(length)) : "";
    return reply;
}

std::string Client::Take(std::size_t size) {
    while (m_input.size() < size && Receive()) {
    }
    std::string taken = m_input.substr(0, size);
    m_input.erase(0, taken.size());
    return taken;
}

bool Client::Receive() {
    const std::string more = m_socket.Receive();
    m_input += more;
    return !more.empty();
}

nlohmann::json OriginRows() {
    SetAllowedHosts({"other.example", "Panel.Example.com."});
    std::string text = Rows("origins.json").dump();
    for (std::size_t at = 0; (at = text.find("OWN", at)) != std::string::npos;) {
        text.replace(at, 3, hv::internal::MachineName());
    }
    return nlohmann::json::parse(text);
}

std::vector<std::string> TakeLog() {
    static const simulation::TemporaryFolder folder;
    static std::size_t seen = 0;
    RavLog::StopLogs();  // all is written then
    std::istringstream text(simulation::ReadTextFile(folder.Path() / "System.log").substr(seen));
    seen += text.str().size();
    RavLog::StartLogs(folder.Path().string(), "trace");
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);) {
        lines.push_back(line.substr(line.find("[] ") + 3));
    }
    return lines;
}
