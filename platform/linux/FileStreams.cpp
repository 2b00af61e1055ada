#include "platform/FileStreams.h"

// Files are always shared here, and a text stream changes no line end.

std::ifstream OpenTextForReading(const std::string& path) {
    return std::ifstream(path);
}

std::ofstream OpenTextForWriting(const std::string& path) {
    return std::ofstream(path);
}

std::ofstream OpenTextForAppending(const std::string& path) {
    return std::ofstream(path, std::ios::app);
}
