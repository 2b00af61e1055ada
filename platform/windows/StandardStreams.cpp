#include "platform/StandardStreams.h"

#include <cstdlib>

#include <windows.h>

// The runtime keeps the numbers of missing streams. The code page belongs to the console, and outlives the
// process.
void PrepareStandardStreams() {
    static const UINT before = GetConsoleOutputCP();
    if (before != 0 && SetConsoleOutputCP(CP_UTF8) != FALSE) {
        std::atexit([] { SetConsoleOutputCP(before); });
    }
}

bool WaitForStandardOutput() {
    return true;
}
