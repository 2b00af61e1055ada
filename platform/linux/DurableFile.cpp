#include "platform/DurableFile.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>

#include <fcntl.h>
#include <unistd.h>

namespace {

std::error_code LastError() {
    // To all callers, an exhausted quota is a full disk.
    return {errno == EDQUOT ? ENOSPC : errno, std::generic_category()};
}

/** An open file descriptor. */
class CDescriptor {
  public:
    CDescriptor(const std::string& path, int flags) : m_fd(::open(path.c_str(), flags | O_CLOEXEC, 0666)) {}
    ~CDescriptor() {
        if (m_fd >= 0) {
            ::close(m_fd);
        }
    }
    CDescriptor(const CDescriptor&) = delete;
    CDescriptor& operator=(const CDescriptor&) = delete;

    bool IsOpen() const { return m_fd >= 0; }

    std::error_code Write(std::string_view content) const {
        while (!content.empty()) {
            const ssize_t written = ::write(m_fd, content.data(), content.size());
            if (written >= 0) {
                content.remove_prefix(static_cast<std::size_t>(written));
            } else if (errno != EINTR) {
                return LastError();
            }
        }
        return {};
    }

    std::error_code Flush() const {
        // Some file systems can't flush a folder, and say so by EINVAL.
        return ::fsync(m_fd) == 0 || errno == EINVAL ? std::error_code() : LastError();
    }

    std::error_code Close() {
        const int fd = m_fd;
        m_fd = -1;
        return ::close(fd) == 0 || errno == EINTR ? std::error_code() : LastError();
    }

  private:
    int m_fd;
};

std::error_code WriteFlushed(const std::string& path, std::string_view content) {
    CDescriptor file(path, O_WRONLY | O_CREAT | O_TRUNC);
    if (!file.IsOpen()) {
        return LastError();
    }
    std::error_code error = file.Write(content);
    if (!error) {
        error = file.Flush();
    }
    const std::error_code closing = file.Close();
    return error ? error : closing;
}

}  // namespace

std::error_code ReplaceFileDurably(const std::string& path, std::string_view content) {
    const std::string temporary = path + ".tmp";
    std::error_code error = WriteFlushed(temporary, content);
    if (!error && std::rename(temporary.c_str(), path.c_str()) != 0) {
        error = LastError();
    }
    if (error) {
        ::unlink(temporary.c_str());
        return error;
    }
    return FlushFolder(std::filesystem::path(path).parent_path().string());
}

std::error_code FlushFolder(const std::string& path) {
    const CDescriptor folder(path.empty() ? "." : path, O_RDONLY | O_DIRECTORY);
    return folder.IsOpen() ? folder.Flush() : LastError();
}

std::error_code FlushFile(const std::string& path) {
    const CDescriptor file(path, O_WRONLY);
    return file.IsOpen() ? file.Flush() : LastError();
}
