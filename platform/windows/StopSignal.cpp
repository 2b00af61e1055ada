#include "platform/StopSignal.h"

#include "platform/windows/StopEvent.h"

namespace {

bool g_isService = false;

// The system ends the process by itself when the handler of these events returns, or takes longer than it
// allows.
constexpr DWORD kLongestStop = 20000;  // milliseconds

BOOL WINAPI OnConsoleEvent(DWORD event) {
    SetEvent(StopEvent());
    if (event == CTRL_CLOSE_EVENT || event == CTRL_LOGOFF_EVENT || event == CTRL_SHUTDOWN_EVENT) {
        Sleep(kLongestStop);  // the end of main ends this thread
    }
    return TRUE;
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
    // A process that was started detached or in a group of its own ignores Ctrl+C until it is told not to.
    SetConsoleCtrlHandler(nullptr, FALSE);
    SetConsoleCtrlHandler(&OnConsoleEvent, TRUE);
}

void CStopSignal::Wait() {
    WaitForSingleObject(StopEvent(), INFINITE);
}
