"""promises: checks that SECURITY.md names a test for each promise, and that every test that it names exists."""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
PAGE = ROOT / "SECURITY.md"


def sources(pattern):
    """The text of the tests, by file."""
    return {path: path.read_text(encoding="utf-8") for path in (ROOT / "tests").rglob(pattern)}


def promises(page):
    """The rows of the tables: what is promised, and the names behind it."""
    rows = (line.strip().strip("|").split("|") for line in page.splitlines() if line.startswith("| "))
    return [(cells[0].strip(), re.findall(r"`([^`]+)`", cells[1])) for cells in rows
            if cells[1].strip() != "kept by"]


class Tests:
    """All tests of this project, by the names that people know them by."""

    def __init__(self):
        self._cpp = "\n".join(sources("*.cpp").values())
        self._python = {path.name: text for path, text in sources("test_*.py").items()}
        self._lists = "\n".join(sources("CMakeLists.txt").values())

    def has(self, name):
        """Suite.Test or Suite of C++, "file.py: test or class" of Python, fuzz.NAME, or a script."""
        if name.startswith("script/"):
            return (ROOT / name).is_file()
        if name.startswith("fuzz."):
            return f"add_fuzzer({name.removeprefix('fuzz.')} " in self._lists
        if ".py: " in name:
            file, _, test = name.partition(": ")
            return re.search(rf"\b(def|class) {re.escape(test)}\(", self._python.get(file, "")) is not None
        if name.startswith("test_"):
            return any(f"def {name}(" in text for text in self._python.values())
        suite, _, test = name.partition(".")
        words = rf"{re.escape(suite)},\s*{re.escape(test)}\)" if test else rf"{re.escape(suite)},"
        return re.search(r"\bTEST(_F|_P)?\(" + words, self._cpp) is not None


def main():
    """Prints what is wrong; the exit status says whether anything is."""
    tests = Tests()
    rows = promises(PAGE.read_text(encoding="utf-8"))
    wrong = [f"no test is named for: {promise}" for promise, names in rows if not names]
    wrong += [f"there is no test {name!r} for: {promise}"
              for promise, names in rows for name in names if not tests.has(name)]
    if not rows:
        wrong.append("there are no promises")
    for line in wrong:
        print("SECURITY.md: " + line)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
