#pragma once

#include <string>
#include <vector>

/**
 * The names of what is in a folder, in no order; none when the folder can't be read. The standard library's
 * iterator ends the process when there is no memory for it. Any thread.
 * @throw std::bad_alloc
 */
std::vector<std::string> NamesInFolder(const std::string& path);
