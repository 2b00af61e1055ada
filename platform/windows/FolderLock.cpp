#include "platform/FolderLock.h"

#include "platform/Paths.h"

#include <array>
#include <cctype>
#include <filesystem>
#include <system_error>

#include <windows.h>

namespace {

// The lock lies far behind the text, which others may read therefore.
constexpr DWORD kLockedByte = 0x40000000;

/** The number that the holder has written; empty when there is none. */
std::string ReadNumber(HANDLE file) {
    std::array<char, 20> text{};
    DWORD size = 0;
    std::string number;
    if (ReadFile(file, text.data(), static_cast<DWORD>(text.size()), &size, nullptr) != FALSE) {
        for (DWORD i = 0; i < size && std::isdigit(static_cast<unsigned char>(text.at(i))) != 0; ++i) {
            number += text.at(i);
        }
    }
    return number;
}

/** For a message only: where it can't be written, the number is unknown. */
void WriteNumber(HANDLE file) {
    const std::string text = std::to_string(GetCurrentProcessId()) + "\r\n";
    DWORD written = 0;
    SetEndOfFile(file);
    WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

std::string LastProblem() {
    return std::system_category().message(static_cast<int>(GetLastError()));
}

HANDLE Open(const std::wstring& path, DWORD access) {
    // Not shared for deletion: the file is there as long as somebody has the lock.
    return CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                       access == GENERIC_READ ? OPEN_EXISTING : OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
}

}  // namespace

CFolderLock::CFolderLock(const std::string& folder) {
    std::error_code error;
    std::filesystem::create_directories(PathFromNarrow(folder), error);
    if (error) {
        m_problem = error.message();
    } else {
        Take(NarrowFromPath(PathFromNarrow(folder) / "Server.lock"));
    }
}

void CFolderLock::Take(const std::string& path) {
    const std::wstring name = PathFromNarrow(path).native();
    HANDLE file = Open(name, GENERIC_READ | GENERIC_WRITE);
    if (file == INVALID_HANDLE_VALUE) {
        m_problem = LastProblem();
        file = Open(name, GENERIC_READ);  // enough for the lock
        if (file == INVALID_HANDLE_VALUE) {
            return;
        }
        m_problem.clear();
    }
    OVERLAPPED place{};
    place.Offset = kLockedByte;
    if (LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &place) != FALSE) {
        WriteNumber(file);
        m_state = EnState::Held;
        m_file = reinterpret_cast<std::intptr_t>(file);
        return;
    }
    const DWORD error = GetLastError();
    if (error == ERROR_LOCK_VIOLATION || error == ERROR_IO_PENDING) {
        m_state = EnState::Taken;
        m_owner = ReadNumber(file);
    } else {
        m_problem = LastProblem();
    }
    CloseHandle(file);
}

CFolderLock::~CFolderLock() {
    if (m_state == EnState::Held) {
        CloseHandle(reinterpret_cast<HANDLE>(m_file));  // NOLINT(performance-no-int-to-ptr): kept as a number
    }
}
