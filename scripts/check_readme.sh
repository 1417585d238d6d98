#!/usr/bin/env bash
# The README is code: its host is the one in examples/, which compiles against the installed package, runs on a simulated
# session, and says what it should; the consumer project builds against the installed CMake package.
set -euo pipefail
cd "$(dirname "$0")/.."

python3 - <<'PY'
import pathlib
import re

readme = pathlib.Path("README.md").read_text(encoding="utf-8")
block = re.search(r"```c\n(.*?)```", readme, re.S).group(1)
if block != pathlib.Path("examples/host.c").read_text(encoding="utf-8"):
    raise SystemExit("README.md shows another host than examples/host.c")
listed = set(re.findall(r"\b(?:open_file|close_file_[in]|get_[A-Za-z_]+)\b", readme))
wanted = set(re.findall(r"^\s+(\w+);$", pathlib.Path("src/api/traguardo.map").read_text(encoding="utf-8"), re.M))
if not wanted <= listed:
    raise SystemExit(f"README.md lacks {sorted(wanted - listed)}")
print("README.md shows the host as it is and names all functions")
PY

prefix=$PWD/build/installed
rm -rf "$prefix" build/consumer
cmake --install build/release --prefix "$prefix" >/dev/null
cc -std=c89 -Wall -Wextra -Werror -I "$prefix/include/traguardo" examples/host.c -o build/host \
  -L "$(dirname "$(find "$prefix" -name 'libtraguardo.so')")" -ltraguardo
build/release/tools/traguardo simulate -o build/readme.qlt --laps 3 >/dev/null
LD_LIBRARY_PATH=$(dirname "$(find "$prefix" -name 'libtraguardo.so')") build/host build/readme.qlt | tee build/readme.out | head -3
grep -q "Engine RPM" build/readme.out

cmake -S tests/consumer -B build/consumer -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build build/consumer >/dev/null
build/consumer/consumer
echo "the installed package serves a host and a CMake project"
