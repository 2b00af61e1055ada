#pragma once

#include <string>

/**
 * Writes a line to standard output and flushes it. The line goes out in one piece, so that lines of several
 * threads don't mix. Any thread.
 */
void PrintLine(std::string line);
