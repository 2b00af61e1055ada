#include "versions/GenerationFolder.h"

#include "config/DocumentBackup.h"
#include "config/FileContent.h"
#include "platform/DurableFile.h"
#include "platform/FolderNames.h"
#include "platform/Paths.h"
#include "versions/Generations.h"
#include "versions/VersionProblem.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace fs = std::filesystem;
using std::chrono::local_seconds;

namespace {

constexpr const char* kUnfinished = ".tmp";  // suffix of a generation that is being created or removed

void Insist(const std::error_code& error, const std::string& what) {
    if (error) {
        throw std::system_error(error, what);
    }
}

/** Removes our files from a folder, and the folder if it is empty then. */
void RemoveUnfinished(const fs::path& generation) {
    std::error_code ignored;  // the rest is tried again with the next generation
    for (const char* name : kGenerationDocuments) {
        fs::remove(generation / name, ignored);
        fs::remove(generation / (std::string(name) + kUnfinished), ignored);
    }
    fs::remove(generation, ignored);
}

bool IsFolder(const fs::path& path) {
    std::error_code ignored;
    return fs::is_directory(fs::symlink_status(path, ignored));
}

}  // namespace

DocumentTexts ReadPresentDocuments(const fs::path& folder) {
    DocumentTexts documents;
    for (const char* name : kGenerationDocuments) {
        const std::string path = NarrowFromPath(folder / name);
        SFileContent content = ReadFileContent(path);
        if (content.state == EnFileState::Missing) {
            continue;
        }
        if (!IsWholeJson(content.bytes)) {
            content = ReadFileContent(BackupPath(path));
        }
        if (IsWholeJson(content.bytes)) {
            documents.emplace(name, std::move(content.bytes));
        }
    }
    return documents;
}

DocumentTexts ReadGeneration(const fs::path& generation) {
    DocumentTexts documents;
    for (const char* name : kGenerationDocuments) {
        SFileContent content = ReadFileContent(NarrowFromPath(generation / name));
        if (content.state == EnFileState::Read) {
            documents.emplace(name, std::move(content.bytes));
        } else if (content.state != EnFileState::Missing) {
            throw CVersionProblem(EnVersionProblem::Torn, std::string(name) + " can't be read");
        }
    }
    // A removal begins with the folder's name: what is missing now may have been there a moment ago.
    if (!IsFolder(generation)) {
        throw CVersionProblem(EnVersionProblem::Missing, "there is no such generation");
    }
    return documents;
}

std::map<std::string, std::uintmax_t> SizesOfGeneration(const fs::path& generation) {
    std::map<std::string, std::uintmax_t> sizes;
    for (const char* name : kGenerationDocuments) {
        std::error_code error;
        const std::uintmax_t bytes = fs::file_size(generation / name, error);
        if (!error) {
            sizes.emplace(name, bytes);
        }
    }
    return sizes;
}

std::uintmax_t SizeOfGeneration(const fs::path& generation) {
    std::uintmax_t size = 0;
    for (const auto& [name, bytes] : SizesOfGeneration(generation)) {
        size += bytes;
    }
    return size;
}

std::vector<local_seconds> ListGenerations(const fs::path& backups) {
    std::vector<local_seconds> times;
    for (const std::string& name : NamesInFolder(NarrowFromPath(backups))) {
        const auto time = GenerationTime(name);
        if (time && IsFolder(backups / PathFromNarrow(name))) {
            times.push_back(*time);
        }
    }
    std::sort(times.begin(), times.end());
    return times;
}

void RemoveUnfinishedGenerations(const fs::path& backups) {
    for (const std::string& name : NamesInFolder(NarrowFromPath(backups))) {
        const fs::path path = backups / PathFromNarrow(name);
        if (path.extension() == kUnfinished && GenerationTime(NarrowFromPath(path.stem())) &&
            IsFolder(path)) {
            RemoveUnfinished(path);
        }
    }
}

void WriteGeneration(const fs::path& backups, local_seconds time, const DocumentTexts& documents) {
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

void RemoveGeneration(const fs::path& backups, local_seconds time) {
    const fs::path generation = backups / GenerationName(time);
    const fs::path unfinished = backups / (GenerationName(time) + kUnfinished);
    std::error_code error;
    fs::rename(generation, unfinished, error);
    if (!error) {
        RemoveUnfinished(unfinished);
    }
}
