#pragma once

#include "libraries/http/src/ServerSocket.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include <boost/system/error_code.hpp>

namespace hv::internal {

/**
 * Whether a call may wait for the disk. An event loop must not: it only asks for what is already in memory.
 */
enum class DiskWait { No, Yes };

/** An open regular file; the destructor closes it. One thread at a time. */
class FileHandle {
  public:
    FileHandle() = default;
    FileHandle(std::intptr_t native, std::uint64_t size, std::int64_t modified)
        : m_native(native), m_size(size), m_modified(modified) {}
    FileHandle(FileHandle&& other) noexcept { *this = std::move(other); }
    FileHandle& operator=(FileHandle&& other) noexcept {
        std::swap(m_native, other.m_native);
        std::swap(m_size, other.m_size);
        std::swap(m_modified, other.m_modified);
        return *this;
    }
    FileHandle(const FileHandle&) = delete;
    FileHandle& operator=(const FileHandle&) = delete;
    ~FileHandle();

    /** A handle for a file about which nothing is known without the disk. */
    static FileHandle Unknown() { return {kUnknown, 0, 0}; }

    explicit operator bool() const { return m_native != kNone && m_native != kUnknown; }
    bool IsUnknown() const { return m_native == kUnknown; }

    std::uint64_t Size() const { return m_size; }         ///< bytes, when it was opened
    std::int64_t Modified() const { return m_modified; }  ///< nanoseconds since 1970

    static constexpr std::ptrdiff_t kWouldWait = -2;

    /** Reads at an offset. @return bytes read, 0 at the end, kWouldWait, or -1 on an error */
    std::ptrdiff_t Read(std::uint64_t offset, char* to, std::size_t size,
                        DiskWait wait = DiskWait::Yes) const;

    /**
     * Sends bytes from an offset over a non-blocking socket, as many as it takes now. May wait for the disk.
     * @return bytes sent; 0 with an error: would_block when the socket takes none at present, eof when the
     * file ends here
     */
    std::size_t Send(Socket& socket, std::uint64_t offset, std::size_t size,
                     boost::system::error_code& error) const;

  private:
    static constexpr std::intptr_t kNone = -1;
    static constexpr std::intptr_t kUnknown = -2;

    std::intptr_t m_native = kNone;
    std::uint64_t m_size = 0;
    std::int64_t m_modified = 0;
};

/**
 * Opens a file for reading. An empty handle when there is none, or it is not a regular file, or can't be
 * read.
 */
FileHandle OpenFile(const std::string& path);

/**
 * Opens a file below a folder, and never one outside of it, wherever links lead.
 * @param relative  plain names separated by "/"; no "..", no leading "/"
 * @param wait      No: FileHandle::Unknown() when the content of memory gives no answer
 */
FileHandle OpenFileBeneath(const std::string& folder, const std::string& relative, DiskWait wait);

}  // namespace hv::internal
