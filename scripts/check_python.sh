#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# What somebody would do who installs the Python package: the wheel into an environment of its own, without a network, and
# what the .deb unpacks. Needs the release build for a session to read.
set -euo pipefail
cd "$(dirname "$0")/.."
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
build/release/tools/traguardo simulate -o "$work/session.qlt" --laps 2 >/dev/null

scripts/package_python.sh "$work/packages"
read_it='import sys, traguardo
with traguardo.open(sys.argv[1]) as s:
    print(traguardo.__file__, len(s.laps), "laps", s.frame("speed", rate=10).shape)'
unset PYTHONPATH TRAGUARDO_PYTHON_LIBRARY
/usr/bin/python3 -m venv --system-site-packages "$work/environment"
"$work/environment/bin/pip" install --quiet --no-index --no-deps "$work"/packages/*.whl
(cd "$work" && environment/bin/python -c "$read_it" session.qlt)
dpkg-deb -x "$work"/packages/*.deb "$work/unpacked"
(cd "$work" && PYTHONPATH="$work/unpacked/usr/lib/python3/dist-packages" /usr/bin/python3 -B -c "$read_it" session.qlt)
