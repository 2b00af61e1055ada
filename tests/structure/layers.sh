#!/usr/bin/env bash
# Finds lines that stand in the wrong folder: includes of what a part must not know, system headers and switches of the operating
# system.
set -euo pipefail
cd "$1"

# What each part may include beside its own headers: parts that stand below it, so that no arrow runs up. A part's files are those
# whose paths begin with its prefix; the longest prefix decides. Tests may include everything.
parts() {
    cat <<'TABLE'
# part          prefix                 may include
demo            demo/                  simulation platform
bench           bench/                 simulation userdata config platform
simulation      simulation/
host            host/                  interface platform
server          server/                equipment versions_api device clients envelope log_text config interface platform
versions_api    versions/api/          equipment webapi envelope userdata versions config interface platform
equipment       equipment/             device webapi envelope clients userdata log_text config interface platform
webapi          webapi/                envelope userdata log_text config interface platform
device          device/                envelope clients userdata log_text config platform
envelope        server/RouterMgr       clients log_text config platform
clients         server/ClientsManager  log_text platform
userdata        userdata/              log_text versions config interface platform
log_text        server/LogText         platform
versions        versions/              config platform
config          config/                interface platform
interface       include/
http            libraries/http/        windows platform
libhv           libraries/libhv/       platform
comm            libraries/comm/        windows platform
serial_names    libraries/serial_names/ platform
log             libraries/log/         platform
utility         libraries/utility/     windows platform
linux           platform/linux/        platform
windows         platform/windows/      platform
platform        platform/
TABLE
}

strays=0
grep -rnE '^#include "' --include='*.cpp' --include='*.h' --exclude-dir={.git,'build*',cmake,tests,web} . | sed 's|^\./||' |
    awk -F: '
        # The part of a path, "" for none.
        function part_of(path,    prefix, best) {
            best = ""
            for (prefix in part) if (index(path, prefix) == 1 && length(prefix) > length(best)) best = prefix
            return best == "" ? "" : part[best]
        }
        NR == FNR {
            if ($0 ~ /^#/) next
            count = split($0, word, " ")
            part[word[2]] = word[1]
            place[word[1]] = NR
            for (i = 3; i <= count; ++i) may[word[1], word[i]] = NR
            next
        }
        FNR == 1 {
            for (arrow in may) {
                split(arrow, end, SUBSEP)
                if (place[end[2]] <= place[end[1]]) { print "the table has an arrow up: " end[1] " to " end[2]; failed = 1 }
            }
        }
        {
            split($3, include, "\"")
            from = part_of($1); to = part_of(include[2])
            if (from == "" || to == "" || (from != to && !((from, to) in may))) {
                print $1 ":" $2 ": " (from == "" ? "a folder" : from) " must not include " include[2]
                failed = 1
            }
            if (from != to) seen[from, to] = 1
        }
        END {
            for (arrow in may) if (!(arrow in seen)) {
                split(arrow, end, SUBSEP)
                print "the table allows what nobody needs: " end[1] " to " end[2]
                failed = 1
            }
            exit failed
        }' <(parts) - || strays=1

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
check "a layer below the handlers that knows a request" '<hv/Http(Message|Service|Server)\.h>' config userdata versions/*.{cpp,h} platform
exit "$strays"
