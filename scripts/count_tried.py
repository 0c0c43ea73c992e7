#!/usr/bin/env python3
"""Sums up how much of each kind the tests of a run have tried, as rows of the table in docs/robustness.md.

Usage: count_tried.py REPORT, the report of scripts/test.sh (build/dev/tests.xml). A test says "tried: 31 kills". Repeats
of whole programs under another locale are not counted again. Ends with 0 only when each kind was met.
"""

import re
import sys
import xml.etree.ElementTree
from collections import Counter

KINDS = {
    "kills": "a command is killed at a system call",
    "failing calls": "a call that changes something fails",
    "failing questions": "a call that asks for something fails",
    "saves": "another program saves a file behind a call",
    "power-cut states": "what a disk may hold when the power is cut",
    "steps of random walks": "commands and edits by chance, beside a model",
    "attacks": "a command on a folder that somebody prepared, or on an odd name",
    "flipped bytes": "in a database, a store, a record or a baseline",
    "damaged inputs": "cut off, overwritten or changed by chance",
}
TRIED = re.compile(r"^tried: (\d+) (.+)$", re.MULTILINE)


def counts_of(report):
    """By kind: how much was tried, and in how many tests."""
    tried, tests = Counter(), Counter()
    for case in xml.etree.ElementTree.parse(report).getroot().iter("testcase"):
        if "AllAgainUnder" in case.get("name"):
            continue
        for count, kind in TRIED.findall(case.findtext("system-out") or ""):
            tried[kind] += int(count)
            tests[kind] += 1
    return tried, tests


def rows(tried, tests):
    return [f"| {kind} | {what} | {tried[kind]:,} | {tests[kind]} |" for kind, what in KINDS.items()]


def problems(tried):
    missing = [f"no test has tried any: {kind}" for kind in KINDS if not tried[kind]]
    return missing + [f"a kind without a row: {kind}" for kind in sorted(tried.keys() - KINDS.keys())]


def main(report):
    tried, tests = counts_of(report)
    print("\n".join(rows(tried, tests)))
    found = problems(tried)
    for problem in found:
        print(problem, file=sys.stderr)
    return 1 if found else 0


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    sys.exit(main(sys.argv[1]))
