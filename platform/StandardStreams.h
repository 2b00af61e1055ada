#pragma once

#include <cstddef>

/**
 * Makes the standard streams fit for use, before anything else is opened. Linux: an empty stream in place of
 * each that the process was started without; otherwise the first files and sockets take its number, and what
 * is printed lands in them. Windows: a console shows UTF-8, which is what is printed, until the process ends.
 */
void PrepareStandardStreams();

/** Bytes that standard output takes without waiting once WaitForStandardOutput has given true. */
constexpr std::size_t g_standardOutputPiece = 4096;

/**
 * Waits until standard output takes bytes, a tenth of a second at most. Any thread.
 * @return false when it doesn't: a terminal that is held, or a pipe that nobody reads; the next write would
 *         wait for as long as that lasts. Windows can't tell, and always gives true.
 */
bool WaitForStandardOutput();
