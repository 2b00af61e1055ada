#include "platform/Folders.h"

#include "platform/NarrowText.h"

#include <array>
#include <filesystem>

#include <windows.h>
// After windows.h, which it needs.
#include <shlobj.h>

std::string GetModuleDirectory() {
    std::array<wchar_t, MAX_PATH> buffer{};
    const DWORD length = GetModuleFileNameW(nullptr, buffer.data(), MAX_PATH);
    if (length < 1 || length >= MAX_PATH) {
        return {};
    }
    const std::filesystem::path file(std::wstring(buffer.data(), length));
    return NarrowText(file.parent_path().native());
}

std::string GetDocumentsDirectory() {
    std::array<wchar_t, MAX_PATH> buffer{};
    if (SHGetFolderPathW(nullptr, CSIDL_PERSONAL, nullptr, 0, buffer.data()) < 0) {
        return {};
    }
    return NarrowText(buffer.data());
}

const char* GetUserDataFolderName() {
    return "Sennacroft\\Varnholt";
}
