find_package(Threads REQUIRED)
if(CMAKE_CROSSCOMPILING AND WIN32)
    include(cmake/WindowsHeaders.cmake)
else()
    if(SERVER_HTTP_LIBRARY STREQUAL "bundled")
        find_package(nlohmann_json 3.9.1 REQUIRED)
    endif()
    find_path(SERVER_BOOST_INCLUDE boost/beast.hpp REQUIRED)
    find_path(SERVER_SPDLOG_INCLUDE spdlog/spdlog.h REQUIRED)
endif()

# zlib: part of a Windows program, a shared library of the system elsewhere.
find_path(SERVER_ZLIB_INCLUDE zlib.h REQUIRED)
if(WIN32)
    find_library(SERVER_ZLIB_LIBRARY libz.a REQUIRED)
else()
    find_library(SERVER_ZLIB_LIBRARY z REQUIRED)
endif()
add_library(server_zlib INTERFACE)
target_include_directories(server_zlib SYSTEM INTERFACE "${SERVER_ZLIB_INCLUDE}")
target_compile_definitions(server_zlib INTERFACE ZLIB_CONST)
target_link_libraries(server_zlib INTERFACE "${SERVER_ZLIB_LIBRARY}")

if(SERVER_PLATFORM STREQUAL "linux")
    find_path(SERVER_UDEV_INCLUDE libudev.h REQUIRED)
    find_library(SERVER_UDEV_LIBRARY udev REQUIRED)
endif()

# Boost.Asio and Boost.Beast: headers only, their functions compiled once, in one translation unit.
add_library(server_boost STATIC "${PROJECT_SOURCE_DIR}/cmake/BoostSources.cpp")
target_include_directories(server_boost SYSTEM PUBLIC "${SERVER_BOOST_INCLUDE}")
target_compile_definitions(server_boost PUBLIC
    BOOST_ASIO_NO_DEPRECATED BOOST_ASIO_SEPARATE_COMPILATION BOOST_BEAST_SEPARATE_COMPILATION)
target_link_libraries(server_boost PUBLIC Threads::Threads)
if(WIN32)
    target_link_libraries(server_boost PUBLIC ws2_32 mswsock bcrypt)
endif()

# spdlog and fmt, header-only use, so that no shared library of theirs has to be shipped.
add_library(server_spdlog INTERFACE)
target_include_directories(server_spdlog SYSTEM INTERFACE "${SERVER_SPDLOG_INCLUDE}")
target_compile_definitions(server_spdlog INTERFACE SPDLOG_FMT_EXTERNAL FMT_HEADER_ONLY)
target_link_libraries(server_spdlog INTERFACE Threads::Threads)

if(SERVER_HTTP_LIBRARY STREQUAL "libhv")
    find_package(libhv REQUIRED)
    add_library(server_http INTERFACE)
    # The shared one where there is a choice: the static one is not position-independent as it is built by default.
    target_link_libraries(server_http INTERFACE $<IF:$<TARGET_EXISTS:hv>,hv,hv_static>)
    # One copy of the JSON library in the whole tree: the one in libhv's headers.
    if(NOT TARGET nlohmann_json::nlohmann_json)
        add_library(nlohmann_json::nlohmann_json INTERFACE IMPORTED)
    endif()
    set_target_properties(nlohmann_json::nlohmann_json PROPERTIES
        INTERFACE_INCLUDE_DIRECTORIES "${PROJECT_SOURCE_DIR}/cmake/libhv"
        INTERFACE_SYSTEM_INCLUDE_DIRECTORIES ""
        INTERFACE_LINK_LIBRARIES server_http)
endif()
