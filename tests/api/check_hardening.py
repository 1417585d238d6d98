#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The traces that hardening leaves in built files: check_hardening.py OBJDUMP FILE..."""

import re
import subprocess
import sys

# What the private headers of a DLL must say.
WINDOWS = ["HIGH_ENTROPY_VA", "DYNAMIC_BASE", "NX_COMPAT"]


def output(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


def faults_of_elf(objdump, path):
    told = output("readelf", "-hldnW", "--dyn-syms", path)
    code = output(objdump, "-d", "--no-show-raw-insn", path)
    stack = re.search(r"GNU_STACK\s+(?:0x\w+\s+){5}(\S+)", told)
    checks = {
        "position-independent": re.search(r"Type:\s+DYN", told),
        "relocations read-only": "GNU_RELRO" in told,
        "bound at the start": re.search(r"FLAGS.*NOW", told),
        "stack without code": stack and "E" not in stack[1],
        "no text relocations": "TEXTREL" not in told,
        "stack protector": "__stack_chk_fail" in told,
        "fortified calls": re.search(r"__(mem|str|v?sn?printf|v?fprintf|read)\w*_chk", told),
    }
    if "X86-64" in told:
        # Whether the whole file is marked is up to the system's own start-up code.
        checks["control flow"] = re.search(r"<(open_file|main)\b.*>:\s+\w+:\s+endbr64", code)
        # Frames above a page touch each page of theirs.
        checks["stack clash"] = re.search(r"or[lq]\s+\$0x0,.*\(%rsp\)", code)
    return [name for name, found in checks.items() if not found]


def faults_of_dll(objdump, path):
    told = output(objdump, "-p", path)
    return [name for name in WINDOWS if name not in told]


def main():
    objdump, *paths = sys.argv[1:]
    failed = False
    for path in filter(None, paths):
        with open(path, "rb") as built:
            is_elf = built.read(4) == b"\x7fELF"
        faults = (faults_of_elf if is_elf else faults_of_dll)(objdump, path)
        print(f"{path}: {'lacks ' + ', '.join(faults) if faults else 'hardened'}")
        failed = failed or bool(faults)
    return 1 if failed or not paths else 0


if __name__ == "__main__":
    sys.exit(main())
