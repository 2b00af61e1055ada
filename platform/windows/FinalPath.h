#pragma once

#include <filesystem>

#include <windows.h>

/**
 * The real path of an open file or folder, with links resolved, without the prefix "\\?\"; empty when the
 * system doesn't report it.
 */
std::filesystem::path FinalPath(HANDLE handle);
