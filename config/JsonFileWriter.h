#pragma once

#include "config/DocumentSave.h"
#include "platform/Mutex.h"

#include <chrono>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

/** The pauses before the second try of a save, and before a later one at most. */
struct SSavePauses {
    std::chrono::milliseconds first{1000};
    std::chrono::milliseconds longest{60000};
};

/**
 * Saves JSON documents away from the caller's thread, each first to its backup and then in place (see
 * CDocumentSave).
 *
 * Documents of different paths are saved independently of each other. Of one path, the last one asked for is
 * what stays on the disk: jobs take turns, and a document that no job has begun to write is replaced by a
 * later one.
 *
 * A save that fails is tried again, by its own job, until it works, a newer document of its path takes its
 * place, or WaitAll is called. The pause before the next try doubles each time. The system log tells when the
 * saves of a path begin to fail, and when they work again. All operations may be called from any thread.
 */
class CJsonFileWriter {
  public:
    CJsonFileWriter() = default;

    /** @param beforeSave  called by each job with the path, before it writes anything; it doesn't throw */
    explicit CJsonFileWriter(const SSavePauses& pauses,
                             std::function<void(const std::string&)> beforeSave = nullptr)
        : m_pauses(pauses), m_beforeSave(std::move(beforeSave)) {}
    CJsonFileWriter(const CJsonFileWriter&) = delete;
    CJsonFileWriter& operator=(const CJsonFileWriter&) = delete;

    /**
     * Starts a save and returns. When the system has no thread for it, the save is done before it returns; if
     * that one fails, it is tried again by the next save of its path or by WaitAll.
     * @throw std::bad_alloc  the document is not saved then
     */
    void SaveAsync(nlohmann::json document, const std::string& path);

    /** The next save of this path keeps what is there as <name>.broken, whatever it is, or doesn't write. */
    void KeepBeforeNextSave(const std::string& path);

    /**
     * Returns when all saves that were started so far have ended. One that keeps failing gets one more try;
     * the system log tells what is given up.
     */
    void WaitAll();

  private:
    struct SPathState;

    /** The entry of a path, made when there is none. */
    SPathState& StateOf(const std::string& path) REQUIRES_LOCK(m_mutex);

    /** The entry behind this one, the first for null; null behind the last. */
    SPathState* NextState(const SPathState* last) noexcept;

    /**
     * Has the document wait for its job, and starts that if there is none.
     * @return null; where the system has no thread for the job, what the caller has to save
     */
    SPathState* StartJob(nlohmann::json document, const std::string& path);

    /** One job: writes the document that waits for this path, again and again if need be and canSleep. */
    void RunJob(SPathState& state, bool canSleep) noexcept;

    /** Makes what waits the unfinished save. */
    void TakeWaiting(SPathState& state) noexcept;

    /** @return true when the save is done, or can't be */
    bool TryOnce(SPathState& state) noexcept;

    /** Sleeps until the next try. @return false when there is to be none by this job */
    bool SleepBeforeNextTry(SPathState& state) noexcept;

    const SSavePauses m_pauses{};
    const std::function<void(const std::string&)> m_beforeSave{};
    CMutex m_mutex;  ///< guards the waiting documents too; a leaf lock
    /** Running jobs, and finished ones not yet cleared away. */
    std::vector<std::future<void>> m_futures GUARDED_BY(m_mutex);
    /** One entry for each path ever saved. */
    std::map<std::string, std::shared_ptr<SPathState>> m_paths GUARDED_BY(m_mutex);
    int m_endings GUARDED_BY(m_mutex) = 0;  ///< calls of WaitAll that have not returned
};
