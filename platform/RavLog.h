#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#if defined(_WIN32)
#if defined(RAVLOG_BUILD)
#define RAVLOG_API __declspec(dllexport)
#else
#define RAVLOG_API __declspec(dllimport)
#endif
#else
#define RAVLOG_API __attribute__((visibility("default")))
#endif

namespace RavLog {

/** Severity of an event, and threshold of a logger. */
enum EnLogLevel : int {
    Trace = 0,
    Debug = 1,
    Info = 2,
    Warn = 3,
    Error = 4,
    Unknow = 5,  ///< passes every threshold: the operation log
};

/** Names of the levels in a record. */
inline const std::map<EnLogLevel, std::string> kLevelNames = {
    {Trace, "Trace"}, {Debug, "Debug"}, {Info, "Info"}, {Warn, "Warn"}, {Error, "Error"}, {Unknow, "Unknow"},
};

/** Format of a record: time, logger, level, thread, the two strings of the event, message, and a line end. */
inline constexpr const char* kRecordPattern = "%d{%Y-%m-%d %H:%M:%S}[%c][%p][%t][%a][%b] %v%T%n";

class CLogEvent;

/** The destination of one logger's records. Called from any thread. */
class CLogSink {
  public:
    virtual ~CLogSink() = default;
    virtual void Write(const CLogEvent& event) = 0;
};

/** A logger: a name, a threshold and a sink. Shared by all threads. */
class RAVLOG_API CLogger {
  public:
    CLogger(std::string name, EnLogLevel threshold, std::shared_ptr<CLogSink> sink);

    const std::string name;
    EnLogLevel level;  ///< threshold: no events below it are created. Set once, before the logger is shared

    /** Passes an event to the sink. */
    void Send(const CLogEvent& event) const;

  private:
    std::shared_ptr<CLogSink> m_sink;
};

/** One log record. It belongs to the thread that made it until its wrapper sends it. */
class RAVLOG_API CLogEvent {
  public:
    /** An event of the server itself; function is the place, "Class::Function". time: seconds since 1970. */
    CLogEvent(std::shared_ptr<CLogger> logger, EnLogLevel level, std::uint64_t time,
              const std::string& function);

    /** An event of a request, identified by its client and path. */
    CLogEvent(std::shared_ptr<CLogger> logger, EnLogLevel level, std::uint64_t time,
              const std::string& client, const std::string& path);

    /** Fills the message in the manner of printf. */
    void Format(const char* format, ...) __attribute__((format(printf, 2, 3)));

    const std::shared_ptr<CLogger> logger;
    const EnLogLevel level;
    const std::uint64_t time;
    const std::string first;   ///< function name or client
    const std::string second;  ///< empty or path
    std::string message;
};

/** Wraps an event for the duration of a statement, and then sends it to its logger. */
class RAVLOG_API CLogEventWrap {
  public:
    explicit CLogEventWrap(std::shared_ptr<CLogEvent> event);
    ~CLogEventWrap();
    CLogEventWrap(const CLogEventWrap&) = delete;
    CLogEventWrap& operator=(const CLogEventWrap&) = delete;

    std::shared_ptr<CLogEvent> GetEvent() const;

  private:
    std::shared_ptr<CLogEvent> m_event;
};

/**
 * Starts the logs: Server.log (LogRoot), Operation.log (LogOperation), System.log (LogSystem) and Traffic.log
 * (LogTraffic, made at its first record) in the folder, which is created when it is missing. Called once by
 * the host, before the module is used.
 *
 * @param folder  folder of the files
 * @param level   threshold of LogRoot and LogSystem: "trace", "debug", "info", "warn" or "error"; any other:
 * "info"
 * @return empty, or the reason why there are no log files; the process can go on without them.
 */
RAVLOG_API std::string StartLogs(const std::string& folder, const std::string& level);

/** Writes pending records and closes the files. Later events are dropped. */
RAVLOG_API void StopLogs();

/** Starts or stops copying every record of LogRoot and LogOperation to standard error. Any thread. */
RAVLOG_API void MirrorToStandardError(bool on);

/**
 * Writes one line to the system log at the given level; place names the reporting part. Before StartLogs the
 * first 32 lines are kept for it; after StopLogs lines are dropped. When there is no memory for a line, it is
 * lost, and standard error reports that: callers rely on this function not to throw. Any thread.
 */
RAVLOG_API void WriteSystemLog(EnLogLevel level, std::string_view place, std::string_view text) noexcept;

/** Records that no file could take since the start: the disk was full, or there was no memory. Any thread. */
RAVLOG_API std::uint64_t LostRecords() noexcept;

}  // namespace RavLog

/** Logger of the server's events; empty before StartLogs and after StopLogs. Any thread. */
RAVLOG_API std::shared_ptr<RavLog::CLogger> LogRoot();

/** Logger of requests and replies; empty before StartLogs and after StopLogs. Any thread. */
RAVLOG_API std::shared_ptr<RavLog::CLogger> LogOperation();

/** Logger of the libraries and of the document backups; empty before StartLogs and after StopLogs. Any
 * thread. */
RAVLOG_API std::shared_ptr<RavLog::CLogger> LogSystem();

/** Logger of what interfaces send and receive, while that is asked for; empty before StartLogs and after
 * StopLogs. Any thread. */
RAVLOG_API std::shared_ptr<RavLog::CLogger> LogTraffic();
