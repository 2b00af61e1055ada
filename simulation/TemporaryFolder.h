#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace simulation {

/**
 * A new empty folder in the system's folder for temporary files. The destructor removes it with all its
 * content.
 */
class TemporaryFolder {
  public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& Path() const { return m_path; }

  private:
    std::filesystem::path m_path;
};

/** The content of a file; empty when it can't be read. */
std::string ReadFile(const std::filesystem::path& path);

/** The content of a text file, with "\n" at the ends of its lines on every system. */
std::string ReadTextFile(const std::filesystem::path& path);

/** Replaces a file's content; creates its folder when that is missing. @throw std::runtime_error */
void WriteFile(const std::filesystem::path& path, std::string_view content);

}  // namespace simulation
