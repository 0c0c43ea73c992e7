#!/bin/bash
# Builds the program and shows it at work, from a bare clone and from any folder: on the example project,
# and on a copy of /usr/share for its speed. Only temporary folders are changed.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/install-deps.sh
# Only what is shown; a compiler's new warning is no reason not to show it.
cmake --preset release -B build/demo \
    -DQRV_BUILD_TESTS=OFF -DQRV_BUILD_BENCH=OFF -DQRV_WARNINGS_AS_ERRORS=OFF
cmake --build build/demo --target qrv_cli
PATH=$PWD/build/demo/cli:$PATH

temporary=$(mktemp -d)
trap 'rm -rf "$temporary"' EXIT

print_command() { printf '\n$%s\n' "$(printf ' %q' "$@")"; }

show() {
    print_command "$@"
    "$@"
}

# The seconds and what the command printed last; all of it would be long.
show_timed() {
    print_command "$@"
    local TIMEFORMAT='%R s'
    time "$@" >"$temporary/printed"
    printf '%s lines, the last one:\n' "$(wc -l <"$temporary/printed")"
    tail -n 1 "$temporary/printed"
}

printf '\n== A small project ==\n'
cp -a examples/project "$temporary/project"
cd "$temporary/project"
show find . -type f
show qrv init --name 'Workshop extension'
show qrv files
show qrv status
show qrv state

printf '\n== A large folder ==\n'
cp -a /usr/share "$temporary/share"
cd "$temporary/share"
printf '%s files and links to files, copied from /usr/share\n' "$(find . -xtype f | wc -l)"
show_timed qrv init
show_timed qrv files
