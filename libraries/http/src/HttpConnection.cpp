// Reading side of a connection: from the socket to the handler.
#include "libraries/http/src/HttpConnection.h"

#include "libraries/http/src/ErrorReport.h"
#include "libraries/http/src/Handshake.h"
#include "libraries/http/src/OriginRule.h"
#include "libraries/http/src/UrlText.h"
#include "libraries/http/src/WebSocketConnection.h"
#include "platform/WebRequests.h"

#include <algorithm>
#include <chrono>
#include <exception>

#include <boost/asio/post.hpp>
#include <boost/asio/write.hpp>

namespace hv::internal {

namespace asio = boost::asio;
using boost::system::error_code;

namespace {

constexpr std::string_view kContinue = "HTTP/1.1 100 Continue\r\n\r\n";
constexpr std::size_t kKeptCapacity = 4096;
constexpr std::uint64_t kMostEarned = 2'000'000;  // seconds, 23 days: more than the largest body earns

}  // namespace

HttpConnection::HttpConnection(ServerLoop& loop, Socket socket, const asio::ip::tcp::endpoint& peer)
    : ServerConnection(loop),
      m_socket(std::move(socket)),
      m_peer(peer),
      m_peerIp(peer.address().to_string()) {}

void HttpConnection::Start() {
    m_deadline = Clock::now() + m_server.Bounds().headerWait;
    WaitForInput();
}

void HttpConnection::Close() {
    if (IsDone()) {
        return;
    }
    m_phase = Phase::Closed;
    CloseNow(m_socket);
    m_exchange.reset();
    Leave();
}

void HttpConnection::Stop() {
    if (m_phase != Phase::Handling) {
        Close();
    }
}

bool HttpConnection::IsExpendable() const {
    return m_phase == Phase::Idle || m_phase == Phase::Header || m_phase == Phase::Draining;
}

// The stall limit alone would let a client that moves one byte within each hold the connection for ever.
void HttpConnection::ExpectBytes(Limits::Time stall) {
    const Limits& bounds = m_server.Bounds();
    const auto earned = std::chrono::seconds(std::min(m_exchange->moved / bounds.transferRate, kMostEarned));
    m_deadline = std::min(Clock::now() + stall, m_exchange->begun + bounds.transferWait + earned);
}

void HttpConnection::WaitForInput() {
    m_socket.async_wait(asio::socket_base::wait_read, [self = shared_from_this()](const error_code& error) {
        if (!error && !self->IsDone()) {
            self->OnReadable();
        }
    });
}

void HttpConnection::OnReadable() {
    std::string_view input;
    if (!Receive(input)) {
        return;
    }
    if (m_phase == Phase::Draining) {
        m_kept.clear();
        WaitForInput();
        return;
    }
    Process(input);
}

bool HttpConnection::Receive(std::string_view& input) {
    auto& scratch = m_loop.Scratch();
    error_code error;
    std::size_t wanted = scratch.size();
    if (m_server.WebSockets() != nullptr) {
        // What follows the upgrade request is left for the WebSocket stream.
        const std::size_t offered =
            m_socket.receive(asio::buffer(scratch), asio::socket_base::message_peek, error);
        const std::string all = m_kept + std::string(scratch.data(), error ? 0 : offered);
        const std::size_t end = all.find("\r\n\r\n");
        wanted =
            end == std::string::npos || end + 4 <= m_kept.size() ? scratch.size() : end + 4 - m_kept.size();
    }
    const std::size_t got = error ? 0 : m_socket.read_some(asio::buffer(scratch.data(), wanted), error);
    if (error == asio::error::would_block || error == asio::error::try_again) {
        WaitForInput();
        return false;
    }
    if (error) {
        Close();
        return false;
    }
    input = {scratch.data(), got};
    if (!m_kept.empty()) {
        m_kept.append(input);
        input = m_kept;
    }
    return true;
}

// The input is what has been kept, or came from the socket while nothing was kept.
void HttpConnection::Keep(std::string_view rest) {
    if (!m_kept.empty()) {
        m_kept.erase(0, m_kept.size() - rest.size());
    } else {
        m_kept.assign(rest);
    }
    if (m_kept.empty() && m_kept.capacity() > kKeptCapacity) {
        std::string().swap(m_kept);
    }
}

void HttpConnection::ProcessKept() {
    if (!IsDone()) {
        Process(m_kept);
    }
}

void HttpConnection::Process(std::string_view input) {
    if (!m_exchange) {
        while (input.starts_with('\r') || input.starts_with('\n')) {
            input.remove_prefix(1);  // RFC 9112, 2.2
        }
        if (input.empty()) {
            Keep(input);
            WaitForInput();
            return;
        }
        m_exchange = std::make_unique<Exchange>(m_server);
        if (m_phase == Phase::Idle) {
            m_deadline = Clock::now() + m_server.Bounds().headerWait;
        }
        m_phase = Phase::Header;
    }
    for (;;) {
        switch (m_exchange->reader.Put(input)) {
            case RequestReader::State::NeedMore:
                Keep(input);
                if (m_phase == Phase::Body) {
                    m_exchange->moved = m_exchange->reader.BodyBytes();
                    ExpectBytes(m_server.Bounds().bodyStall);
                }
                WaitForInput();
                return;
            case RequestReader::State::Header:
                if (!OnHeader()) {
                    return;
                }
                break;
            case RequestReader::State::Failed:
                Refuse(m_exchange->reader.FailStatus());
                return;
            case RequestReader::State::Done:
                Keep(input);
                Dispatch();
                return;
        }
    }
}

// Handles the header of a request whose body is missing: what needs no body is answered at once when the
// client waits for permission to send it.
bool HttpConnection::OnHeader() {
    m_phase = Phase::Body;
    m_exchange->begun = Clock::now();
    ExpectBytes(m_server.Bounds().bodyStall);
    if (m_server.WebSockets() != nullptr) {
        Refuse(400);
        return false;
    }
    Decide();
    if (m_exchange->handler != nullptr && !AdmitBody()) {
        return false;
    }
    RequestReader& reader = m_exchange->reader;
    if (m_exchange->handler == nullptr || m_exchange->refused) {
        reader.DiscardBody();
        if (reader.ExpectsContinue()) {
            m_keepAlive = false;
            Dispatch();
            return false;
        }
    } else if (reader.ExpectsContinue()) {
        error_code error;
        if (m_socket.write_some(asio::buffer(kContinue), error) != kContinue.size()) {
            Close();
            return false;
        }
    }
    return true;
}

// Whether to read the body, even if only to discard it; otherwise the request has been refused.
bool HttpConnection::AdmitBody() {
    const Limits& bounds = m_server.Bounds();
    const SBodyRule* rule = m_exchange->rule;
    RequestReader& reader = m_exchange->reader;
    const std::uint64_t limit = rule != nullptr ? rule->limit : bounds.plainBodyBytes;
    const std::uint64_t announced = reader.content_length().value_or(0);
    if (announced > limit) {
        Refuse(413);
        return false;
    }
    reader.LimitBody(limit, m_exchange->share);
    const bool isLarge = reader.MayExceed(bounds.largeBodyBytes);
    // A large body may replace something large, which is freed then.
    m_exchange->isLarge = isLarge || limit > bounds.plainBodyBytes;
    if (!isLarge) {
        return true;
    }
    if (rule != nullptr && rule->admits && !rule->admits(*m_exchange->request)) {
        m_exchange->handler = &rule->refuse;
        m_exchange->refused = true;
        return true;
    }
    if (announced > bounds.largeBodyBytes && !MemoryShare::IsFree(announced, bounds.memoryBudget)) {
        Refuse(HTTP_STATUS_SERVICE_UNAVAILABLE);
        return false;
    }
    return true;
}

std::string_view HttpConnection::Path() const {
    const std::string_view target = m_exchange->request->path;
    return target.substr(0, target.find('?'));
}

// Decides who answers: a handler, or a reply that exists already.
void HttpConnection::Decide() {
    if (std::exchange(m_exchange->decided, true)) {
        return;
    }
    HttpRequest& request = *m_exchange->request;
    HttpResponse& response = m_exchange->response;
    request.client_addr = {m_peerIp, m_peer.port()};
    if (request.method == HTTP_POST && IsForeign()) {
        return;
    }
    RouteMatch match = m_server.Routes().Find(request.method, Path(), request.query_params);
    m_exchange->handler = match.handler;
    m_exchange->rule = match.rule;
    if (match.handler != nullptr) {
        if (const std::size_t query = request.path.find('?'); query != std::string::npos) {
            ReadQuery(std::string_view(request.path).substr(query + 1), request.query_params);
        }
    } else if (match.known) {
        response.status_code = static_cast<http_status>(405);
        response.SetHeader("Allow", match.allow);
    } else {
        m_exchange->asksForFile = true;
    }
}

bool HttpConnection::IsForeign() {
    const HttpRequest& request = *m_exchange->request;
    const OriginFault fault = FaultOfOrigin(request);
    if (fault == OriginFault::None) {
        return false;
    }
    const std::string refused = "Refused " + Shown(request.path) + " from " + m_peerIp + " for a page ";
    if (fault == OriginFault::OtherPage) {
        m_server.OtherPages().CountLine(refused + "of " + Shown(request.GetHeader("Origin")));
    } else {
        m_server.UnknownHosts().CountLine(
            refused + "that was loaded under the name " + Shown(request.GetHeader("Host")) +
            ". If that is a name of this server, add it to \"allowed_hosts\" in LocalHost.config");
    }
    m_exchange->response.status_code = static_cast<http_status>(403);
    return true;
}

void HttpConnection::Dispatch() {
    m_keepAlive = m_keepAlive && m_exchange->reader.keep_alive() && !m_server.IsStopping();
    if (m_server.WebSockets() != nullptr) {
        Upgrade();
        return;
    }
    Decide();
    if (m_exchange->handler == nullptr) {
        Reply();
        return;
    }
    m_phase = Phase::Handling;
    m_deadline = Clock::time_point::max();
    m_loop.Threads().Execute(shared_from_this());
}

void HttpConnection::Upgrade() {
    HttpRequest& request = *m_exchange->request;
    request.client_addr = {m_peerIp, m_peer.port()};
    m_keepAlive = false;
    const bool asks = request.method == HTTP_GET && !m_exchange->reader.IsHttp10() &&
                      m_exchange->reader.upgrade() && HasToken(request.GetHeader("Upgrade"), "websocket");
    if (const int fault = asks ? FaultOfHandshake(request) : 426; fault != 0) {
        m_exchange->response.status_code = static_cast<http_status>(fault);
        if (fault == 426) {
            m_exchange->response.SetHeader("Upgrade", "websocket");
            m_exchange->response.SetHeader("Sec-WebSocket-Version", "13");
        }
        Reply();
        return;
    }
    if (IsForeign()) {
        Reply();
        return;
    }
    if (!m_loop.MakeRoomFor(m_peer.address())) {
        m_exchange->response.status_code = HTTP_STATUS_SERVICE_UNAVAILABLE;
        m_exchange->response.SetHeader("Retry-After", "5");
        Reply();
        return;
    }
    m_phase = Phase::Closed;
    const auto upgraded =
        std::make_shared<WebSocketConnection>(m_loop, std::move(m_socket), m_peer, m_exchange->request);
    m_exchange.reset();
    Leave();
    upgraded->Start();
}

}  // namespace hv::internal
