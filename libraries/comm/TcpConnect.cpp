// How a TCP client gets its connection: the steps of an attempt, and the attempts in the background.

#include "libraries/comm/EndPoint.h"
#include "libraries/comm/TcpClient.h"

#include <algorithm>

namespace comm {

using boost::asio::ip::tcp;

namespace {

/** Codes of a device that lets one wait; any other comes at once. */
bool IsSilence(EnError error) {
    return error == ErrorTimedOut || error == ErrorNoRoute;
}

}  // namespace

template <typename Handler>
auto CTcpClient::InStep(Handler handler) {
    return [weak = weak_from_this(), this, step = m_step, handler](const auto&... results) {
        const auto self = weak.lock();
        if (!self) {
            return;
        }
        const Lock lock(m_mutex);
        if (step == m_step) {
            Guard([&]() REQUIRES_LOCK(m_mutex) { handler(results...); });
        }
    };
}

template <typename Step>
void CTcpClient::Guard(Step step) {
    try {
        step();
    } catch (const std::exception&) {
        Drop();
        Finish(ErrorNoBuffers);
    }
}

void CTcpClient::Attempt(bool isProbe) {
    m_attempting = true;
    m_isProbe = isProbe;
    m_wasSilent = false;
    m_attemptError = ErrorNoHost;
    m_attemptAt = Clock::now();
    m_untried.clear();
    ++m_attempts;
    if (!isProbe) {
        m_tally.Become(EnPortState::Connecting);
    }
    Guard([this]() REQUIRES_LOCK(m_mutex) { Resolve(); });
}

void CTcpClient::Resolve() {
    if (!IsPort(m_record.dstPort, false) || m_record.dstIpAddress.empty()) {
        Finish(ErrorNoAddress);
        return;
    }
    if (const auto literal = Literal(m_record.dstIpAddress)) {
        m_untried = {*literal};
        TryNext();
        return;
    }
    ++m_step;
    const auto asked = m_context.resolver.Resolve(
        m_record.dstIpAddress,
        InStep([this](const SResolved& resolved) REQUIRES_LOCK(m_mutex) { OnResolved(resolved); }));
    if (asked.known) {
        OnResolved(*asked.known);
        return;
    }
    const bool hasSpare = !asked.lastGood.empty();
    m_timer.expires_at(m_attemptAt + (hasSpare ? m_context.settings.joinPause : m_context.settings.bound));
    m_timer.async_wait(
        InStep([this, spare = asked.lastGood](const boost::system::error_code&) REQUIRES_LOCK(m_mutex) {
            OnResolved({spare.empty() ? ErrorTimedOut : ErrorNone, spare});
        }));
}

void CTcpClient::OnResolved(const SResolved& resolved) {
    ++m_step;
    if (resolved.error != ErrorNone) {
        m_wasSilent = IsSilence(resolved.error);
        Finish(resolved.error);
        return;
    }
    m_untried.assign(resolved.addresses.rbegin(), resolved.addresses.rend());
    TryNext();
}

void CTcpClient::TryNext() {
    if (m_untried.empty()) {
        Finish(m_attemptError);
        return;
    }
    // Each address gets its share of the time, so that a dead first one leaves some for the others.
    const auto now = Clock::now();
    const auto left = std::max(m_attemptAt + m_context.settings.bound - now, Clock::duration::zero());
    const tcp::endpoint device(m_untried.back(), static_cast<std::uint16_t>(m_record.dstPort));
    m_timer.expires_at(now + left / static_cast<Clock::rep>(m_untried.size()));
    m_untried.pop_back();
    ++m_step;
    ++m_generation;
    if (const EnError error = OpenSocket(device); error != ErrorNone) {
        OnConnected(error);
        return;
    }
    m_link->GetSocket().async_connect(device,
                                      InStep([this](const boost::system::error_code& code)
                                                 REQUIRES_LOCK(m_mutex) { OnConnected(SocketError(code)); }));
    m_timer.async_wait(InStep([this](const boost::system::error_code&)
                                  REQUIRES_LOCK(m_mutex) { OnConnected(ErrorTimedOut); }));
}

void CTcpClient::OnConnected(EnError error) {
    ++m_step;
    if (error == ErrorNone) {
        // A closed port of the ephemeral range on this machine can connect to itself.
        boost::system::error_code code;
        tcp::socket& socket = m_link->GetSocket();
        const bool itself = socket.local_endpoint(code) == socket.remote_endpoint(code);
        error = code ? SocketError(code) : itself ? ErrorRefused : ErrorNone;
    }
    if (error != ErrorNone) {
        Drop();
        m_attemptError = error;
        m_wasSilent = m_wasSilent || IsSilence(error);
        TryNext();
        return;
    }
    Watch();
    m_connected = true;
    m_connectedAt = Clock::now();
    m_used = false;
    Finish(ErrorNone);
}

EnError CTcpClient::OpenSocket(const tcp::endpoint& device) {
    m_link = std::make_unique<CTcpLink>(tcp::socket(m_context.io));
    tcp::socket& socket = m_link->GetSocket();
    boost::system::error_code code;
    socket.open(device.protocol(), code);
    if (code) {
        return SocketError(code);
    }
    if (const EnError error = m_link->Prepare(); error != ErrorNone) {
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

void CTcpClient::Finish(EnError error) {
    ++m_step;
    m_finished = m_attempts;
    m_attempting = false;
    m_failure = error;
    m_tally.Become(error == ErrorNone ? EnPortState::Open : EnPortState::Failed, error);
    if (error != ErrorNone) {
        m_failedAt = Clock::now();
    }
    // A device that lets only the making of an interface wait is left alone until somebody uses it.
    SetSilent(error != ErrorNone && m_wasSilent && (m_silent || m_isForSend));
    m_isForSend = false;
    m_changed.notify_all();
    try {
        if (m_silent) {
            ProbeLater();
        }
        if (error == ErrorNone) {
            m_log.Note("connected");
        } else {
            m_log.Failed(m_silent ? "nobody answers, tried again in the background until somebody does"
                                  : "can't connect",
                         error);
        }
    } catch (const std::exception&) {
        SetSilent(false);  // without memory: the next send tries
    }
}

void CTcpClient::SetSilent(bool silent) {
    if (silent == m_silent) {
        return;
    }
    if (silent && ++m_context.probes > m_context.settings.maxProbes) {
        --m_context.probes;  // too many already: each send tries by itself
        return;
    }
    if (!silent) {
        --m_context.probes;
    }
    m_silent = silent;
    m_probePause = m_context.settings.probePause;
}

void CTcpClient::ProbeLater() {
    m_timer.expires_after(m_probePause);
    m_probePause = std::min<Clock::duration>(2 * m_probePause, m_context.settings.longestProbePause);
    m_timer.async_wait(InStep([this](const boost::system::error_code&) REQUIRES_LOCK(m_mutex) {
        if (Clock::now() - m_lastSend > m_context.settings.probeAge) {
            SetSilent(false);  // nobody uses it any more
        } else {
            Attempt(true);
        }
    }));
}

}  // namespace comm
