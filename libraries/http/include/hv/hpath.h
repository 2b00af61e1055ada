#pragma once

#include <string>

/** Path texts; the disk is not accessed. */
class HPath {
  public:
    /**
     * Joins a folder and a name with one separator; none is added when the folder ends in one. An empty
     * folder gives "/name". The separator is "/", or a backslash on Windows when the folder contains one.
     */
    static std::string join(const std::string& dir, const std::string& filename);
};
