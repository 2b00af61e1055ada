#include "platform/Paths.h"

#include "platform/NarrowText.h"
#include "platform/windows/Narrow.h"

std::filesystem::path PathFromNarrow(const std::string& text) {
    return WideFromNarrow(text);
}

std::string NarrowFromPath(const std::filesystem::path& path) {
    return NarrowText(path.native());
}
