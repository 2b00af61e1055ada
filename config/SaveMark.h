#pragma once

#include "config/FileContent.h"

#include <string>
#include <string_view>
#include <system_error>

/**
 * The mark of a save: the file Backup/<name>.saving, which is there from the moment when the backup holds the
 * new state to the one when the document does. It names the state that the document had before and the one of
 * the backup, so that a start can tell a document that the save has not reached from one that the user has
 * changed or deleted since. A mark that fits neither means nothing. One thread at a time for one path.
 */

/** Writes the mark of a document's save, whole at any moment. */
std::error_code WriteSaveMark(const std::string& path, const SFileContent& document, std::string_view backup);

/** Removes the mark, if there is one; the document is on the disk. */
void RemoveSaveMark(const std::string& path);

/** Tells whether there is a mark. */
bool HasSaveMark(const std::string& path);

/** Tells whether the mark says that this document is older than this backup. */
bool IsOlderThanBackup(const std::string& path, const SFileContent& document, std::string_view backup);
