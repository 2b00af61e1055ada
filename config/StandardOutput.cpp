#include "config/StandardOutput.h"

#include "platform/Mutex.h"
#include "platform/ProcessEnd.h"
#include "platform/RavLog.h"
#include "platform/StandardStreams.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <memory>
#include <thread>
#include <utility>

namespace {

constexpr std::size_t kMostWaiting = 256U << 10U;  // bytes
constexpr std::chrono::seconds kPatience{1};

/** The lines on their way, and the thread that writes them. */
class COutput {
  public:
    void Add(std::string line);

    /** Gives the lines that wait the time of patience, and ends the thread if they are out. */
    void Finish();

  private:
    bool Queue(std::string line) REQUIRES_LOCK(m_mutex);
    void WaitUntilOut(CUniqueLock& lock) REQUIRES_LOCK(m_mutex);
    void EndThread();
    void Run();
    std::string NewsOf(bool isWritten) REQUIRES_LOCK(m_mutex);

    CMutex m_mutex;
    std::condition_variable m_changed;
    std::deque<std::string> m_lines GUARDED_BY(m_mutex);  // the first one is being written
    std::size_t m_bytes GUARDED_BY(m_mutex) = 0;
    std::size_t m_lostCount GUARDED_BY(m_mutex) = 0;  // since standard output took its last line
    std::thread m_thread GUARDED_BY(m_mutex);
    bool m_isStopping GUARDED_BY(m_mutex) = false;
    bool m_isStuck GUARDED_BY(m_mutex) = false;   // a line was waited for in vain
    bool m_isEnding GUARDED_BY(m_mutex) = false;  // the process ends: nobody waits for the lines later
};

void Tell(const std::string& news) {
    RavLog::WriteSystemLog(RavLog::Warn, "PrintLine", news);
}

void COutput::Add(std::string line) {
    CUniqueLock lock(m_mutex);
    if (!Queue(std::move(line))) {
        const std::string news = NewsOf(false);
        lock.Unlock();
        if (!news.empty()) {
            Tell(news);
        }
        return;
    }
    m_changed.notify_all();
    if ((m_isEnding || IsStandardOutputFile()) && !m_isStuck) {
        WaitUntilOut(lock);
    }
    if (m_isEnding) {
        lock.Unlock();
        EndThread();
    }
}

bool COutput::Queue(std::string line) {
    const std::size_t size = line.size();
    if (m_bytes + size > kMostWaiting) {
        return false;
    }
    try {
        if (!m_thread.joinable()) {
            m_thread = std::thread([this] { Run(); });
        }
        m_lines.push_back(std::move(line));
    } catch (const std::exception&) {
        return false;  // no memory or no thread
    }
    m_bytes += size;
    return true;
}

void COutput::WaitUntilOut(CUniqueLock& lock) {
    m_isStuck = !m_changed.wait_for(lock.Native(), kPatience,
                                    [this]() REQUIRES_LOCK(m_mutex) { return m_lines.empty(); });
}

void COutput::EndThread() {
    CUniqueLock lock(m_mutex);
    if (!m_thread.joinable() || !m_lines.empty()) {
        return;  // what is stuck ends with the process
    }
    m_isStopping = true;
    m_changed.notify_all();
    std::thread ended = std::exchange(m_thread, std::thread());
    lock.Unlock();
    ended.join();
    lock.Lock();
    m_isStopping = false;
}

void COutput::Finish() {
    {
        CUniqueLock lock(m_mutex);
        m_isEnding = true;
        WaitUntilOut(lock);
    }
    EndThread();
}

void COutput::Run() {
    CUniqueLock lock(m_mutex);
    while (true) {
        m_changed.wait(lock.Native(),
                       [this]() REQUIRES_LOCK(m_mutex) { return m_isStopping || !m_lines.empty(); });
        if (m_lines.empty()) {
            return;
        }
        const std::string& line = m_lines.front();  // stays where it is while others are added
        lock.Unlock();
        const bool isWritten = WriteStandardOutput(line);
        lock.Lock();
        m_bytes -= line.size();
        m_lines.pop_front();
        m_isStuck = m_isStuck && !isWritten;
        if (const std::string news = NewsOf(isWritten); !news.empty()) {
            lock.Unlock();
            Tell(news);
            lock.Lock();
        }
        m_changed.notify_all();
    }
}

/** Text for the log: on the first lost line, and with their number when all waiting ones are out. */
std::string COutput::NewsOf(bool isWritten) {
    if (isWritten && (m_lostCount == 0 || !m_lines.empty())) {
        return {};
    }
    const std::size_t lost = isWritten ? std::exchange(m_lostCount, 0) : m_lostCount++;
    if (isWritten) {
        return "standard output takes lines again; " + std::to_string(lost) + " were lost";
    }
    return lost > 0 ? "" : "standard output takes nothing more; lines are lost until it does";
}

/** Never destroyed: its thread may be held by standard output to the end of the process. */
COutput& Output() {
    static COutput& output = []() -> COutput& {
        auto made = std::make_unique<COutput>();
        CallAtProcessEnd([] { Output().Finish(); });
        return *made.release();
    }();
    return output;
}

}  // namespace

void PrintLine(std::string line) {
    line += '\n';
    Output().Add(std::move(line));
}
