"""Keeps the ceilings on size and the rules on includes that no compiler checks."""

import pathlib
import re
import sys

HEADER_LINES = 150
SOURCE_LINES = 350
MAIN_LINES = 60

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


def main(arguments):
    """Prints every complaint; the exit status says whether there was one."""
    found = [text for name in arguments for text in complaints(pathlib.Path(name))]
    print(*found, sep="\n", end="\n" if found else "")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
