#pragma once

#include "config/FileContent.h"

#include <string>
#include <string_view>
#include <system_error>

/**
 * The mark of a save: the file Backup/<name>.saving. It exists from the moment when the backup holds the new
 * state until the document holds it too. It identifies the document's state before the save and the state of
 * the backup. So a start can distinguish a document that the save has not reached from one that the user has
 * changed or deleted since. A mark that matches neither means nothing. One thread at a time for one path.
 */

/** Writes the mark of a document's save, so that it is whole at any moment. */
[[nodiscard]] std::error_code WriteSaveMark(const std::string& path, const SFileContent& document,
                                            std::string_view backup);

/** Removes the mark, if there is one, once the document is on the disk. */
void RemoveSaveMark(const std::string& path);

/** Whether there is a mark. */
bool HasSaveMark(const std::string& path);

/** Whether the mark says that this document is older than this backup. */
bool IsOlderThanBackup(const std::string& path, const SFileContent& document, std::string_view backup);
