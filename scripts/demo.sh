#!/bin/sh
# SPDX-License-Identifier: MIT
# Shows what Traguardo does with a session: installs what is missing, builds, simulates some laps, and shows their texts,
# laps, channels and GPS, a CSV file, three lines of Python, and a page of it all for a browser.
#
#   scripts/demo.sh [FILE]     FILE: a session file of your own (.qlt, .qlc, .wmp) instead of a simulated one
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)

if [ $# -gt 1 ]; then
  echo "usage: scripts/demo.sh [FILE]" >&2
  exit 2
fi

echo "== Packages"
"$root/scripts/setup.sh" build python
"$root/scripts/setup.sh" bundle || echo "(no npm packages: there will be no page)"
echo "== Build"
build="$root/build/release"
(cd "$root" && cmake --preset release -DTRAGUARDO_TESTS=OFF -DTRAGUARDO_BENCH=OFF)
cmake --build "$build" --target traguardo_tool traguardo_python
tool="$build/tools/traguardo"

out="$root/build/demo"
mkdir -p "$out"
if [ $# -eq 1 ]; then
  session=$1
else
  session="$out/demo.qlt"
  echo "== A session of five laps"
  "$tool" simulate --laps 5 -o "$session"
fi

echo "== Texts"
"$tool" info "$session"
echo "== Laps"
"$tool" laps "$session"
echo "== Channels"
"$tool" channels "$session"
echo "== GPS"
"$tool" gps "$session" || echo "(no GPS in this session)"
echo "== CSV: every sample of every channel"
"$tool" export "$session" -o "$out/demo.csv"
head -n 6 "$out/demo.csv"
echo "... $(wc -l <"$out/demo.csv") lines in $out/demo.csv"
echo "== Python"
cat >"$out/demo.py" <<'PYTHON'
import sys, traguardo
with traguardo.open(sys.argv[1]) as s:
    print(s.frame(list(s.channels)[:5], rate=2).describe().round(2))
PYTHON
cat "$out/demo.py"
PYTHONPATH="$root/python" PYTHONDONTWRITEBYTECODE=1 TRAGUARDO_PYTHON_LIBRARY="$build/python/_traguardo.so" \
  /usr/bin/python3 "$out/demo.py" "$session"
echo "== The tool is $tool"
if "$tool" page "$session" -o "$out/demo.html"; then
  echo "== A page of the session, to open in a browser: $out/demo.html"
fi
