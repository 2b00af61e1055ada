#pragma once

#include "config/DocumentSave.h"
#include "platform/Mutex.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

/** Pauses before another try of a save: before the second try, and the longest before a later one. */
struct SSavePauses {
    std::chrono::milliseconds first{1000};
    std::chrono::milliseconds longest{60000};
};

/** Documents whose last change is not on the disk yet. */
struct SSaveCounts {
    std::size_t pending = 0;  ///< all of them
    std::size_t failing = 0;  ///< those of them whose last try failed
};

/**
 * Saves JSON documents on other threads than the caller's, each first to its backup and then in place (see
 * CDocumentSave).
 *
 * Documents of different paths are saved independently. For one path, the last document asked for is what
 * remains on the disk: jobs take turns, and a later document replaces one that no job has begun to write.
 *
 * A save that fails is tried again by its own job until it succeeds, a newer document of its path replaces
 * it, or WaitAll is called. The pause before the next try doubles each time. The system log reports when the
 * saves of a path begin to fail, and when they succeed again. All operations may be called from any thread.
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
     * Starts a save and returns. When the system has no thread for it, the save is done before this returns.
     * If that one fails, the next save of its path or WaitAll tries it again.
     * @throw std::bad_alloc  the document is not saved then
     */
    void SaveAsync(nlohmann::json document, const std::string& path);

    /**
     * The next save of this path keeps the existing file as <name>.broken, whatever it holds; if that fails,
     * it doesn't write.
     */
    void KeepBeforeNextSave(const std::string& path);

    /** How the saves stand at present. Waits for no disk. */
    SSaveCounts Counts();

    /**
     * Returns when all saves started so far have ended. One that keeps failing gets one more try; the system
     * log reports what is given up.
     */
    void WaitAll();

  private:
    struct SPathState;

    /** The entry of a path, created when there is none. */
    SPathState& StateOf(const std::string& path) REQUIRES_LOCK(m_mutex);

    /** The entry after this one; the first for null; null after the last. */
    SPathState* NextState(const SPathState* last) noexcept;

    /**
     * Queues the document for its job, and starts the job if there is none.
     * @return null; if the system has no thread for the job, the entry that the caller has to save
     */
    [[nodiscard]] SPathState* StartJob(nlohmann::json document, const std::string& path);

    /** One job: writes the document that waits for this path, again and again if needed and canSleep. */
    void RunJob(SPathState& state, bool canSleep) noexcept;

    /** Makes the waiting document the unfinished save. */
    void TakeWaiting(SPathState& state) noexcept;

    /** @return true when the save is done, or can never be done */
    [[nodiscard]] bool TryOnce(SPathState& state) noexcept;

    /** Sleeps until the next try. @return false when this job shall make no other try */
    [[nodiscard]] bool SleepBeforeNextTry(SPathState& state) noexcept;

    const SSavePauses m_pauses{};
    const std::function<void(const std::string&)> m_beforeSave{};
    CMutex m_mutex;  ///< guards the waiting documents too; a leaf lock
    /** Running jobs, and finished ones that are not yet removed. */
    std::vector<std::future<void>> m_futures GUARDED_BY(m_mutex);
    /** One entry for each path that was ever saved. */
    std::map<std::string, std::shared_ptr<SPathState>> m_paths GUARDED_BY(m_mutex);
    int m_endings GUARDED_BY(m_mutex) = 0;  ///< calls of WaitAll that have not returned
};
