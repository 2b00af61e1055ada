#include "config/SaveMark.h"

#include "config/DocumentBackup.h"
#include "platform/DurableFile.h"
#include "platform/Paths.h"

#include <cstdint>
#include <filesystem>

namespace fs = std::filesystem;

namespace {

constexpr const char* kMissing = "none";

std::string MarkPath(const std::string& path) {
    return BackupPath(path) + ".saving";
}

/** Length and FNV-1a checksum of a text. */
std::string FingerprintOf(std::string_view text) {
    std::uint64_t sum = 0xcbf29ce484222325U;
    for (const char c : text) {
        sum = (sum ^ static_cast<unsigned char>(c)) * 0x100000001b3U;
    }
    return std::to_string(text.size()) + "-" + std::to_string(sum);
}

std::string MarkText(const SFileContent& document, std::string_view backup) {
    const bool isMissing = document.state == EnFileState::Missing;
    return (isMissing ? kMissing : FingerprintOf(document.bytes)) + " " + FingerprintOf(backup) + "\n";
}

}  // namespace

std::error_code WriteSaveMark(const std::string& path, const SFileContent& document,
                              std::string_view backup) {
    return ReplaceFileDurably(MarkPath(path), MarkText(document, backup));
}

void RemoveSaveMark(const std::string& path) {
    // Nothing here has to succeed: a mark that stays matches neither the present document nor a later one.
    std::error_code ignored;
    const fs::path mark = PathFromNarrow(MarkPath(path));
    if (fs::remove(mark, ignored)) {
        ignored = FlushFolder(NarrowFromPath(mark.parent_path()));
    }
}

bool HasSaveMark(const std::string& path) {
    std::error_code ignored;
    return fs::exists(PathFromNarrow(MarkPath(path)), ignored);
}

bool IsOlderThanBackup(const std::string& path, const SFileContent& document, std::string_view backup) {
    const SFileContent mark = ReadFileContent(MarkPath(path));
    return mark.state == EnFileState::Read && mark.bytes == MarkText(document, backup);
}
