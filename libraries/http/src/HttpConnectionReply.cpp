// Writing side of a connection: from the reply to the socket.
#include "libraries/http/src/HttpConnection.h"
#include "libraries/http/src/ReplyHead.h"

#include <algorithm>
#include <array>
#include <span>

#include <boost/asio/post.hpp>

namespace hv::internal {

namespace asio = boost::asio;
using boost::system::error_code;

namespace {

constexpr int kFilePiecesAtOnce = 4;
constexpr std::uint64_t kFilePartBytes = std::uint64_t{256} * 1024;
constexpr std::size_t kHeadCapacity = 4096;

// Sends more of the file, as much as the socket takes, up to one piece. An error when it takes nothing, or
// when the file was truncated since its length was sent.
error_code SendPiece(Socket& socket, FilePart& part, std::uint64_t& moved) {
    error_code error;
    const std::size_t size = static_cast<std::size_t>(std::min(part.length, kFilePartBytes));
    const std::size_t sent = part.file.Send(socket, part.offset, size, error);
    part.offset += sent;
    part.length -= sent;
    moved += sent;
    return error;
}

}  // namespace

void HttpConnection::Refuse(int status) {
    m_keepAlive = false;
    m_exchange->response = HttpResponse();
    m_exchange->response.status_code = static_cast<http_status>(status);
    m_exchange->asksForFile = false;
    if (status == HTTP_STATUS_SERVICE_UNAVAILABLE) {
        TellLackOfMemory();
    }
    Reply();
}

void HttpConnection::Reply() {
    m_phase = Phase::Writing;
    if (!FindFile(DiskWait::No) || !PrepareReply(DiskWait::No)) {
        LeaveToDiskThreads(Work::Reply);
        return;
    }
    ExpectBytes(m_server.Bounds().writeStall);
    Continue(Write());
}

// Looks for a file for a path without a handler. False when that has to wait for the disk.
bool HttpConnection::FindFile(DiskWait wait) {
    if (!m_exchange->asksForFile) {
        return true;
    }
    HttpResponse& response = m_exchange->response;
    const FileFound found =
        m_server.Files().Answer(*m_exchange->request, Path(), response, m_exchange->file, wait);
    if (found == FileFound::No) {
        response.status_code = HTTP_STATUS_NOT_FOUND;
    }
    m_exchange->asksForFile = found == FileFound::Unknown;
    return !m_exchange->asksForFile;
}

// While another thread works on it, nothing else touches the connection.
void HttpConnection::LeaveToDiskThreads(Work work) {
    m_phase = Phase::Handling;
    m_deadline = Clock::time_point::max();
    m_exchange->work = work;
    m_server.Disk().Execute(m_loop.Threads(), shared_from_this());
}

// False when that has to wait for the disk; it may be called again then.
bool HttpConnection::PrepareReply(DiskWait wait) {
    HttpResponse& response = m_exchange->response;
    FilePart& part = m_exchange->file;
    if (const auto file = std::exchange(response.file, nullptr); file && response.body.empty()) {
        part.file = std::move(*file);
        part.length = part.file.Size();
    }
    ReplyFrame frame;
    if (!response.body.empty()) {
        response.pieces = {};
    }
    m_exchange->isLarge = m_exchange->isLarge ||
                          response.body.size() + response.pieces.Size() > m_server.Bounds().largeBodyBytes;
    frame.contentLength = part.file ? part.length : response.body.size() + response.pieces.Size();
    if (m_exchange->request->method == HTTP_HEAD || !MayHaveBody(response.status_code)) {
        response.body.clear();
        response.pieces = {};
        part.length = 0;
    }
    const std::ptrdiff_t got = part.length > 0 ? ReadFilePart(wait) : 1;
    if (got == FileHandle::kWouldWait) {
        return false;
    }
    if (got <= 0) {  // the file was truncated since its length was sent
        response = HttpResponse();
        response.status_code = HTTP_STATUS_INTERNAL_SERVER_ERROR;
        part = FilePart();
        frame.contentLength = 0;
        m_keepAlive = false;
    }
    frame.http10 = m_exchange->reader.IsHttp10();
    frame.close = !m_keepAlive;
    m_head.clear();
    AppendReplyHead(m_head, response, frame);
    m_sent = 0;
    m_exchange->begun = Clock::now();
    m_exchange->moved = 0;
    return true;
}

// Reads the first piece of the file into the body, so that it is sent together with the head: a small file
// whole, with one system call. As FileHandle::Read; the body stays empty when nothing was read.
std::ptrdiff_t HttpConnection::ReadFilePart(DiskWait wait) {
    FilePart& part = m_exchange->file;
    std::string& body = m_exchange->response.body;
    body.resize(
        static_cast<std::size_t>(std::min<std::uint64_t>(part.length, m_server.Bounds().fileChunkBytes)));
    const std::ptrdiff_t got = part.file.Read(part.offset, body.data(), body.size(), wait);
    body.resize(static_cast<std::size_t>(std::max<std::ptrdiff_t>(got, 0)));
    part.offset += body.size();
    part.length -= body.size();
    return got;
}

// All parts of the reply that are in memory, in the order in which they are sent.
std::array<std::string_view, 5> HttpConnection::Output() const {
    const HttpResponse& response = m_exchange->response;
    const ReplyPieces& pieces = response.pieces;
    return {m_head, response.body, pieces.head, pieces.text ? std::string_view(*pieces.text) : "",
            pieces.tail};
}

HttpConnection::Written HttpConnection::Write() {
    for (;;) {
        std::array<asio::const_buffer, 5> rest;
        std::size_t count = 0;
        std::size_t before = m_sent;
        for (const std::string_view piece : Output()) {
            const std::size_t skipped = std::min(before, piece.size());
            before -= skipped;
            if (skipped < piece.size()) {
                rest[count++] = asio::buffer(piece) + skipped;
            }
        }
        if (count == 0) {
            return Written::All;
        }
        error_code error;
        const std::size_t sent = m_socket.write_some(std::span(rest.data(), count), error);
        m_sent += sent;
        m_exchange->moved += sent;
        if (error == asio::error::would_block || error == asio::error::try_again) {
            return Written::Blocked;
        }
        if (error) {
            return Written::Failed;
        }
    }
}

// Some pieces at a time, since other files may wait meanwhile.
HttpConnection::Written HttpConnection::WritePieces() {
    FilePart& file = m_exchange->file;
    for (int pieces = 0; file.length > 0 && pieces < kFilePiecesAtOnce; ++pieces) {
        if (m_server.IsStopping()) {
            return Written::Failed;
        }
        const error_code error = SendPiece(m_socket, file, m_exchange->moved);
        if (error) {
            const bool blocked = error == asio::error::would_block || error == asio::error::try_again;
            return blocked ? Written::Blocked : Written::Failed;
        }
    }
    return Written::All;
}

void HttpConnection::Continue(Written written) {
    if (written == Written::All && m_exchange->file.length > 0) {
        std::string().swap(m_exchange->response.body);
        m_head.clear();
        m_sent = 0;
        LeaveToDiskThreads(Work::FilePieces);
        return;
    }
    switch (written) {
        case Written::All:
            FinishReply();
            break;
        case Written::Blocked:
            m_phase = Phase::Writing;
            ExpectBytes(m_server.Bounds().writeStall);
            WaitForOutput();
            break;
        case Written::Failed:
            m_phase = Phase::Writing;
            Close();
            break;
    }
}

void HttpConnection::WaitForOutput() {
    m_socket.async_wait(asio::socket_base::wait_write, [self = shared_from_this()](const error_code& error) {
        if (!error && !self->IsDone()) {
            self->Continue(self->Write());
        }
    });
}

void HttpConnection::FinishReply() {
    m_exchange.reset();
    if (m_head.capacity() > kHeadCapacity) {
        std::string().swap(m_head);
    }
    m_lastUse = Clock::now();
    if (!m_keepAlive) {
        Drain();
        return;
    }
    m_phase = Phase::Idle;
    m_deadline = m_lastUse + m_server.Bounds().keepAlive;
    if (m_kept.empty()) {
        WaitForInput();
    } else {
        asio::post(m_socket.get_executor(), [self = shared_from_this()] { self->ProcessKept(); });
    }
}

// A close with unread input resets the connection, and the reset can overtake the reply. So this side ends
// first, and the rest of the client's bytes is read and discarded, for a while.
void HttpConnection::Drain() {
    error_code ignored;
    m_socket.shutdown(asio::socket_base::shutdown_send, ignored);
    m_phase = Phase::Draining;
    m_deadline = Clock::now() + m_server.Bounds().linger;
    WaitForInput();
}

}  // namespace hv::internal
