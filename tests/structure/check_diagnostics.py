#!/usr/bin/env python3
"""docs/diagnostics.md has every message and every detail text of the readers, and no other.

usage: check_diagnostics.py SOURCE_DIR
"""
import pathlib
import re
import sys

root = pathlib.Path(sys.argv[1])
sources = "\n".join(path.read_text() for path in sorted((root / "src").glob("**/*.cpp")))
page = (root / "docs/diagnostics.md").read_text()
cells = "\n".join(line for line in page.splitlines() if line.startswith("|"))

in_code = set(re.findall(r'"(--Input error: [^"]*)"', sources)) | set(
    re.findall(r'"(  ?[A-Z][A-Za-z]+[^"]*|ChromID, MarkerID =)"', "\n".join(
        path.read_text() for path in sorted((root / "src/project").glob("*.cpp")))))
in_page = set(re.findall(r"`(--Input error: [^`]*)`", cells)) | set(re.findall(r"`(  [A-Z][^`]*|ChromID, MarkerID =)`", cells))
assert len(in_code) > 100, "the sources have no messages"
faults = [f"not in docs/diagnostics.md: {text!r}" for text in sorted(in_code - in_page)]
faults += [f"no reader writes: {text!r}" for text in sorted(in_page - in_code)]
sys.exit("\n".join(faults) or 0)
