#pragma once

#include <string>

/** What was found at a path. */
enum class EnFileState {
    Missing,     ///< no file of that name
    NoFile,      ///< the name belongs to something else, such as a folder
    Unreadable,  ///< it can't be opened, or can't be read to its end
    Read,        ///< all bytes are there
};

/** The bytes of a file as they are on the disk. */
struct SFileContent {
    EnFileState state = EnFileState::Missing;
    std::string bytes;  ///< empty unless the state is Read
};

/** Reads a whole file. Any thread. @throw std::bad_alloc */
SFileContent ReadFileContent(const std::string& path);

/** Whether a text is one JSON value, to its end, and not nested too deep. */
bool IsWholeJson(const std::string& text);
