#pragma once

#include <string_view>

/**
 * Prepares the standard streams, before anything else is opened. Linux: replaces each stream that the process
 * was started without by an empty one; otherwise the first files and sockets would take its number, and
 * receive what is printed. Windows: until the process ends, a console shows UTF-8, which is what is printed,
 * and a click into it selects no text, since a selection blocks whoever prints.
 */
void PrepareStandardStreams();

/**
 * Writes to standard output, without any buffer, and waits until the text is taken: with a paused terminal or
 * a pipe that nobody reads, as long as that lasts. A stream that the process was started without takes
 * everything. One thread at a time.
 * @return false when it can't be written: nobody will read it, or the disk is full
 */
[[nodiscard]] bool WriteStandardOutput(std::string_view text);

/** True when standard output is a file. Then nobody has to read before more bytes fit. */
bool IsStandardOutputFile();
