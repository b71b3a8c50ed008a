#!/usr/bin/env bash
# Sets up, builds libtav and the tav tool, and runs `tav <command>` (default: info).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
cmake --preset release >/dev/null
cmake --build --preset release --target tav_tool
exec build/tav "${@:-info}"
