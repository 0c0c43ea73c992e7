#!/bin/bash
# Builds the manual of the library; it begins at build/docs/index.html. Fails, and says where, when a public name
# has no comment, a link leads nowhere or anything else makes Doxygen warn.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/install-deps.sh
rm -rf build/docs build/docs-sources
python3 scripts/manual_sources.py build/docs-sources
mkdir -p build/docs
# The copies keep the lines of what they were made from: it is those that messages name.
(cd build/docs-sources && doxygen ../../docs/manual/Doxyfile 2>&1) | sed "s|$PWD/build/docs-sources/||"
echo "The manual is build/docs/index.html"
