#include "config/JsonFileWriter.h"

#include "config/StandardOutput.h"
#include "config/WakeUp.h"
#include "platform/ProcessMemory.h"
#include "platform/RavLog.h"

#include <algorithm>
#include <exception>
#include <system_error>
#include <utility>

struct CJsonFileWriter::SPathState {
    explicit SPathState(std::string file) : path(std::move(file)) {}

    const std::string path;

    // Under the writer's mutex.
    std::optional<nlohmann::json> waiting;  ///< asked for, not begun
    bool hasTaker = false;                  ///< a job will look at what waits, before its next try
    bool isUnfinished = false;              ///< a save has begun and has not worked yet
    bool isFailing = false;                 ///< its last try has failed
    EnKeep keep = EnKeep::IfBroken;         ///< for the next save

    CMutex fileMutex;  ///< held by the job that writes the file; what follows is that job's
    std::optional<CDocumentSave> unfinished;
    bool isNew = false;  ///< the unfinished save was not tried yet
    int failures = 0;    ///< tries since the last one of this path that worked
    std::chrono::milliseconds pause{};

    CWakeUp wakeUp;
};

namespace {

/** Writes to the system log from functions that must not throw. */
template <typename MakeText>
void Log(RavLog::EnLogLevel level, const char* withoutMemory, MakeText makeText) noexcept {
    try {
        RavLog::WriteSystemLog(level, "SaveAsync", makeText());
    } catch (...) {
        RavLog::WriteSystemLog(level, "SaveAsync", withoutMemory);
    }
}

}  // namespace

CJsonFileWriter::SPathState& CJsonFileWriter::StateOf(const std::string& path) {
    std::shared_ptr<SPathState>& state = m_paths[path];
    if (!state) {
        state = std::make_shared<SPathState>(path);
    }
    return *state;
}

CJsonFileWriter::SPathState* CJsonFileWriter::NextState(const SPathState* last) noexcept {
    const CLock lock(m_mutex);
    const auto next = last == nullptr ? m_paths.begin() : m_paths.upper_bound(last->path);
    return next == m_paths.end() ? nullptr : next->second.get();
}

CJsonFileWriter::SPathState* CJsonFileWriter::StartJob(nlohmann::json document, const std::string& path) {
    std::optional<nlohmann::json> replaced;  // destroyed after the lock
    const CLock lock(m_mutex);
    std::erase_if(m_futures, [](const std::future<void>& job) {
        return job.valid() && job.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    });
    SPathState& state = StateOf(path);
    m_futures.reserve(m_futures.size() + 1);
    replaced = std::exchange(state.waiting, std::move(document));
    if (state.hasTaker) {
        state.wakeUp.Wake();  // it may sleep before another try of an older document
        return nullptr;
    }
    state.hasTaker = true;
    try {
        m_futures.push_back(std::async(std::launch::async, [this, &state] { RunJob(state, true); }));
    } catch (const std::system_error& error) {
        Log(RavLog::Warn, "a save has to do without a thread of its own", [&error] {
            return std::string("a save has to do without a thread of its own: ") + error.what();
        });
        return &state;
    } catch (...) {
        state.hasTaker = false;
        state.waiting.reset();
        throw;
    }
    return nullptr;
}

void CJsonFileWriter::SaveAsync(nlohmann::json document, const std::string& path) {
    if (SPathState* leftOver = StartJob(std::move(document), path)) {
        RunJob(*leftOver, false);
    }
}

void CJsonFileWriter::KeepBeforeNextSave(const std::string& path) {
    const CLock lock(m_mutex);
    StateOf(path).keep = EnKeep::Always;
}

void CJsonFileWriter::RunJob(SPathState& state, bool canSleep) noexcept {
    const CLock fileLock(state.fileMutex);
    do {
        TakeWaiting(state);
        if (!state.unfinished || TryOnce(state)) {
            ReturnFreeMemory();  // of the copy and its text, possibly much
            return;
        }
    } while (canSleep && SleepBeforeNextTry(state));
}

void CJsonFileWriter::TakeWaiting(SPathState& state) noexcept {
    std::optional<nlohmann::json> document;
    EnKeep keep{};
    {
        const CLock lock(m_mutex);
        document.swap(state.waiting);
        state.hasTaker = false;
        state.isUnfinished = state.isUnfinished || document.has_value();
        keep = state.keep;
    }
    if (document) {
        state.unfinished.emplace(std::move(*document), state.path, keep, &m_beforeSave);
        state.isNew = true;
    }
}

bool CJsonFileWriter::TryOnce(SPathState& state) noexcept {
    const int failuresBefore = state.failures++;
    bool canBeTried = true;
    try {
        const std::optional<SSaveProblem> problem = state.unfinished->Try();
        if (!problem) {
            state.failures = 0;
        } else {
            canBeTried = problem->canBeTried;
            const bool isNew = std::exchange(state.isNew, false);
            if (isNew && !problem->line.empty()) {
                PrintLine(problem->line);
            }
            if (failuresBefore == 0) {
                RavLog::WriteSystemLog(RavLog::Error, "SaveAsync",
                                       problem->text + " [" + state.path + "]" +
                                           (canBeTried ? "; the save is tried again until it works" : ""));
            }
        }
    } catch (const std::exception& error) {  // no memory: another try may find some
        if (failuresBefore == 0) {
            RavLog::WriteSystemLog(RavLog::Error, "SaveAsync", error.what());
        }
    }
    {
        const CLock lock(m_mutex);
        state.keep = state.unfinished->WhatIsToBeKept();
        state.isFailing = state.failures > 0;
        state.isUnfinished = state.isFailing && canBeTried;
    }
    if (state.failures == 0 && failuresBefore > 0) {
        Log(RavLog::Warn, "a save has worked after all", [&state, failuresBefore] {
            return state.path + " is saved, after tries that failed: " + std::to_string(failuresBefore);
        });
    }
    if (state.failures == 0 || !canBeTried) {
        state.unfinished.reset();
        state.failures = 0;
        return true;
    }
    state.pause = failuresBefore == 0 ? m_pauses.first : std::min(2 * state.pause, m_pauses.longest);
    return false;
}

bool CJsonFileWriter::SleepBeforeNextTry(SPathState& state) noexcept {
    bool isEnding = false;
    {
        const CLock lock(m_mutex);
        if (state.hasTaker) {
            return false;  // the job of a newer document continues
        }
        isEnding = m_endings > 0;
        state.hasTaker = !isEnding;
    }
    if (isEnding) {
        Log(RavLog::Error, "a save is given up", [&state] {
            return "the last change of " + state.path +
                   " is not in the file: its save is given up at the end";
        });
        state.unfinished.reset();
        state.failures = 0;
        return false;
    }
    state.wakeUp.SleepFor(state.pause);
    return true;
}

SSaveCounts CJsonFileWriter::Counts() {
    SSaveCounts counts;
    const CLock lock(m_mutex);
    for (const auto& [path, state] : m_paths) {
        counts.pending += state->waiting || state->isUnfinished || state->isFailing ? 1 : 0;
        counts.failing += state->isFailing ? 1 : 0;
    }
    return counts;
}

void CJsonFileWriter::WaitAll() {
    std::vector<std::future<void>> jobs;
    {
        const CLock lock(m_mutex);
        ++m_endings;
        jobs.swap(m_futures);
        for (const auto& [path, state] : m_paths) {
            state->wakeUp.Wake();
        }
    }
    for (const std::future<void>& job : jobs) {
        if (job.valid()) {
            job.wait();
        }
    }
    for (SPathState* state = NextState(nullptr); state != nullptr; state = NextState(state)) {
        RunJob(*state, true);  // the rest of a save without a thread
    }
    const CLock lock(m_mutex);
    --m_endings;
}
