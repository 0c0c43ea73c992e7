#!/bin/bash
# Runs every check and prints a verdict for each: "ok    name", or "FAIL  name" with what was found below
# it. Goes on after a failure; the exit status is 0 only when nothing failed.
#
#   scripts/lint.sh            everything
#   scripts/lint.sh sizes ...  only the checks named
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit 1
scripts/install-deps.sh || exit 1

logs=build/lint
mkdir -p "$logs"
wanted=("$@")
known=()
failures=0

is_wanted() {
    local name
    [ ${#wanted[@]} -gt 0 ] || return 0
    for name in "${wanted[@]}"; do
        [ "$name" != "$1" ] || return 0
    done
    return 1
}

# check NAME COMMAND...: the command fails, or prints nothing.
check() {
    local name=$1 log=$logs/${1//[^a-z-]/-}.log
    shift
    known+=("$name")
    is_wanted "$name" || return 0
    if "$@" >"$log" 2>&1; then
        echo "ok    $name"
        return 0
    fi
    failures=$((failures + 1))
    echo "FAIL  $name: $log"
    head --lines=40 "$log" | sed 's/^/      /'
}

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
        shellcheck --severity=style "$file" || status=1
    done < <(project_files '*.sh' '.ci/run')
    return "$status"
}

python_scripts() {
    local status=0 file
    while read -r file; do
        python3 -c 'import sys; compile(open(sys.argv[1]).read(), sys.argv[1], "exec")' "$file" ||
            status=1
    done < <(project_files '*.py')
    return "$status"
}

# The other compiler sees every source of ours through clang-tidy, and the public headers here.
clang_headers() {
    cmake --preset tidy >/dev/null && cmake --build --preset tidy --target qrv_public_headers
}

# The slow one. Sources are checked side by side, unless nothing was found in the very same text before; a log holds
# what was found, file by file.
tidy() {
    cmake --preset tidy >/dev/null || return 1
    project_files 'common/*.cpp' 'platform/*.cpp' 'cli/*.cpp' |
        xargs --no-run-if-empty --max-args=1 --max-procs="$(nproc)" \
            python3 scripts/tidy_file.py build/tidy 2>"$logs/clang-tidy-noise.log" |
        tee "$logs/clang-tidy-all.log" | grep --extended-regexp '(warning|error):' | sort --unique
    # Each finding is an error, see .clang-tidy; the exit statuses in the pipe tell of one.
    [ "${PIPESTATUS[1]}" -eq 0 ]
}

check clang-format format
check includes python3 scripts/check_includes.py
check calls python3 scripts/check_calls.py
check sizes python3 scripts/check_sizes.py
check words python3 scripts/check_words.py
check sources-listed python3 scripts/check_lists.py sources
check headers-listed python3 scripts/check_lists.py headers
check common.h python3 scripts/check_lists.py common.h
check readmes python3 scripts/check_lists.py readmes
check samples python3 scripts/check_samples.py
check translations python3 scripts/catalogue.py --check
check shell-scripts shell_scripts
check python-scripts python_scripts
check clang-headers clang_headers
check clang-tidy tidy

for name in "${wanted[@]}"; do
    if [[ " ${known[*]} " != *" $name "* ]]; then
        echo "FAIL  $name: no such check; there are: ${known[*]}"
        failures=$((failures + 1))
    fi
done
echo "$failures checks failed"
[ "$failures" -eq 0 ]
