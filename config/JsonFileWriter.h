#pragma once

#include <future>
#include <map>
#include <memory>
#include <mutex>
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
     * Starts a save and returns. Failures of the save are told as SaveJsonToFile tells them.
     * @throw std::system_error when no thread can be started; the document is not saved then
     */
    void SaveAsync(nlohmann::json document, const std::string& path);

    /** Returns when all saves that were started so far have ended. */
    void WaitAll();

  private:
    struct SPathState;

    /** One job: writes the document that waits for this path. */
    void Save(SPathState& state, const std::string& path);

    std::mutex m_mutex;  ///< guards the members below and the waiting documents; a leaf lock
    std::vector<std::future<void>> m_futures;  ///< running jobs, and finished ones not yet cleared away
    std::map<std::string, std::shared_ptr<SPathState>> m_paths;  ///< one entry for each path ever saved
};
