#!/usr/bin/env bash
# Compares the exported symbols of the module with the list of what a host may use.
set -euo pipefail
export LC_ALL=C

diff <(nm -D --defined-only -C "$1" | cut -d' ' -f3- | sort -u) - <<'LIST'
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
