#!/usr/bin/env bash
# Configures, builds and tests one preset: release (the default), debug, asan or windows.
set -euo pipefail
cd "$(dirname "$0")/.."
preset=${1:-release}
export WINEDEBUG=-all WINEPREFIX="$PWD/build/wine"
cmake --preset "$preset"
cmake --build --preset "$preset"
ctest --preset "$preset" -j "$(nproc)"
