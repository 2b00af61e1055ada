#pragma once

#include <string>

#include <nlohmann/json.hpp>

/**
 * Reads a whole JSON document. Text behind the first complete value is ignored.
 *
 * A problem is told by one line on standard output, never by an exception: a file that can't be opened gives
 * null, one that breaks off gives what had been read up to there, and one that is nested deeper than
 * kMaxJsonDepth gives null. Any thread.
 */
nlohmann::json LoadJsonFromFile(const std::string& path);

/**
 * Writes a whole JSON document in place: UTF-8, indented by four blanks, keys in ascending order.
 *
 * The file is emptied first and then written, so that a crash in between leaves it short, and a document that
 * holds bad UTF-8 leaves it empty. Folders are not made. A problem is told by one line on standard output and
 * by an error in the system log, never by an exception; a write that fails half way is told by the log alone.
 * Any thread, but not two at once for one path.
 */
void SaveJsonToFile(const nlohmann::json& document, const std::string& path);

/** Saves a document as one try of CDocumentSave does, and tells a problem as SaveJsonToFile does. */
void SaveJsonWithBackup(const nlohmann::json& document, const std::string& path);
