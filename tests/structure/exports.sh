#!/usr/bin/env bash
# Compares the exported symbols of the module with the list of what a host may use.
set -euo pipefail
export LC_ALL=C

case "$1" in
    *.dll)
        # The name of the type lies within its information there.
        list=$(x86_64-w64-mingw32-objdump -p "$1" | sed -n '/Ordinal\/Name Pointer/,/^$/s/^[[:space:]]*\[ *[0-9]*\] //p' | c++filt)
        absent="typeinfo name for CCenterServer"
        ;;
    *)
        list=$(nm -D --defined-only -C "$1" | cut -d' ' -f3-)
        absent=
        ;;
esac

diff <(sort -u <<<"$list") <(grep -vx "$absent" <<'LIST'
CCenterServer::CCenterServer(CCenterServer const&)
CCenterServer::CCenterServer(CClientsManager*, SGlobalConfig const*)
CCenterServer::InitServer()
CCenterServer::Running()
CCenterServer::StopServer()
CCenterServer::operator=(CCenterServer const&)
CCenterServer::~CCenterServer()
GetConfigInstance()
typeinfo for CCenterServer
typeinfo name for CCenterServer
vtable for CCenterServer
LIST
)
