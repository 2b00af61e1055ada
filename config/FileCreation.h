#pragma once

#include <string>

/**
 * Makes the missing folders above a path, and an empty file at it; an existing file is emptied.
 * @return false when the file can't be opened; one line on standard output tells it
 * @throw std::filesystem::filesystem_error "create_directories" when a folder can't be made
 */
bool CreateFileWithDirectories(const std::string& path);
