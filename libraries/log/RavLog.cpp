#include "platform/RavLog.h"

#include "libraries/log/LogFiles.h"
#include "platform/Paths.h"
#include "platform/ProcessEnd.h"

#include <cstdarg>
#include <cstdio>
#include <ctime>
#include <exception>
#include <filesystem>
#include <utility>
#include <vector>

namespace RavLog {

namespace {

constexpr const char* kFileNames[] = {"Server.log", "Operation.log", "System.log", "Traffic.log"};

/** Lines that are kept from before the start of the logs. */
constexpr std::size_t kEarlyLines = 32;

struct SSystemLine {
    EnLogLevel level;
    std::uint64_t time;
    std::string place;
    std::string text;
};

/** The base of all loggers; lives to the end of the process. */
struct SLogs {
    SLogs() {
        for (CLogFile* file : {serverFile.get(), operationFile.get(), systemFile.get(), trafficFile.get()}) {
            writer.Add(file);
        }
    }
    ~SLogs() {
        isRunning = false;
        writer.Stop();
    }
    SLogs(const SLogs&) = delete;
    SLogs& operator=(const SLogs&) = delete;

    CLogWriter writer;
    std::shared_ptr<CLogFile> serverFile = std::make_shared<CLogFile>(writer, true);
    std::shared_ptr<CLogFile> operationFile = std::make_shared<CLogFile>(writer, true);
    std::shared_ptr<CLogFile> systemFile = std::make_shared<CLogFile>(writer, false);
    std::shared_ptr<CLogFile> trafficFile = std::make_shared<CLogFile>(writer, false);
    std::shared_ptr<CLogger> root = std::make_shared<CLogger>("LogRoot", Info, serverFile);
    std::shared_ptr<CLogger> operation = std::make_shared<CLogger>("LogOperation", Trace, operationFile);
    std::shared_ptr<CLogger> system = std::make_shared<CLogger>("LogSystem", Info, systemFile);
    std::shared_ptr<CLogger> traffic = std::make_shared<CLogger>("LogTraffic", Trace, trafficFile);
    std::atomic<bool> isRunning = false;
    CMutex earlyMutex;
    std::vector<SSystemLine> early GUARDED_BY(earlyMutex);
    bool wasStarted GUARDED_BY(earlyMutex) = false;
};

SLogs& Logs() {
    static SLogs logs;
    return logs;
}

EnLogLevel LevelOf(const std::string& name) {
    static const std::map<std::string, EnLogLevel> levels = {
        {"trace", Trace}, {"debug", Debug}, {"info", Info}, {"warn", Warn}, {"error", Error}};
    const auto row = levels.find(name);
    return row == levels.end() ? Info : row->second;
}

/** The logger while the logs run, otherwise empty. */
std::shared_ptr<CLogger> Running(const std::shared_ptr<CLogger> SLogs::*logger) {
    const SLogs& logs = Logs();
    return logs.isRunning ? logs.*logger : nullptr;
}

std::uint64_t Now() {
    return static_cast<std::uint64_t>(std::time(nullptr));
}

void SendLine(const std::shared_ptr<CLogger>& logger, const SSystemLine& line) {
    const CLogEventWrap wrap(std::make_shared<CLogEvent>(logger, line.level, line.time, line.place));
    wrap.GetEvent()->Format("%s", line.text.c_str());
}

/** Keeps a line until the logs start; lines after their stop are dropped. */
void KeepEarly(SSystemLine line) {
    SLogs& logs = Logs();
    const CLock lock(logs.earlyMutex);
    if (!logs.wasStarted && logs.early.size() < kEarlyLines) {
        logs.early.push_back(std::move(line));
    }
}

void SendEarly() {
    SLogs& logs = Logs();
    const CLock lock(logs.earlyMutex);
    logs.wasStarted = true;
    for (const SSystemLine& line : std::exchange(logs.early, {})) {
        if (logs.system->level <= line.level) {
            SendLine(logs.system, line);
        }
    }
}

void TellLoss(const std::exception& error) {
    ++LostRecordCount();
    std::fprintf(stderr, "A log record was lost: %s\n", error.what());
}

}  // namespace

CLogger::CLogger(std::string loggerName, EnLogLevel threshold, std::shared_ptr<CLogSink> sink)
    : name(std::move(loggerName)), level(threshold), m_sink(std::move(sink)) {}

void CLogger::Send(const CLogEvent& event) const {
    m_sink->Write(event);
}

CLogEvent::CLogEvent(std::shared_ptr<CLogger> eventLogger, EnLogLevel eventLevel, std::uint64_t eventTime,
                     const std::string& function)
    : logger(std::move(eventLogger)), level(eventLevel), time(eventTime), first(function) {}

CLogEvent::CLogEvent(std::shared_ptr<CLogger> eventLogger, EnLogLevel eventLevel, std::uint64_t eventTime,
                     const std::string& client, const std::string& path)
    : logger(std::move(eventLogger)), level(eventLevel), time(eventTime), first(client), second(path) {}

void CLogEvent::Format(const char* format, ...) {
    char text[512];  // most messages fit, and are formatted once
    std::va_list args;
    va_start(args, format);
    if (std::string_view(format) == "%s") {
        message = va_arg(args, const char*);
        va_end(args);
        return;
    }
    std::va_list again;
    va_copy(again, args);
    const int formatted = std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    const std::size_t length = formatted > 0 ? static_cast<std::size_t>(formatted) : 0;
    if (length < sizeof text) {
        message.assign(text, length);
    } else {
        message.resize(length);
        std::vsnprintf(message.data(), length + 1, format, again);
    }
    va_end(again);
}

CLogEventWrap::CLogEventWrap(std::shared_ptr<CLogEvent> event) : m_event(std::move(event)) {}

CLogEventWrap::~CLogEventWrap() {
    try {
        m_event->logger->Send(*m_event);
    } catch (const std::exception& error) {
        TellLoss(error);  // out of memory; the request that wrote the record goes on
    }
}

std::shared_ptr<CLogEvent> CLogEventWrap::GetEvent() const {
    return m_event;
}

std::string StartLogs(const std::string& folder, const std::string& level) {
    SLogs& logs = Logs();
    if (logs.isRunning) {
        return "the logs run already";
    }
    std::error_code error;
    std::filesystem::create_directories(PathFromNarrow(folder), error);
    CLogFile* const files[] = {logs.serverFile.get(), logs.operationFile.get(), logs.systemFile.get(),
                               logs.trafficFile.get()};
    for (std::size_t i = 0; i < std::size(files); ++i) {
        files[i]->SetPath(error ? std::string() : NarrowFromPath(PathFromNarrow(folder) / kFileNames[i]));
    }
    logs.root->level = LevelOf(level);
    logs.system->level = LevelOf(level);
    [[maybe_unused]] static const bool endsWithProcess = [] {
        CallAtProcessEnd(&StopLogs);
        return true;
    }();
    logs.writer.Start();
    logs.isRunning = true;
    SendEarly();
    return error ? "the folder " + folder + " can't be made: " + error.message() : std::string();
}

void StopLogs() {
    Logs().isRunning = false;
    Logs().writer.Stop();
}

void MirrorToStandardError(bool on) {
    Logs().writer.Mirror(on);
}

std::uint64_t LostRecords() noexcept {
    return LostRecordCount();
}

void WriteSystemLog(EnLogLevel level, std::string_view place, std::string_view text) noexcept {
    try {
        const auto logger = LogSystem();
        if (logger && logger->level > level) {
            return;
        }
        SSystemLine line{level, Now(), std::string(place), std::string(text)};
        if (logger) {
            SendLine(logger, line);
        } else {
            KeepEarly(std::move(line));
        }
    } catch (const std::exception& error) {
        TellLoss(error);
    }
}

}  // namespace RavLog

std::shared_ptr<RavLog::CLogger> LogRoot() {
    return RavLog::Running(&RavLog::SLogs::root);
}

std::shared_ptr<RavLog::CLogger> LogOperation() {
    return RavLog::Running(&RavLog::SLogs::operation);
}

std::shared_ptr<RavLog::CLogger> LogSystem() {
    return RavLog::Running(&RavLog::SLogs::system);
}

std::shared_ptr<RavLog::CLogger> LogTraffic() {
    return RavLog::Running(&RavLog::SLogs::traffic);
}
