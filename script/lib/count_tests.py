"""Prints how many tests of a CTest JUnit report passed and how many did not.

A test that was not run (skipped, disabled, its program missing) has shown nothing, so it counts as
failed: a suite must not look green because half of it stayed at home.
"""

import sys
import xml.etree.ElementTree


def count(path):
    """Returns (passed, not passed); a report without any test counts as one failure."""
    cases = xml.etree.ElementTree.parse(path).getroot().findall("testcase")
    passed = sum(case.get("status") == "run" for case in cases)
    return passed, len(cases) - passed if cases else 1


if __name__ == "__main__":
    try:
        print(*count(sys.argv[1]))
    except (OSError, xml.etree.ElementTree.ParseError) as error:
        print(f"count_tests: {error}", file=sys.stderr)
        print(0, 1)
