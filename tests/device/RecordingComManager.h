#pragma once

#include <string>
#include <vector>

/** The calls of the port library since the last call, in order. */
std::vector<std::string> TakePortCalls();

/** The error for ports that the stand-in refuses: local or remote port 1, a serial port named COM1. */
inline constexpr int kRefusedError = 10061;

/** Makes the port library impossible to build, as on a machine without threads. */
void LetPortLibraryFail(bool fails);
