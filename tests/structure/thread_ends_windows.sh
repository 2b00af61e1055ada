#!/usr/bin/env bash
# No thread may destroy thread-local objects at its end: this runtime frees their memory before (docs/platforms.md).
set -euo pipefail

for program in "$@"; do
    symbols=$(x86_64-w64-mingw32-nm "$program")
    if grep -F __cxa_thread_atexit <<<"$symbols"; then
        echo "$program has a thread_local with a destructor" >&2
        exit 1
    fi
done
