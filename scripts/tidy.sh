#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# clang-tidy over src/, wire/, tools/ and python/ with the warnings of .clang-tidy as errors. Needs the release build's compile commands.
set -euo pipefail
cd "$(dirname "$0")/.."
# clang-tidy goes on with checks of its own where it can't read its settings, and says that it found nothing.
! clang-tidy --dump-config 2>&1 | grep 'error:' || exit 1
[ -f build/release/compile_commands.json ] || cmake --preset release
files=$(git ls-files 'src/*.cpp' 'wire/*.cpp' 'tools/*.cpp' 'python/*.cpp' | grep -v -e '_data\.cpp$' -e 'win32\.cpp$')
printf '%s\n' "$files" | xargs -P "$(nproc)" -n 4 clang-tidy --quiet --extra-arg=-Wno-unknown-warning-option -p build/release 2> >(grep -v 'warnings generated' >&2)
echo "clang-tidy: $(printf '%s\n' "$files" | wc -l) files clean"
