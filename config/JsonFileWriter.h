#pragma once

#include "platform/Mutex.h"

#include <future>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

/**
 * Saves JSON documents away from the caller's thread, each first to its backup and then in place (see
 * SaveJsonWithBackup).
 *
 * Documents of different paths are saved independently of each other. Of one path, the last one asked for is
 * what stays on the disk: jobs take turns, and a document that no job has begun to write is replaced by a
 * later one. All operations may be called from any thread.
 */
class CJsonFileWriter {
  public:
    CJsonFileWriter() = default;
    CJsonFileWriter(const CJsonFileWriter&) = delete;
    CJsonFileWriter& operator=(const CJsonFileWriter&) = delete;

    /**
     * Starts a save and returns. When the system has no thread for it, the save is done before it returns.
     * Failures of the save are told as SaveJsonToFile tells them.
     * @throw std::bad_alloc  the document is not saved then
     */
    void SaveAsync(nlohmann::json document, const std::string& path);

    /** Returns when all saves that were started so far have ended. */
    void WaitAll();

  private:
    struct SPathState;

    /**
     * Has the document wait for its job, and starts that if there is none.
     * @return null; where the system has no thread for the job, what the caller has to save
     */
    std::shared_ptr<SPathState> StartJob(nlohmann::json document, const std::string& path);

    /** One job: writes the document that waits for this path. */
    void Save(SPathState& state, const std::string& path);

    CMutex m_mutex;  ///< guards the waiting documents too; a leaf lock
    /** Running jobs, and finished ones not yet cleared away. */
    std::vector<std::future<void>> m_futures GUARDED_BY(m_mutex);
    /** One entry for each path ever saved. */
    std::map<std::string, std::shared_ptr<SPathState>> m_paths GUARDED_BY(m_mutex);
};
