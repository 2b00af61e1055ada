#include "platform/PinnedFile.h"

#include <system_error>

#include <fcntl.h>
#include <unistd.h>

PinnedFile::PinnedFile(const std::filesystem::path& path)
    : m_native(::open(path.c_str(), O_PATH | O_CLOEXEC)) {}

PinnedFile::~PinnedFile() {
    if (m_native != kNone) {
        ::close(static_cast<int>(m_native));
    }
}

std::filesystem::path PinnedFile::RealPath() const {
    std::error_code error;
    return std::filesystem::read_symlink(OpenName(), error);  // empty on an error
}

std::string PinnedFile::OpenName() const {
    return "/proc/self/fd/" + std::to_string(m_native);
}
