#pragma once

#include <string>

/**
 * Writes a line to standard output and flushes it. The line goes out in one piece, so that lines of several
 * threads don't mix. Any thread.
 *
 * While standard output takes nothing, a terminal that is held or a pipe that nobody reads, the line is lost
 * after a tenth of a second; the system log tells the first one.
 */
void PrintLine(std::string line);
