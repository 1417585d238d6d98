#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Configures, builds and tests one preset: release (the default), debug, asan or windows.
set -euo pipefail
cd "$(dirname "$0")/.."
preset=${1:-release}
export WINEDEBUG=-all WINEPREFIX="$PWD/build/wine"

# Programs that start while no Wine server runs race for its folder, and the loser fails. So the prefix is made by one
# program alone, and the server stays until the last test has ended.
keep_wine_running() {
  mkdir -p "$WINEPREFIX"
  wineserver --persistent
  trap 'wineserver --kill || true' EXIT
  wine wineboot --init
}

cmake --preset "$preset"
cmake --build --preset "$preset"
[ "$preset" != windows ] || keep_wine_running
ctest --preset "$preset" -j "$(nproc)"
