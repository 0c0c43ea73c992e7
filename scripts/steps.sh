# Steps with a verdict for each, for the scripts that source this after they have set `logs`, a folder. The arguments of
# the script are the names of the only steps to take; without any it takes all.
# shellcheck shell=bash

: "${logs:?}"
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

# step NAME COMMAND...: prints "ok    NAME (seconds)", or "FAIL  NAME (seconds): LOG" with the end of what the command
# printed. Goes on after a failure.
step() {
    local name=$1 log=$logs/${1//[^a-z-]/-}.log start=$SECONDS
    shift
    known+=("$name")
    is_wanted "$name" || return 0
    if "$@" >"$log" 2>&1; then
        echo "ok    $name ($((SECONDS - start)) s)"
        return 0
    fi
    failures=$((failures + 1))
    echo "FAIL  $name ($((SECONDS - start)) s): $log"
    tail --lines=40 "$log" | sed 's/^/      /'
}

# The last command of the script: a name that is none of the steps is a failure, too.
end_of_steps() {
    local name
    for name in "${wanted[@]}"; do
        if [[ " ${known[*]} " != *" $name "* ]]; then
            echo "FAIL  $name: there is no such step; there are: ${known[*]}"
            failures=$((failures + 1))
        fi
    done
    echo "$failures failed"
    [ "$failures" -eq 0 ]
}
