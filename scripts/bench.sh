#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Measures reading beside the plainest program that writes and reads as much, case by case, as a table of ratios.
#
#   scripts/bench.sh [--only LETTERS] [--rounds N]     some minutes; every case, or those of the letters
#   scripts/bench.sh --check                           opening, reading back and both at a small size: fails where a ratio
#                                                      has fallen below three quarters of that in bench/ratios.json
set -euo pipefail
cd "$(dirname "$0")/.."
# Other scripts share the folder and may have left the benchmarks out.
cmake --preset release -DTRAGUARDO_BENCH=ON > /dev/null
cmake --build --preset release --target roofline
if [ "${1:-}" != --check ]; then
  exec build/release/bench/roofline "$@"
fi
# Other work on the machine can only slow a run down: the best of three counts.
for _ in 1 2 3; do build/release/bench/roofline --small --rounds 7 --only afm --json; done |
  python3 -c '
import json, sys
runs = [json.loads(line) for line in sys.stdin]
slow = 0
for name, noted in json.load(open("bench/ratios.json")).items():
    ratio = max(run[name] for run in runs)
    verdict = "" if ratio >= 0.75 * noted else "  too slow"
    slow += verdict != ""
    print(f"{name:40} {ratio:5.2f}   noted {noted:5.2f}{verdict}")
sys.exit(1 if slow else 0)
'
