#!/usr/bin/env bash
# Finds lines that stand in the wrong folder: system headers and switches of the operating system, libraries that know
# the server, and layers that know what stands above them.
set -euo pipefail
cd "$1"

strays=0
check() {
    local what=$1 pattern=$2
    shift 2
    if grep -rnE "$pattern" --include='*.cpp' --include='*.h' "$@"; then
        echo "^ $what" >&2
        strays=1
    fi
}

check "a switch of the operating system outside platform/linux, platform/windows and libraries/" \
    '^#.*\b(_WIN32|__linux__|__unix__)\b' server webapi device userdata versions config host
check "a system header outside platform/linux, platform/windows and libraries/" \
    '^#include <(sys/|netinet/|arpa/|unistd|fcntl|termios|pthread|libudev|windows|winsock)' \
    server webapi device userdata versions config host include platform/*.h
check "a library that knows the server" '^#include "(server|webapi|device|userdata|versions|config|host|include)/' libraries
check "a platform header that knows more than the platform" '^#include "[^p]' platform/*.h
check "a layer below the handlers that knows a request" '<hv/Http(Message|Service|Server)\.h>' config userdata versions platform
exit "$strays"
