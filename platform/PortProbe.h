#pragma once

/**
 * True when nobody listens on this TCP port of the machine, so that a server can. False for a taken port and
 * for a number outside 1 to 65535. Any thread.
 */
bool IsPortFree(int port);
