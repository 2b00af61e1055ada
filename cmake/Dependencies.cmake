find_package(Threads REQUIRED)
find_package(nlohmann_json 3.9.1 REQUIRED)

find_path(SERVER_BOOST_INCLUDE boost/beast.hpp REQUIRED)
find_path(SERVER_SPDLOG_INCLUDE spdlog/spdlog.h REQUIRED)

# Boost.Asio and Boost.Beast: headers only, their functions compiled once, in one translation unit.
add_library(server_boost STATIC "${PROJECT_SOURCE_DIR}/cmake/BoostSources.cpp")
target_include_directories(server_boost SYSTEM PUBLIC "${SERVER_BOOST_INCLUDE}")
target_compile_definitions(server_boost PUBLIC
    BOOST_ASIO_NO_DEPRECATED BOOST_ASIO_SEPARATE_COMPILATION BOOST_BEAST_SEPARATE_COMPILATION)
target_link_libraries(server_boost PUBLIC Threads::Threads)

# spdlog and fmt, header-only use, so that no shared library of theirs has to be shipped.
add_library(server_spdlog INTERFACE)
target_include_directories(server_spdlog SYSTEM INTERFACE "${SERVER_SPDLOG_INCLUDE}")
target_compile_definitions(server_spdlog INTERFACE SPDLOG_FMT_EXTERNAL FMT_HEADER_ONLY)
target_link_libraries(server_spdlog INTERFACE Threads::Threads)

if(SERVER_HTTP_LIBRARY STREQUAL "libhv")
    find_package(libhv REQUIRED)
    add_library(server_http INTERFACE)
    target_link_libraries(server_http INTERFACE $<IF:$<TARGET_EXISTS:hv_static>,hv_static,hv>)
endif()
