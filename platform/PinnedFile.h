#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

/**
 * A file or folder that is held on to, so that the one that was checked is the one that is opened, whatever
 * happens to its name meanwhile. Nothing is read, and a device is not woken.
 *
 * Linux: a descriptor; another file may take the name, this one stays reachable. Windows: a handle under
 * which neither the file nor a folder above it can be renamed or removed.
 *
 * One thread at a time.
 */
class PinnedFile {
  public:
    /** Takes hold of what the path leads to, links followed; an empty object when that can't be reached. */
    explicit PinnedFile(const std::filesystem::path& path);
    ~PinnedFile();
    PinnedFile(const PinnedFile&) = delete;
    PinnedFile& operator=(const PinnedFile&) = delete;

    explicit operator bool() const { return m_native != kNone; }

    /** Where it lies at this moment, without any link on the way; empty when the system doesn't tell. */
    std::filesystem::path RealPath() const;

    /** A narrow path that opens this very file for as long as the object lives. */
    std::string OpenName() const;

  private:
    static constexpr std::intptr_t kNone = -1;

    std::intptr_t m_native = kNone;
};
