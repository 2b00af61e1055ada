#pragma once

#include <string>

/** The calls of the port library since the last call of this function, in order, each with a line end. */
std::string TakePortCalls();

/** Makes the port library impossible to build, as on a machine without threads. */
void LetPortLibraryFail(bool fails);
