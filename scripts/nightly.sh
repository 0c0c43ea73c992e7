#!/bin/bash
# Tries all of what .ci/run tries a part of, and looks longer for what chance finds. Takes hours. Prints a verdict for
# each step: "ok    name (seconds)", or "FAIL  name (seconds): its log" with the end of it. The exit status is 0 only when
# nothing failed.
#
#   scripts/nightly.sh            every step
#   scripts/nightly.sh kills ...  only the steps named
#
# For a shorter night: QRV_NIGHTLY_SECONDS is the time for each fuzz target (600), QRV_NIGHTLY_WALKS the number of random
# walks (10) and QRV_NIGHTLY_STEPS their length (2000); of the calls to disturb, and of the sources for clang-tidy, each
# QRV_NIGHTLY_EVERY-th is taken (1), and of the tests for the steps sizes and locales those that match QRV_NIGHTLY_TESTS.
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit 1
scripts/install-deps.sh || exit 1

build=$PWD/build/nightly
logs=$build/logs
. scripts/steps.sh

# The program as it is given to people, and the tests that disturb it at every call.
build_program() {
    cmake --preset release -B "$build/release" -DQRV_BUILD_BENCH=OFF -DQRV_DISTURB_EVERY="${QRV_NIGHTLY_EVERY:-1}" &&
        cmake --build "$build/release" --target qrv_cli
}

disturb() {
    build_program && ctest --test-dir "$build/release" --output-on-failure --no-tests=error -R "^$1[.]"
}

# Each prints its seed when it finds a difference.
walk() {
    local count
    build_program || return 1
    for ((count = 0; count < ${QRV_NIGHTLY_WALKS:-10}; ++count)); do
        python3 -B tests/model/random_walk.py "$build/release/bin/qrv" --steps "${QRV_NIGHTLY_STEPS:-2000}" || return 1
    done
}

# Everything else that .ci/run tries with smaller numbers.
try_full_sizes() {
    cmake --preset dev -B "$build/dev" && cmake --build "$build/dev" &&
        QRV_EXHAUSTIVE=1 ctest --test-dir "$build/dev" --output-on-failure --no-tests=error --parallel "$(nproc)" \
            -R "${QRV_NIGHTLY_TESTS:-.}" -E '^(Kill|Failure|Question|Save|PowerCut|Model|Consumer|Scripts)[.]|AllAgainUnder'
}

# Every test program in each of the odd locales.
repeat_in_locales() {
    local folder=$build/locale
    if [ ! -d "$folder/de_DE.UTF-8" ]; then
        mkdir -p "$folder" && localedef --no-archive -i de_DE -f UTF-8 "$folder/de_DE.UTF-8" || return 1
    fi
    cmake --preset dev -B "$build/dev" -DQRV_TEST_EVERY_LOCALE=ON -DQRV_TEST_LOCALE_PATH="$folder" &&
        cmake --build "$build/dev" &&
        ctest --test-dir "$build/dev" --output-on-failure --no-tests=error --parallel "$(nproc)" \
            -R "${QRV_NIGHTLY_TESTS:-.}" -L again
}

step kills disturb Kill
step failures disturb Failure
step questions disturb Question
step saves disturb Save
step power-cuts disturb PowerCut
step model walk
step sizes try_full_sizes
step locales repeat_in_locales
step fuzz scripts/fuzz.sh "${QRV_NIGHTLY_SECONDS:-600}"
# Each source by itself, and whatever was remembered.
step clang-tidy env QRV_TIDY_ALONE="${QRV_NIGHTLY_EVERY:-1}" QRV_TIDY_CACHE= scripts/lint.sh clang-tidy

end_of_steps
