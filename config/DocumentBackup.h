#pragma once

#include <string>
#include <string_view>
#include <system_error>

/** Path of a document's backup: the file of the same name in the folder Backup beside it. */
std::string BackupPath(const std::string& path);

/**
 * Writes the text of a document to its backup. A power cut at any moment leaves either the old or the new
 * backup, whole. Creates the folder Backup, but none above it. One thread at a time for one path.
 * @return the reason when it failed; the old backup is still there then
 */
[[nodiscard]] std::error_code WriteBackup(const std::string& path, std::string_view text);

/**
 * Keeps a document that the start can't use completely, before a save overwrites it (see KeepBrokenFile). Any
 * thread, one at a time for one path.
 * @return the result, as the end of a sentence for the log
 */
[[nodiscard]] std::string KeepUnusableDocument(const std::string& path);

/**
 * Ensures that the start loads the newest whole state of a document. A whole backup replaces the document
 * when that is broken (empty, or not one whole JSON value), or older because a save was cut off. A broken
 * document is kept beside it as <name>.broken, even without a whole backup. A document that can't be read
 * stays where it is, and its backup is loaded. A document that the user has deleted or changed since is left
 * alone. The system log reports what was done, and standard output too when the backup is used. At start,
 * before the document is loaded; never throws.
 * @return the file to load: path, or the backup when it could not replace the document
 */
[[nodiscard]] std::string RestoreFromBackup(const std::string& path);
