#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Holds what leaves the built library and what it needs.

    check_symbols.py LIBRARY LIST [OBJDUMP]

Exactly the names of LIST leave it, on Linux under a version. A .so is read with nm, a .dll with OBJDUMP; the latter may
import from the system's own libraries alone, since hosts copy it alone to where they are."""
import re
import subprocess
import sys

VERSION = "TRAGUARDO_1.0"


def exported(library, objdump):
    if library.endswith(".dll"):
        text = subprocess.run([objdump, "-p", library], check=True, capture_output=True, text=True).stdout
        table = text[text.index("[Ordinal/Name Pointer] Table"):]
        return set(re.findall(r"^\s*\[\s*\d+\](?: \+base\[\s*\d+\])?\s+(?:[0-9a-f]+ )?(\S+)$", table.split("\n\n")[0], re.M))
    text = subprocess.run(["nm", "-D", "--defined-only", library], check=True, capture_output=True, text=True).stdout
    names = {line.split()[-1] for line in text.splitlines() if line.split()[-2] != "A"}
    # A name under another version, or none, keeps that, and is none of the list.
    return {name.removesuffix("@@" + VERSION) for name in names}


SYSTEM = {"kernel32.dll", "msvcrt.dll", "advapi32.dll", "shell32.dll", "user32.dll", "ole32.dll"}


def foreign_imports(library, objdump):
    if not library.endswith(".dll"):
        return set()
    text = subprocess.run([objdump, "-p", library], check=True, capture_output=True, text=True).stdout
    return {name for name in re.findall(r"DLL Name: (\S+)", text) if name.lower() not in SYSTEM}


def main(library, list_of_names, objdump="objdump"):
    wanted = set(open(list_of_names, encoding="utf-8").read().split())
    found = exported(library, objdump)
    foreign = foreign_imports(library, objdump)
    for name in sorted(foreign):
        print("imports what the system doesn't have:", name)
    for name in sorted(wanted - found):
        print("missing:", name)
    for name in sorted(found - wanted):
        print("leaves the library without being told to:", name)
    print(f"{len(found)} exported symbols, {len(wanted)} wanted")
    return 0 if found == wanted and len(wanted) == 34 and not foreign else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
