#pragma once

#include <string>

/** Path of a user document; name begins with a "/". Any thread. */
std::string DocumentPath(const char* name);
