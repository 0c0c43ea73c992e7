#!/bin/bash
# Runs every check and prints a verdict for each: "ok    name", or "FAIL  name" with what was found below
# it. A check fails, or prints nothing. Goes on after a failure; the exit status is 0 only when nothing failed.
#
#   scripts/lint.sh            everything
#   scripts/lint.sh sizes ...  only the checks named
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit 1
scripts/install-deps.sh || exit 1

logs=build/lint
. scripts/steps.sh

project_files() { git ls-files --cached --others --exclude-standard -- "$@" | sort --unique; }

# Prints the files that `clang-format -i` would change.
format() {
    local badly
    badly=$(project_files '*.h' '*.cpp' | xargs --no-run-if-empty clang-format --dry-run -Werror 2>&1 |
        sed --quiet 's/:[0-9]*:[0-9]*: error:.*//p' | sort --unique)
    echo "$badly"
    [ -z "$badly" ]
}

shell_scripts() {
    local status=0 file
    while read -r file; do
        bash -n "$file" || status=1
        shellcheck --external-sources --severity=style "$file" || status=1
    done < <(project_files '*.sh' '.ci/run')
    return "$status"
}

python_scripts() {
    project_files '*.py' | xargs --no-run-if-empty python3 -c '
import sys
for name in sys.argv[1:]:
    compile(open(name, encoding="utf-8").read(), name, "exec")'
}

# The other compiler sees every source of ours through clang-tidy, and the public headers here.
clang_headers() {
    cmake --preset tidy >/dev/null && cmake --build --preset tidy --target qrv_public_headers
}

# The slow one. Of the same text nothing is looked for a second time.
tidy() {
    cmake --preset tidy >/dev/null || return 1
    project_files 'common/*.cpp' 'platform/*.cpp' 'sys/*.cpp' 'engine/*.cpp' 'cli/*.cpp' |
        python3 scripts/tidy_all.py build/tidy 2>"$logs/clang-tidy-noise.log" |
        tee "$logs/clang-tidy-all.log" | grep --extended-regexp '(warning|error):' | sort --unique
    # Each finding is an error, see .clang-tidy; the exit status tells of one.
    [ "${PIPESTATUS[1]}" -eq 0 ]
}

step clang-format format
step includes python3 scripts/check_includes.py
step calls python3 scripts/check_calls.py
step layout python3 scripts/check_layout.py
step sizes python3 scripts/check_sizes.py
step words python3 scripts/check_words.py
step sources-listed python3 scripts/check_lists.py sources
step headers-listed python3 scripts/check_lists.py headers
step common.h python3 scripts/check_lists.py common.h
step readmes python3 scripts/check_lists.py readmes
step samples python3 scripts/check_samples.py
step translations python3 scripts/catalogue.py --check
step shell-scripts shell_scripts
step python-scripts python_scripts
step clang-headers clang_headers
step clang-tidy tidy

end_of_steps
