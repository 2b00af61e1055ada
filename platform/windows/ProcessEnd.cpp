#include "platform/ProcessEnd.h"

#include <bit>
#include <system_error>

#include <windows.h>

namespace {

using Function = void (*)();

void Check(bool good, const char* what) {
    if (!good) {
        throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), what);
    }
}

}  // namespace

void CallAtProcessEnd(Function function) {
    // The list of the runtime library itself, which exit walks first of all. The function of that name that
    // is linked into a module has a list of the module's own, walked when the system has ended the other
    // threads.
    const HMODULE runtime = GetModuleHandleW(L"msvcrt.dll");
    const FARPROC found = GetProcAddress(runtime, "_onexit");
    Check(found != nullptr, "_onexit");
    using Register = Function(__cdecl*)(Function);
    Check(std::bit_cast<Register>(found)(function) != nullptr, "_onexit");

    HMODULE pinned = nullptr;
    Check(GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                             std::bit_cast<const wchar_t*>(function), &pinned) != 0,
          "GetModuleHandleEx");
}
