#!/usr/bin/env bash
# clang-tidy has nothing to say about the sources of the library and the host.
# usage: check_tidy.sh SOURCE_DIR BUILD_DIR
set -euo pipefail
cd "$1"
find src host -name '*.cpp' | sort | xargs -P "$(nproc)" -n 4 clang-tidy -p "$2" --quiet 2>/dev/null
