# Source files of a platform operation lie in platform/<folder>; the build picks the folder.
if(WIN32)
    set(SERVER_PLATFORM windows)
    set(CMAKE_SHARED_LIBRARY_PREFIX "")  # Server.dll
    enable_language(RC)
elseif(UNIX)
    set(SERVER_PLATFORM linux)
else()
    message(FATAL_ERROR "Linux and Windows are the platforms of this build")
endif()
