#!/bin/bash
# Installs the Debian 12 packages that building, testing and linting need. Quick, and silent, when all are
# there. Not needed for any of this: python3-ezdxf, with which examples/make_project.py made its drawings.
set -euo pipefail

packages=(
    # building
    cmake ninja-build ccache g++ pkg-config gettext
    qtbase5-dev libssl-dev libcli11-dev libsqlite3-dev libzstd-dev
    libwxgtk3.2-dev  # Debian has no package of the base library's headers alone
    # testing
    libgtest-dev libgmock-dev libbenchmark-dev nlohmann-json3-dev rapidjson-dev
    python3 gcovr strace locales patch fish zsh
    binutils  # nm lists the names that a library exports and needs
    valgrind  # counts instructions
    # the manual
    doxygen
    # linting, and the other compiler with its sanitizers and fuzzer
    git clang clang-format clang-tidy libclang-rt-14-dev universal-ctags shellcheck
)

missing=()
for package in "${packages[@]}"; do
    status=$(dpkg-query --show --showformat='${db:Status-Status}' "$package" 2>/dev/null || true)
    [ "$status" = installed ] || missing+=("$package")
done
[ ${#missing[@]} -gt 0 ] || exit 0

as_root=()
[ "$(id -u)" -eq 0 ] || as_root=(sudo)
echo "installing: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update --quiet=2
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install --yes --quiet=2 --no-install-recommends "${missing[@]}"
