#!/usr/bin/env bash
# Builds the fuzzers and runs each for some seconds (default 60) from its seeds; a crash ends with its input's path.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
cmake --preset fuzz
cmake --build --preset fuzz
for fuzzer in build/fuzz/fuzz/fuzz_*; do
  [ -x "$fuzzer" ] && [ -f "$fuzzer" ] || continue
  name=$(basename "$fuzzer")
  mkdir -p "build/fuzz/corpus/$name"
  echo "--- $name, $seconds s"
  "$fuzzer" -max_total_time="$seconds" -max_len=65536 -rss_limit_mb=4096 -print_final_stats=0 -verbosity=0 \
    -artifact_prefix=build/fuzz/ "build/fuzz/corpus/$name" $([ -d "fuzz/seeds/$name" ] && echo "fuzz/seeds/$name")
done
echo "fuzzers found nothing"
