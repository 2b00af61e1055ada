#pragma once

#include <filesystem>
#include <string>

/** The path that a narrow text names. On Windows the text is in the process's code page. Any thread. */
std::filesystem::path PathFromNarrow(const std::string& text);

/** The reverse. The system replaces characters that the code page lacks. */
std::string NarrowFromPath(const std::filesystem::path& path);
