#!/usr/bin/env python3
"""The dynamic symbols that the library defines are those of its export list, and nothing else.

usage: check_exports.py LIBRARY exports.map exports.h
"""
import re
import subprocess
import sys

library, export_map, header = sys.argv[1:]
listing = subprocess.run(["nm", "-D", "--defined-only", library], check=True, capture_output=True, text=True).stdout
defined = sorted(line.split()[-1] for line in listing.splitlines())
listed = sorted(re.findall(r"^\s+([A-Z]+);$", open(export_map).read(), re.M))
declared = sorted(re.findall(r"^TESSARMONT_EXPORT void ([A-Z]+)\(", open(header).read(), re.M))
assert listed, "the export list is empty"
if not defined == listed == declared:
    sys.exit(f"defined:  {defined}\nlisted:   {listed}\ndeclared: {declared}")
print(f"{len(defined)} exports")
