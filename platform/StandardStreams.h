#pragma once

#include <cstddef>

/**
 * Gives each standard stream that the process was started without an empty one. Otherwise the first files and
 * sockets take its number, and what is printed lands in them. Before anything else is opened.
 */
void OpenMissingStandardStreams();

/** Bytes that standard output takes without waiting once WaitForStandardOutput has given true. */
constexpr std::size_t g_standardOutputPiece = 4096;

/**
 * Waits until standard output takes bytes, a tenth of a second at most. Any thread.
 * @return false when it doesn't: a terminal that is held, or a pipe that nobody reads; the next write would
 *         wait for as long as that lasts. Windows can't tell, and always gives true.
 */
bool WaitForStandardOutput();
