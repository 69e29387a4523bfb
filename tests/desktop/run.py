"""Runs one file of desktop tests: run.py --programs FOLDER FILE [TEST...]."""

import argparse
import os
import pathlib
import sys
import unittest

SKIPPED = 77

def main():
    """The exit status is 0 only if tests were run and all of them passed; SKIPPED if some could not be run
    and all others passed."""
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--programs", required=True, help="the folder of the built programs")
    parser.add_argument("file", type=pathlib.Path)
    parser.add_argument("tests", nargs="*", help="names of tests, by default all of the file")
    options = parser.parse_args()

    os.environ["VOXTREL_PROGRAMS"] = os.path.abspath(options.programs)
    sys.path[:0] = [os.path.dirname(os.path.abspath(__file__)), str(options.file.parent)]
    loader = unittest.TestLoader()
    loader.testNamePatterns = [f"*{name}*" for name in options.tests] or None
    suite = loader.loadTestsFromName(options.file.stem)
    result = unittest.TextTestRunner(verbosity=2, descriptions=False).run(suite)
    if not (result.testsRun or result.skipped) or not result.wasSuccessful():
        return 1
    return SKIPPED if result.skipped else 0


if __name__ == "__main__":
    sys.exit(main())
