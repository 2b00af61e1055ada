#include "libraries/http/src/Housekeeper.h"

#include "platform/ProcessMemory.h"

#include <exception>

namespace hv::internal {

namespace {

constexpr std::chrono::milliseconds kQuiet{500};

}  // namespace

Housekeeper::~Housekeeper() {
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void Housekeeper::Note() {
    m_last = Clock::now().time_since_epoch().count();
    m_due = true;
}

void Housekeeper::Look() noexcept {
    if (!m_due || Clock::now().time_since_epoch() - Clock::duration(m_last) < kQuiet ||
        m_busy.exchange(true)) {
        return;
    }
    m_due = false;
    if (m_thread.joinable()) {
        m_thread.join();  // it has ended, or is about to
    }
    try {
        m_thread = std::thread([this] {
            ReturnFreeMemory();
            m_busy = false;
        });
    } catch (const std::exception&) {
        m_due = true;  // no thread or no memory to be had: later
        m_busy = false;
    }
}

}  // namespace hv::internal
