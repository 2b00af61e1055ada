#pragma once

#include <windows.h>

/** The event that is set when the process has been asked to stop; created by the first call, never closed. */
HANDLE StopEvent();

/**
 * Lets only the service manager stop the process, since a service gets the console events of every user's
 * log-off. Call it before there is a CStopSignal.
 */
void LeaveStopToServiceManager();
