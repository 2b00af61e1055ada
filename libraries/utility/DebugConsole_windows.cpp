#include "platform/DebugConsole.h"
#include "platform/RavLog.h"

#include <cstdio>

#include <windows.h>

namespace {

/** Gives the process a console that shows what it writes, in UTF-8. */
void MakeConsole() {
    if (AllocConsole() == FALSE) {
        return;
    }
    SetConsoleOutputCP(CP_UTF8);
    for (std::FILE* stream : {stdout, stderr}) {
        if (std::freopen("CONOUT$", "w", stream) != nullptr) {
            std::setvbuf(stream, nullptr, _IONBF, 0);
        }
    }
    // Closing the window would end the server.
    DeleteMenu(GetSystemMenu(GetConsoleWindow(), FALSE), SC_CLOSE, MF_BYCOMMAND);
}

}  // namespace

void SetDebugConsole(bool show) {
    if (show && GetConsoleWindow() == nullptr) {
        MakeConsole();
    }
    ShowWindow(GetConsoleWindow(), show ? SW_SHOW : SW_HIDE);
    RavLog::MirrorToStandardError(show);
}
