#!/usr/bin/env python3
"""Words that do not belong into the project: references to papers that a reader of the source does not have.

Write the rule or its reason instead. Prints each place.
"""

import re
import sys

import sources

# With a bracket in each, so that this file does not find itself.
PATTERNS = [
    r"\b[s]pec(?:s|ification|ifications)?\b",
    r"\bas [s]pecified\b",
    r"\b[P]arts?\s+\d+\.\d",
    r"\b[i]ssue #?\d",
    r"\b[d]esign(?:\.md| page| section)",
    r"/[w]ork/|/[t]mp/bash|/[h]ome/\w",
    r"\b[T]ODO\b|\b[F]IXME\b|\b[X]XX\b",
]
WORDS = re.compile("|".join(PATTERNS), re.IGNORECASE)

# Contents that are samples, not our words.
SKIPPED = ("fuzz/corpora/", "examples/project/")


def problems(files, read=sources.read):
    found = []
    for name in files:
        if name.startswith(SKIPPED):
            continue
        try:
            text = read(name)
        except UnicodeDecodeError:
            continue
        for number, line in enumerate(text.splitlines(), 1):
            match = WORDS.search(line)
            if match:
                found.append(f"{name}:{number}: {match.group()}")
    return found


if __name__ == "__main__":
    sys.exit(sources.report(problems(sources.project_files())))
