#!/usr/bin/env bash
# clang-tidy has nothing to say about the sources of the library and the host, as they are compiled: one by one, or
# several in one unit.
# usage: check_tidy.sh SOURCE_DIR BUILD_DIR
set -euo pipefail
cd "$1"
python3 - "$2" <<'UNITS' | xargs -P "$(nproc)" -n 2 clang-tidy -p "$2" --config-file=.clang-tidy --quiet 2>/dev/null
import json
import os
import sys

build = sys.argv[1]
files = {os.path.join(entry["directory"], entry["file"]) for entry in json.load(open(build + "/compile_commands.json"))}
folders = [os.getcwd() + "/src/", os.getcwd() + "/host/", build + "/host/"]
units = sorted(file for file in files if any(file.startswith(folder) for folder in folders))
assert any("/src/" in file for file in units) and any("/host/" in file for file in units)
print("\n".join(sorted(units, key=lambda file: "Unity" not in file)))  # the large ones first
UNITS
