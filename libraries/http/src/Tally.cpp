#include "libraries/http/src/Tally.h"

#include "libraries/http/src/ErrorReport.h"

#include <new>
#include <utility>

namespace hv::internal {

bool Tally::MayTell() {
    const CLock lock(m_mutex);
    const auto now = Clock::now();
    if (now < m_next) {
        ++m_untold;
        return false;
    }
    m_next = now + m_distance;
    return true;
}

void Tally::CountLine(std::string_view line) noexcept {
    if (MayTell()) {
        ReportError(line);
    }
}

void Tally::Count(std::string_view example) noexcept {
    if (!MayTell()) {
        return;
    }
    try {
        ReportError(m_what, ": " + std::string(example));
    } catch (const std::bad_alloc&) {
        ReportError(m_what, "");
    }
}

void Tally::Tell(bool atOnce) noexcept {
    std::size_t untold = 0;
    {
        const CLock lock(m_mutex);
        const auto now = Clock::now();
        if (m_untold == 0 || (now < m_next && !atOnce)) {
            return;
        }
        m_next = now + m_distance;
        untold = std::exchange(m_untold, 0);
    }
    try {
        ReportError(m_what, ": " + std::to_string(untold) + " more");
    } catch (const std::bad_alloc&) {
        ReportError(m_what, "");
    }
}

}  // namespace hv::internal
