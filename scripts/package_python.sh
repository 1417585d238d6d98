#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Makes the Python package's wheel and its .deb (python3-traguardo) for Debian 12, into build/packages. Two runs over one
# commit give the same bytes.
#
#   scripts/package_python.sh [FOLDER]     FOLDER: where they go
set -euo pipefail
cd "$(dirname "$0")/.."
out=${1:-build/packages}
mkdir -p "$out"
out=$(cd "$out" && pwd)

# What a file or the compiler would date by the clock gets the commit's date.
SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git log -1 --format=%ct 2>/dev/null || stat -c %Y CHANGELOG.md)}
export SOURCE_DATE_EPOCH PYTHONHASHSEED=0 LC_ALL=C.UTF-8
umask 022
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

echo "== Wheel"
# A copy without what earlier builds left beside the sources, under a path that the next run doesn't see in the debug data.
mkdir "$work/source"
tar -c --exclude=./build --exclude=./.git --exclude='*.egg-info' --exclude=./python/build . | tar -x -C "$work/source"
CXXFLAGS="${CXXFLAGS:-} -ffile-prefix-map=$work=." /usr/bin/python3 -m pip wheel --quiet --no-build-isolation --no-index \
  --no-deps --wheel-dir "$work" "$work/source/python"
wheel=$(basename "$work"/*.whl)
install -m 644 "$work/$wheel" "$out/$wheel"

echo "== Package of Debian"
version=$(echo "$wheel" | cut -d- -f2)
architecture=$(dpkg --print-architecture)
root="$work/deb"
site="$root/usr/lib/python3/dist-packages"
mkdir -p "$site" "$root/DEBIAN" "$root/usr/share/doc/python3-traguardo"
/usr/bin/python3 -m zipfile -e "$out/$wheel" "$site"
rm -f "$site"/traguardo-*.dist-info/RECORD
strip --strip-unneeded "$site/traguardo/_traguardo.so"
cp LICENSE "$root/usr/share/doc/python3-traguardo/copyright"
cp docs/python.md docs/export.md "$root/usr/share/doc/python3-traguardo/"
cp -r examples/python "$root/usr/share/doc/python3-traguardo/examples"
cat >"$root/DEBIAN/control" <<CONTROL
Package: python3-traguardo
Version: $version
Section: python
Priority: optional
Architecture: $architecture
Maintainer: The Traguardo authors <authors@traguardo.invalid>
Installed-Size: $(du -sk --apparent-size "$root/usr" | cut -f1)
Depends: python3 (>= 3.10), python3-numpy, python3-pandas (>= 1.5), libc6 (>= 2.34), libgcc-s1, libstdc++6 (>= 12), zlib1g
Recommends: python3-h5py, python3-scipy, python3-dask, python3-distributed, python3-matplotlib
Description: session files of motorsport data loggers in Python
 Opens .qlt, .qlc and .wmp files: laps, channels and GPS as NumPy arrays,
 pandas frames and Arrow streams; laps against laps, formulas, export to HDF5,
 MATLAB and CSV, and many files at once on Dask.
CONTROL
# Compiled files are made at installation, so that they fit the interpreter, and go with the package.
cat >"$root/DEBIAN/postinst" <<'SCRIPT'
#!/bin/sh
set -e
if [ "$1" = configure ] && command -v py3compile >/dev/null 2>&1; then py3compile -p python3-traguardo; fi
SCRIPT
cat >"$root/DEBIAN/prerm" <<'SCRIPT'
#!/bin/sh
set -e
if command -v py3clean >/dev/null 2>&1; then py3clean -p python3-traguardo; fi
SCRIPT
chmod 755 "$root/DEBIAN/postinst" "$root/DEBIAN/prerm"
find "$root" -type f ! -path '*/DEBIAN/p*' -exec chmod 644 {} +
find "$root" -exec touch -h -d "@$SOURCE_DATE_EPOCH" {} +
deb="python3-traguardo_${version}_$architecture.deb"
dpkg-deb --root-owner-group --build "$root" "$out/$deb" >/dev/null
echo "$out/$wheel"
echo "$out/$deb"
