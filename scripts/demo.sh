#!/bin/bash
# Builds the program and shows a working day with it: two drawings and notes, commits, a branch, a conflict
# and its resolution, an old version brought back; then how quick it is on a large folder. Works from a
# bare clone and from any folder; only temporary folders are changed. --recording leaves out what differs
# from run to run (the build, the times and the large folder).
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
recording=${1:-}

if [ "$recording" != --recording ]; then
    scripts/install-deps.sh
    # Only what is shown; a compiler's new warning is no reason not to show it.
    cmake --preset release -B build/demo \
        -DQRV_BUILD_TESTS=OFF -DQRV_BUILD_BENCH=OFF -DQRV_WARNINGS_AS_ERRORS=OFF
    cmake --build build/demo --target qrv_cli
fi
PATH=$PWD/build/demo/bin:$PATH

temporary=$(mktemp -d)
trap 'rm -rf "$temporary"' EXIT
# The registry of whoever looks on stays as it is.
export QRV_CONFIG_DIR=$temporary/configuration
export QRV_AUTHOR=ada

say() { printf '\n# %s\n' "$*"; }

# The words of a command as a person would type them.
print_command() {
    local word
    printf '\n$'
    for word in "$@"; do
        [[ $word =~ ^[A-Za-z0-9_./=,:-]+$ ]] || word="'$word'"
        printf ' %s' "$word"
    done
    printf '\n'
}

# Runs a command and tells how long it took. A merge with conflicts ends with status 1, as it should.
show() {
    local begin=${EPOCHREALTIME/[.,]/}
    print_command "$@"
    "$@" 2>&1 || true
    [ "$recording" = --recording ] ||
        printf '(%s ms)\n' "$((("${EPOCHREALTIME/[.,]/}" - begin + 500) / 1000))"
}

# Other text in a drawing, as somebody would draw it.
edit() { sed -i "s/$2/$3/" "$1"; }

cp -a examples/project "$temporary/workshop"
cd "$temporary/workshop"

say 'Morning: the folder becomes a repository, and its files are kept.'
show qrv init --name 'Workshop extension'
show qrv add --all
show qrv commit -m 'Drawings as received'

say 'A drawing and the notes change.'
edit 'plans/ground floor.dxf' WALLS OUTER_WALLS
echo 'The gate is 4 m wide.' >>notes/questions.txt
show qrv status
show qrv diff --path notes
show qrv add --all
show qrv commit -m 'Name the outer walls, settle the gate'

say 'A variant is tried on a branch of its own ...'
show qrv switch --create wide-gate
sed -i 's/4 m/5 m/' notes/questions.txt
edit parts/Gehäuse/flange.dxf EDGES OUTLINE
show qrv add --all
show qrv commit -m 'Try a gate of 5 m'

say '... while the same line changes on the main branch.'
show qrv switch master
sed -i 's/4 m/4.5 m/' notes/questions.txt
show qrv add notes/questions.txt
show qrv commit -m 'The builder asks for 4.5 m'

say 'Both are merged. The flange comes over by itself; one file has a conflict, and keeps our text.'
show qrv merge wide-gate
show qrv status
show qrv resolve notes/questions.txt --mine
show qrv commit -m 'Keep 4.5 m, take the new flange'

say 'Evening: what happened today?'
show qrv log
say 'The drawing as it was this morning, beside the present one.'
show qrv restore 'plans/ground floor.dxf' --from 1 --to "$temporary/morning"
show qrv restore 'plans/ground floor.dxf' --from 1
show qrv status
show qrv restore 'plans/ground floor.dxf'
show qrv verify

[ "$recording" != --recording ] || exit 0

say 'A large folder: a copy of /usr/share.'
cp -a /usr/share "$temporary/share"
cd "$temporary/share"
printf '%s files and links to files\n' "$(find . -xtype f | wc -l)"

# The time and the last line of what was printed; all of it would be long.
show_last() {
    local begin=${EPOCHREALTIME/[.,]/}
    print_command "$@"
    "$@" >"$temporary/printed" 2>&1
    tail --lines=1 "$temporary/printed"
    printf '(%s ms)\n' "$((("${EPOCHREALTIME/[.,]/}" - begin + 500) / 1000))"
}
show_last qrv init
show_last qrv add --all
show_last qrv commit -m 'Everything'
show_last qrv status
