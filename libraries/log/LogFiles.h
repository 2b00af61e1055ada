#pragma once

#include "platform/Mutex.h"
#include "platform/RavLog.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace spdlog::sinks {
class sink;
}

namespace RavLog {

class CLogWriter;

/** Records of all files that were lost since the start; those that are reported in a file included. */
std::atomic<std::uint64_t>& LostRecordCount();

/**
 * One log file. The logging threads collect records in memory, and the writer's thread writes them. A full
 * disk loses records, never a request; the number of lost records is logged when writing works again.
 */
class CLogFile final : public CLogSink {
  public:
    /** @param isMirrored  whether its records also go to standard error while the mirror is on */
    CLogFile(CLogWriter& writer, bool isMirrored);
    ~CLogFile() override;

    /** Sets the file to write from now on; empty: records are dropped. */
    void SetPath(const std::string& path);

    void Write(const CLogEvent& event) override;

    /** Writes the collected records. Called by one thread at a time. */
    void Flush(bool mirror);

  private:
    void WriteToDisk(std::string_view records);
    void OpenSink();

    /** Begins a new file if this many more bytes would exceed the limit. */
    void RotateWhenFull(std::size_t size);

    CLogWriter& m_writer;
    const bool m_isMirrored;
    std::string m_path;                           // of the flushing thread, set while it does not run
    std::shared_ptr<spdlog::sinks::sink> m_sink;  // of the flushing thread; null until opened
    std::uintmax_t m_size = 0;                    // of the open file
    std::chrono::steady_clock::time_point m_nextRotation;  // not tried before
    CMutex m_mutex;
    std::string m_pending GUARDED_BY(m_mutex);  // whole records
    std::size_t m_pendingCount GUARDED_BY(m_mutex) = 0;
    std::size_t m_lostCount GUARDED_BY(m_mutex) = 0;
};

/** The thread that writes all log files: at most a tenth of a second late, at once when an error was logged.
 */
class CLogWriter {
  public:
    ~CLogWriter() { Stop(); }

    void Add(CLogFile* file) { m_files.push_back(file); }
    void Start();
    /** Writes pending records and ends the thread. */
    void Stop();

    /** Notifies the thread that a file has records. urgent: it writes them at once. */
    void Notify(bool urgent);

    void Mirror(bool on);

  private:
    void Run();

    std::vector<CLogFile*> m_files;  // filled before the first start
    std::thread m_thread;
    CMutex m_mutex;
    std::condition_variable m_changed;
    bool m_hasWork GUARDED_BY(m_mutex) = false;
    bool m_isUrgent GUARDED_BY(m_mutex) = false;
    bool m_isStopping GUARDED_BY(m_mutex) = false;
    bool m_mirror GUARDED_BY(m_mutex) = false;
};

}  // namespace RavLog
