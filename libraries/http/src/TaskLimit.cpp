#include "libraries/http/src/TaskLimit.h"

#include <algorithm>

namespace hv::internal {

TaskLimit::TaskLimit(std::size_t places) : m_places(std::max<std::size_t>(places, 1)) {}

bool TaskLimit::Enter(EventThreads& home, const std::shared_ptr<BlockingTask>& task) {
    const CLock lock(m_mutex);
    if (m_taken < m_places) {
        ++m_taken;
        return true;
    }
    task->Waits();
    m_waiting.push_back({&home, task});
    return false;
}

std::optional<TaskLimit::Entry> TaskLimit::Leave() {
    const CLock lock(m_mutex);
    if (m_waiting.empty() || m_closed) {
        --m_taken;
        return std::nullopt;
    }
    std::optional next = std::move(m_waiting.front());
    m_waiting.pop_front();
    return next;
}

std::shared_ptr<BlockingTask> TaskLimit::Withdraw(const BlockingTask* task) {
    const CLock lock(m_mutex);
    const auto place = std::find_if(m_waiting.begin(), m_waiting.end(),
                                    [task](const Entry& entry) { return entry.task.get() == task; });
    if (place == m_waiting.end()) {
        return nullptr;
    }
    auto withdrawn = std::move(place->task);
    m_waiting.erase(place);
    return withdrawn;
}

void TaskLimit::Close() {
    const CLock lock(m_mutex);
    m_closed = true;
}

void TaskLimit::Drop() {
    const CLock lock(m_mutex);
    m_waiting.clear();
}

}  // namespace hv::internal
