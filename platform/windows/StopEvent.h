#pragma once

#include <windows.h>

/** The event that is set when the process has been asked to stop; made by the first call, never closed. */
HANDLE StopEvent();

/** The service manager alone stops the process: a service gets the console events of every user's log-off. To
 * be called before there is a CStopSignal. */
void LeaveStopToServiceManager();
