#pragma once

#include <string>
#include <vector>

/**
 * The names of all entries of a folder, in no particular order; none when the folder can't be read. This
 * replaces the standard library's iterator, which ends the process when there is no memory for it. Any
 * thread.
 * @throw std::bad_alloc
 */
std::vector<std::string> NamesInFolder(const std::string& path);
