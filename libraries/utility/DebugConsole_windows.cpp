#include "platform/DebugConsole.h"
#include "platform/RavLog.h"
#include "platform/windows/Console.h"

#include <cstdio>

#include <io.h>
#include <windows.h>

namespace {

/** True when the stream is redirected to a file or a pipe, where it stays. */
bool IsRedirected(std::FILE* stream) {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): it was one; -1 and -2, of a stream without, have no type
    const DWORD type = GetFileType(reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream))));
    return type == FILE_TYPE_DISK || type == FILE_TYPE_PIPE;
}

/** Gives the process a console that shows what it writes, in UTF-8. */
void MakeConsole() {
    if (AllocConsole() == FALSE) {
        return;
    }
    SetConsoleOutputCP(CP_UTF8);
    ForbidSelectionByClick();
    for (std::FILE* stream : {stdout, stderr}) {
        if (IsRedirected(stream)) {
            continue;
        }
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
