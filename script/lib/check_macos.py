"""Type-checks the Objective-C++ sources against declarations of Apple's frameworks: check_macos.py FOLDER [FILE...]

For both processors, with warnings as errors; and every method of a delegate must be one that its protocol
declares, because a misspelt optional one is never called and no compiler says so.
"""

import concurrent.futures
import functools
import itertools
import os
import pathlib
import re
import subprocess
import sys

import once

COMPILER = "clang++-14"
# glibc's headers know no arm64 of Apple's.
PROCESSORS = {"x86_64": [], "arm64": ["-D__x86_64__"]}
FLAGS = ["-x", "objective-c++", "-std=c++20", "-fobjc-arc", "-fblocks", "-fsyntax-only", "-Wall", "-Wextra", "-Werror",
         "-Wunguarded-availability", "-Wmethod-signatures", "-nostdinc++", "-nostdlibinc", "-U__nonnull",
         "-D_GNU_SOURCE", "-isystem", "/usr/lib/llvm-14/include/c++/v1"]
# Where the C library and the other libraries are.
LIBRARIES = ["/usr/include/x86_64-linux-gnu", "/usr/include"]
# In the folder: reads clang's syntax tree and names the methods that are declared nowhere.
METHODS = "undeclared_methods.py"
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


def declarations(tree):
    """The syntax tree with Objective-C's declarations alone: the rest is 250 MB of the C++ library's."""
    # Clang indents what belongs to the nodes of the top level by six. A LinkageSpecDecl is extern "C".
    nodes = (tree[found.start():tree.index(b"\n    }", found.end())]
             for found in re.finditer(rb'\n      "kind": "(ObjC|LinkageSpecDecl")', tree))
    return b'{"inner":[{' + b"},{".join(nodes) + b"}]}"


def problems(check, words):
    """What is wrong with one source, "" if nothing. One run of the compiler says both."""
    has_classes = "@implementation" in pathlib.Path(words[-1]).read_text(encoding="utf-8")
    dump = ["-Xclang", "-ast-dump=json"] if has_classes else []
    compiled = subprocess.run([*words, *dump], capture_output=True, check=False)
    if compiled.returncode != 0:
        return compiled.stderr.decode() or "not compiled"
    if not has_classes:
        return ""
    methods = subprocess.run([sys.executable, str(check / METHODS)], input=declarations(compiled.stdout),
                             capture_output=True, check=False)
    return (methods.stdout + methods.stderr).decode() if methods.returncode != 0 else ""


def main(arguments):
    """Prints every problem; the exit status says whether there was one."""
    check = pathlib.Path(arguments[0])
    rules = b"".join(path.read_bytes() for path in (pathlib.Path(__file__), check / METHODS))
    sources = arguments[1:] or sorted(str(path) for path in pathlib.Path("src").rglob("*.mm"))
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        commands = [[*command(check, processor), source]
                    for source, processor in itertools.product(sources, PROCESSORS)]
        jobs = [pool.submit(once.complaints, functools.partial(problems, check, words), words, rules)
                for words in commands]
    found = sorted({text for job in jobs if (text := job.result())})
    print(*found, sep="\n", end="\n" if found else "")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
