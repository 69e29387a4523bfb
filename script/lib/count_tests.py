"""Prints how many tests of a CTest JUnit report passed, did not pass, and could not be run here.

A test that was not run (disabled, its program missing) has shown nothing, so it counts as failed: a
suite must not look green because half of it stayed at home. Only one that says by its own exit status
that this machine does not let it run is counted apart.
"""

import sys
import xml.etree.ElementTree


def count(path):
    """Returns (passed, failed, impossible here); a report without any test counts as one failure."""
    cases = xml.etree.ElementTree.parse(path).getroot().findall("testcase")
    passed = sum(case.get("status") == "run" for case in cases)
    impossible = sum("SKIP_RETURN_CODE" in (case.find("skipped").get("message") or "")
                     for case in cases if case.find("skipped") is not None)
    return passed, len(cases) - passed - impossible if cases else 1, impossible


if __name__ == "__main__":
    try:
        print(*count(sys.argv[1]))
    except (OSError, xml.etree.ElementTree.ParseError) as error:
        print(f"count_tests: {error}", file=sys.stderr)
        print(0, 1, 0)
