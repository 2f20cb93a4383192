#!/usr/bin/env python3
"""Seeds for the fuzzers: the examples of docs/formats.md, by family.

usage: make_seeds.py SOURCE_DIR SEED_DIR
"""
import pathlib
import re
import sys

TRAITS = ["bip", "met", "nam", "csl", "sdl", "cmp", "cdq", "plq"]  # in the order of fuzz_traits.cpp
MARKERS = {"cdm": 0, "plm": 1, "bin": 2, "map": 3}                   # rule set in fuzz_markers.cpp
root, seeds = map(pathlib.Path, sys.argv[1:])
for family in ("tokens", "markers", "traits", "selection"):
    (seeds / family).mkdir(parents=True, exist_ok=True)
page = (root / "docs/formats.md").read_text()
examples = re.findall(r"^```([a-z]+)\n(.*?)^```$", page, re.M | re.S)
assert len(examples) > 12, "no examples found"
for number, (kind, text) in enumerate(examples):
    name = f"{kind}{number}"
    (seeds / "tokens" / name).write_text(text)
    if kind in MARKERS:
        (seeds / "markers" / name).write_text(chr(MARKERS[kind]) + text)
    elif kind in TRAITS:
        (seeds / "traits" / name).write_text(chr(TRAITS.index(kind)) + text)
    else:
        (seeds / "selection" / name).write_text(text)
(seeds / "tokens" / "lists").write_text("a 1,2 , 3\t'b ''c' \"d\" 4*5 6* -7 /\n,,1.5e3 2D-1\n\n 12*x\n!r\n")
