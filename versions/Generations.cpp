#include "versions/Generations.h"

#include "config/DocumentBackup.h"
#include "config/FileContent.h"
#include "platform/DurableFile.h"
#include "platform/FolderNames.h"
#include "platform/Paths.h"
#include "platform/RavLog.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace fs = std::filesystem;
using std::chrono::local_seconds;

namespace {

constexpr std::array<const char*, 4> kNames = {"layout.json", "materials.json", "componentConfig.json",
                                               "interFace.json"};
constexpr const char* kUnfinished = ".tmp";  // suffix of a generation that is being created or removed

using Documents = std::vector<std::pair<const char*, std::string>>;

void Insist(const std::error_code& error, const std::string& what) {
    if (error) {
        throw std::system_error(error, what);
    }
}

/** The documents of a folder as they are, or as a start would load them. Missing ones are left out. */
Documents ReadDocuments(const fs::path& folder) {
    Documents documents;
    for (const char* name : kNames) {
        const std::string path = NarrowFromPath(folder / name);
        SFileContent content = ReadFileContent(path);
        if (content.state == EnFileState::Missing) {
            continue;
        }
        if (!IsWholeJson(content.bytes)) {
            content = ReadFileContent(BackupPath(path));
        }
        if (IsWholeJson(content.bytes)) {
            documents.emplace_back(name, std::move(content.bytes));
        }
    }
    return documents;
}

std::uintmax_t SizeOf(const Documents& documents) {
    std::uintmax_t size = 0;
    for (const auto& [name, text] : documents) {
        size += text.size();
    }
    return size;
}

std::uintmax_t SizeOf(const fs::path& generation) {
    std::uintmax_t size = 0;
    for (const char* name : kNames) {
        std::error_code error;
        const std::uintmax_t bytes = fs::file_size(generation / name, error);
        size += error ? 0 : bytes;
    }
    return size;
}

/** Removes our files from a folder, and the folder if it is empty then. */
void RemoveUnfinished(const fs::path& generation) {
    std::error_code ignored;  // the rest is tried again with the next generation
    for (const char* name : kNames) {
        fs::remove(generation / name, ignored);
        fs::remove(generation / (std::string(name) + kUnfinished), ignored);
    }
    fs::remove(generation, ignored);
}

/** Renames it first, so that half a generation never looks like a whole one. */
void Remove(const fs::path& backups, local_seconds time) {
    const fs::path generation = backups / GenerationName(time);
    const fs::path unfinished = backups / (GenerationName(time) + kUnfinished);
    std::error_code error;
    fs::rename(generation, unfinished, error);
    if (!error) {
        RemoveUnfinished(unfinished);
    }
}

/** The existing generations, ascending; removes what an earlier process has left unfinished. */
std::vector<local_seconds> List(const fs::path& backups) {
    std::vector<local_seconds> times;
    for (const std::string& name : NamesInFolder(NarrowFromPath(backups))) {
        const fs::path path = backups / PathFromNarrow(name);
        std::error_code ignored;
        if (!fs::is_directory(fs::symlink_status(path, ignored))) {
            continue;
        }
        if (const auto time = GenerationTime(name)) {
            times.push_back(*time);
        } else if (path.extension() == kUnfinished && GenerationTime(NarrowFromPath(path.stem()))) {
            RemoveUnfinished(path);
        }
    }
    std::sort(times.begin(), times.end());
    return times;
}

void Write(const fs::path& backups, local_seconds time, const Documents& documents) {
    if (fs::create_directory(backups)) {
        Insist(FlushFolder(NarrowFromPath(backups.parent_path())), "the folder Backup");
    }
    const fs::path unfinished = backups / (GenerationName(time) + kUnfinished);
    try {
        fs::create_directory(unfinished);
        for (const auto& [name, text] : documents) {
            Insist(ReplaceFileDurably(NarrowFromPath(unfinished / name), text), name);
        }
        fs::rename(unfinished, backups / GenerationName(time));
    } catch (...) {
        RemoveUnfinished(unfinished);
        throw;
    }
    Insist(FlushFolder(NarrowFromPath(backups)), "the folder Backup");
}

/** Removes superfluous generations and those that take too much space, but never the latest. */
void Thin(const fs::path& backups, local_seconds now, std::uintmax_t most) {
    const std::vector<local_seconds> times = List(backups);
    // Generations of a clock that was ahead don't displace the others.
    const auto ahead = std::upper_bound(times.begin(), times.end(), now);
    for (const auto& part : {std::vector(times.begin(), ahead), std::vector(ahead, times.end())}) {
        for (const local_seconds time : SuperfluousGenerations(part)) {
            Remove(backups, time);
        }
    }
    std::uintmax_t size = 0;
    std::vector<local_seconds> left = List(backups);
    std::stable_partition(left.begin(), left.end(), [now](local_seconds time) { return time > now; });
    for (auto time = left.rbegin(); time != left.rend(); ++time) {
        size += SizeOf(backups / GenerationName(*time));
        if (size > most && time != left.rbegin()) {
            Remove(backups, *time);
        }
    }
}

}  // namespace

CGenerations::CGenerations(std::function<local_seconds()> clock, const SGenerationLimits& limits)
    : m_clock(std::move(clock)), m_limits(limits) {}

void CGenerations::BeforeSave(const std::string& path) noexcept {
    const CLock lock(m_mutex);
    try {
        const fs::path document = PathFromNarrow(path);
        if (std::find(kNames.begin(), kNames.end(), document.filename()) != kNames.end()) {
            KeepIfDue(document.parent_path());
            m_isTold = false;
        }
    } catch (const std::exception& error) {
        if (!std::exchange(m_isTold, true)) {
            RavLog::WriteSystemLog(RavLog::Warn, "KeepGeneration", error.what());
        }
    }
}

void CGenerations::KeepIfDue(const fs::path& folder) const {
    const fs::path backups = folder / "Backup";
    const local_seconds now = m_clock();
    const std::vector<local_seconds> times = List(backups);
    const auto later = std::upper_bound(times.begin(), times.end(), now);
    if (later != times.begin()) {
        const local_seconds last = *std::prev(later);
        const auto dayOf = [](local_seconds time) { return std::chrono::floor<std::chrono::days>(time); };
        if (dayOf(last) == dayOf(now) && now - last < m_limits.apart) {
            return;
        }
    }
    const Documents documents = ReadDocuments(folder);
    if (documents.empty()) {
        return;
    }
    const std::uintmax_t size = SizeOf(documents);
    if (size > m_limits.bytes) {
        throw std::runtime_error("no generation of the documents is kept: they are larger than " +
                                 std::to_string(m_limits.bytes) + " bytes");
    }
    if (fs::space(folder).available / m_limits.spareFactor < size) {
        throw std::runtime_error("no generation of the documents is kept: too little room on the disk");
    }
    Write(backups, now, documents);
    Thin(backups, now, m_limits.bytes);
}
