#include "libraries/log/LogFiles.h"

#include "libraries/log/RecordText.h"
#include "libraries/log/StandardError.h"
#include "platform/Paths.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <exception>
#include <filesystem>
#include <iterator>
#include <numeric>
#include <string_view>
#include <system_error>

#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/basic_file_sink.h>

namespace RavLog {

namespace {

constexpr std::size_t kFileSize = 10U << 20U;       // a file is rotated at 10 MiB
constexpr int kOlderFiles = 4;                      // kept beside the current one
constexpr std::chrono::seconds kRotationPause{10};  // between attempts while another program holds a file
constexpr std::size_t kPendingLimit = 8U << 20U;    // records beyond this are lost: the disk can't keep up
constexpr std::size_t kPendingUrgent = 1U << 20U;
constexpr std::size_t kChunkSize = 64U << 10U;
constexpr std::chrono::milliseconds kCollectTime{100};

/** The common part of a thread's records; one object per thread, since each access to one costs a call. */
class CThreadTexts {
  public:
    CThreadTexts() {
        const auto end = std::to_chars(m_thread, std::end(m_thread), spdlog::details::os::thread_id()).ptr;
        m_threadLength = static_cast<std::size_t>(end - m_thread);
    }

    /** "2026-11-21 16:04:24" in local time; formatted once a second. */
    std::string_view Time(std::uint64_t now) {
        if (now != m_second) {
            const std::tm parts = spdlog::details::os::localtime(static_cast<std::time_t>(now));
            m_timeLength = std::strftime(m_time, sizeof m_time, "%Y-%m-%d %H:%M:%S", &parts);
            m_second = now;
        }
        return {m_time, m_timeLength};
    }

    /** Number of the thread. */
    std::string_view Thread() const { return {m_thread, m_threadLength}; }

  private:
    std::uint64_t m_second = ~std::uint64_t{0};
    char m_time[32] = {};
    std::size_t m_timeLength = 0;
    char m_thread[24] = {};
    std::size_t m_threadLength = 0;
};

/** The pieces of the record of an event, in the form of kRecordPattern. */
std::array<std::string_view, 14> RecordOf(const CLogEvent& event) {
    thread_local CThreadTexts texts;
    CThreadTexts& own = texts;
    const auto name = kLevelNames.find(event.level);
    const std::string_view level = name == kLevelNames.end() ? std::string_view() : name->second;
    return {own.Time(event.time), "[",  event.logger->name, "][", level,         "][", own.Thread(), "][",
            event.first,          "][", event.second,       "] ", event.message, "\n"};
}

/** "Server.log" as its older file 2: "Server.2.log". */
std::filesystem::path OlderFile(const std::filesystem::path& path, int number) {
    return path.parent_path() /
           (path.stem().string() + "." + std::to_string(number) + path.extension().string());
}

/**
 * Makes the file the newest of the older ones. The oldest is removed only when all places are taken. When a
 * file can't be renamed, nothing else is lost, and the next attempt continues from there.
 */
std::error_code Rotate(const std::filesystem::path& path) {
    std::error_code error;
    int place = 1;
    while (place < kOlderFiles && std::filesystem::exists(OlderFile(path, place), error)) {
        ++place;
    }
    for (; place > 1; --place) {
        std::filesystem::rename(OlderFile(path, place - 1), OlderFile(path, place), error);
        if (error) {
            return error;
        }
    }
    std::filesystem::rename(path, OlderFile(path, 1), error);
    return error;
}

}  // namespace

std::atomic<std::uint64_t>& LostRecordCount() {
    static std::atomic<std::uint64_t> count = 0;
    return count;
}

CLogFile::CLogFile(CLogWriter& writer, bool isMirrored) : m_writer(writer), m_isMirrored(isMirrored) {}

CLogFile::~CLogFile() = default;

void CLogFile::SetPath(const std::string& path) {
    m_path = path;
    m_sink.reset();
}

void CLogFile::Write(const CLogEvent& event) {
    const auto record = RecordOf(event);
    const std::size_t size =
        std::accumulate(record.begin(), record.end(), std::size_t{0},
                        [](std::size_t sum, std::string_view piece) { return sum + piece.size(); });
    bool notify = false;
    bool urgent = event.level == Error;
    {
        const CLock lock(m_mutex);
        const std::size_t before = m_pending.size();
        if (before + size > kPendingLimit) {
            ++m_lostCount;
            ++LostRecordCount();
            return;
        }
        if (m_pending.capacity() < before + size) {
            m_pending.reserve(2 * (before + size));  // so that no piece fails for lack of memory
        }
        for (const std::string_view piece : record) {
            m_pending += piece;
        }
        ++m_pendingCount;
        notify = urgent || before == 0;
        urgent = urgent || (before < kPendingUrgent && before + size >= kPendingUrgent);
    }
    if (notify || urgent) {
        m_writer.Notify(urgent);
    }
}

void CLogFile::Flush(bool mirror) {
    std::string records;
    std::size_t count = 0;
    std::size_t lost = 0;
    {
        const CLock lock(m_mutex);
        records.swap(m_pending);
        count = std::exchange(m_pendingCount, 0);
        lost = m_lostCount;
    }
    if (records.empty()) {
        return;
    }
    try {
        records = WithBadBytesShown(std::move(records));
        if (mirror && m_isMirrored) {
            WriteToStandardError(records);
        }
        if (m_path.empty()) {
            return;
        }
        if (lost > 0) {
            WriteToDisk(std::to_string(lost) + " records were lost here: the file could not be written\n");
            const CLock lock(m_mutex);
            m_lostCount -= lost;
        }
        WriteToDisk(records);
    } catch (const std::exception& error) {
        m_sink.reset();  // opened anew at the next attempt
        const CLock lock(m_mutex);
        if (m_lostCount == 0) {
            std::fprintf(stderr, "The log file %s can't be written: %s\n", m_path.c_str(), error.what());
        }
        m_lostCount += count;
        LostRecordCount() += count;
    }
}

void CLogFile::OpenSink() {
    auto sink = std::make_shared<spdlog::sinks::basic_file_sink_st>(m_path);
    sink->set_formatter(
        std::make_unique<spdlog::pattern_formatter>("%v", spdlog::pattern_time_type::local, std::string()));
    m_sink = std::move(sink);
    std::error_code unknown;
    const std::uintmax_t size = std::filesystem::file_size(PathFromNarrow(m_path), unknown);
    m_size = unknown ? 0 : size;
}

// A viewer may hold a file in a way that prevents renaming it.
void CLogFile::RotateWhenFull(std::size_t size) {
    const auto now = std::chrono::steady_clock::now();
    if (m_size == 0 || m_size + size <= kFileSize || now < m_nextRotation) {
        return;
    }
    m_sink.reset();
    const std::error_code error = Rotate(PathFromNarrow(m_path));
    if (error && m_nextRotation == std::chrono::steady_clock::time_point()) {
        WriteSystemLog(Warn, "Log",
                       m_path + " grows on until it can be renamed, which fails: " + error.message());
    }
    m_nextRotation = error ? now + kRotationPause : std::chrono::steady_clock::time_point();
    OpenSink();
}

void CLogFile::WriteToDisk(std::string_view records) {
    std::error_code unknown;
    if (m_sink && !std::filesystem::exists(PathFromNarrow(m_path), unknown) && !unknown) {
        m_sink.reset();  // somebody has moved the file away or deleted it
    }
    if (!m_sink) {
        OpenSink();
    }
    // In pieces of whole records, so that a file grows past its limit by no more than one of them.
    while (!records.empty()) {
        std::size_t size = records.size();
        if (size > kChunkSize) {
            const std::size_t end = records.find('\n', kChunkSize);
            size = end == std::string_view::npos ? size : end + 1;
        }
        RotateWhenFull(size);
        m_sink->log(spdlog::details::log_msg("", spdlog::level::info, records.substr(0, size)));
        m_size += size;
        records.remove_prefix(size);
    }
    m_sink->flush();
}

void CLogWriter::Start() {
    m_thread = std::thread([this] { Run(); });
}

void CLogWriter::Stop() {
    if (!m_thread.joinable()) {
        return;
    }
    {
        const CLock lock(m_mutex);
        m_isStopping = true;
    }
    m_changed.notify_one();
    m_thread.join();
    const CLock lock(m_mutex);
    m_isStopping = false;
}

void CLogWriter::Notify(bool urgent) {
    {
        const CLock lock(m_mutex);
        if (m_hasWork && (m_isUrgent || !urgent)) {
            return;
        }
        m_hasWork = true;
        m_isUrgent = m_isUrgent || urgent;
    }
    m_changed.notify_one();
}

void CLogWriter::Mirror(bool on) {
    const CLock lock(m_mutex);
    m_mirror = on;
}

void CLogWriter::Run() {
    for (bool stopping = false; !stopping;) {
        bool mirror = false;
        {
            CUniqueLock lock(m_mutex);
            m_changed.wait(lock.Native(),
                           [this]() REQUIRES_LOCK(m_mutex) { return m_hasWork || m_isStopping; });
            m_changed.wait_for(lock.Native(), kCollectTime,
                               [this]() REQUIRES_LOCK(m_mutex) { return m_isUrgent || m_isStopping; });
            stopping = m_isStopping;
            mirror = m_mirror;
            m_hasWork = false;
            m_isUrgent = false;
        }
        for (CLogFile* file : m_files) {
            file->Flush(mirror);
        }
    }
}

}  // namespace RavLog
