#!/bin/bash
# Builds the fuzz targets with clang and lets each of them search for the given number of seconds (30,
# unless another is given), beginning with its seeds. What it finds stays in build/fuzz/found.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
seconds=${1:-30}

scripts/install-deps.sh
cmake --preset fuzz
cmake --build --preset fuzz --target qrv_fuzz

found=$PWD/build/fuzz/found
mkdir -p "$found"
status=0
ran=0
for target in build/fuzz/fuzz/*Fuzz; do
    [ -x "$target" ] || continue
    name=$(basename "$target")
    corpus=${name%Fuzz}
    # New inputs go to the first folder; the seeds stay as they are.
    mkdir -p "build/fuzz/corpora/$name"
    echo "--- $name"
    "$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -verbosity=0 \
        -print_final_stats=1 -artifact_prefix="$found/$name-" \
        "build/fuzz/corpora/$name" "fuzz/corpora/${corpus,,}" || status=1
    ran=$((ran + 1))
done
[ "$ran" -gt 0 ] || { echo "no fuzz target was built"; exit 1; }
exit "$status"
