#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Decodes the worked bytes of the format pages with what the pages say, and holds each value against its meaning there.

Every block ```hex NAME``` of docs/formats must have a check here, and every check a block."""
import re
import struct
import sys
from pathlib import Path

FORMATS = Path(__file__).resolve().parents[2] / "docs" / "formats"
BLOCK = re.compile(r"^```hex ([^\n]+)\n(.*?)^```", re.M | re.S)
LINE = re.compile(r"((?:[0-9A-F]{2} ?)+)(?: {2,}(.*))?$")


def read_blocks():
    blocks = {}
    for page in sorted(FORMATS.glob("*.md")):
        for name, body in BLOCK.findall(page.read_text(encoding="utf-8")):
            assert name not in blocks, f"two blocks are called {name}"
            lines = [LINE.match(line) for line in body.splitlines()]
            assert all(lines), f"{page.name}, {name}: a line that is no hex"
            blocks[name] = b"".join(bytes.fromhex(line.group(1)) for line in lines)
    return blocks


def tag(b):
    opening, name, size, version, end = struct.unpack_from("<2s4sIBc", b)
    payload = b[12:12 + size]
    closing, again, checksum, last = struct.unpack("<c4sHc", b[12 + size:])
    assert (opening, end, closing, last) == (b"<h", b">", b"<", b">") and name == again == b"RCR\0" and version == 1
    assert payload == b"Anna" and checksum == sum(payload) % 65536 == 0x17E


def frame(letter, head, *values):
    def check(b):
        assert b[:2] == b"(" + letter and b[-1:] == b")"
        assert struct.unpack("<" + head, b[2:-1]) == values
    return check


def chunks(b):
    packet, at, expected = b"", 0, [(0, 0), (1, 1)]
    for number, last in expected:
        header = struct.unpack_from("<I", b, at + 2)[0]
        assert (header & 0x3FF, header >> 10 & 1, header >> 11 & 0x1FF, header >> 20 & 0xF) == (number, last, 2, 3)
        if b[at:at + 2] == b"(c":
            first, end = at + 7, at + 7 + b[at + 6]
        else:
            assert b[at:at + 2] == b"(C"
            first, end = at + 6, b.index(b")", at + 6)
        assert b[end:end + 1] == b")"
        packet, at = packet + b[first:end], end + 1
    assert at == len(b) and struct.unpack("<IHB", packet) == (1000, 1234, 7)


def fields(layout, *values):
    def check(b):
        assert struct.unpack("<" + layout, b) == values, struct.unpack("<" + layout, b)
    return check


def group_of_600(b):
    head, record = b[:32], b[32:]
    assert len(record) == 128 and struct.unpack_from("<I", head, 4)[0] == sum(record) == 0xC6
    assert struct.unpack_from("<4xI8xI", record) == (56, 70012)


def trace_solution(b):
    assert b[:4] == b"NSOL" and len(b) == 64
    record = b[4:60]
    assert struct.unpack_from("<IIih2B", record) == (2000, 345600000, 0, 1800, 3, 0) and record[51] == 8
    assert struct.unpack_from("<3iI", record, 16) == (445620352, 20000000, 455875968, 250)


CHECKS = {
    "tag": tag,
    "one sample": frame(b"S", "IHH", 1000, 3, 1234),
    "several samples": frame(b"M", "IHH3H", 1000, 3, 3, 1234, 1235, 1236),
    "group": frame(b"G", "IHHB", 1000, 1, 1234, 7),
    "acquisition": frame(b"A", "IHHB", 1000, 2, 1234, 7),
    "chunks": chunks,
    "acquisition descriptor": fields("3H2H", 2, 103, 2, 3, 4),
    "group descriptor": fields("2H2H", 1, 2, 3, 4),
    "lap record": fields("BBHiI2B2xI", 1, 0, 2, 50000, 0, 0, 0, 100000),
    "GPS record": fields("IIihBB3iI3iIHxB4x", 10000, 123456, 0, 2000, 3, 0, 445620352, 20000000, 455875968, 300, 1000,
                         2000, -1000, 50, 150, 9),
    "group of version 600": group_of_600,
    "solution of a trace file": trace_solution,
}


def main():
    blocks = read_blocks()
    failed = [f"no check for the block {name}" for name in blocks if name not in CHECKS]
    for name, check in CHECKS.items():
        try:
            check(blocks[name])
        except (AssertionError, KeyError, ValueError, struct.error) as fault:
            failed.append(f"{name}: {fault!r}")
    print("\n".join(failed) or f"{len(CHECKS)} blocks say what stands behind them")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
