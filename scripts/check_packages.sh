#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Packages as their users meet them: made twice they are equal; the .deb is installed and used in a bare Debian 12, the zip
# unpacked and used under Wine, in a folder whose name isn't ASCII.
set -euo pipefail
cd "$(dirname "$0")/.."

mkdir -p build/packages
for round in first second; do
  scripts/package.sh >"build/packages/$round"
done
cmp build/packages/first build/packages/second
deb=$(ls build/release/packages/*.deb)
zip=$(ls build/windows/packages/*.zip)

root=build/packages/debian
if [ ! -f "$root/etc/debian_version" ]; then
  debootstrap --variant=minbase --include=zlib1g,libstdc++6,libfmt9 bookworm "$root" >build/packages/debootstrap.log
fi
cp "$deb" "$root/tmp/traguardo.deb"
chroot "$root" /bin/bash -euc '
  cd /tmp
  dpkg -i traguardo.deb >/dev/null
  traguardo simulate --laps 2 -o s.qlt >/dev/null
  traguardo laps s.qlt | grep -q "^  2 "
  source /usr/share/bash-completion/completions/traguardo
  COMP_WORDS=(traguardo st) COMP_CWORD=1
  _traguardo
  [ "${COMPREPLY[*]}" = stats ]
  for file in man/man1/traguardo.1* zsh/vendor-completions/_traguardo fish/vendor_completions.d/traguardo.fish; do
    test -s /usr/share/$file
  done
  test -s /usr/include/traguardo/exports.h
  ldconfig -p | grep -q libtraguardo.so.1
  dpkg -r traguardo >/dev/null
  ! test -e /usr/bin/traguardo'

folder=build/packages/"Größe 日本"
rm -rf "$folder"
mkdir -p "$folder"
python3 -m zipfile -e "$zip" "$folder"
export WINEDEBUG=-all WINEPREFIX="$PWD/build/wine"
wine=$(command -v wine64 || echo /usr/lib/wine/wine64)
trap 'wineserver --kill || true' EXIT
cd "$folder"/*
test -s include/traguardo/exports.h -a -s bin/traguardo.dll -a -s lib/libtraguardo.dll.a
# Into files: what Wine starts beside the tool keeps a pipe open.
"$wine" bin/traguardo.exe simulate --laps 2 -o "Österreich.qlt" </dev/null >simulated 2>&1
"$wine" bin/traguardo.exe laps "Öster*.qlt" </dev/null >laps 2>&1
grep -q "^Österreich.qlt  *2 .*best of all" laps
echo "packages are equal when made twice, and work where they are installed"
