#include "libraries/comm/Port.h"

#include <algorithm>

namespace comm {

SPortReport CPort::Report() const {
    SPortReport report = m_tally.Report();
    report.calls = m_calls;
    return report;
}

void CPort::SetPatience(Clock::time_point until) {
    m_patience = until;
    m_changed.notify_all();
}

EnError CPort::WaitForTurn(Lock& lock, Clock::time_point deadline) {
    while (m_busy && !m_closed) {
        const auto until = std::min(deadline, m_patience);
        if (Clock::now() >= until) {
            return ErrorTimedOut;
        }
        m_changed.wait_until(lock.Native(), until);
    }
    return m_closed ? ErrorCut : ErrorNone;
}

CPort::CTurn::CTurn(CPort& port, Lock& lock, Clock::time_point deadline)
    : m_port(port), m_lock(lock), m_error(port.WaitForTurn(lock, deadline)) {
    if (m_error == ErrorNone) {
        m_port.m_busy = true;
    }
}

CPort::CTurn::~CTurn() {
    if (m_error == ErrorNone) {
        if (!m_lock.Native().owns_lock()) {
            m_lock.Native().lock();  // what failed had given it up
        }
        m_port.AssertLocked();
        m_port.m_busy = false;
        m_port.m_patience = Clock::time_point::max();
        m_port.m_changed.notify_all();
    }
}

}  // namespace comm
