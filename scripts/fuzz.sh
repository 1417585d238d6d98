#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Builds the fuzzers and runs each from its seeds; a crash ends with its input's path.
#
#   scripts/fuzz.sh [SECONDS]     default 60
#   scripts/fuzz.sh --runs N      N inputs, the same ones each time: what .ci/run does
set -euo pipefail
cd "$(dirname "$0")/.."
limit="-max_total_time=${1:-60}"
corpus_of() { echo "build/fuzz/corpus/$1"; }
if [ "${1:-}" = --runs ]; then
  limit="-runs=${2:-1000} -seed=1"
  corpus_of() { mktemp -d; }
fi
cmake --preset fuzz
cmake --build --preset fuzz
for fuzzer in build/fuzz/fuzz/fuzz_*; do
  [ -x "$fuzzer" ] && [ -f "$fuzzer" ] || continue
  name=$(basename "$fuzzer")
  corpus=$(corpus_of "$name")
  mkdir -p "$corpus"
  seeds=()
  [ -d "fuzz/seeds/$name" ] && seeds=("fuzz/seeds/$name")
  echo "--- $name, $limit"
  # shellcheck disable=SC2086
  "$fuzzer" $limit -max_len=65536 -rss_limit_mb=4096 -verbosity=0 -artifact_prefix=build/fuzz/ "$corpus" "${seeds[@]}"
done
echo "fuzzers found nothing"
