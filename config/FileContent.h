#pragma once

#include <string>

/** What a look at a file has found. */
enum class EnFileState {
    Missing,     ///< no file of that name
    NoFile,      ///< the name belongs to something else, a folder say
    Unreadable,  ///< it can't be opened, or not be read to its end
    Read,        ///< all bytes are there
};

/** The bytes of a file as they stand on the disk. */
struct SFileContent {
    EnFileState state = EnFileState::Missing;
    std::string bytes;  ///< empty unless the state is Read
};

/** Reads a whole file. Any thread. @throw std::bad_alloc */
SFileContent ReadFileContent(const std::string& path);

/** Tells whether a text is one JSON value, to its end, that isn't nested too deep. */
bool IsWholeJson(const std::string& text);
