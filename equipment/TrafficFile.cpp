#include "equipment/TrafficFile.h"

#include "equipment/Traffic.h"
#include "platform/Mutex.h"
#include "platform/ProcessEnd.h"
#include "platform/RavLog.h"

#include <condition_variable>
#include <exception>
#include <map>
#include <thread>

namespace {

using Time = std::chrono::system_clock::time_point;

constexpr std::chrono::milliseconds kCollectTime{200};

/** So that a device that never stops can't keep the thread. */
constexpr int kReadsAtOnce = 64;

/** What of a file is under way for one interface. */
struct STask {
    Time until;
    std::uint64_t last = 0;     ///< number of the last entry that has been written
    std::uint64_t dropped = 0;  ///< as CTrafficRing::SRead
};

void WriteLine(const std::string& name, const char* direction, Time time, const std::string& text) {
    if (const auto logger = LogTraffic()) {
        const auto second = std::chrono::floor<std::chrono::seconds>(time.time_since_epoch()).count();
        const RavLog::CLogEventWrap wrap(std::make_shared<RavLog::CLogEvent>(
            logger, RavLog::Info, static_cast<std::uint64_t>(second), name, direction));
        wrap.GetEvent()->Format("%s", text.c_str());
    }
}

/** Writes what has come since. @return false when the interface is gone */
bool Write(std::int32_t nodeId, STask& task) {
    for (int reads = 0; reads < kReadsAtOnce; ++reads) {
        const auto traffic = TrafficOf(nodeId, task.last);
        if (!traffic) {
            return false;
        }
        const std::uint64_t dropped = traffic->read.dropped;
        if (traffic->read.isMissed) {
            // An edited interface has begun a new ring.
            const std::uint64_t lost = dropped < task.dropped ? dropped : dropped - task.dropped;
            WriteLine(traffic->name, "lost", std::chrono::system_clock::now(),
                      std::to_string(lost) + " entries came faster than they could be written");
        }
        task.dropped = dropped;
        for (const STrafficEntry& entry : traffic->read.entries) {
            WriteLine(traffic->name, entry.out ? "out" : "in", entry.time, TrafficLine(entry));
        }
        if (traffic->read.last == task.last) {
            break;
        }
        task.last = traffic->read.last;
    }
    return true;
}

/** The interfaces whose traffic is written, and the thread that writes it while there are any. */
class CTrafficFile {
  public:
    void Set(std::int32_t nodeId, Time until) {
        STask task{until, LastTrafficNumber(), 0};
        if (const auto now = TrafficOf(nodeId, task.last)) {
            task.dropped = now->read.dropped;
        }
        const CLock lock(m_mutex);
        if (const auto found = m_tasks.find(nodeId); found != m_tasks.end()) {
            found->second.until = until;  // goes on where it is
        } else if (until > std::chrono::system_clock::now()) {
            m_tasks.emplace(nodeId, task);
        }
        if (!m_tasks.empty() && !m_thread.joinable() && !m_isEnding) {
            m_thread = std::thread([this] { Run(); });
        }
        m_changed.notify_all();
    }

    std::optional<Time> Until(std::int32_t nodeId) {
        const CLock lock(m_mutex);
        const auto found = m_tasks.find(nodeId);
        const bool isOn = found != m_tasks.end() && found->second.until > std::chrono::system_clock::now();
        return isOn ? std::optional(found->second.until) : std::nullopt;
    }

    void End() {
        std::thread thread;
        {
            const CLock lock(m_mutex);
            m_isEnding = true;
            thread.swap(m_thread);
        }
        m_changed.notify_all();
        if (thread.joinable()) {
            thread.join();
        }
    }

  private:
    void Run() {
        for (bool isEnding = false; !isEnding;) {
            std::map<std::int32_t, STask> tasks;
            {
                CUniqueLock lock(m_mutex);
                m_changed.wait(lock.Native(),
                               [this]() REQUIRES_LOCK(m_mutex) { return m_isEnding || !m_tasks.empty(); });
                m_changed.wait_for(lock.Native(), kCollectTime,
                                   [this]() REQUIRES_LOCK(m_mutex) { return m_isEnding; });
                isEnding = m_isEnding;
                tasks = m_tasks;
            }
            for (auto& [nodeId, task] : tasks) {
                Step(nodeId, task);
            }
        }
    }

    void Step(std::int32_t nodeId, STask& task) {
        bool isThere = true;
        try {
            isThere = Write(nodeId, task);
        } catch (const std::exception& error) {
            RavLog::WriteSystemLog(RavLog::Warn, "Traffic.log", error.what());  // tried again soon
        }
        const CLock lock(m_mutex);
        STask& kept = m_tasks[nodeId];
        kept.last = task.last;
        kept.dropped = task.dropped;
        if (!isThere || kept.until <= std::chrono::system_clock::now()) {
            m_tasks.erase(nodeId);
        }
    }

    CMutex m_mutex;
    std::condition_variable m_changed;
    std::map<std::int32_t, STask> m_tasks GUARDED_BY(m_mutex);
    std::thread m_thread GUARDED_BY(m_mutex);
    bool m_isEnding GUARDED_BY(m_mutex) = false;
};

CTrafficFile& File() {
    static CTrafficFile& file = *new CTrafficFile;  // its thread is joined at the end of the process
    return file;
}

std::string TextOf(std::string_view bytes) {
    std::string text;
    for (const char c : bytes) {
        if (c == '\r' || c == '\n') {
            text += c == '\r' ? "\\r" : "\\n";
        } else if (c >= ' ' && c <= '~') {
            text += c;
        } else {
            text += "\\x" + HexOf({&c, 1}, {});
        }
    }
    return text;
}

}  // namespace

void WriteTrafficFile(std::int32_t nodeId, Time until) {
    [[maybe_unused]] static const bool endsWithProcess = [] {
        CallAtProcessEnd([] { File().End(); });
        return true;
    }();
    File().Set(nodeId, until);
}

std::optional<Time> TrafficFileUntil(std::int32_t nodeId) {
    return File().Until(nodeId);
}

std::string HexOf(std::string_view bytes, std::string_view between) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string text;
    text.reserve(bytes.size() * (2 + between.size()));
    for (const char c : bytes) {
        if (!text.empty()) {
            text += between;
        }
        const auto byte = static_cast<unsigned char>(c);
        text += kDigits[byte >> 4U];
        text += kDigits[byte & 15U];
    }
    return text;
}

std::string TrafficLine(const STrafficEntry& entry) {
    const auto sinceEpoch =
        std::chrono::floor<std::chrono::milliseconds>(entry.time.time_since_epoch()).count();
    const std::string milliseconds = std::to_string(1000 + sinceEpoch % 1000).substr(1);
    std::string line = '.' + milliseconds + ' ' + HexOf(entry.bytes, " ") + (entry.isCut ? " ..." : "") +
                       " \"" + TextOf(entry.bytes) + '"';
    const auto add = [&line](const char* what, const std::string& value) {
        if (!value.empty()) {
            line += what + TextOf(value);
        }
    };
    add(" from ", entry.peer);
    add(" error ", entry.error == 0 ? "" : std::to_string(entry.error));
    add(" component ", entry.source == EnSendSource::Component ? std::to_string(entry.component) : "");
    add(" ", entry.source == EnSendSource::Terminal ? "terminal" : "");
    add(" ", entry.source == EnSendSource::Poll ? "poll" : "");
    add(" trigger ", entry.trigger);
    add(" command ", entry.command);
    add(" client ", entry.client);
    return line;
}
