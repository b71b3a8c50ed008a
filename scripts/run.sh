#!/usr/bin/env bash
# Sets up, builds libtav and the tav tool, and runs `tav <command>`; without one, tav prints the
# configuration and then demonstrates each subsystem.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
cmake --preset release >/dev/null
cmake --build --preset release --target tav_tool
exec build/tav "$@"
