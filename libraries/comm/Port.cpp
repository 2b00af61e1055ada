#include "libraries/comm/Port.h"

namespace comm {

CPort::CTurn::CTurn(CPort& port, Clock::time_point deadline)
    : m_port(port),
      m_lock(port.m_mutex),
      m_error(port.WaitUntil(m_lock, deadline, [&port] { return !port.m_busy; })) {
    if (m_error == ErrorNone) {
        m_port.m_busy = true;
    }
}

CPort::CTurn::~CTurn() {
    if (m_error == ErrorNone) {
        if (!m_lock.owns_lock()) {
            m_lock.lock();  // what failed had given it up
        }
        m_port.m_busy = false;
        m_port.m_changed.notify_all();
    }
}

}  // namespace comm
