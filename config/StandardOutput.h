#pragma once

#include <string>

/**
 * Passes a line to the thread that writes standard output. Lines go out whole and in the order of the calls.
 * Any thread.
 *
 * The caller is never held up, even when standard output takes nothing (a paused terminal, or a pipe that
 * nobody reads). Up to 256 KiB of lines wait then, and further ones are lost. The system log reports when
 * that begins and how many were lost. If standard output is a file, the line is in it when this returns,
 * unless the disk stalls for a second. At the end of the process the last lines get a second.
 */
void PrintLine(std::string line);
