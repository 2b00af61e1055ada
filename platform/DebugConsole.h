#pragma once

/**
 * Shows or hides the debug console of the host process. Windows: the console window, allocated when there is
 * none. Linux: mirrors the logs on the host's standard error, or ends that. Any thread; never throws.
 */
void SetDebugConsole(bool show);
