#pragma once

#include <string>

/** Plain path texts; nothing is looked up on the disk. */
class HPath {
  public:
    /**
     * Joins a folder and a name with one separator between; none is added where the folder ends in one. An
     * empty folder gives "/name". The separator is "/", or a backslash on Windows when the folder holds one.
     */
    static std::string join(const std::string& dir, const std::string& filename);
};
