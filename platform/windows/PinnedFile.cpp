#include "platform/PinnedFile.h"

#include "platform/Paths.h"
#include "platform/windows/FinalPath.h"

#include <windows.h>

namespace {

HANDLE Native(std::intptr_t handle) {
    return reinterpret_cast<HANDLE>(handle);  // NOLINT(performance-no-int-to-ptr): it was one
}

}  // namespace

// Opened for reading and not shared for deletion: the name can't be taken away meanwhile.
PinnedFile::PinnedFile(const std::filesystem::path& path)
    : m_native(reinterpret_cast<std::intptr_t>(
          CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                      FILE_FLAG_BACKUP_SEMANTICS, nullptr))) {
    static_assert(kNone == -1);  // INVALID_HANDLE_VALUE
}

PinnedFile::~PinnedFile() {
    if (m_native != kNone) {
        CloseHandle(Native(m_native));
    }
}

std::filesystem::path PinnedFile::RealPath() const {
    return FinalPath(Native(m_native));
}

std::string PinnedFile::OpenName() const {
    return NarrowFromPath(RealPath());
}
