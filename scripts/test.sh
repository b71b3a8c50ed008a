#!/usr/bin/env bash
# Sets up, builds everything from a clean build directory and runs the whole test suite.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
rm -rf build
cmake --preset release
cmake --build --preset release
ctest --preset release -j2
# The ISA audit once more on an unoptimised library, where every inline helper is out of line.
rm -rf build-debug
cmake --preset debug -DTAV_BUILD_TESTS=OFF >/dev/null
cmake --build --preset debug --target tav
python3 cmake/isa_audit.py build-debug/libtav.so
