#include "platform/FileStreams.h"

#include "platform/Paths.h"

// The runtime opens with sharing for reading and writing, and turns LF into CR LF and back.

std::ifstream OpenTextForReading(const std::string& path) {
    return std::ifstream(PathFromNarrow(path));
}

std::ofstream OpenTextForWriting(const std::string& path) {
    return std::ofstream(PathFromNarrow(path));
}

std::ofstream OpenTextForAppending(const std::string& path) {
    return std::ofstream(PathFromNarrow(path), std::ios::app);
}
