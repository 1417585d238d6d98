#!/usr/bin/env python3
"""Holds the symbols that leave the built library: exactly the names of the list beside it, and nothing else.

    check_symbols.py LIBRARY MAP [OBJDUMP]

MAP is the linker's version script. A .so is read with nm, a .dll with OBJDUMP (its export table)."""
import re
import subprocess
import sys


def exported(library, objdump):
    if library.endswith(".dll"):
        text = subprocess.run([objdump, "-p", library], check=True, capture_output=True, text=True).stdout
        table = text[text.index("[Ordinal/Name Pointer] Table"):]
        return set(re.findall(r"^\s*\[\s*\d+\](?: \+base\[\s*\d+\])?\s+(?:[0-9a-f]+ )?(\S+)$", table.split("\n\n")[0], re.M))
    text = subprocess.run(["nm", "-D", "--defined-only", library], check=True, capture_output=True, text=True).stdout
    return {line.split()[-1].split("@")[0] for line in text.splitlines() if line.split()[-2] != "A"}


def main(library, version_script, objdump="objdump"):
    wanted = set(re.findall(r"^\s+(\w+);$", open(version_script, encoding="utf-8").read(), re.M))
    found = exported(library, objdump)
    for name in sorted(wanted - found):
        print("missing:", name)
    for name in sorted(found - wanted):
        print("leaves the library without being told to:", name)
    print(f"{len(found)} exported symbols, {len(wanted)} wanted")
    return 0 if found == wanted and len(wanted) == 34 else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
