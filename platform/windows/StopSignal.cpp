#include "platform/StopSignal.h"

#include "platform/windows/StopEvent.h"

namespace {

bool g_isService = false;

/**
 * The system ends the process when the handler of its event returns. So it never returns: the end of main, or
 * the system's own patience, ends the process.
 */
[[noreturn]] void StopAndNeverAnswer() {
    SetEvent(StopEvent());
    while (true) {
        Sleep(INFINITE);
    }
}

BOOL WINAPI OnConsoleEvent(DWORD event) {
    if (event == CTRL_CLOSE_EVENT || event == CTRL_LOGOFF_EVENT || event == CTRL_SHUTDOWN_EVENT) {
        StopAndNeverAnswer();
    }
    SetEvent(StopEvent());
    return TRUE;
}

LRESULT CALLBACK OnMessage(HWND window, UINT message, WPARAM first, LPARAM second) {
    switch (message) {
        case WM_QUERYENDSESSION:
            ShutdownBlockReasonCreate(window, L"The last changes are being saved.");
            return TRUE;
        case WM_ENDSESSION:
            if (first != FALSE) {
                StopAndNeverAnswer();
            }
            ShutdownBlockReasonDestroy(window);
            return 0;
        default:
            return DefWindowProcW(window, message, first, second);
    }
}

/**
 * A window that is never shown. The system reports log-off and shutdown to a program with windows only
 * through these, and the system's libraries make this program count as such.
 */
DWORD WINAPI WatchSession(void* /*unused*/) {
    WNDCLASSEXW shape{};
    shape.cbSize = sizeof shape;
    shape.lpfnWndProc = &OnMessage;
    shape.hInstance = GetModuleHandleW(nullptr);
    shape.lpszClassName = L"VarnholtServerSession";
    if (RegisterClassExW(&shape) == 0 ||
        CreateWindowExW(0, shape.lpszClassName, L"Varnholt Server", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr,
                        shape.hInstance, nullptr) == nullptr) {
        return GetLastError();
    }
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        DispatchMessageW(&message);
    }
    return NO_ERROR;
}

}  // namespace

HANDLE StopEvent() {
    static const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    return event;
}

void LeaveStopToServiceManager() {
    g_isService = true;
}

CStopSignal::CStopSignal() {
    StopEvent();
    if (g_isService) {
        return;
    }
    // A process that was started detached or in a group of its own ignores Ctrl+C until this call.
    SetConsoleCtrlHandler(nullptr, FALSE);
    SetConsoleCtrlHandler(&OnConsoleEvent, TRUE);
    if (const HANDLE thread = CreateThread(nullptr, 0, &WatchSession, nullptr, 0, nullptr)) {
        CloseHandle(thread);
    }
}

void CStopSignal::Wait() {
    WaitForSingleObject(StopEvent(), INFINITE);
}
