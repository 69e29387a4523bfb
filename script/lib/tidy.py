"""Runs clang-tidy over the application's sources, and only over what has changed.

A full run takes minutes. Its result for one source depends on the preprocessed text, the command
line and the rules alone, so a source whose three have not changed since it was last clean is left
out.
"""

import argparse
import concurrent.futures
import hashlib
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys

TIDY = "clang-tidy-14"
ANALYSED = ("src/", "tests/support/")


def members(path):
    """The sources that a file of a room compiled at once includes; otherwise the file itself."""
    if "/Unity/" not in path:
        return [path]
    return re.findall(r'^#include "([^"]+)"', pathlib.Path(path).read_text(), re.MULTILINE)


def commands(build, root):
    """Returns (sources, compile command) of all sources of ours; sources relative to the checkout."""
    entries = json.loads((build / "compile_commands.json").read_text())
    for entry in entries:
        path = os.path.join(entry["directory"], entry["file"])
        sources = [os.path.relpath(source, root) for source in members(path)]
        if any(source.startswith(ANALYSED) for source in sources):
            yield sources, entry


def fingerprint(entry, rules):
    """Hashes everything that the analysis of one source depends on."""
    words = [word for word in shlex.split(entry["command"]) if not word.endswith("ccache")]
    without_output = words[: words.index("-o")] + ["-E", "-C", entry["file"]]
    text = subprocess.run(without_output, cwd=entry["directory"], capture_output=True, check=True)
    key = hashlib.sha256(rules)
    key.update(entry["command"].encode())
    key.update(text.stdout)
    return key.hexdigest()


def analyse(entry, build, rules):
    """Returns the complaints about one compiled file, "" if it is clean."""
    stamps = build / "tidy"
    stamps.mkdir(exist_ok=True)
    stamp = stamps / fingerprint(entry, rules)
    if stamp.exists():
        return ""
    result = subprocess.run(
        [TIDY, "-p", str(build), "--quiet", entry["file"]], capture_output=True, text=True, check=False
    )
    if result.returncode == 0:
        stamp.touch()
        return ""
    return result.stdout + result.stderr


def main():
    """Analyses on all processors; the exit status says whether there were complaints."""
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", type=pathlib.Path, required=True)
    parser.add_argument("sources", nargs="*")
    options = parser.parse_args()
    root = pathlib.Path.cwd()
    rules = pathlib.Path(".clang-tidy").read_bytes()
    chosen = [pair for pair in commands(options.build, root)
              if not options.sources or set(pair[0]) & set(options.sources)]
    if not chosen:
        print("tidy: no source to analyse")
        return 1
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        complaints = []
        for complaint in pool.map(lambda pair: analyse(pair[1], options.build, rules), chosen):
            complaints.append(complaint)
            if complaint:
                print(complaint, flush=True)
    sources = sum(len(names) for names, _ in chosen)
    print(f"tidy: {sources} sources in {len(chosen)} runs, {sum(map(bool, complaints))} with complaints")
    return 1 if any(complaints) else 0


if __name__ == "__main__":
    sys.exit(main())
