#include "libraries/comm/TcpClient.h"

#include "libraries/comm/EndPoint.h"
#include "libraries/comm/SocketOptions.h"

namespace comm {

using boost::asio::ip::tcp;

CTcpClient::CTcpClient(const SNetContext& context, const SNetPortConfig& record)
    : CNetPort(context, Describe(record)), m_record(record) {}

int CTcpClient::Open(const SNetPortConfig& record) {
    const int error = MakeConnected();
    if (error == ErrorNone) {
        const Lock lock(m_mutex);
        Use(record);
    }
    return error;
}

int CTcpClient::MakeConnected() {
    const auto start = Clock::now();
    {
        // A connection that stands is told at once, also while a command waits on it.
        Lock lock(m_mutex);
        if (LookAndWait(lock) != ErrorCut && m_connected) {
            return ErrorNone;
        }
    }
    const auto deadline = start + m_context.settings.bound;
    CTurn turn(*this, deadline);
    if (turn.Error() != ErrorNone) {
        return turn.Error();
    }
    if (m_connected) {
        return ErrorNone;
    }
    if (m_failure != ErrorNone && m_failedAt > start) {
        return m_failure;  // of the attempt that this call waited for
    }
    return Connect(turn.GetLock(), deadline);
}

int CTcpClient::Send(const SNetPortConfig& /*record*/, std::string_view bytes) {
    const auto deadline = Deadline();
    CTurn turn(*this, deadline);
    if (turn.Error() != ErrorNone) {
        return turn.Error();
    }
    if (LookAndWait(turn.GetLock()) == ErrorCut) {
        return ErrorCut;
    }
    bool older = m_connected;
    for (;;) {
        if (!m_connected) {
            older = false;
            int error = RecentFailure();
            if (error == ErrorNone) {
                error = Connect(turn.GetLock(), deadline);
            }
            if (error != ErrorNone) {
                return error;
            }
        }
        bool taken = false;
        const int error = Write(turn.GetLock(), bytes, deadline, taken);
        if (error == ErrorNone || taken || !older || error == ErrorTimedOut || error == ErrorCut) {
            return error;
        }
    }
}

void CTcpClient::Close() {
    const Lock lock(m_mutex);
    m_closed = true;
    Drop();
    m_changed.notify_all();
}

int CTcpClient::RecentFailure() const {
    return Clock::now() - m_failedAt < m_context.settings.retryPause ? m_failure : ErrorNone;
}

int CTcpClient::Connect(Lock& lock, Clock::time_point deadline) {
    const int error = ConnectToHost(lock, deadline);
    if (error == ErrorCut) {
        return error;
    }
    m_failure = error;
    if (error == ErrorNone) {
        m_log.Note("connected");
    } else {
        m_failedAt = Clock::now();
        m_log.Failed("can't connect", error);
    }
    return error;
}

int CTcpClient::ConnectToHost(Lock& lock, Clock::time_point deadline) {
    if (!IsPort(m_record.dstPort, false)) {
        return ErrorNoAddress;
    }
    std::vector<boost::asio::ip::address> addresses;
    int error = Resolve(lock, m_record.dstIpAddress, deadline, addresses);
    if (error != ErrorNone) {
        return error;
    }
    error = ErrorNoHost;
    for (std::size_t i = 0; i < addresses.size(); ++i) {
        // Each address gets its share of the time, so that a dead first one leaves some for the others.
        const auto now = Clock::now();
        const auto share = (deadline - now) / static_cast<Clock::rep>(addresses.size() - i);
        const auto port = static_cast<std::uint16_t>(m_record.dstPort);
        error = ConnectTo(lock, tcp::endpoint(addresses[i], port), now + share);
        if (error == ErrorNone || error == ErrorCut) {
            break;
        }
    }
    return error;
}

int CTcpClient::OpenSocket(const tcp::endpoint& device) {
    m_link = std::make_unique<CTcpLink>(tcp::socket(m_context.io));
    tcp::socket& socket = m_link->GetSocket();
    boost::system::error_code code;
    socket.open(device.protocol(), code);
    if (code) {
        return SocketError(code);
    }
    if (const int error = m_link->Prepare(); error != ErrorNone) {
        return error;
    }
    const bool anyAddress = IsAnyAddress(m_record.ipAddress);
    if (anyAddress && m_record.port == 0) {
        return ErrorNone;
    }
    if (!IsPort(m_record.port, true)) {
        return ErrorNoAddress;
    }
    tcp::endpoint local(device.protocol(), static_cast<std::uint16_t>(m_record.port));
    if (!anyAddress) {
        local.address(boost::asio::ip::make_address(m_record.ipAddress, code));
        if (code || local.protocol() != device.protocol()) {
            return ErrorNoAddress;
        }
    }
    if (m_record.port != 0) {
        // A fixed local port must serve the next connection at once: no state is left behind by either end.
        socket.set_option(boost::asio::socket_base::reuse_address(true), code);
        if (!code) {
            socket.set_option(boost::asio::socket_base::linger(true, 0), code);
        }
    }
    if (!code) {
        socket.bind(local, code);
    }
    return SocketError(code);
}

int CTcpClient::ConnectTo(Lock& lock, const tcp::endpoint& device, Clock::time_point deadline) {
    const auto generation = ++m_generation;
    int error = OpenSocket(device);
    if (error == ErrorNone) {
        m_connectResult.reset();
        m_link->GetSocket().async_connect(
            device, [self = shared_from_this(), this, generation](const boost::system::error_code& code) {
                const Lock connected(m_mutex);
                if (generation == m_generation) {
                    m_connectResult = SocketError(code);
                    m_changed.notify_all();
                }
            });
        error = WaitUntil(lock, deadline, [this] { return m_connectResult.has_value(); });
        if (error == ErrorCut) {
            return error;
        }
        if (error == ErrorNone) {
            error = *m_connectResult;
        }
    }
    if (error == ErrorNone) {
        // A closed port of the ephemeral range on this machine can connect to itself.
        boost::system::error_code code;
        tcp::socket& socket = m_link->GetSocket();
        const bool itself = socket.local_endpoint(code) == socket.remote_endpoint(code);
        error = code ? SocketError(code) : itself ? ErrorRefused : ErrorNone;
    }
    if (error != ErrorNone) {
        Drop();
        return error;
    }
    m_connected = true;
    m_connectedAt = Clock::now();
    m_used = false;
    Watch();
    return ErrorNone;
}

int CTcpClient::Write(Lock& lock, std::string_view bytes, Clock::time_point deadline, bool& taken) {
    std::string_view rest = bytes;
    for (;;) {
        int error = m_link->Write(rest);
        taken = rest.size() < bytes.size();
        if (error != ErrorNone) {
            Lose(error, false);
            return error;
        }
        if (rest.empty()) {
            m_used = true;
            return ErrorNone;
        }
        m_writable = false;
        m_link->WhenWritable([self = shared_from_this(), this, generation = m_generation] {
            const Lock writable(m_mutex);
            m_writable = m_writable || generation == m_generation;
            m_changed.notify_all();
        });
        error = WaitUntil(lock, deadline, [this] { return m_writable || !m_connected; });
        if (error == ErrorTimedOut) {
            Drop();
            m_log.Failed("the device takes no more data, connection closed", error);
        }
        if (error != ErrorNone) {
            return error;
        }
        if (!m_connected) {
            return m_lostError;
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
    const bool wasExpected = m_expected;
    Look();
    if (wasExpected && !m_expected) {
        m_changed.notify_all();
    }
    if (m_connected) {
        Watch();
    }
}

void CTcpClient::Look() {
    int error = ErrorNone;
    const auto peer = m_link->Drain(error);
    m_expected = peer == CTcpLink::EnPeer::Unknown;
    if (peer == CTcpLink::EnPeer::Ended || peer == CTcpLink::EnPeer::Broken) {
        Lose(error == ErrorNone ? ErrorReset : error, peer == CTcpLink::EnPeer::Ended);
    }
}

int CTcpClient::LookAndWait(Lock& lock) {
    if (m_connected) {
        Look();
    }
    return WaitUntil(lock, Clock::now() + CTcpLink::g_deliveryTime,
                     [this] { return !m_connected || !m_expected; });
}

void CTcpClient::Lose(int error, bool ended) {
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
    m_expected = false;
    ++m_generation;
}

}  // namespace comm
