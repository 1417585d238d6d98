#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The README is code: every command line in it runs as it stands, so does its Python, every output that it shows is what
comes out, and its host is the one in examples/. Needs the release build. What other stages of CI run anyway is left to them.

    check_readme.py
"""
import os
import re
import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
ELSEWHERE = ("scripts/test.sh", "scripts/setup.sh windows", "scripts/build_and_test.sh windows")


def blocks(text, language):
    return [block.strip("\n") for block in re.findall(rf"```{language}\n(.*?)```", text, re.S)]


class Shell:
    """One shell for all lines, since one line makes what the next one reads."""

    def __init__(self, folder):
        self.folder = folder
        tool = ROOT / "build/release/tools"
        self.environment = {**os.environ, "HOME": str(folder), "PATH": f"{tool}:{os.environ['PATH']}"}
        self.environment.pop("XDG_CONFIG_HOME", None)
        self.environment.update(PYTHONPATH=str(ROOT / "python"), PYTHONDONTWRITEBYTECODE="1",
                                TRAGUARDO_PYTHON_LIBRARY=str(ROOT / "build/release/python/_traguardo.so"))

    def run(self, lines, at_root):
        place = ROOT if at_root else self.folder
        run = subprocess.run(["bash", "-euo", "pipefail", "-c", lines], cwd=place, env=self.environment,
                             stdin=subprocess.DEVNULL, capture_output=True, encoding="utf-8", errors="replace")
        if run.returncode:
            sys.exit(f"README.md: this fails with status {run.returncode}:\n{lines}\n{run.stdout}{run.stderr}")
        return run.stdout


def main():
    readme = (ROOT / "README.md").read_text(encoding="utf-8")
    host = (ROOT / "examples/host.c").read_text(encoding="utf-8").strip("\n")
    if blocks(readme, "c") != [host]:
        sys.exit("README.md shows another host than examples/host.c")
    functions = (ROOT / "docs/functions.md").read_text(encoding="utf-8")
    lacking = [n for n in (ROOT / "src/api/exported_functions.txt").read_text().split() if n not in functions]
    if lacking:
        sys.exit(f"docs/functions.md lacks {lacking}")

    count = 0
    with tempfile.TemporaryDirectory() as folder:
        shell = Shell(Path(folder))
        for block in blocks(readme, "sh"):
            lines = [line for line in block.splitlines() if not line.startswith(ELSEWHERE)]
            count += len(lines)
            if any(line.startswith("traguardo ") for line in lines):
                for line in lines:
                    shell.run(line, at_root=False)
            elif lines:
                # What belongs to the sources runs there; the session is the one that the tool made.
                text = "\n".join(lines).replace("session.qlt", f"{folder}/session.qlt")
                shell.run(text, at_root=True)
        for block in blocks(readme, "python"):
            shell.run(f"/usr/bin/python3 - <<'PYTHON'\n{block}\nPYTHON", at_root=False)
            count += len(block.splitlines())
        for block in blocks(readme, "console"):
            for command, output in re.findall(r"^\$ (.*)\n((?:(?!\$ ).*\n?)*)", block + "\n", re.M):
                found = shell.run(command, at_root=False)
                count += 1
                if found.rstrip("\n") != output.rstrip("\n"):
                    sys.exit(f"README.md: {command}\nshows\n{output}\nand what comes out is\n{found}")
    print(f"README.md: {count} command lines run, and show what they say")


if __name__ == "__main__":
    main()
