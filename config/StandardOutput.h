#pragma once

#include <string>

/**
 * Hands a line to the thread that writes standard output. Lines go out whole and in the order of the calls.
 * Any thread.
 *
 * Nobody is held up while standard output takes nothing, a terminal that is held or a pipe that nobody reads:
 * lines wait then, up to 256 KiB of them, and further ones are lost; the system log tells when that begins
 * and how many they were. Where standard output is a file, the line is in it when this returns, unless the
 * disk stalls for a second. At the end of the process the last lines get a second.
 */
void PrintLine(std::string line);
