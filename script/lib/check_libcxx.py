"""Compiles the portable sources of the application with clang and libc++: check_libcxx.py VERSION [FILE...]

The macOS application is built with such a library, which lacks parts of the standard's that GCC's has. The exit
status is 77 where that version is not here.
"""

import concurrent.futures
import os
import pathlib
import re
import shutil
import subprocess
import sys

import once

NOT_HERE = 77
# Debian installs only one version at a time; script/bootstrap unpacks the other.
PLACES = ("", "build/libcxx")
FLAGS = ["-std=c++20", "-fsyntax-only", "-Wall", "-Wextra", "-Werror", "-Isrc",
         '-DVOXTREL_VERSION="0"']
FOLDERS = ("src/common/base", "src/common/posix", "src/common/posix/macos", "src/common/settings", "src/voxtrel/app",
           "src/voxtrel/download", "src/voxtrel/forms", "src/voxtrel/menubar", "src/voxtrel/overlay",
           "src/voxtrel/platform/posix", "src/voxtrel/supervisor")
# Only the engine for Linux uses them.
NOT_ON_A_MAC = {"src/common/posix/Confinement.cpp", "src/common/posix/SpawnedProgram.cpp"}
# What Linux's headers offer and a Mac's do not; the compiler here cannot tell.
LINUX_ONLY = re.compile(r"#include <linux/|<sys/(prctl|syscall|epoll|eventfd|signalfd|timerfd|random)\.h>|/proc/"
                        r"|\b(pipe2|accept4|ppoll|execvpe|sigabbrev_np|secure_getenv|gettid|close_range|SIGRTMIN"
                        r"|SOCK_CLOEXEC|SOCK_NONBLOCK|MSG_NOSIGNAL|O_PATH|O_TMPFILE)\b")


def sources():
    """Every source of the rooms that both systems build."""
    found = (str(path) for folder in FOLDERS for path in pathlib.Path(folder).glob("*.cpp"))
    return sorted(set(found) - NOT_ON_A_MAC)


def linux_only(source):
    """Yields the lines that a Mac would not compile."""
    for number, line in enumerate(pathlib.Path(source).read_text(encoding="utf-8").splitlines(), start=1):
        if LINUX_ONLY.search(line.partition("//")[0]):
            yield f"{source}:{number}: only on Linux: {line.strip()}"


def headers(version):
    """The folder of that version's headers; none if it or its compiler is missing."""
    if not shutil.which(f"clang++-{version}"):
        return None
    folders = (f"{place}/usr/lib/llvm-{version}/include/c++/v1" for place in PLACES)
    return next(filter(os.path.isdir, folders), None)


def problems(version, source):
    """What is wrong with one source, "" if nothing."""
    command = [f"clang++-{version}", *FLAGS, "-nostdinc++", "-isystem", headers(version), source]

    def compiled():
        result = subprocess.run(command, capture_output=True, text=True, check=False)
        return result.stderr or "not compiled" if result.returncode != 0 else ""

    return once.complaints(compiled, command, b"")


def main(arguments):
    """Prints every problem; returns the exit status."""
    version, *chosen = arguments
    if not headers(version):
        return NOT_HERE
    chosen = chosen or sources()
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        found = list(filter(None, pool.map(lambda source: problems(version, source), chosen)))
    found += [text for source in chosen for text in linux_only(source)]
    print(*found, sep="\n", end="\n" if found else "")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
