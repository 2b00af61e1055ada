#include "libraries/http/src/FileAccess.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <system_error>

#include <boost/asio/buffer.hpp>
#include <boost/asio/error.hpp>

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

namespace hv::internal {

namespace {

// O_NONBLOCK: a FIFO must not hold the opener.
constexpr int kReadFlags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;

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

int OpenAt(int folder, const char* path, std::uint64_t flags, std::uint64_t resolve) {
    open_how how{};
    how.flags = flags;
    how.resolve = resolve;
    return static_cast<int>(::syscall(SYS_openat2, folder, path, &how, sizeof how));
}

constexpr std::uint64_t kFolderFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;
constexpr std::uint64_t kResolve = RESOLVE_BENEATH | RESOLVE_NO_MAGICLINKS;

// Opens what the kernel finds without the disk (since 5.12).
FileHandle OpenCachedBeneath(const std::string& folder, const std::string& relative) {
    const int root = OpenAt(AT_FDCWD, folder.c_str(), kFolderFlags, RESOLVE_CACHED);
    const int descriptor = root < 0 ? -1
                                    : OpenAt(root, relative.c_str(), static_cast<std::uint64_t>(kReadFlags),
                                             kResolve | RESOLVE_CACHED);
    const bool isMissing = descriptor < 0 && (errno == ENOENT || errno == ENOTDIR);
    if (root >= 0) {
        ::close(root);
    }
    return descriptor >= 0 ? Adopt(descriptor) : isMissing ? FileHandle() : FileHandle::Unknown();
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
    return Adopt(::open(target.c_str(), kReadFlags | O_NOFOLLOW));
}

// sendfile to a connection that the client has closed raises SIGPIPE, and takes no flag against it.
bool BlockPipeSignal() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGPIPE);
    return ::pthread_sigmask(SIG_BLOCK, &signals, nullptr) == 0;
}

// For file systems that know no sendfile.
std::size_t SendCopy(const FileHandle& file, Socket& socket, std::uint64_t offset, std::size_t size,
                     boost::system::error_code& error) {
    std::array<char, std::size_t{16} * 1024> buffer{};
    const std::ptrdiff_t got = file.Read(offset, buffer.data(), std::min(size, buffer.size()));
    if (got <= 0) {
        error = boost::asio::error::eof;
        return 0;
    }
    return socket.write_some(boost::asio::buffer(buffer.data(), static_cast<std::size_t>(got)), error);
}

}  // namespace

FileHandle::~FileHandle() {
    if (*this) {
        ::close(static_cast<int>(m_native));
    }
}

std::ptrdiff_t FileHandle::Read(std::uint64_t offset, char* to, std::size_t size, DiskWait wait) const {
    const int descriptor = static_cast<int>(m_native);
    ssize_t got = 0;
    if (wait == DiskWait::No) {
        const iovec room{to, size};
        got = ::preadv2(descriptor, &room, 1, static_cast<off_t>(offset), RWF_NOWAIT);
        return got < 0 ? kWouldWait : got;  // also where the file system knows no such reading
    }
    do {
        got = ::pread(descriptor, to, size, static_cast<off_t>(offset));
    } while (got < 0 && errno == EINTR);
    return got;
}

std::size_t FileHandle::Send(Socket& socket, std::uint64_t offset, std::size_t size,
                             boost::system::error_code& error) const {
    [[maybe_unused]] thread_local const bool blocked = BlockPipeSignal();
    auto from = static_cast<off_t>(offset);
    ssize_t sent = 0;
    do {
        sent = ::sendfile(socket.native_handle(), static_cast<int>(m_native), &from, size);
    } while (sent < 0 && errno == EINTR);
    if (sent < 0 && (errno == EINVAL || errno == ENOSYS)) {
        return SendCopy(*this, socket, offset, size, error);
    }
    if (sent > 0) {
        error.clear();
        return static_cast<std::size_t>(sent);
    }
    error = sent == 0 ? boost::system::error_code(boost::asio::error::eof)
                      : boost::system::error_code(errno, boost::system::system_category());
    return 0;
}

FileHandle OpenFile(const std::string& path) {
    return Adopt(::open(path.c_str(), kReadFlags));
}

FileHandle OpenFileBeneath(const std::string& folder, const std::string& relative, DiskWait wait) {
    if (wait == DiskWait::No) {
        return OpenCachedBeneath(folder, relative);
    }
    const int root = ::open(folder.c_str(), static_cast<int>(kFolderFlags));
    if (root < 0) {
        return {};
    }
    const int descriptor = OpenAt(root, relative.c_str(), static_cast<std::uint64_t>(kReadFlags), kResolve);
    const int error = errno;
    ::close(root);
    if (descriptor < 0 && (error == ENOSYS || error == EPERM || error == EAGAIN)) {
        return OpenAfterCheck(folder, relative);
    }
    return Adopt(descriptor);
}

}  // namespace hv::internal
