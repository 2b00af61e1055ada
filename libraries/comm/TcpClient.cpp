#include "libraries/comm/TcpClient.h"

#include "libraries/comm/EndPoint.h"
#include "libraries/comm/TcpSocket.h"

namespace comm {

namespace {

/** An attempt ends by itself at the bound: who waits for it hears its end, and none outlives the waiting. */
constexpr std::chrono::milliseconds kLastWord{100};

}  // namespace

CTcpClient::CTcpClient(const SNetContext& context, const SNetPortConfig& record)
    : CNetPort(context, Describe(record)), m_record(record), m_timer(context.io) {}

CNetPort::SOpening CTcpClient::BeginOpen(const SNetPortConfig& /*record*/) {
    SOpening opening;
    opening.deadline = Clock::now() + m_context.settings.bound + kLastWord;
    const Lock lock(m_mutex);
    if (!m_closed && !m_connected) {
        opening.joinsProbe = m_attempting && m_isProbe;
        opening.attempt = JoinAttempt();
    }
    return opening;
}

EnError CTcpClient::AwaitOpen(const SOpening& opening) {
    Lock lock(m_mutex);
    if (LookAndWait(lock, opening.deadline) == ErrorCut) {
        return ErrorCut;
    }
    if (m_connected) {
        return ErrorNone;
    }
    bool joinsProbe = opening.joinsProbe;
    auto attempt = opening.attempt;
    if (attempt == 0) {  // it was connected until now
        joinsProbe = m_attempting && m_isProbe;
        attempt = JoinAttempt();
    }
    EnError error = WaitForAttempt(lock, attempt, opening.deadline);
    if (joinsProbe && error != ErrorNone && error != ErrorCut && Clock::now() < opening.deadline) {
        error = WaitForAttempt(lock, JoinAttempt(), opening.deadline);
    }
    return error;
}

std::uint64_t CTcpClient::JoinAttempt() {
    if (!m_attempting) {
        Attempt(false);
    }
    return m_attempts;
}

EnError CTcpClient::WaitForAttempt(Lock& lock, std::uint64_t attempt, Clock::time_point deadline) {
    const EnError error =
        WaitUntil(lock, deadline, [&]() REQUIRES_LOCK(m_mutex) { return m_finished >= attempt; });
    if (error != ErrorNone || m_connected) {
        return error;
    }
    return m_failure != ErrorNone ? m_failure : m_lostError;
}

EnError CTcpClient::Deliver(const SNetPortConfig& record, std::string_view bytes) {
    const auto deadline = Deadline();
    Lock lock(m_mutex, SSpinFirst());
    Use(record);
    m_lastSend = Clock::now();
    if (!m_connected) {
        if (const EnError error = KnownFailure(); error != ErrorNone) {
            return error;  // it need not wait for its turn to fail
        }
    }
    const CTurn turn(*this, lock, deadline);
    if (turn.Error() != ErrorNone) {
        return turn.Error() == ErrorTimedOut && m_failure != ErrorNone ? m_failure : turn.Error();
    }
    if (LookAndWait(lock, deadline) == ErrorCut) {
        return ErrorCut;
    }
    bool older = m_connected;
    for (;;) {
        if (!m_connected) {
            older = false;
            EnError error = KnownFailure();
            if (error == ErrorNone) {
                error = ConnectForSend(lock, deadline);
            }
            if (error != ErrorNone) {
                return error;
            }
        }
        bool taken = false;
        const EnError error = Write(lock, bytes, deadline, taken);
        if (error == ErrorNone || taken || !older || error == ErrorTimedOut || error == ErrorCut) {
            return error;
        }
    }
}

EnError CTcpClient::KnownFailure() const {
    const bool isRecent = Clock::now() - m_failedAt < m_context.settings.retryPause;
    return m_silent || isRecent ? m_failure : ErrorNone;
}

EnError CTcpClient::ConnectForSend(Lock& lock, Clock::time_point deadline) {
    m_isForSend = true;
    const auto attempt = JoinAttempt();
    SetPatience(m_attemptAt + m_context.settings.joinPause);
    const EnError error = WaitForAttempt(lock, attempt, deadline);
    SetPatience(Clock::time_point::max());
    return error;
}

void CTcpClient::Close() {
    const Lock lock(m_mutex);
    m_closed = true;
    ++m_step;
    m_timer.cancel();
    SetSilent(false);
    Drop();
    m_changed.notify_all();
}

EnError CTcpClient::Write(Lock& lock, std::string_view bytes, Clock::time_point deadline, bool& taken) {
    const auto generation = m_generation;
    std::string_view rest = bytes;
    for (;;) {
        const std::size_t before = rest.size();
        EnError error = m_link->Write(rest);
        taken = rest.size() < bytes.size();
        if (error != ErrorNone) {
            Lose(error, false);
            return error;
        }
        if (rest.empty()) {
            m_used = true;
            m_tally.TellCommand(bytes, ErrorNone);
            return ErrorNone;
        }
        if (rest.size() < before) {
            SetPatience(Clock::now() + m_context.settings.stallPause);
        }
        m_writable = false;
        m_link->WhenWritable([self = shared_from_this(), this, generation] {
            const Lock writable(m_mutex);
            m_writable = m_writable || generation == m_generation;
            m_changed.notify_all();
        });
        error = WaitUntil(lock, deadline,
                          [&]() REQUIRES_LOCK(m_mutex) { return m_writable || generation != m_generation; });
        if (error == ErrorTimedOut) {
            Drop();
            m_log.Failed("the device takes no more data, connection closed", error);
            m_tally.Become(EnPortState::Failed, error);
        }
        if (error != ErrorNone) {
            return error;
        }
        if (generation != m_generation) {
            return m_lostError;  // there may be another connection by now
        }
    }
}

void CTcpClient::Watch() {
    m_link->WhenReadable([self = shared_from_this(), this, generation = m_generation] {
        const Lock lock(m_mutex);
        if (generation == m_generation) {
            OnReadable();
        }
    });
}

void CTcpClient::OnReadable() {
    Look();
    if (m_connected) {
        Watch();
    }
}

CTcpLink::EnPeer CTcpClient::Look() {
    EnError error = ErrorNone;
    const auto peer = m_link->Drain(error, m_tally);
    if (peer == CTcpLink::EnPeer::Ended || peer == CTcpLink::EnPeer::Broken) {
        Lose(error == ErrorNone ? ErrorReset : error, peer == CTcpLink::EnPeer::Ended);
    }
    return peer;
}

EnError CTcpClient::LookAndWait(Lock& lock, Clock::time_point deadline) {
    return LookUntil(lock, deadline, [this]() REQUIRES_LOCK(m_mutex) {
        return !m_connected || Look() != CTcpLink::EnPeer::Unknown;
    });
}

void CTcpClient::Lose(EnError error, bool ended) {
    // A device that ends the connection after each command that it has read does its work.
    const bool served = ended && m_used && !HasUnacknowledged(m_link->GetSocket());
    const bool useless = Clock::now() - m_connectedAt < m_context.settings.retryPause && !served;
    m_shortLived = useless ? m_shortLived + 1 : 0;
    Drop();
    m_lostError = error;
    m_log.Note(ended ? "the device closed the connection"
                     : "connection lost, error " + std::to_string(error));
    if (m_shortLived > 1) {
        // The device accepts and closes: that counts as failed attempts. The first time it may have
        // restarted.
        m_failure = ErrorReset;
        m_failedAt = m_connectedAt;
    }
    const bool isFailure = !ended || m_shortLived > 1;
    m_tally.Become(isFailure ? EnPortState::Failed : EnPortState::Closed, isFailure ? error : ErrorNone);
    m_changed.notify_all();
}

void CTcpClient::Drop() {
    if (m_link) {
        // By name: the destructor of a socket would take its linger option back.
        boost::system::error_code ignored;  // closing frees the socket in any case
        m_link->GetSocket().close(ignored);
        m_link.reset();
    }
    m_connected = false;
    ++m_generation;
}

}  // namespace comm
