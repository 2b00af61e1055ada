#include "platform/StandardStreams.h"

#include "platform/windows/Console.h"

#include <algorithm>
#include <cstdlib>

#include <io.h>
#include <windows.h>

namespace {

constexpr int kOutput = 1;  // the number of the stream in the C runtime
constexpr std::size_t kLargestWrite = 16U
                                      << 10U;  // a console takes no more than that at once on some systems

HANDLE g_console = INVALID_HANDLE_VALUE;
DWORD g_modeBefore = 0;

}  // namespace

void ForbidSelectionByClick() {
    // By its name, since standard input may be something else.
    const HANDLE console =
        CreateFileW(L"CONIN$", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                    OPEN_EXISTING, 0, nullptr);
    DWORD mode = 0;
    if (console == INVALID_HANDLE_VALUE || GetConsoleMode(console, &mode) == FALSE ||
        SetConsoleMode(console, (mode & ~DWORD{ENABLE_QUICK_EDIT_MODE}) | ENABLE_EXTENDED_FLAGS) == FALSE) {
        return;
    }
    // The mode belongs to the console, and outlives the process.
    static const bool restores = std::atexit([] { SetConsoleMode(g_console, g_modeBefore); }) == 0;
    g_console = restores ? console : INVALID_HANDLE_VALUE;
    g_modeBefore = mode;
}

// The runtime keeps the numbers of missing streams. The code page belongs to the console, and outlives the
// process.
void PrepareStandardStreams() {
    static const UINT before = GetConsoleOutputCP();
    if (before != 0 && SetConsoleOutputCP(CP_UTF8) != FALSE) {
        std::atexit([] { SetConsoleOutputCP(before); });
    }
    ForbidSelectionByClick();
}

bool WriteStandardOutput(std::string_view text) {
    while (!text.empty()) {
        const auto size = static_cast<unsigned>(std::min(text.size(), kLargestWrite));
        const int written = _write(kOutput, text.data(), size);
        if (written <= 0) {
            return _get_osfhandle(kOutput) < 0;
        }
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

bool IsStandardOutputFile() {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the system gives it as a number
    return GetFileType(reinterpret_cast<HANDLE>(_get_osfhandle(kOutput))) == FILE_TYPE_DISK;
}
