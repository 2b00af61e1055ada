// The work of a connection while its handler waits for a place and runs, and while it waits for the disk.
#include "libraries/http/src/ErrorReport.h"
#include "libraries/http/src/HttpConnection.h"
#include "platform/WebRequests.h"

#include <array>
#include <exception>

namespace hv::internal {

namespace asio = boost::asio;
using boost::system::error_code;

void HttpConnection::Expire() {
    if (m_phase != Phase::Handling) {
        Close();
        return;
    }
    m_deadline = Clock::time_point::max();
    if (const auto self = m_loop.Threads().Withdraw(this)) {
        DropStale("since it waited too long");
        Reply();
    }
}

void HttpConnection::Waits() {
    if (m_exchange->request->method == HTTP_POST) {
        m_deadline = m_exchange->staleAt = Clock::now() + m_server.Bounds().writeWait;
    }
}

// A write that waited may be too late: its user has given up, or has done something else meanwhile.
bool HttpConnection::IsStale() {
    if (m_exchange->staleAt == Clock::time_point::max()) {
        return false;
    }
    if (Clock::now() > m_exchange->staleAt) {
        DropStale("since it waited too long");
        return true;
    }
    std::array<char, 1> next{};
    error_code error;
    m_socket.receive(asio::buffer(next), asio::socket_base::message_peek, error);
    if (!error || error == asio::error::would_block || error == asio::error::try_again) {
        return false;
    }
    DropStale("since its client has gone");
    return true;
}

void HttpConnection::DropStale(std::string_view reason) {
    m_server.StaleWrites().Count(Shown(m_exchange->request->path) + " from " + m_peerIp + ", " +
                                 std::string(reason));
    m_exchange->response.status_code = HTTP_STATUS_SERVICE_UNAVAILABLE;
    m_exchange->response.SetHeader("Retry-After", "1");
}

// The memory that the handler needs for a large body has to fit in, too.
bool HttpConnection::TakeCost() {
    const SBodyRule* rule = m_exchange->rule;
    const Limits& bounds = m_server.Bounds();
    const std::string& body = m_exchange->request->body;
    if (rule == nullptr || !rule->cost || body.size() <= bounds.largeBodyBytes ||
        m_exchange->share.Take(rule->cost(body), bounds.memoryBudget)) {
        return true;
    }
    m_exchange->response.status_code = HTTP_STATUS_SERVICE_UNAVAILABLE;
    TellLackOfMemory();
    return false;
}

void HttpConnection::TellLackOfMemory() {
    m_server.RefusedBodies().Count(Shown(m_exchange->request->path) + " from " + m_peerIp);
    m_exchange->response.SetHeader("Retry-After", "5");
}

void HttpConnection::Run() noexcept {
    try {
        if (m_server.IsStopping()) {
            m_exchange->written = Written::Failed;
            return;
        }
        if (m_exchange->work == Work::FilePieces) {
            m_exchange->written = WritePieces();
            return;
        }
        if (m_exchange->work == Work::Reply) {
            FindFile(DiskWait::Yes);
        } else if (!IsStale() && TakeCost()) {
            CallHandler();
        }
        http_body().swap(m_exchange->request->body);
        m_exchange->share.Release();
        PrepareReply(DiskWait::Yes);
        m_exchange->written = m_server.IsGone() ? Written::Failed : Write();
    } catch (const std::exception&) {
        m_exchange->written = Written::Failed;
    }
}

void HttpConnection::CallHandler() {
    HttpResponse& response = m_exchange->response;
    std::string failure;
    try {
        const int status = (*m_exchange->handler)(m_exchange->request.get(), &response);
        if (status >= 200 && status <= 999) {
            response.status_code = static_cast<http_status>(status);
        }
        return;
    } catch (const std::exception& error) {
        failure = error.what();
    } catch (...) {
        failure = "unknown exception";
    }
    ReportError("The handler of " + Shown(m_exchange->request->path) + " failed: " + Shown(failure));
    response = HttpResponse();
    response.status_code = HTTP_STATUS_INTERNAL_SERVER_ERROR;
}

void HttpConnection::Done() {
    m_lastUse = Clock::now();
    if (m_server.IsStopping()) {
        m_phase = Phase::Writing;
        Close();
    } else {
        Continue(m_exchange->written);
    }
}

}  // namespace hv::internal
