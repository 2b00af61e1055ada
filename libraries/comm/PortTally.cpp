#include "libraries/comm/PortTally.h"

namespace {

std::atomic<CPortListener*> g_listener = nullptr;
std::atomic<std::uint64_t> g_lastPort = 0;

}  // namespace

void ListenToPorts(CPortListener* listener) {
    g_listener = listener;
}

namespace comm {

CPortTally::CPortTally() : m_port(++g_lastPort) {}

CPortTally::~CPortTally() {
    if (CPortListener* const listener = Listener(); listener != nullptr) {
        listener->OnEnded(m_port);
    }
}

CPortListener* CPortTally::Listener() {
    return g_listener.load(std::memory_order_acquire);
}

void CPortTally::Become(EnPortState state, EnError error) {
    const CLock lock(m_mutex);
    if (m_state != state) {
        m_state = state;
        m_since = Now();
        if (CPortListener* const listener = Listener(); listener != nullptr) {
            listener->OnState(m_port, state);
        }
    }
    NoteError(error);
}

void CPortTally::TellCommand(std::string_view bytes, EnError error) const {
    if (CPortListener* const listener = Listener(); listener != nullptr) {
        listener->OnSent(m_port, bytes, error);
    }
}

void CPortTally::CountCommand(std::size_t bytes, EnError error, std::chrono::steady_clock::duration time) {
    m_sendTimes.Note(time);
    if (error == ErrorNone) {
        m_bytesOut += bytes;
        ++m_commandsOut;
        m_lastOut = Now();
        return;
    }
    ++m_commandsFailed;
    const CLock lock(m_mutex);
    NoteError(error);
}

SPortReport CPortTally::Report() const {
    SPortReport report;
    report.port = m_port;
    {
        const CLock lock(m_mutex);
        report.state = m_state;
        report.since = m_since;
        report.lastError = m_lastError;
        report.lastErrorAt = m_lastErrorAt;
    }
    report.bytesOut = m_bytesOut;
    report.bytesIn = m_bytesIn;
    report.commandsOut = m_commandsOut;
    report.commandsFailed = m_commandsFailed;
    report.sendTimes = m_sendTimes.Read();
    report.lastOut = m_lastOut;
    report.lastIn = m_lastIn;
    return report;
}

void CPortTally::NoteError(EnError error) {
    if (error != ErrorNone) {
        m_lastError = error;
        m_lastErrorAt = Now();
    }
}

}  // namespace comm
