"""Remembers which sources a check has found clean.

A check of one source takes seconds. What it says depends on the preprocessed text, the command line and the
rules alone, so a source whose three have not changed since it was last clean is not checked again.
"""

import hashlib
import pathlib
import subprocess

STAMPS = pathlib.Path("build/clean")


def complaints(check, command, rules, folder="."):
    """What check() says about the source that `command` compiles in `folder`, "" if nothing."""
    words = [word for word in command if word != "-fsyntax-only"]  # clang warns that -E makes it useless
    text = subprocess.run([*words, "-E", "-C"], cwd=folder, capture_output=True, check=False)
    if text.returncode != 0:
        return check()
    stamp = STAMPS / hashlib.sha256(b"\0".join([rules, repr(command).encode(), text.stdout])).hexdigest()
    if stamp.exists():
        return ""
    found = check()
    if not found:
        STAMPS.mkdir(parents=True, exist_ok=True)
        stamp.touch()
    return found
