#include "libraries/http/src/FileAccess.h"
#include "platform/Paths.h"
#include "platform/windows/FinalPath.h"
#include "platform/windows/Narrow.h"

#include <algorithm>
#include <array>
#include <filesystem>

#include <boost/asio/buffer.hpp>
#include <boost/asio/error.hpp>

#include <windows.h>

namespace hv::internal {

namespace {

HANDLE Native(std::intptr_t handle) {
    return reinterpret_cast<HANDLE>(handle);  // NOLINT(performance-no-int-to-ptr): it was one
}

// Nanoseconds since 1970 of a count of 100 ns since 1601.
std::int64_t Nanoseconds(const FILETIME& time) {
    constexpr std::int64_t between = 116'444'736'000'000'000;
    const auto count =
        static_cast<std::int64_t>(std::uint64_t{time.dwHighDateTime} << 32U | time.dwLowDateTime);
    return (count - between) * 100;
}

HANDLE Open(const std::filesystem::path& path, DWORD access, DWORD flags) {
    return CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                       OPEN_EXISTING, flags, nullptr);
}

FileHandle Adopt(HANDLE handle) {
    BY_HANDLE_FILE_INFORMATION info{};
    if (GetFileType(handle) != FILE_TYPE_DISK || GetFileInformationByHandle(handle, &info) == FALSE ||
        (info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        CloseHandle(handle);
        return {};
    }
    return {reinterpret_cast<std::intptr_t>(handle),
            std::uint64_t{info.nFileSizeHigh} << 32U | info.nFileSizeLow, Nanoseconds(info.ftLastWriteTime)};
}

bool LiesBeneath(const std::wstring& file, std::wstring folder) {
    if (folder.empty() || folder.back() != L'\\') {
        folder += L'\\';
    }
    return file.size() > folder.size() &&
           CompareStringOrdinal(file.data(), static_cast<int>(folder.size()), folder.data(),
                                static_cast<int>(folder.size()), TRUE) == CSTR_EQUAL;
}

}  // namespace

FileHandle::~FileHandle() {
    if (*this) {
        CloseHandle(Native(m_native));
    }
}

// What is in memory can't be asked for alone here.
std::ptrdiff_t FileHandle::Read(std::uint64_t offset, char* to, std::size_t size, DiskWait wait) const {
    if (wait == DiskWait::No) {
        return kWouldWait;
    }
    constexpr std::size_t most = 1U << 30U;
    OVERLAPPED place{};
    place.Offset = static_cast<DWORD>(offset);
    place.OffsetHigh = static_cast<DWORD>(offset >> 32U);
    DWORD got = 0;
    if (ReadFile(Native(m_native), to, static_cast<DWORD>(size < most ? size : most), &got, &place) ==
        FALSE) {
        return GetLastError() == ERROR_HANDLE_EOF ? 0 : -1;
    }
    return static_cast<std::ptrdiff_t>(got);
}

std::size_t FileHandle::Send(Socket& socket, std::uint64_t offset, std::size_t size,
                             boost::system::error_code& error) const {
    std::array<char, std::size_t{64} * 1024>
        buffer;  // NOLINT(cppcoreguidelines-pro-type-member-init): read into
    const std::ptrdiff_t got = Read(offset, buffer.data(), std::min(size, buffer.size()));
    if (got <= 0) {
        error = boost::asio::error::eof;
        return 0;
    }
    return socket.write_some(boost::asio::buffer(buffer.data(), static_cast<std::size_t>(got)), error);
}

FileHandle OpenFile(const std::string& path) {
    const HANDLE handle = Open(PathFromNarrow(path), GENERIC_READ, FILE_ATTRIBUTE_NORMAL);
    return handle == INVALID_HANDLE_VALUE ? FileHandle() : Adopt(handle);
}

FileHandle OpenFileBeneath(const std::string& folder, const std::string& relative, DiskWait wait) {
    if (wait == DiskWait::No) {
        return FileHandle::Unknown();
    }
    const std::filesystem::path root = PathFromNarrow(folder);
    const HANDLE rootHandle = Open(root, FILE_READ_ATTRIBUTES, FILE_FLAG_BACKUP_SEMANTICS);
    if (rootHandle == INVALID_HANDLE_VALUE) {
        return {};
    }
    const std::wstring rootPath = FinalPath(rootHandle).native();
    CloseHandle(rootHandle);
    // The name comes out of a request, so it is UTF-8 whatever the process's code page.
    const std::wstring name = WideFromUtf8(relative);
    if (name.empty()) {
        return {};
    }
    const HANDLE handle = Open(root / name, GENERIC_READ, FILE_ATTRIBUTE_NORMAL);
    if (handle == INVALID_HANDLE_VALUE) {
        return {};
    }
    if (!LiesBeneath(FinalPath(handle).native(), rootPath)) {
        CloseHandle(handle);
        return {};
    }
    return Adopt(handle);
}

}  // namespace hv::internal
