#!/bin/bash
# Builds the library and the program against a qrv::platform that comes from outside, installs them, and
# builds and runs a consumer of that, the example host, and a look at what the platform is asked for.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/install-deps.sh
# The folder below has another name each time, which must not keep the compiler's cache from its work.
export CCACHE_NOHASHDIR=1
# Really outside: the run path leaves out what lies within the project.
top=$(mktemp -d)
trap 'rm -rf "$top"' EXIT
options=(-DQRV_BUILD_TESTS=OFF -DQRV_BUILD_BENCH=OFF)
host=("-Dqrv-platform_DIR=$PWD/tests/external" "-DQRV_HOST_HEADERS=$PWD"
    "-DQRV_HOST_LIBRARY=$top/host/lib/libqrv-platform.so.0")

cmake --preset dev -B "$top/host" "${options[@]}"
cmake --build "$top/host" --target qrv_platform

cmake --preset dev -B "$top/build" "${options[@]}" -DQRV_PLATFORM=external "${host[@]}"
cmake --build "$top/build"
if [ -e "$top/build/lib/libqrv-platform.so" ]; then
    echo "the bundled platform was built all the same"
    exit 1
fi
"$top/build/bin/qrv" --version
cmake --install "$top/build" --prefix "$top/prefix"
if [ -e "$top/prefix/include/qrv/platform" ]; then
    echo "the bundled platform was installed all the same"
    exit 1
fi

cmake -S tests/consumer/project -B "$top/consumer" -G Ninja "-DCMAKE_PREFIX_PATH=$top/prefix" \
    "${host[@]}"
cmake --build "$top/consumer"
cmake -D PROGRAM="$top/consumer/consumer" -P tests/consumer/RunConsumer.cmake
cmake -D CONSUMER="$top/consumer/engine_consumer" -D QRV="$top/prefix/bin/qrv" -P tests/consumer/RunEngineConsumer.cmake

# A state goes to a host's own platform as one line, and comes from it as one text.
cmake -S tests/external -B "$top/calls" -G Ninja "-DCMAKE_PREFIX_PATH=$top/prefix" "${host[@]}"
cmake --build "$top/calls"
"$top/calls/qrv_state_calls"

cmake -S examples/host -B "$top/example" -G Ninja "-DCMAKE_PREFIX_PATH=$top/prefix" "${host[@]}"
cmake --build "$top/example"
cmake -D PROGRAM="$top/example/example_host" -D HOST="$PWD/examples/host" \
    -P tests/examples/RunHost.cmake
