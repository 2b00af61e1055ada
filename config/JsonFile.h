#pragma once

#include <string>

#include <nlohmann/json.hpp>

/**
 * Reads a whole JSON document. Text after the first complete value is ignored.
 *
 * A problem is reported by one line on standard output, never by an exception. A file that can't be opened
 * gives null. A file that breaks off gives what could be read before that place. A file that is nested deeper
 * than kMaxJsonDepth gives null. Any thread.
 */
nlohmann::json LoadJsonFromFile(const std::string& path);

/**
 * Writes a whole JSON document in place: UTF-8, indented by four blanks, keys in ascending order.
 *
 * The file is emptied first and then written. So a crash in between leaves it truncated, and a document with
 * invalid UTF-8 leaves it empty. Folders are not created. A problem is reported by one line on standard
 * output and by an error in the system log, never by an exception. A write that fails half way is reported in
 * the log only. Any thread, but not two at once for one path.
 */
void SaveJsonToFile(const nlohmann::json& document, const std::string& path);

/** Saves a document as one try of CDocumentSave does, and reports a problem as SaveJsonToFile does. */
void SaveJsonWithBackup(const nlohmann::json& document, const std::string& path);
