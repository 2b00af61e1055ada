#pragma once

#include <string>
#include <string_view>
#include <system_error>

/**
 * Replaces the content of a file so that a power cut at any moment leaves either the old or the new content,
 * whole: a temporary file beside it, flushed to the disk, is renamed over it, and the folder is flushed. The
 * bytes are written unchanged. Blocks for the disk. One thread at a time for one path.
 * @return the reason when it failed; the old content is still there then
 */
[[nodiscard]] std::error_code ReplaceFileDurably(const std::string& path, std::string_view content);

/** Flushes a folder's entries to the disk. Does nothing, without an error, on systems that can't do that. */
[[nodiscard]] std::error_code FlushFolder(const std::string& path);

/** Flushes everything that any stream or program wrote to a file to the disk. Blocks for the disk. */
[[nodiscard]] std::error_code FlushFile(const std::string& path);
