#include "libraries/comm/PortTally.h"

namespace comm {

void CPortTally::Become(EnPortState state, EnError error) {
    const CLock lock(m_mutex);
    if (m_state != state) {
        m_state = state;
        m_since = Now();
    }
    NoteError(error);
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

void CPortTally::CountReceived(std::size_t bytes) {
    if (bytes > 0) {
        m_bytesIn += bytes;
        m_lastIn = Now();
    }
}

SPortReport CPortTally::Report() const {
    SPortReport report;
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
