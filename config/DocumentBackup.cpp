#include "config/DocumentBackup.h"

#include "config/BrokenFile.h"
#include "config/SaveMark.h"
#include "config/StandardOutput.h"
#include "platform/DurableFile.h"
#include "platform/Paths.h"
#include "platform/RavLog.h"

#include <filesystem>
#include <optional>

namespace fs = std::filesystem;

namespace {

void Tell(const std::string& line) {
    PrintLine(line);
    RavLog::WriteSystemLog(RavLog::Error, "RestoreFromBackup", line);
}

/** Reports an unusable document in the log only; the loading prints its line. */
void LogUnusable(const std::string& path, const std::string& what) {
    RavLog::WriteSystemLog(RavLog::Error, "RestoreFromBackup",
                           path + " " + what + KeepUnusableDocument(path) +
                               ". There is no whole backup of it: the server goes on with what can be read.");
}

/** The backup's text, when it is a whole document. */
std::optional<std::string> ReadWholeBackup(const std::string& path) {
    SFileContent backup = ReadFileContent(BackupPath(path));
    if (backup.state != EnFileState::Read || !IsWholeJson(backup.bytes)) {
        return std::nullopt;
    }
    return std::move(backup.bytes);
}

/**
 * Replaces a document by a text. The document may be a link to the place where the user keeps it: the link
 * stays.
 */
std::error_code Replace(const std::string& path, const SFileContent& document, const std::string& text) {
    if (document.state == EnFileState::Missing) {
        return ReplaceFileDurably(path, text);
    }
    std::error_code error;
    const fs::path target = fs::canonical(PathFromNarrow(path), error);
    return error ? error : ReplaceFileDurably(NarrowFromPath(target), text);
}

/** Called when the backup is newer than a whole document, or than none. */
std::string TakeNewerBackup(const std::string& path, const SFileContent& document, const std::string& text) {
    if (const std::error_code error = Replace(path, document, text)) {
        Tell("JSON Load Error: " + path +
             " is older than its backup, which is used but can't be put in its place: " + error.message());
        return BackupPath(path);
    }
    RemoveSaveMark(path);
    Tell("JSON Load Error: the last save of " + path +
         " was cut off; the document has been taken from its backup");
    return path;
}

/** Called when the document is broken or can't be read, and the backup is whole. */
std::string TakeWholeBackup(const std::string& path, const SFileContent& document, const std::string& text) {
    if (document.state == EnFileState::Unreadable) {
        Tell("JSON Load Error: " + path + " can't be read to its end, its backup is used");
        return BackupPath(path);
    }
    const SKeptFile kept = KeepBrokenFile(path, document);
    const std::error_code error = kept.error ? kept.error : Replace(path, document, text);
    if (error) {
        Tell("JSON Load Error: " + path +
             " is broken, its backup is used but can't be put in its place: " + error.message());
        return BackupPath(path);
    }
    RemoveSaveMark(path);
    Tell("JSON Load Error: " + path + " was broken and has been taken from its backup; " +
         (kept.path.empty() ? "the broken file was empty" : "the broken file is " + kept.path));
    return path;
}

std::string Restore(const std::string& path) {
    const SFileContent document = ReadFileContent(path);
    const bool isWhole = document.state == EnFileState::Read && IsWholeJson(document.bytes);
    const bool isMissing = document.state == EnFileState::Missing;
    if (document.state == EnFileState::NoFile || ((isWhole || isMissing) && !HasSaveMark(path))) {
        return path;
    }
    const std::optional<std::string> backup = ReadWholeBackup(path);
    if (isWhole || isMissing) {
        if (backup && IsOlderThanBackup(path, document, *backup)) {
            return TakeNewerBackup(path, document, *backup);
        }
        RemoveSaveMark(path);  // the save was done, or somebody has changed the document since
        return path;
    }
    if (backup) {
        return TakeWholeBackup(path, document, *backup);
    }
    LogUnusable(path, document.state == EnFileState::Read ? "is not one whole JSON value"
                                                          : "can't be read to its end");
    return path;
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

std::string KeepUnusableDocument(const std::string& path) {
    const SFileContent document = ReadFileContent(path);
    if (document.state == EnFileState::Unreadable) {
        return "; the next save moves it to <name>.broken";
    }
    const SKeptFile kept = KeepBrokenFile(path, document);
    if (kept.error) {
        return "; it could not be kept: " + kept.error.message() + ", the next save tries that again";
    }
    return kept.path.empty() ? std::string() : "; it is kept as " + kept.path;
}

std::string RestoreFromBackup(const std::string& path) try {
    return Restore(path);
} catch (const std::exception& error) {
    Tell("JSON Load Error: " + path + " could not be compared with its backup: " + error.what());
    return path;
}
