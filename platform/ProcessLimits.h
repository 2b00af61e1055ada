#pragma once

/**
 * Lets the process open as many files and sockets as the system allows it: the usual limit of 1,024 on Linux
 * is less than a large installation's devices and browsers. Nothing happens where there is no such limit, or
 * no leave to raise it. Called once, at the start.
 */
void RaiseDescriptorLimit();
