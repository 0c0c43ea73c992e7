#!/usr/bin/env python3
"""Sums up the report that ctest wrote as "N passed, N failed".

Skipped tests are named before, since they are neither. Ends with 0 only when tests ran and none failed.
"""

import sys
import xml.etree.ElementTree


def skip_reason(case):
    """Why ctest did not count the test; empty for one that ran."""
    skipped = case.find("skipped")
    return "" if skipped is None else skipped.get("message", "")


def outcomes(report):
    """The names of the tests by outcome: (passed, skipped, failed). Only a test that skipped itself is
    skipped: the report calls one so too that could not be started or whose fixture failed."""
    passed, skipped, failed = [], [], []
    for case in xml.etree.ElementTree.parse(report).getroot().iter("testcase"):
        name, status = case.get("name"), case.get("status")
        if status == "run" and case.find("failure") is None:
            passed.append(name)
        elif status == "notrun" and skip_reason(case).startswith("SKIP_"):
            skipped.append(name)
        else:
            failed.append(name)
    return passed, skipped, failed


def main(report):
    try:
        passed, skipped, failed = outcomes(report)
    except (OSError, xml.etree.ElementTree.ParseError) as error:
        print(f"no test report: {error}", file=sys.stderr)
        passed, skipped, failed = [], [], []
    for name in skipped:
        print(f"skipped: {name}")
    for name in failed:
        print(f"failed: {name}")
    print(f"{len(passed)} passed, {len(failed)} failed")
    return 0 if passed and not failed else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
