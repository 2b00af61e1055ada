#include "config/DocumentBackup.h"

#include "config/JsonDepth.h"
#include "config/StandardOutput.h"
#include "platform/DurableFile.h"
#include "platform/Paths.h"
#include "platform/RavLog.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>

#include <nlohmann/json.hpp>

namespace fs = std::filesystem;

namespace {

/** The bytes of a file; nothing when it can't be read. */
std::optional<std::string> ReadBytes(const std::string& name) {
    const fs::path path = PathFromNarrow(name);
    std::error_code error;
    if (!fs::is_regular_file(path, error)) {
        return std::nullopt;
    }
    std::ifstream file(path, std::ios::binary);
    const std::uintmax_t size = fs::file_size(path, error);
    if (!file || error) {
        return std::nullopt;
    }
    std::string bytes(size, '\0');
    if (!file.read(bytes.data(), static_cast<std::streamsize>(size))) {
        return std::nullopt;
    }
    return bytes;
}

bool IsWhole(const std::string& text) {
    return !IsNestedTooDeep(text) && nlohmann::json::accept(text);
}

void Tell(const std::string& line) {
    PrintLine(line);
    RavLog::WriteSystemLog(RavLog::Error, "RestoreFromBackup", line);
}

/** Keeps what is broken under another name and puts the text in its place. */
std::error_code ReplaceBroken(const std::string& path, const std::string& broken, const std::string& text) {
    std::error_code error;
    // The document may be a link to where the user keeps it: the link stays.
    const fs::path target = fs::canonical(PathFromNarrow(path), error);
    if (!error) {
        error = ReplaceFileDurably(path + ".broken", broken);
    }
    return error ? error : ReplaceFileDurably(NarrowFromPath(target), text);
}

}  // namespace

std::string BackupPath(const std::string& path) {
    const fs::path document = PathFromNarrow(path);
    return NarrowFromPath(document.parent_path() / "Backup" / document.filename());
}

std::error_code WriteBackup(const std::string& path, std::string_view text) {
    const std::string backup = BackupPath(path);
    const fs::path folder = PathFromNarrow(backup).parent_path();
    std::error_code error;
    if (fs::create_directory(folder, error)) {
        error = FlushFolder(NarrowFromPath(folder.parent_path()));
    }
    return error ? error : ReplaceFileDurably(backup, text);
}

std::string RestoreFromBackup(const std::string& path) try {
    const std::optional<std::string> document = ReadBytes(path);
    if (!document || IsWhole(*document)) {
        return path;
    }
    std::string backupPath = BackupPath(path);
    const std::optional<std::string> backup = ReadBytes(backupPath);
    if (!backup || !IsWhole(*backup)) {
        return path;
    }
    if (const std::error_code error = ReplaceBroken(path, *document, *backup)) {
        Tell("JSON Load Error: " + path +
             " is broken, its backup is used but can't be put in its place: " + error.message());
        return backupPath;
    }
    Tell("JSON Load Error: " + path + " was broken and has been taken from its backup; the broken file is " +
         path + ".broken");
    return path;
} catch (const std::exception& error) {
    Tell("JSON Load Error: " + path + " could not be compared with its backup: " + error.what());
    return path;
}
