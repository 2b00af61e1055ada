#include "platform/LocaleName.h"

#include <array>

#include <windows.h>

std::wstring GetSystemLocaleName() {
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, L"Control Panel\\International", 0, KEY_READ, &key) !=
        ERROR_SUCCESS) {
        return {};
    }
    std::array<wchar_t, 257> buffer{};  // 512 bytes for the value, and a NUL behind it in any case
    DWORD size = 512;
    const LSTATUS status =
        RegQueryValueExW(key, L"LocaleName", nullptr, nullptr, reinterpret_cast<BYTE*>(buffer.data()), &size);
    if (status != ERROR_SUCCESS) {
        RegCloseKey(key);
        return {};
    }
    // The key stays open: the function runs once a process.
    return buffer.data();
}
