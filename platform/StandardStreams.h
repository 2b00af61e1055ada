#pragma once

#include <string_view>

/**
 * Makes the standard streams fit for use, before anything else is opened. Linux: an empty stream in place of
 * each that the process was started without; otherwise the first files and sockets take its number, and what
 * is printed lands in them. Windows: until the process ends, a console shows UTF-8, which is what is printed,
 * and a click into it selects no text, which would hold up whoever prints.
 */
void PrepareStandardStreams();

/**
 * Writes to standard output, past all buffers, and waits until it is taken: for a terminal that is held or a
 * pipe that nobody reads, as long as that lasts. A stream that the process was started without takes
 * everything. One thread at a time.
 * @return false when it can't be written: nobody will read it, or the disk is full
 */
bool WriteStandardOutput(std::string_view text);

/** True when standard output leads to a file, which nobody has to read for the next byte to find room. */
bool IsStandardOutputFile();
