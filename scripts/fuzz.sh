#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Builds the fuzzers and runs them from their seeds and the stored sessions; a crash ends with its input's path.
#
#   scripts/fuzz.sh TARGET [SECONDS]   one of them, as in "qlt"; default 60 s. Its corpus stays in build/fuzz/corpus
#   scripts/fuzz.sh [SECONDS]          all of them
#   scripts/fuzz.sh --runs N           N inputs for each beside its seeds, the same ones each time: what .ci/run does
set -euo pipefail
cd "$(dirname "$0")/.."
build=${TRAGUARDO_FUZZ_BUILD:-build/fuzz}
targets=$(find fuzz -name '*_fuzz.cpp' -printf '%f\n' | sed 's/_fuzz\.cpp$//' | sort)
runs=""
if [ "${1:-}" = --runs ]; then
  runs=${2:-1000}
elif [[ "${1:-60}" =~ ^[0-9]+$ ]]; then
  seconds=${1:-60}
else
  grep -qx "$1" <<< "$targets" || { echo "fuzz: no target \"$1\" (there are: ${targets//$'\n'/ })" >&2; exit 2; }
  targets=$1
  seconds=${2:-60}
fi

# What stands in fuzz/seeds, and the sessions of the tests that a target reads.
seeds_of() {
  local folder
  folder=$(mktemp -d)
  [ ! -d "fuzz/seeds/fuzz_$1" ] || cp "fuzz/seeds/fuzz_$1"/* "$folder"
  local ending=""
  case $1 in
    qlt | report) ending=qlt ;;
    qlc | wmp) ending=$1 ;;
    trace) ending=jts ;;
  esac
  [ -z "$ending" ] || find tests/sessions -name "*.$ending" -size -64k -exec cp -n {} "$folder" \;
  echo "$folder"
}
dictionary_of() {
  case $1 in
    report | qlc) echo fuzz/dictionaries/qlt.dict ;;
    dump) ;;
    *) echo "fuzz/dictionaries/$1.dict" ;;
  esac
}

[ -n "${TRAGUARDO_FUZZ_BUILD:-}" ] || { cmake --preset fuzz && cmake --build --preset fuzz; }
for target in $targets; do
  seeds=$(seeds_of "$target")
  if [ -n "$runs" ]; then
    corpus=$(mktemp -d)
    limit="-runs=$((runs + $(find "$seeds" -type f | wc -l))) -seed=1"
  else
    corpus=$build/corpus/$target
    limit="-max_total_time=$seconds"
  fi
  mkdir -p "$corpus"
  dictionary=$(dictionary_of "$target")
  echo "--- $target, $limit"
  # shellcheck disable=SC2086
  "$build/fuzz/fuzz_$target" $limit ${dictionary:+-dict=$dictionary} -max_len=65536 -rss_limit_mb=4096 -timeout="${TRAGUARDO_FUZZ_TIMEOUT:-20}" \
    -verbosity="${TRAGUARDO_FUZZ_VERBOSITY:-0}" -print_final_stats=1 -artifact_prefix="$build/" "$corpus" "$seeds"
  rm -r "$seeds"
  [ -z "$runs" ] || rm -r "$corpus"
done
echo "fuzzers found nothing"
