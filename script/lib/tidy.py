"""Runs clang-tidy over the sources of both programs, and only over what has changed."""

import argparse
import concurrent.futures
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys

import once

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


def analyse(entry, build, rules):
    """Returns the complaints about one compiled file, "" if it is clean."""
    def tidy():
        result = subprocess.run([TIDY, "-p", str(build), "--quiet", entry["file"]], capture_output=True,
                                text=True, check=False)
        return result.stdout + result.stderr if result.returncode != 0 else ""

    words = [word for word in shlex.split(entry["command"]) if not word.endswith("ccache")]
    without_output = [*words[:words.index("-o")], entry["file"]]
    return once.complaints(tidy, without_output, rules, entry["directory"])


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
