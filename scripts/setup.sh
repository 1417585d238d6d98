#!/bin/sh
# SPDX-License-Identifier: MIT
# Installs what Traguardo needs on Debian 12, as far as it is missing.
#
#   scripts/setup.sh [SET]...     sets: build test python bundle page windows quality packages fuzz; without: build test
#
# bundle is what the build needs for `traguardo page`; page is that and what its tests need.
set -eu

# Node may come from elsewhere; Debian's npm doesn't install beside such a one.
node_packages() {
  if command -v node >/dev/null 2>&1 && command -v npm >/dev/null 2>&1; then echo ""; else echo "nodejs npm"; fi
}

# What page/package-lock.json names, into page/node_modules, when that changed.
install_from_npm() {
  case " $* " in *" bundle "* | *" page "*) ;; *) return 0 ;; esac
  page=$(cd "$(dirname "$0")/../page" && pwd)
  if [ "$page/node_modules/.package-lock.json" -nt "$page/package-lock.json" ]; then return 0; fi
  echo "setup: installing the packages of page/package-lock.json"
  (cd "$page" && npm ci --ignore-scripts --no-audit --no-fund --loglevel=error)
}

packages_of() {
  case "$1" in
    build) echo "g++ cmake ninja-build zlib1g-dev libcli11-dev libfmt-dev nlohmann-json3-dev" ;;
    test) echo "python3 libgtest-dev libgmock-dev googletest libbenchmark-dev gpsbabel" ;;
    python)
      echo "python3 python3-numpy python3-pandas python3-h5py python3-scipy python3-dask python3-distributed" \
        "python3-matplotlib python3-pytest mypy python3-pip python3-setuptools python3-wheel python3-venv"
      ;;
    bundle) node_packages ;;
    page) echo "chromium $(node_packages)" ;;
    windows) echo "g++-mingw-w64-x86-64-posix libz-mingw-w64-dev googletest wine wine64" ;;
    quality) echo "clang clang-format clang-tidy libclang-rt-14-dev valgrind git python3 pkg-config" ;;
    packages) echo "debootstrap dpkg-dev file python3" ;;
    fuzz) echo "clang libclang-rt-14-dev" ;;
    *)
      echo "setup: no set \"$1\" (there are: build test python bundle page windows quality packages fuzz)" >&2
      return 1
      ;;
  esac
}

[ $# -gt 0 ] || set -- build test

wanted=""
for name in "$@"; do
  packages=$(packages_of "$name")
  wanted="$wanted $packages"
done

if ! command -v dpkg-query >/dev/null 2>&1 || ! command -v apt-get >/dev/null 2>&1; then
  echo "setup: this is no Debian system; please see to these yourself:$wanted" >&2
  install_from_npm "$@"
  exit 0
fi

missing=""
for package in $wanted; do
  state=$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true)
  case "$state" in
    installed*) ;;
    *)
      case " $missing " in
        *" $package "*) ;;
        *) missing="$missing $package" ;;
      esac
      ;;
  esac
done

if [ -z "$missing" ]; then
  install_from_npm "$@"
  echo "setup: all packages are there ($*)"
  exit 0
fi

if [ "$(id -u)" -eq 0 ]; then
  as_root=""
elif command -v sudo >/dev/null 2>&1; then
  as_root="sudo"
else
  echo "setup: these packages are missing:$missing" >&2
  echo "setup: run this once as root, or have them installed: apt-get install$missing" >&2
  exit 1
fi

echo "setup: installing$missing"
# shellcheck disable=SC2086
$as_root apt-get update -q
# shellcheck disable=SC2086
$as_root env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends $missing
install_from_npm "$@"
