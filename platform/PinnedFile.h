#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

/**
 * A file or folder that is kept open, so that the one that was checked is the one that is opened, whatever
 * happens to its name meanwhile. Nothing is read, and a device is not woken.
 *
 * Linux: a descriptor; another file may take the name, but this one stays reachable. Windows: a handle under
 * which neither the file nor a folder above it can be renamed or removed.
 *
 * One thread at a time.
 */
class PinnedFile {
  public:
    /** Pins the file or folder at a path, following links; an empty object when that can't be reached. */
    explicit PinnedFile(const std::filesystem::path& path);
    ~PinnedFile();
    PinnedFile(const PinnedFile&) = delete;
    PinnedFile& operator=(const PinnedFile&) = delete;

    explicit operator bool() const { return m_native != kNone; }

    /** Its path at this moment, without any link in it; empty when the system doesn't report it. */
    std::filesystem::path RealPath() const;

    /** A narrow path that opens this very file for as long as the object lives. */
    std::string OpenName() const;

  private:
    static constexpr std::intptr_t kNone = -1;

    std::intptr_t m_native = kNone;
};
