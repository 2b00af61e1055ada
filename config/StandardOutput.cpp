#include "config/StandardOutput.h"

#include "platform/ProcessEnd.h"
#include "platform/RavLog.h"
#include "platform/StandardStreams.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
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
    using Lock = std::unique_lock<std::mutex>;

    bool Queue(std::string line);
    bool WaitUntilOut(Lock& lock);
    void EndThread(Lock& lock);
    void Run();
    void Note(bool isWritten, Lock& lock);

    std::mutex m_mutex;  // guards what follows
    std::condition_variable m_changed;
    std::deque<std::string> m_lines;  // the first one is being written
    std::size_t m_bytes = 0;
    std::size_t m_lostCount = 0;  // since standard output took its last line
    std::thread m_thread;
    bool m_isStopping = false;
    bool m_isStuck = false;   // a line was waited for in vain
    bool m_isEnding = false;  // the process ends: nobody waits for the lines later
};

void COutput::Add(std::string line) {
    Lock lock(m_mutex);
    if (!Queue(std::move(line))) {
        Note(false, lock);
        return;
    }
    m_changed.notify_all();
    if ((m_isEnding || IsStandardOutputFile()) && !m_isStuck) {
        WaitUntilOut(lock);
    }
    if (m_isEnding) {
        EndThread(lock);
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

bool COutput::WaitUntilOut(Lock& lock) {
    m_isStuck = !m_changed.wait_for(lock, kPatience, [this] { return m_lines.empty(); });
    return !m_isStuck;
}

void COutput::EndThread(Lock& lock) {
    if (!m_thread.joinable() || !m_lines.empty()) {
        return;  // what is stuck ends with the process
    }
    m_isStopping = true;
    m_changed.notify_all();
    std::thread ended = std::exchange(m_thread, std::thread());
    lock.unlock();
    ended.join();
    lock.lock();
    m_isStopping = false;
}

void COutput::Finish() {
    Lock lock(m_mutex);
    m_isEnding = true;
    WaitUntilOut(lock);
    EndThread(lock);
}

void COutput::Run() {
    Lock lock(m_mutex);
    while (true) {
        m_changed.wait(lock, [this] { return m_isStopping || !m_lines.empty(); });
        if (m_lines.empty()) {
            return;
        }
        const std::string& line = m_lines.front();  // stays where it is while others are added
        lock.unlock();
        const bool isWritten = WriteStandardOutput(line);
        lock.lock();
        m_bytes -= line.size();
        m_lines.pop_front();
        m_isStuck = m_isStuck && !isWritten;
        Note(isWritten, lock);
        m_changed.notify_all();
    }
}

/** Reports the first lost line, and the number of lost lines when all waiting ones are out. */
void COutput::Note(bool isWritten, Lock& lock) {
    if (isWritten && (m_lostCount == 0 || !m_lines.empty())) {
        return;
    }
    const std::size_t lost = isWritten ? std::exchange(m_lostCount, 0) : m_lostCount++;
    if (!isWritten && lost > 0) {
        return;
    }
    lock.unlock();
    RavLog::WriteSystemLog(
        RavLog::Warn, "PrintLine",
        isWritten ? "standard output takes lines again; " + std::to_string(lost) + " were lost"
                  : std::string("standard output takes nothing more; lines are lost until it does"));
    lock.lock();
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
