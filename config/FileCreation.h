#pragma once

#include <string>

/**
 * Creates the missing folders above a path, and an empty file at it. An existing file is emptied.
 * @return false when the file can't be opened; one line on standard output reports it
 * @throw std::filesystem::filesystem_error "create_directories" when a folder can't be created
 */
[[nodiscard]] bool CreateFileWithDirectories(const std::string& path);
