#!/bin/sh
# SPDX-License-Identifier: MIT
# Formats the sources in place, or with --check only says which ones aren't formatted.
#
#   scripts/format.sh [--check]
set -eu
cd "$(dirname "$0")/.."

case "${1:-}" in
  "") mode="-i" ;;
  --check) mode="--dry-run --Werror" ;;
  *)
    echo "usage: scripts/format.sh [--check]" >&2
    exit 2
    ;;
esac

# Data tables are laid out by hand, a row a line.
# shellcheck disable=SC2086
find src wire tools tests bench fuzz examples python -type f \( -name '*.cpp' -o -name '*.h' -o -name '*.c' \) \
  ! -name '*_data.cpp' -print0 | xargs -0 clang-format $mode
