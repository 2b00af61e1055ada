# Source files of a platform operation are in platform/<folder>; the build selects the folder.
if(WIN32)
    set(SERVER_PLATFORM windows)
    set(CMAKE_SHARED_LIBRARY_PREFIX "")  # Server.dll
    enable_language(RC)
    # Waits at the end of the process stand in that library's own list, see platform/windows/ProcessEnd.cpp.
    include(CheckCXXSourceCompiles)
    check_cxx_source_compiles("
        #include <cstdlib>
        #if defined(_UCRT) || !defined(__MSVCRT__)
        #error another C runtime
        #endif
        int main() {}" SERVER_C_RUNTIME_IS_MSVCRT)
    if(NOT SERVER_C_RUNTIME_IS_MSVCRT)
        message(FATAL_ERROR "The C runtime of this compiler is not msvcrt.dll: saves would not be waited for at the end")
    endif()
elseif(UNIX)
    set(SERVER_PLATFORM linux)
else()
    message(FATAL_ERROR "Linux and Windows are the platforms of this build")
endif()
