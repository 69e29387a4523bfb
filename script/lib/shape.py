"""Keeps the ceilings on size and the rules on includes that no compiler checks."""

import collections
import pathlib
import re
import sys

HEADER_LINES = 150
SOURCE_LINES = 350
MAIN_LINES = 60
UNIT_LINES = 40

# A unit, header and source together, is at least UNIT_LINES long; else it belongs to the neighbour that it
# serves. A port may be shorter. So may these, each for its reason.
SMALL_UNITS = {
    "src/common/base/Handle": "used by both programs",
    "src/common/posix/FileDescriptor": "used by both programs",
    "src/common/posix/OwnFolder": "used by the kept recordings and by the key's socket",
    "src/common/posix/WriteAll": "used by both programs",
    "src/common/posix/linux/SystemPipe": "one system call, another one on each system",
    "src/common/posix/macos/SystemPipe": "the same",
    "src/common/x11/XcbXkb": "works around a C header; four users",
    "src/quillback/recognition/no_whisper/NoWhisper": "stands in for a library that is not installed",
    "src/voxtrel/platform/linux/dbus/DBusStructure": "used by the item and by the menu",
    "src/voxtrel/supervisor/AppState": "the status that most rooms show; needs nothing",
    "src/voxtrel/supervisor/EngineLocation": "used by the supervisor and by the setup",
}

CONDITIONAL = re.compile(r"^\s*#\s*(if|ifdef|ifndef|elif)\b")
PARENT_INCLUDE = re.compile(r'^\s*#\s*include\s+"(\.\./|.*/\.\./)')


def in_desktop_folder(path):
    """Only the folders of adapters may ask which system they are built for."""
    parts = path.parts
    return parts[:3] == ("src", "voxtrel", "platform") and len(parts) > 4


def ceiling(path):
    """The number of lines that the file may have."""
    if path.name == "main.cpp" and path.parts[0] != "tests":
        return MAIN_LINES
    if path.parent.name == "declarations":  # a framework's, one after the other
        return SOURCE_LINES
    return HEADER_LINES if path.suffix == ".h" else SOURCE_LINES


def complaints(path):
    """Yields what is wrong with one file."""
    lines = path.read_text(encoding="utf-8").splitlines()
    if len(lines) > ceiling(path):
        yield f"{path}: {len(lines)} lines, {ceiling(path)} allowed"
    if path.suffix == ".h" and "#pragma once" not in lines:
        yield f"{path}: no #pragma once"
    for number, line in enumerate(lines, start=1):
        if PARENT_INCLUDE.match(line):
            yield f'{path}:{number}: include by room ("room/Header.h"), not by "../"'
        if CONDITIONAL.match(line) and path.parts[0] == "src" and not in_desktop_folder(path):
            yield f"{path}:{number}: conditional code outside platform/<desktop>"


def is_port(unit):
    """Ports are as small as the need that they are named for."""
    return str(unit.parent) in ("src/voxtrel/platform", "src/quillback/ports")


def small_units(paths):
    """Yields what is wrong with the sizes of units, and with the list of those that may be small."""
    lines = collections.Counter()
    for path in paths:
        if path.parts[0] == "src" and path.name != "main.cpp":
            lines[path.with_suffix("")] += len(path.read_text(encoding="utf-8").splitlines())
    for unit, count in lines.items():
        if count < UNIT_LINES and not is_port(unit) and str(unit) not in SMALL_UNITS:
            yield f"{unit}: a unit of {count} lines, at least {UNIT_LINES} wanted"
    for name in SMALL_UNITS:
        if lines[pathlib.Path(name)] >= UNIT_LINES or pathlib.Path(name) not in lines:
            yield f"script/lib/shape.py: {name} is no small unit any more"


def main(arguments):
    """Prints every complaint; the exit status says whether there was one."""
    paths = [pathlib.Path(name) for name in arguments]
    found = [text for path in paths for text in complaints(path)] + list(small_units(paths))
    print(*found, sep="\n", end="\n" if found else "")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
