#include "libraries/comm/Content.h"

#include <windows.h>

namespace comm {

namespace {

constexpr UINT kGb18030 = 54936;  // number of the code page

}  // namespace

bool AppendGb18030(std::string_view text, std::string& out) {
    const int length = static_cast<int>(text.size());
    const int wideLength =
        MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(), length, nullptr, 0);
    if (wideLength == 0) {
        return false;
    }
    std::wstring wide(static_cast<std::size_t>(wideLength), L'\0');
    MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(), length, wide.data(), wideLength);
    const int size = WideCharToMultiByte(kGb18030, WC_ERR_INVALID_CHARS, wide.data(), wideLength, nullptr, 0,
                                         nullptr, nullptr);
    if (size == 0) {
        return false;
    }
    const std::size_t before = out.size();
    out.resize(before + static_cast<std::size_t>(size));
    WideCharToMultiByte(kGb18030, WC_ERR_INVALID_CHARS, wide.data(), wideLength, out.data() + before, size,
                        nullptr, nullptr);
    return true;
}

}  // namespace comm
