#pragma once

#include <string>

/**
 * Folder of the host's executable, without a trailing separator; empty when it can't be found. Any thread.
 */
std::string GetModuleDirectory();

/** The user's Documents folder; empty when it can't be found. It need not exist. Any thread. */
std::string GetDocumentsDirectory();

/** Name of the folder of the user documents below the Documents folder, with this system's separator. */
const char* GetUserDataFolderName();
