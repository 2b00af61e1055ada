#pragma once

struct SGlobalConfig;

/**
 * Writes settings.json into the web root, from which the browser application learns the port of the
 * WebSocket. Where that folder can't be written, a line goes to the system log, and the application takes the
 * default port or the one that is set in the browser. Main thread, before the listeners start.
 */
void WriteWebSettings(const SGlobalConfig& config);
