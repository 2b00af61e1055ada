#pragma once

#include <string>
#include <string_view>
#include <system_error>

/**
 * Replaces the content of a file so that a power cut at any moment leaves the old content or the new, whole:
 * a temporary file beside it, flushed to the disk, is renamed over it, and the folder is flushed. The bytes
 * are written as they stand. Blocks for the disk. One thread at a time for one path.
 * @return the reason when it could not be done; the old content is still there then
 */
std::error_code ReplaceFileDurably(const std::string& path, std::string_view content);

/** Flushes a folder's entries to the disk. Nothing to do, and no error, where the system has no such thing.
 */
std::error_code FlushFolder(const std::string& path);

/** Flushes what was written to a file, by whatever stream or program, to the disk. Blocks for the disk. */
std::error_code FlushFile(const std::string& path);
