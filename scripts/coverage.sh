#!/bin/bash
# Runs every test and reports which lines of common/ they reach, for each file and in total. A report,
# not a gate; the exit status is that of the tests. Complaints of the profiler, which some tests provoke by
# taking away its room, are thrown away by the preset, so that they do not stand in a program's output.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# Counts of an earlier run would add up with those of this one.
[ ! -d build/coverage ] || find build/coverage -name '*.gcda' -delete

status=0
scripts/test.sh coverage || status=$?
gcovr --root . --filter 'common/' --exclude-throw-branches --print-summary \
    --gcov-ignore-parse-errors --txt build/coverage/coverage.txt build/coverage
cat build/coverage/coverage.txt
exit "$status"
