# Every target of the project links server_warnings: warnings, sanitizers and the include root.
add_library(server_warnings INTERFACE)
target_compile_options(server_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Wold-style-cast)
# Several files in one translation unit: the compiler can't see then which names are local to a file.
if(CMAKE_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(server_warnings INTERFACE -Wno-subobject-linkage)
endif()
# The compiler of the fuzz targets has other warnings, and nobody reads them there.
target_compile_options(server_warnings INTERFACE $<IF:$<BOOL:${SERVER_FUZZ}>,-w,-Werror>)
target_include_directories(server_warnings INTERFACE "${PROJECT_SOURCE_DIR}")

# The parts of the module also link server_module: what they declare as exported is defined in the same module.
add_library(server_module INTERFACE)
target_compile_definitions(server_module INTERFACE SERVER_BUILD)
target_link_libraries(server_module INTERFACE server_warnings)

if(SERVER_SANITIZE)
    # Applied to everything, so that no translation unit is left without instrumentation.
    add_compile_options(-fsanitize=${SERVER_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${SERVER_SANITIZE})
    if(SERVER_SANITIZE MATCHES "thread")
        # GCC warns that fences are not modelled; Boost.Asio uses none on the paths that are built here.
        target_compile_options(server_warnings INTERFACE -Wno-tsan)
    endif()
endif()
