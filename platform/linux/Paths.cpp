#include "platform/Paths.h"

std::filesystem::path PathFromNarrow(const std::string& text) {
    return text;
}

std::string NarrowFromPath(const std::filesystem::path& path) {
    return path.string();
}
