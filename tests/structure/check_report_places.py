#!/usr/bin/env python3
"""The command finds the line of every report of the readers: each has its row in host/report_places.cpp, and no row
there waits for a report that nobody writes.

usage: check_report_places.py SOURCE_DIR
"""
import pathlib
import re
import sys

root = pathlib.Path(sys.argv[1])


def reports(*names):
    """The first lines of the reports in these files of src/project, without what begins each."""
    text = "\n".join((root / "src/project" / name).read_text() for name in names)
    return set(re.findall(r'"--Input error: ([^"]*)"', text))


places = (root / "host/report_places.cpp").read_text()
locator = (root / "host/fault_locator.cpp").read_text()
rows = set(re.findall(r'\{"([^"]+)",\s*Address::', places))
words = set(re.findall(r'\{Field::\w+, "([^"]+)"\}', places))
headers = reports("header_fields.cpp")
markers = reports("genotype_rules.cpp", "marker_types.cpp")  # the place of all that has no row
selection = reports("genomic_selection.cpp")
everything = reports(*(path.name for path in (root / "src/project").glob("*.cpp")))
others = everything - headers - markers - selection
assert len(rows) > 20 and len(words) > 12 and len(headers) > 20 and len(markers) > 10 and len(others) > 20


def told_by_word(text):
    return any(word in text for word in words)


faults = [f"the row of host/report_places.cpp waits in vain: {text!r}" for text in sorted(rows - everything)]
faults += [f"no row, though not of a marker: {text!r}" for text in sorted(others - rows) if not told_by_word(text)]
faults += [f"no word finds the field: {text!r}" for text in sorted(headers) if not told_by_word(text)]
faults += [f"a word finds no report: {word!r}" for word in sorted(words) if not any(word in text for text in everything)]
faults += [f"taken for a header field: {text!r}" for text in sorted(markers) if told_by_word(text)]

library = "\n".join(path.read_text() for path in (root / "src").glob("**/*.cpp"))
hints = re.findall(r'\{"([^"]+)",', re.search(r"kHints\[\] = \{(.*?)\n\};", locator, re.S).group(1))
constants = [re.search(rf'{name} = "(?:tessarmont: )?([^"]+)"', text).group(1)
             for name, text in (("kUnmatched", locator), ("kNothingShared", locator),
                                ("kNoNumber", (root / "host/isolated_call.h").read_text()))]
assert len(hints) > 3
faults += [f"no text of the library: {text!r}" for text in [*hints, *constants] if text not in library]
sys.exit("\n".join(faults) or 0)
