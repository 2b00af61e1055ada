#include "config/BrokenFile.h"

#include "platform/DurableFile.h"
#include "platform/Paths.h"

#include <filesystem>

namespace fs = std::filesystem;

namespace {

std::string BrokenPath(const std::string& path, int number) {
    const std::string first = path + ".broken";
    return number == 1 ? first : first + '.' + std::to_string(number);
}

bool Holds(const std::string& path, const std::string& bytes) {
    std::error_code error;
    return fs::file_size(PathFromNarrow(path), error) == bytes.size() && !error &&
           ReadFileContent(path).bytes == bytes;
}

/** Renames the file. The document may be a link to the place where the user keeps it: the link stays. */
std::error_code Move(const std::string& path, const std::string& target) {
    std::error_code error;
    const fs::path file = fs::canonical(PathFromNarrow(path), error);
    if (!error) {
        fs::rename(file, PathFromNarrow(target), error);
    }
    return error ? error : FlushFolder(NarrowFromPath(PathFromNarrow(target).parent_path()));
}

}  // namespace

SKeptFile KeepBrokenFile(const std::string& path, const SFileContent& content) {
    const bool isUnreadable = content.state == EnFileState::Unreadable;
    if (!isUnreadable && content.bytes.empty()) {
        return {};
    }
    for (int number = 1; number <= kMaxBrokenFiles; ++number) {
        const std::string target = BrokenPath(path, number);
        std::error_code error;
        if (fs::symlink_status(PathFromNarrow(target), error).type() == fs::file_type::not_found) {
            error = isUnreadable ? Move(path, target) : ReplaceFileDurably(target, content.bytes);
            return {error, target};
        }
        if (!isUnreadable && Holds(target, content.bytes)) {
            return {{}, target};
        }
    }
    return {std::make_error_code(std::errc::file_exists), {}};
}
