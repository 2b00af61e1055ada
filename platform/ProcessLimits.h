#pragma once

/**
 * Lets the process open as many files and sockets as the system allows. The usual limit of 1,024 on Linux is
 * too low for the devices and browsers of a large installation. Does nothing where there is no such limit, or
 * no permission to raise it. Called once, at the start.
 */
void RaiseDescriptorLimit();
