"""Prints how many tests of a CTest JUnit report passed, did not pass, and could not be run here,
and in a second line the slowest.

A test that was not run (disabled, its program missing) has shown nothing, so it counts as failed: a
suite must not look green because half of it stayed at home. Counted apart are only those that say by their
exit status that this machine does not let them run, and those that want the weights and recordings whose
folder VOXTREL_WHISPER_DATA names.
"""

import sys
import xml.etree.ElementTree

SLOWEST = 10


def is_impossible(case):
    """Whether a test of the report could not be run here."""
    skipped = case.find("skipped")
    reason = "" if skipped is None else skipped.get("message") or ""
    if "SKIP_REGULAR_EXPRESSION" in reason:
        return "VOXTREL_WHISPER_DATA names no folder" in case.findtext("system-out", "")
    return "SKIP_RETURN_CODE" in reason


def count(cases):
    """Returns (passed, failed, impossible here); a report without any test counts as one failure."""
    passed = sum(case.get("status") == "run" for case in cases)
    impossible = sum(is_impossible(case) for case in cases)
    return passed, len(cases) - passed - impossible if cases else 1, impossible


def slowest(cases):
    """The tests that took the longest, with their seconds."""
    seconds = {case.get("name"): float(case.get("time", 0)) for case in cases}
    longest = sorted(seconds, key=seconds.get, reverse=True)[:SLOWEST]
    return ", ".join(f"{name} {seconds[name]:.0f} s" for name in longest)


if __name__ == "__main__":
    try:
        report = xml.etree.ElementTree.parse(sys.argv[1]).getroot().findall("testcase")
        print(*count(report))
        print(slowest(report))
    except (OSError, xml.etree.ElementTree.ParseError) as error:
        print(f"count_tests: {error}", file=sys.stderr)
        print(0, 1, 0)
