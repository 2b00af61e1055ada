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
 * Keeps a document of which the start can't use all, before a save overwrites it (see KeepBrokenFile). Any
 * thread, one at a time for one path.
 * @return what became of it, as the end of a sentence for the log
 */
std::string KeepUnusableDocument(const std::string& path);

/**
 * Makes sure that the start loads the newest whole state of a document. The backup takes its place when that
 * is whole and the document is broken (empty, or not one whole JSON value), or older because a save was cut
 * off. A broken document stays beside it as <name>.broken, also when there is no whole backup. A document
 * that can't be read stays where it is, and its backup is loaded. One that the user has deleted or changed
 * since is left alone. The system log tells it, and standard output where the backup is taken. At start,
 * before the document is loaded; never throws.
 * @return the file to load: path, or the backup when it could not be put in its place
 */
std::string RestoreFromBackup(const std::string& path);
