#pragma once

#include <string>
#include <vector>

/** What the port library was asked to do since the last call, in order. */
std::vector<std::string> TakePortCalls();

/** Ports that the stand-in refuses: local or remote port 1, a serial port named COM1. Sends there return
 * this. */
inline constexpr int kRefusedError = 10061;

/** Lets the port library be impossible to build, as on a machine without threads. */
void LetPortLibraryFail(bool fails);
