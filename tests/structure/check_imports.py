#!/usr/bin/env python3
"""Every floor includes only floors below it; the host includes only the door.

usage: check_imports.py SOURCE_DIR
"""
import pathlib
import re
import sys

MAY_INCLUDE = {
    "platform": set(),
    "stats": {"platform"},
    "project": {"platform", "stats"},
    "recombination": {"stats"},
    "ordering": {"recombination", "stats", "platform"},
    "results": {"project", "ordering", "recombination", "stats", "platform"},
    "trial": {"project", "stats", "platform"},
    "frame": {"results", "trial", "project", "ordering", "recombination", "stats", "platform"},
}
root = pathlib.Path(sys.argv[1])
faults, seen = [], 0
for path in sorted([*root.glob("src/**/*.[ch]*"), *root.glob("host/**/*.[ch]*")]):
    floor = path.parent.name
    for header in re.findall(r'^#include "([^"]+)"', path.read_text(), re.M):
        seen += 1
        target = header.split("/")[0]
        if path.is_relative_to(root / "host"):
            if target in MAY_INCLUDE and header != "frame/exports.h":
                faults.append(f"{path}: {header}")
        elif target != floor and target not in MAY_INCLUDE[floor]:
            faults.append(f"{path}: {header}")
        if floor == "trial" and target == "project" and header != "project/reader.h":
            faults.append(f"{path}: {header} (trial knows only the reader)")
        if floor == "stats" and target == "platform" and header != "platform/fatal.h":
            faults.append(f"{path}: {header} (stats knows only the fatal path)")
assert seen > 50, "no includes found"
sys.exit("\n".join(faults) or 0)
