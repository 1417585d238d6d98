#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Makes packages from what was built: build/release/packages/*.deb for Debian 12, build/windows/packages/*.zip for Windows.
# Two packages of one commit are equal, byte by byte.
#
#   scripts/package.sh [release|windows]...     default: both
set -euo pipefail
cd "$(dirname "$0")/.."
SOURCE_DATE_EPOCH=$(git log -1 --format=%ct)
export SOURCE_DATE_EPOCH LC_ALL=C.UTF-8 TZ=UTC
[ $# -gt 0 ] || set -- release windows

for preset in "$@"; do
  cmake --preset "$preset" >/dev/null
  # The one source that tells the time of its build.
  touch src/api/exports.cpp
  targets=(traguardo traguardo_tool)
  [ "$preset" = windows ] || targets+=(completion)
  cmake --build "build/$preset" --target "${targets[@]}" >/dev/null
  rm -rf "build/$preset/packages"
  (cd "build/$preset" && cpack >/dev/null)
  rm -rf "build/$preset/packages/_CPack_Packages"
  sha256sum "build/$preset/packages"/*
done
