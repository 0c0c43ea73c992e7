#!/bin/bash
# Builds the benchmarks for speed, runs them beside their peers, and writes docs/performance.md from what
# was measured. Takes an hour and some 20 GB in the temporary folder (QRV_BENCH_FOLDER names another for the benchmarks of
# the library, TMPDIR for all). QRV_BENCH_SIZES are the numbers of files of the growth table (10000 100000 1000000).
#
#   scripts/bench.sh             all programs, five runs each
#   REPETITIONS=1 scripts/bench.sh json scan   only these, once each; prints the table, writes no page
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/install-deps.sh
cmake --preset release
cmake --build --preset release

results=$PWD/build/release/bench-results
subjects=("$@")
[ ${#subjects[@]} -gt 0 ] || subjects=(json scan hash state)
rm -rf "$results"
mkdir -p "$results"
for subject in "${subjects[@]}"; do
    "build/release/bench/qrv_bench_$subject" \
        --benchmark_repetitions="${REPETITIONS:-5}" --benchmark_display_aggregates_only=true \
        --benchmark_out="$results/$subject.json" --benchmark_out_format=json
done

if [ $# -eq 0 ]; then
    python3 bench/against_git.py build/release/bin/qrv >"$results/1-against-git.md"
    python3 bench/drawings.py build/release/bin/qrv >"$results/2-drawings.md"
    read -ra sizes <<<"${QRV_BENCH_SIZES:-10000 100000 1000000}"
    {
        echo 'One change in trees of several sizes, and a status'
        echo
        python3 bench/growth.py build/release/bin/qrv docs/images/growth.svg --sizes "${sizes[@]}"
        echo
        echo '![The same as lines over the number of files](images/growth.svg)'
    } >"$results/3-growth.md"
    {
        echo 'A long history of a tree of 1,000 files'
        echo
        python3 bench/long_history.py build/release/bin/qrv build/release/bench/qrv_long_history
    } >"$results/4-long-history.md"
    python3 scripts/bench_table.py "$results" docs/performance.md
else
    python3 scripts/bench_table.py "$results"
fi
