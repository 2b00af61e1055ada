# The header-only libraries of this machine for a cross build: links to these libraries alone, since the rest of their
# folder contains headers of another system.
set(SERVER_HEADER_FOLDER "/usr/include" CACHE PATH "Folder of Boost, nlohmann/json, spdlog and fmt")
set(server_headers "${CMAKE_BINARY_DIR}/headers")
file(MAKE_DIRECTORY "${server_headers}")
foreach(library boost nlohmann spdlog fmt)
    if(NOT EXISTS "${SERVER_HEADER_FOLDER}/${library}")
        message(FATAL_ERROR "${SERVER_HEADER_FOLDER}/${library} is missing")
    endif()
    file(CREATE_LINK "${SERVER_HEADER_FOLDER}/${library}" "${server_headers}/${library}" SYMBOLIC)
endforeach()

set(SERVER_BOOST_INCLUDE "${server_headers}")
set(SERVER_SPDLOG_INCLUDE "${server_headers}")
add_library(nlohmann_json::nlohmann_json INTERFACE IMPORTED)
target_include_directories(nlohmann_json::nlohmann_json SYSTEM INTERFACE "${server_headers}")

# Wide Windows functions, those of Windows 10 version 1903, and none of the macros that collide with names of ours.
add_compile_definitions(UNICODE _UNICODE _WIN32_WINNT=0x0A00 NTDDI_VERSION=0x0A000007 WIN32_LEAN_AND_MEAN NOMINMAX NOGDI)
