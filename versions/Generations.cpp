#include "versions/Generations.h"

#include "platform/Paths.h"
#include "platform/RavLog.h"
#include "versions/VersionProblem.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace fs = std::filesystem;
using std::chrono::local_seconds;

namespace {

constexpr const char* kBackups = "Backup";

std::uintmax_t SizeOf(const DocumentTexts& documents) {
    std::uintmax_t size = 0;
    for (const auto& [name, text] : documents) {
        size += text.size();
    }
    return size;
}

/** The folder of a generation. @throw CVersionProblem when the id has not the form of one */
fs::path FolderOf(const fs::path& folder, const std::string& id) {
    if (!GenerationTime(id)) {
        throw CVersionProblem(EnVersionProblem::Missing, "this is no name of a generation");
    }
    return folder / kBackups / id;
}

/**
 * Removes superfluous generations and those that take too much space, but never the latest, and none that
 * has a name.
 */
void Thin(const fs::path& folder, local_seconds now, std::uintmax_t most) {
    const fs::path backups = folder / kBackups;
    const std::string narrow = NarrowFromPath(folder);
    const auto listUnnamed = [&] {
        std::vector<local_seconds> times = ListGenerations(backups);
        std::erase_if(
            times, [&](local_seconds time) { return CVersionNames::IsNamed(narrow, GenerationName(time)); });
        return times;
    };
    const std::vector<local_seconds> times = listUnnamed();
    // Generations of a clock that was ahead don't displace the others.
    const auto ahead = std::upper_bound(times.begin(), times.end(), now);
    for (const auto& part : {std::vector(times.begin(), ahead), std::vector(ahead, times.end())}) {
        for (const local_seconds time : SuperfluousGenerations(part)) {
            RemoveGeneration(backups, time);
        }
    }
    std::uintmax_t size = 0;
    std::vector<local_seconds> left = listUnnamed();
    std::stable_partition(left.begin(), left.end(), [now](local_seconds time) { return time > now; });
    for (auto time = left.rbegin(); time != left.rend(); ++time) {
        size += SizeOfGeneration(backups / GenerationName(*time));
        if (size > most && time != left.rbegin()) {
            RemoveGeneration(backups, *time);
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
        if (std::find(kGenerationDocuments.begin(), kGenerationDocuments.end(), document.filename()) !=
            kGenerationDocuments.end()) {
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
    const local_seconds now = m_clock();
    const std::vector<local_seconds> times = ListGenerations(folder / kBackups);
    const auto later = std::upper_bound(times.begin(), times.end(), now);
    if (later != times.begin()) {
        const local_seconds last = *std::prev(later);
        const auto dayOf = [](local_seconds time) { return std::chrono::floor<std::chrono::days>(time); };
        if (dayOf(last) == dayOf(now) && now - last < m_limits.apart) {
            return;
        }
    }
    const DocumentTexts documents = ReadPresentDocuments(folder);
    if (!documents.empty()) {
        static_cast<void>(Make(folder, now, documents));
    }
}

std::string CGenerations::Make(const fs::path& folder, local_seconds now,
                               const DocumentTexts& documents) const {
    const fs::path backups = folder / kBackups;
    RemoveUnfinishedGenerations(backups);
    const std::uintmax_t size = SizeOf(documents);
    if (size > m_limits.bytes) {
        throw std::runtime_error("no generation of the documents is kept: they are larger than " +
                                 std::to_string(m_limits.bytes) + " bytes");
    }
    if (fs::space(folder).available / m_limits.spareFactor < size) {
        throw std::runtime_error("no generation of the documents is kept: too little room on the disk");
    }
    while (fs::exists(backups / GenerationName(now))) {
        now += std::chrono::seconds(1);  // two within one second
    }
    WriteGeneration(backups, now, documents);
    Thin(folder, now, m_limits.bytes);
    return GenerationName(now);
}

std::string CGenerations::Keep(const std::string& folder, const DocumentTexts& documents) {
    const CLock lock(m_mutex);
    return Make(PathFromNarrow(folder), m_clock(), documents);
}

DocumentTexts CGenerations::Read(const std::string& folder, const std::string& id) {
    return ReadGeneration(FolderOf(PathFromNarrow(folder), id));
}

std::string CGenerations::PathOf(const std::string& folder, const std::string& id,
                                 const std::string& document) {
    const auto& known = kGenerationDocuments;
    const fs::path path = FolderOf(PathFromNarrow(folder), id) / document;
    if (std::find(known.begin(), known.end(), document) == known.end() || !fs::is_regular_file(path)) {
        throw CVersionProblem(EnVersionProblem::Missing, "the generation has no such document");
    }
    return NarrowFromPath(path);
}

std::vector<SVersion> CGenerations::List(const std::string& folder) {
    const fs::path backups = PathFromNarrow(folder) / kBackups;
    const std::vector<local_seconds> times = ListGenerations(backups);
    CVersionNames::Names names = m_names.Read(folder);
    std::vector<SVersion> versions;
    for (auto time = times.rbegin(); time != times.rend(); ++time) {
        const std::string id = GenerationName(*time);
        versions.push_back({id, names[id], SizesOfGeneration(backups / id)});
    }
    return versions;
}

void CGenerations::SetName(const std::string& folder, const std::string& id, const std::string& name) {
    const std::string checked = CheckedVersionName(name);
    const CLock lock(m_mutex);
    const fs::path generation = FolderOf(PathFromNarrow(folder), id);
    if (!fs::is_directory(generation)) {
        throw CVersionProblem(EnVersionProblem::Missing, "there is no such generation");
    }
    CVersionNames::Names names = m_names.Read(folder);
    if (checked.empty()) {
        names.erase(id);
    } else {
        std::uintmax_t size = SizeOfGeneration(generation);
        for (const auto& [other, ignored] : names) {
            size += other == id || !GenerationTime(other)
                        ? 0
                        : SizeOfGeneration(FolderOf(PathFromNarrow(folder), other));
        }
        if (size > m_limits.bytes || (names.size() >= m_limits.named && !names.contains(id))) {
            throw CVersionProblem(EnVersionProblem::NamesTakeRoom, "too many generations have names");
        }
        names[id] = checked;
    }
    try {
        CVersionNames::Write(folder, names);
    } catch (const std::system_error& error) {
        throw CVersionProblem(EnVersionProblem::NameNotStored, error.what());
    }
}
