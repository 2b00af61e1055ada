#pragma once

/**
 * Shows or hides the debug console of the host process. Windows: the console window, allocated when there is
 * none. Linux: starts or ends the mirroring of the logs to the host's standard error. Any thread; never
 * throws.
 */
void SetDebugConsole(bool show);
