#include "config/JsonFileWriter.h"

#include "config/JsonFile.h"
#include "platform/RavLog.h"

#include <chrono>
#include <optional>
#include <system_error>
#include <utility>

struct CJsonFileWriter::SPathState {
    CMutex fileMutex;                       ///< held by the job that writes the file
    std::optional<nlohmann::json> waiting;  ///< asked for, not begun; a job for it has been started
};

std::shared_ptr<CJsonFileWriter::SPathState> CJsonFileWriter::StartJob(nlohmann::json document,
                                                                       const std::string& path) {
    std::optional<nlohmann::json> replaced;  // destroyed after the lock
    const CLock lock(m_mutex);
    std::erase_if(m_futures, [](const std::future<void>& job) {
        return job.valid() && job.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    });
    std::shared_ptr<SPathState>& state = m_paths[path];
    if (!state) {
        state = std::make_shared<SPathState>();
    }
    replaced = std::exchange(state->waiting, std::move(document));
    if (replaced) {
        return nullptr;  // the job of the replaced document writes this one
    }
    try {
        m_futures.reserve(m_futures.size() + 1);
        m_futures.push_back(std::async(std::launch::async, [this, state, path] { Save(*state, path); }));
    } catch (const std::system_error& error) {
        RavLog::WriteSystemLog(RavLog::Warn, "SaveAsync",
                               std::string("a save has to do without a thread of its own: ") + error.what());
        return state;
    } catch (...) {
        state->waiting.reset();
        throw;
    }
    return nullptr;
}

void CJsonFileWriter::SaveAsync(nlohmann::json document, const std::string& path) {
    if (const auto leftOver = StartJob(std::move(document), path)) {
        Save(*leftOver, path);
    }
}

void CJsonFileWriter::Save(SPathState& state, const std::string& path) {
    const CLock fileLock(state.fileMutex);
    nlohmann::json document;
    {
        const CLock lock(m_mutex);
        document = std::move(*state.waiting);
        state.waiting.reset();
    }
    SaveJsonWithBackup(document, path);
}

void CJsonFileWriter::WaitAll() {
    std::vector<std::future<void>> jobs;
    {
        const CLock lock(m_mutex);
        jobs.swap(m_futures);
    }
    for (const std::future<void>& job : jobs) {
        if (job.valid()) {
            job.wait();
        }
    }
}
