#include "libraries/http/src/FileAccess.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace hv::internal {

namespace {

// O_NONBLOCK: a FIFO must not hold the opener.
constexpr int g_readFlags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;

FileHandle Adopt(int descriptor) {
    if (descriptor < 0) {
        return {};
    }
    struct stat info {};
    if (::fstat(descriptor, &info) != 0 || !S_ISREG(info.st_mode)) {
        ::close(descriptor);
        return {};
    }
    return {descriptor, static_cast<std::uint64_t>(info.st_size),
            std::int64_t{info.st_mtim.tv_sec} * 1'000'000'000 + info.st_mtim.tv_nsec};
}

// For kernels before 5.6 and sandboxes that forbid openat2.
FileHandle OpenAfterCheck(const std::string& folder, const std::string& relative) {
    std::error_code error;
    const auto root = std::filesystem::canonical(folder, error);
    if (error) {
        return {};
    }
    const auto target = std::filesystem::canonical(root / relative, error);
    if (error) {
        return {};
    }
    auto part = target.begin();
    for (const auto& name : root) {
        if (part == target.end() || *part++ != name) {
            return {};
        }
    }
    return Adopt(::open(target.c_str(), g_readFlags | O_NOFOLLOW));
}

}  // namespace

FileHandle::~FileHandle() {
    if (m_native != g_none) {
        ::close(static_cast<int>(m_native));
    }
}

std::ptrdiff_t FileHandle::Read(std::uint64_t offset, char* to, std::size_t size) const {
    ssize_t got = 0;
    do {
        got = ::pread(static_cast<int>(m_native), to, size, static_cast<off_t>(offset));
    } while (got < 0 && errno == EINTR);
    return got;
}

FileHandle OpenFile(const std::string& path) {
    return Adopt(::open(path.c_str(), g_readFlags));
}

FileHandle OpenFileBeneath(const std::string& folder, const std::string& relative) {
    const int root = ::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    if (root < 0) {
        return {};
    }
    open_how how{};
    how.flags = static_cast<std::uint64_t>(g_readFlags);
    how.resolve = RESOLVE_BENEATH | RESOLVE_NO_MAGICLINKS;
    const long descriptor = ::syscall(SYS_openat2, root, relative.c_str(), &how, sizeof how);
    const int error = errno;
    ::close(root);
    if (descriptor < 0 && (error == ENOSYS || error == EPERM || error == EAGAIN)) {
        return OpenAfterCheck(folder, relative);
    }
    return Adopt(static_cast<int>(descriptor));
}

}  // namespace hv::internal
