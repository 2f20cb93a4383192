#!/usr/bin/env bash
# Every source file is as clang-format would have it.
set -euo pipefail
cd "$1"
find src host tests bench examples fuzz \( -name '*.cpp' -o -name '*.h' -o -name '*.c' \) 2>/dev/null |
  sort | xargs clang-format --dry-run -Werror
