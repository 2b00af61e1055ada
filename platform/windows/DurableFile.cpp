#include "platform/DurableFile.h"

#include "platform/Paths.h"

#include <algorithm>
#include <cerrno>

#include <windows.h>

namespace {

constexpr DWORD kQuotaExceeded = 1295;  // ERROR_DISK_QUOTA_EXCEEDED, which the headers lack
constexpr int kRenameAttempts = 20;     // a virus scanner or an indexer holds a new file for moments
constexpr DWORD kRenamePause = 10;      // milliseconds
constexpr std::size_t kLargestWrite = 1U << 26U;

std::error_code LastError() {
    const DWORD code = GetLastError();
    if (code == ERROR_DISK_FULL || code == ERROR_HANDLE_DISK_FULL || code == kQuotaExceeded) {
        return {ENOSPC, std::generic_category()};
    }
    return {static_cast<int>(code), std::system_category()};
}

std::error_code WriteAll(HANDLE file, std::string_view content) {
    while (!content.empty()) {
        DWORD written = 0;
        const auto size = static_cast<DWORD>(std::min(content.size(), kLargestWrite));
        if (WriteFile(file, content.data(), size, &written, nullptr) == 0) {
            return LastError();
        }
        content.remove_prefix(written);
    }
    return {};
}

std::error_code WriteFlushed(const std::wstring& path, std::string_view content) {
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return LastError();
    }
    std::error_code error = WriteAll(file, content);
    if (!error && FlushFileBuffers(file) == 0) {
        error = LastError();
    }
    CloseHandle(file);
    return error;
}

std::error_code Rename(const std::wstring& from, const std::wstring& to) {
    for (int attempt = 1;; ++attempt) {
        if (MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0) {
            return {};
        }
        const DWORD code = GetLastError();
        const bool isHeld = code == ERROR_ACCESS_DENIED || code == ERROR_SHARING_VIOLATION;
        if (!isHeld || attempt == kRenameAttempts) {
            return LastError();
        }
        Sleep(kRenamePause);
    }
}

}  // namespace

std::error_code ReplaceFileDurably(const std::string& path, std::string_view content) {
    const std::wstring target = PathFromNarrow(path).native();
    const std::wstring temporary = target + L".tmp";
    std::error_code error = WriteFlushed(temporary, content);
    if (!error) {
        error = Rename(temporary, target);
    }
    if (error) {
        DeleteFileW(temporary.c_str());
    }
    return error;
}

// The rename is written through, and the file system's journal looks after folders.
std::error_code FlushFolder(const std::string& /*path*/) {
    return {};
}

std::error_code FlushFile(const std::string& path) {
    const HANDLE file = CreateFileW(PathFromNarrow(path).c_str(), GENERIC_WRITE,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return LastError();
    }
    const std::error_code error = FlushFileBuffers(file) == 0 ? LastError() : std::error_code();
    CloseHandle(file);
    return error;
}
