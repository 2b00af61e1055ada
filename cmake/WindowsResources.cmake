# server_describe(<target> <description>): on Windows, gives a program or module its version, and a program the manifest
# that makes UTF-8 the code page of its process.
function(server_describe target description)
    if(NOT WIN32)
        return()
    endif()
    get_target_property(kind ${target} TYPE)
    if(kind STREQUAL "EXECUTABLE")
        set(type VFT_APP)
        set(file "${target}.exe")
        # 1: CREATEPROCESS_MANIFEST_RESOURCE_ID, 24: RT_MANIFEST
        set(manifest "1 24 \"${PROJECT_SOURCE_DIR}/platform/windows/Program.manifest\"")
    else()
        set(type VFT_DLL)
        set(file "${target}.dll")
    endif()
    configure_file("${PROJECT_SOURCE_DIR}/cmake/Version.rc.in" "${CMAKE_CURRENT_BINARY_DIR}/${target}.rc" @ONLY)
    target_sources(${target} PRIVATE "${CMAKE_CURRENT_BINARY_DIR}/${target}.rc")
endfunction()
