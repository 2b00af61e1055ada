#!/usr/bin/env bash
# Whether the tree goes with an installed libhv: configures it against a stand-in, a package of that name whose headers are
# the bundled ones with what an installed one has beside them, and has the compiler check the files that call the library.
# libhv.sh <source folder> <C++ compiler>
set -euo pipefail
source=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

mkdir -p "$work/hv/include" "$work/hv/cmake"
cp -r "$source/libraries/http/include/hv" "$work/hv/include/hv"
# Its own copy of the JSON library, under the same include guard.
json=$(echo '#include <nlohmann/json.hpp>' | "$2" -x c++ -E - | sed -nE 's/^# 1 "(.*\/nlohmann\/json\.hpp)".*/\1/p' | head -1)
{
    echo '#pragma once'
    echo '#define STAND_IN_JSON 1'
    echo '#ifdef INCLUDE_NLOHMANN_JSON_HPP_'
    echo '#error another copy of the JSON library came first'
    echo '#endif'
    echo "#include \"$json\""
} >"$work/hv/include/hv/json.hpp"
sed -i 's/^#pragma once$/#pragma once\n#include <hv\/json.hpp>/' "$work/hv/include/hv/HttpMessage.h"
# Another way to send, of a pointer and a length in fragments.
sed -i 's/^    virtual int send(/    int send(const char* bytes, int length, int fragment, enum ws_opcode opcode = WS_OPCODE_BINARY);\n&/' \
    "$work/hv/include/hv/WebSocketChannel.h"
# What the bundled library has beyond libhv's interface is not there.
sed -i -E '/using is_transparent = void;|ReplyPieces pieces;|shared_ptr<hv::internal::FileHandle> file;/d' "$work/hv/include/hv/HttpMessage.h"
cat >"$work/hv/cmake/libhvConfig.cmake" <<'CONFIG'
foreach(name hv hv_static)
    add_library(${name} INTERFACE IMPORTED)
    set_target_properties(${name} PROPERTIES
        INTERFACE_INCLUDE_DIRECTORIES "${CMAKE_CURRENT_LIST_DIR}/../include" INTERFACE_COMPILE_DEFINITIONS "LINKS_${name}")
endforeach()
CONFIG

cmake -S "$source" -B "$work/build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_COMPILER="$2" -DCMAKE_CXX_FLAGS=-O0 \
    -DSERVER_HTTP_LIBRARY=libhv -Dlibhv_DIR="$work/hv/cmake" >/dev/null

fail() { echo "$*" >&2; exit 1; }
cd "$work/build"
# check FILE: the compiler's check of one file, as the build would compile it.
check() {
    local command
    command=$(ninja -t compdb | sed -nE "s|^ *\"command\": \"(.*/$1)\",?$|\1|p" | sed -E 's/\\"/"/g; s/ -MD//; s/ -(MT|MF|o) [^ ]+//g; s/ -c / /')
    [ -n "$command" ] || fail "$1 is not built"
    [[ $command == *-DLINKS_hv\ * ]] || fail "$1 does not use the shared library"
    eval "$command -fsyntax-only" || fail "$1 does not go with an installed libhv"
    local macros
    macros=$(eval "$command -E -dM")
    [[ $macros != *INCLUDE_NLOHMANN_JSON_HPP_* || $macros == *STAND_IN_JSON* ]] || fail "$1 has another copy of the JSON library"
}
for file in server/CenterServer.cpp server/ClientsManager.cpp server/RouterMgr.cpp webapi/EntityTags.cpp webapi/ResourceHandlers.cpp \
    config/GlobalConfig.cpp config/JsonFile.cpp userdata/CommandMap.cpp libraries/libhv/WebOrigins.cpp libraries/libhv/WebRequests.cpp; do
    check "$file"
done
