#pragma once

#include "platform/PortListener.h"

/**
 * Lets one more listener hear all ports from now on. The port library knows only one. Nothing is listened to
 * before the first call. Any thread.
 * @param listener  lives as long as the process
 */
void AddPortListener(CPortListener& listener);
