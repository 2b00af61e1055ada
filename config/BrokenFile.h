#pragma once

#include "config/FileContent.h"

#include <string>
#include <system_error>

/** How many broken files are kept for one name at most. */
inline constexpr int kMaxBrokenFiles = 50;

/** The result of an attempt to keep a file. */
struct SKeptFile {
    std::error_code error;  ///< why it could not be kept; "file exists" when kMaxBrokenFiles are there
    std::string path;       ///< where it is kept; empty when there was nothing to keep
};

/**
 * Keeps the content of a file beside it, as <path>.broken, before somebody overwrites it. An earlier one with
 * other content stays: the next name is <path>.broken.2, and so on. Content that is kept already is not
 * written twice. A missing or empty file has nothing to keep. Blocks for the disk. One thread at a time for
 * one path.
 * @param content  the content of the file. An unreadable file is moved as it is, any other is copied.
 */
[[nodiscard]] SKeptFile KeepBrokenFile(const std::string& path, const SFileContent& content);
