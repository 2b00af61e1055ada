#pragma once

#include <fstream>
#include <string>

/**
 * Opens a text file for reading, so that other programs can read and write it meanwhile. The path is in the
 * process's code page. The state of the stream shows whether it worked. Any thread.
 */
std::ifstream OpenTextForReading(const std::string& path);

/** Opens a text file for writing, and empties or creates it; shared and checked as above. */
std::ofstream OpenTextForWriting(const std::string& path);

/** Opens a text file for writing at its end, and creates it if needed; shared and checked as above. */
std::ofstream OpenTextForAppending(const std::string& path);
