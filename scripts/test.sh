#!/bin/sh
# SPDX-License-Identifier: MIT
# Installs what is missing, builds, and runs every test.
set -eu
cd "$(dirname "$0")/.."

echo "== Packages"
scripts/setup.sh build test python page
echo "== Build and tests"
exec scripts/build_and_test.sh release
