#pragma once

#include <string>
#include <string_view>
#include <system_error>

/** Path of a document's backup: the file of the same name in the folder Backup beside it. */
std::string BackupPath(const std::string& path);

/**
 * Writes the text of a document to its backup, so that a power cut at any moment leaves the old backup or the
 * new one, whole. Makes the folder Backup, but none above it. One thread at a time for one path.
 * @return the reason when it could not be done; the old backup is still there then
 */
std::error_code WriteBackup(const std::string& path, std::string_view text);

/**
 * Puts a document's backup in its place when the document is there but broken (empty, or not one whole JSON
 * value) and the backup is whole. The broken file stays beside it as <name>.broken. One line on standard
 * output and one error in the system log tell it. A missing document, or one without a whole backup, is left
 * alone. At start, before the document is loaded; never throws.
 * @return the file to load: path, or the backup when it could not be put in its place
 */
std::string RestoreFromBackup(const std::string& path);
