#!/bin/bash
# Builds a preset (dev, unless another is named) and runs every test of it, from a bare clone and from any
# folder. The last line of the output is "N passed, N failed"; the exit status is 0 only when tests ran
# and none failed.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
preset=${1:-dev}

scripts/install-deps.sh

# A locale with a decimal comma, which a bare machine lacks. It is private to the tests.
locale_folder=$PWD/build/locale
if [ ! -d "$locale_folder/de_DE.UTF-8" ]; then
    mkdir -p "$locale_folder"
    localedef --no-archive -i de_DE -f UTF-8 "$locale_folder/de_DE.UTF-8"
fi

cmake --preset "$preset" -DQRV_TEST_LOCALE_PATH="$locale_folder"
cmake --build --preset "$preset"

report=$PWD/build/$preset/tests.xml
rm -f "$report"
# The report decides, and count_tried.py reads there what passed tests have printed.
ctest --preset "$preset" --output-junit "$report" --test-output-size-passed 100000 || true
exec python3 scripts/count_tests.py "$report"
