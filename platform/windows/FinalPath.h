#pragma once

#include <filesystem>

#include <windows.h>

/** Where an open file or folder really lies, links followed, without the prefix "\\?\"; empty when the system
 * doesn't tell. */
std::filesystem::path FinalPath(HANDLE handle);
