#include "platform/NarrowText.h"

#include "platform/windows/Narrow.h"

#include <windows.h>

namespace {

std::string FromWide(UINT codePage, std::wstring_view text) {
    const int length = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(codePage, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(codePage, 0, text.data(), length, narrow.data(), size, nullptr, nullptr);
    return narrow;
}

std::wstring ToWide(UINT codePage, DWORD flags, std::string_view text) {
    const int length = static_cast<int>(text.size());
    const int size = MultiByteToWideChar(codePage, flags, text.data(), length, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(size), L'\0');
    MultiByteToWideChar(codePage, flags, text.data(), length, wide.data(), size);
    return wide;
}

}  // namespace

std::string NarrowText(std::wstring_view text) {
    return FromWide(CP_ACP, text);
}

std::string Utf8FromWide(std::wstring_view text) {
    return FromWide(CP_UTF8, text);
}

std::wstring WideFromNarrow(std::string_view text) {
    return ToWide(CP_ACP, 0, text);
}

std::wstring WideFromUtf8(std::string_view text) {
    return ToWide(CP_UTF8, MB_ERR_INVALID_CHARS, text);
}
