#pragma once

#include "platform/Mutex.h"
#include "platform/RavLog.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace spdlog::sinks {
class sink;
}

namespace RavLog {

class CLogWriter;

/**
 * One log file: records are collected in memory by the threads that log, and written by the writer's thread.
 * A full disk loses records, never a request; their number is told when writing works again.
 */
class CLogFile final : public CLogSink {
  public:
    /** @param isMirrored  whether its records go to standard error too while the mirror is on */
    CLogFile(CLogWriter& writer, bool isMirrored);
    ~CLogFile() override;

    /** The file to write from now on; empty: records are dropped. */
    void SetPath(const std::string& path);

    void Write(const CLogEvent& event) override;

    /** Writes what was collected. Called by one thread at a time. */
    void Flush(bool mirror);

  private:
    void WriteToDisk(std::string_view records);
    void OpenSink();

    /** Begins the file anew before it grows past its limit by this many bytes. */
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
    /** Writes what is pending and ends the thread. */
    void Stop();

    /** Tells the thread that a file has records. urgent: they are written at once. */
    void Notify(bool urgent);

    void Mirror(bool on);

  private:
    void Run();

    std::vector<CLogFile*> m_files;  // filled before the first start
    std::thread m_thread;
    std::mutex m_mutex;  // guards what follows
    std::condition_variable m_changed;
    bool m_hasWork = false;
    bool m_isUrgent = false;
    bool m_isStopping = false;
    bool m_mirror = false;
};

}  // namespace RavLog
