"""Type-checks the Objective-C++ sources against declarations of Apple's frameworks: check_macos.py FOLDER [FILE...]

For both processors, with warnings as errors; and every method of a delegate must be one that its protocol
declares, because a misspelt optional one is never called and no compiler says so.
"""

import concurrent.futures
import itertools
import os
import pathlib
import subprocess
import sys

COMPILER = "clang++-14"
# glibc's headers know no arm64 of Apple's.
PROCESSORS = {"x86_64": [], "arm64": ["-D__x86_64__"]}
FLAGS = ["-x", "objective-c++", "-std=c++20", "-fobjc-arc", "-fblocks", "-fsyntax-only", "-Wall", "-Wextra", "-Werror",
         "-Wunguarded-availability", "-Wmethod-signatures", "-nostdinc++", "-nostdlibinc", "-U__nonnull",
         "-D_GNU_SOURCE", "-isystem", "/usr/lib/llvm-14/include/c++/v1"]
# Where the C library and the other libraries are.
LIBRARIES = ["/usr/include/x86_64-linux-gnu", "/usr/include"]
# What the folder does not declare.
DECLARATIONS = pathlib.Path("tests/support/macos/declarations")


def command(check, processor):
    """The compiler's command line without the source."""
    sdk = check / "stub_sdk"
    words = [COMPILER, "-target", f"{processor}-apple-macos13", *PROCESSORS[processor], *FLAGS,
             "-iframework", str(sdk / "Frameworks"), "-isystem", str(sdk / "include"),
             "-isystem", str(sdk / "include-base"), "-idirafter", str(check / "xlocale_shim"), "-Isrc"]
    for folder in LIBRARIES:
        words += ["-idirafter", folder]
    for header in sorted(DECLARATIONS.glob("*.h")):
        words += ["-include", str(header)]
    return words


def problems(check, processor, source):
    """What is wrong with one source, "" if nothing."""
    words = command(check, processor)
    compiled = subprocess.run([*words, source], capture_output=True, text=True, check=False)
    if compiled.returncode != 0:
        return compiled.stderr
    tree = subprocess.run([*words, "-Xclang", "-ast-dump=json", source], capture_output=True, check=False)
    methods = subprocess.run([sys.executable, str(check / "undeclared_methods.py")], input=tree.stdout,
                             capture_output=True, check=False)
    return (methods.stdout + methods.stderr).decode() if methods.returncode != 0 else ""


def main(arguments):
    """Prints every problem; the exit status says whether there was one."""
    check = pathlib.Path(arguments[0])
    sources = arguments[1:] or sorted(str(path) for path in pathlib.Path("src").rglob("*.mm"))
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        jobs = [pool.submit(problems, check, processor, source)
                for source, processor in itertools.product(sources, PROCESSORS)]
    found = sorted({text for job in jobs if (text := job.result())})
    print(*found, sep="\n", end="\n" if found else "")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
