#pragma once

#include "config/FileContent.h"

#include <string>
#include <system_error>

/** How many broken files of one name are kept at most. */
inline constexpr int kMaxBrokenFiles = 50;

/** What became of the wish to keep a file. */
struct SKeptFile {
    std::error_code error;  ///< why it could not be kept; "file exists" when kMaxBrokenFiles are there
    std::string path;       ///< where it is kept; empty when there was nothing to keep
};

/**
 * Keeps what a file holds beside it, as <path>.broken, before somebody overwrites it. An earlier one with
 * another content is left alone: the next name is <path>.broken.2, and so on. A content that is kept already
 * is not written twice; a file that is missing or empty is nothing to keep. Blocks for the disk. One thread
 * at a time for one path.
 * @param content  what the file holds; one that can't be read is moved as it is, the others are copied
 */
SKeptFile KeepBrokenFile(const std::string& path, const SFileContent& content);
