#!/usr/bin/env bash
# Sets up, builds everything from a clean build directory and runs the whole test suite.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
rm -rf build
cmake --preset release
cmake --build --preset release
ctest --preset release -j2
