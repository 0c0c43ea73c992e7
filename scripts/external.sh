#!/bin/bash
# Builds the library and the program against a qrv::platform that comes from outside, installs them, and
# builds and runs a consumer of that, the example host, and a look at what the platform is asked for.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/install-deps.sh
# Most of what follows is what the preset dev compiles as well. The compiler's cache knows it again where names are taken
# from the folder of the build, and that lies as deep as the preset's.
export CCACHE_NOHASHDIR=1 CCACHE_BASEDIR=$PWD CCACHE_SLOPPINESS=pch_defines,time_macros
build=$PWD/build/external
host_build=$PWD/build/external-host
# Really outside: the run path leaves out what lies within the project.
top=$(mktemp -d)
trap 'rm -rf "$top"' EXIT
rm -rf "$build" "$host_build"
options=(-DQRV_BUILD_TESTS=OFF -DQRV_BUILD_BENCH=OFF)
host=("-Dqrv-platform_DIR=$PWD/tests/external" "-DQRV_HOST_HEADERS=$PWD"
    "-DQRV_HOST_LIBRARY=$top/host/lib/libqrv-platform.so.0")

cmake --preset dev -B "$host_build" "${options[@]}"
cmake --build "$host_build" --target qrv_platform
mkdir "$top/host"
mv "$host_build/lib" "$top/host/lib"

cmake --preset dev -B "$build" "${options[@]}" -DQRV_PLATFORM=external "${host[@]}"
cmake --build "$build"
if [ -e "$build/lib/libqrv-platform.so" ]; then
    echo "the bundled platform was built all the same"
    exit 1
fi
"$build/bin/qrv" --version
cmake --install "$build" --prefix "$top/prefix"
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
