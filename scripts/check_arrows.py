#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Holds the arrows between the rooms of src/: who may include whom, and that no file includes itself in a ring; and that
the writer of wire/ includes nothing of src/.

Prints every include that runs against an arrow; exit status 1 if there is one."""
import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
SRC = ROOT / "src"
# What each room may include: as CMakeLists.txt builds them.
ALLOWED = {room: set(others.split()) for room, others in
           re.findall(r"^traguardo_room\((\w+)([^)]*)\)", (ROOT / "CMakeLists.txt").read_text(encoding="utf-8"), re.M)}
# System headers live behind the platform's door only.
SYSTEM = re.compile(r"^(windows|unistd|dirent|fcntl|io|direct)\.h$|^sys/")


def main():
    bad = [f"src/{folder.name} is no room of CMakeLists.txt" for folder in SRC.iterdir() if folder.name not in ALLOWED]
    graph = {}
    for path in sorted(SRC.rglob("*.[ch]*")):
        name = path.relative_to(SRC).as_posix()
        room = name.split("/")[0]
        text = path.read_text(encoding="utf-8")
        graph[name] = set()
        for target in re.findall(r'^\s*#\s*include\s+"([^"]+)"', text, re.M):
            graph[name].add(target)
            other = target.split("/")[0]
            if other != room and other not in ALLOWED.get(room, set()):
                bad.append(f"{name} includes {target}: {room} may not include {other}")
        if "/platform/" not in name and room != "api":
            for target in re.findall(r"^\s*#\s*include\s+<([^>]+)>", text, re.M):
                if SYSTEM.search(target):
                    bad.append(f"{name} includes <{target}>: only the platform layer may")
            if re.search(r"^\s*#\s*if(def|ndef)?\b.*(_WIN32|__linux__|__unix__)", text, re.M):
                bad.append(f"{name} asks which platform it runs on: only the platform layer may")

    writer = sorted((ROOT / "wire").glob("*.[ch]*"))
    for path in writer:
        for target in re.findall(r'^\s*#\s*include\s+"([^"]+)"', path.read_text(encoding="utf-8"), re.M):
            if not target.startswith("wire/"):
                bad.append(f"wire/{path.name} includes {target}: the writer stands alone")

    state = {}

    def visit(name, trail):
        if state.get(name) == "done" or name not in graph:
            return
        if state.get(name) == "open":
            bad.append("a ring: " + " -> ".join(trail[trail.index(name):] + [name]))
            return
        state[name] = "open"
        for target in sorted(graph[name]):
            visit(target, trail + [name])
        state[name] = "done"

    for name in graph:
        visit(name, [])
    print("\n".join(bad) if bad else f"{len(graph) + len(writer)} files keep the arrows")
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
