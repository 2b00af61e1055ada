#include "platform/ErrorTexts.h"

#include "platform/windows/Narrow.h"

#include <windows.h>

namespace {

std::string ErrorText(std::uint32_t code, HMODULE source) {
    if (code == 0) {
        return "No error";
    }
    wchar_t* text = nullptr;
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM, source,
                                        code, MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT),
                                        reinterpret_cast<wchar_t*>(&text), 0, nullptr);
    if (length == 0) {
        return "Failed to get error description (Code: " + std::to_string(code) + ")";
    }
    const std::wstring wide(text, length);
    LocalFree(text);
    return Utf8FromWide(wide);
}

}  // namespace

std::string GetSystemErrorText(std::uint32_t code) {
    return ErrorText(code, nullptr);
}

// The system's table answers for socket errors too: without FORMAT_MESSAGE_FROM_HMODULE the module isn't
// searched.
std::string GetSocketErrorText(std::uint32_t code) {
    return ErrorText(code, GetModuleHandleW(L"ws2_32.dll"));
}
