#pragma once

struct SGlobalConfig;

/**
 * Writes settings.json into the web root, from which the browser application learns the port of the
 * WebSocket. When that folder is not writable, a line goes to the system log, and the application uses the
 * default port or the one that is set in the browser. Main thread, before the listeners start.
 */
void WriteWebSettings(const SGlobalConfig& config);
