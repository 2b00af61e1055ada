#pragma once

#include <windows.h>

/** The event that is set when the process has been asked to stop; made by the first call, never closed. */
HANDLE StopEvent();
