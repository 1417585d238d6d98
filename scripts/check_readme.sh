#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# What a newcomer would do: the README's lines, the examples, and projects of their own that take the library in: by
# pkg-config from an installed copy that was moved, by find_package, and by add_subdirectory.
set -euo pipefail
cd "$(dirname "$0")/.."

python3 scripts/check_readme.py

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install build/release --prefix "$work/first" >/dev/null
mv "$work/first" "$work/moved"
PKG_CONFIG_PATH=$(dirname "$(find "$work/moved" -name traguardo.pc)")
export PKG_CONFIG_PATH
libdir=$(pkg-config --variable=libdir traguardo)
flags="$(pkg-config --cflags --libs traguardo) -Wl,-rpath,$libdir"
test -f "$work/moved/share/doc/traguardo/LICENSE"
build/release/tools/traguardo simulate -o "$work/session.qlt" --laps 3 >/dev/null
# shellcheck disable=SC2086
for example in host lap; do cc -std=c89 -Wall -Wextra -Werror "examples/$example.c" -o "$work/$example" $flags; done
# shellcheck disable=SC2086
c++ -std=c++17 -Wall -Wextra -Werror examples/fastest_lap.cpp -o "$work/fastest_lap" $flags
says() { # COMMAND... -- PATTERN
  "${@:1:$#-2}" >"$work/out"
  grep -q "${@: -1}" "$work/out" || { cat "$work/out"; echo "$1 doesn't say ${*: -1}"; exit 1; }
}
says "$work/host" "$work/session.qlt" -- "Engine RPM"
says "$work/lap" "$work/session.qlt" 1 0 -- "^Engine RPM: [0-9]* samples"
says "$work/lap" "$work/session.qlt" 1 0 -- "^GPS Speed: [0-9]* samples"
says "$work/fastest_lap" "$work/session.qlt" -- "^lap [1-3]: "

cmake -S tests/consumer -B "$work/package" -DCMAKE_PREFIX_PATH="$work/moved" >/dev/null
cmake --build "$work/package" >/dev/null
"$work/package/consumer"
cmake -S tests/consumer -B "$work/subdirectory" -DTRAGUARDO_SOURCE="$PWD" >/dev/null
cmake --build "$work/subdirectory" -j "$(nproc)" --target consumer >/dev/null
"$work/subdirectory/consumer"
echo "an installed copy, a moved one and a subdirectory serve hosts"
