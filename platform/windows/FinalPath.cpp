#include "platform/windows/FinalPath.h"

#include <string>
#include <string_view>

std::filesystem::path FinalPath(HANDLE handle) {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD size = GetFinalPathNameByHandleW(handle, path.data(), static_cast<DWORD>(path.size()),
                                                     FILE_NAME_NORMALIZED);
        const bool isWhole = size < path.size();
        path.resize(size);  // the length of the text, or the room that it needs
        if (isWhole) {
            break;
        }
    }
    constexpr std::wstring_view network = LR"(\\?\UNC\)";
    constexpr std::wstring_view local = LR"(\\?\)";
    if (path.starts_with(network)) {
        path.replace(0, network.size(), LR"(\\)");
    } else if (path.starts_with(local)) {
        path.erase(0, local.size());
    }
    return path;
}
