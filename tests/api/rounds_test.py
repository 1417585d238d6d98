#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The same again and again: processes and threads side by side, and openings one after the other.

    rounds_test.py LIBRARY [--rounds N] [--openings N]
    rounds_test.py LIBRARY --parallel FILE FILE     how much faster two threads open two files than one

In each round 4 processes, then 8 threads, open a .qlt, a .qlc without its expansion and a .wmp without its copy at the
same time; each must see what a host sees alone. Openings must leave the heap, the open files and the maps as they were.
"""
import argparse
import ctypes
import hashlib
import json
import multiprocessing
import os
import shutil
import sys
import tempfile
import threading
import time
from pathlib import Path

SESSIONS = Path(__file__).resolve().parent.parent / "sessions"
sys.path.insert(0, str(SESSIONS))
from host import Library, dump  # noqa: E402

NAMES = ["logger/integers.qlt", "logger/compressed_level6.qlc", "legacy/random_9010.wmp"]
MADE = ["compressed_level6.qlt", "random_9010.bak"]
GROWTH_LIMIT = 64 << 10


def digest(library, folder):
    seen = [dump(library, f"{folder}/{Path(name).name}") for name in NAMES]
    return hashlib.sha256(json.dumps(seen).encode()).hexdigest()


def remove_made(folder):
    for name in MADE:
        Path(folder, name).unlink(missing_ok=True)


def process(path, folder, rounds, barrier, results):
    library = Library(path)
    for _ in range(rounds):
        barrier.wait()
        results.put(digest(library, folder))
        barrier.wait()


def run_processes(path, folder, rounds, alone):
    """The number of rounds of a process that saw something else."""
    context = multiprocessing.get_context("spawn")
    barrier, results = context.Barrier(5), context.Queue()
    workers = [context.Process(target=process, args=(path, folder, rounds, barrier, results)) for _ in range(4)]
    for worker in workers:
        worker.start()
    wrong = 0
    for _ in range(rounds):
        remove_made(folder)
        barrier.wait(120)
        wrong += sum(results.get(timeout=120) != alone for _ in workers)
        barrier.wait(120)
    for worker in workers:
        worker.join(120)
    return wrong + sum(worker.exitcode != 0 for worker in workers)


def run_threads(library, folder, rounds, alone):
    wrong = []

    def work(number):
        # A spelling of its own, so that each has a file of its own.
        if digest(library, folder + "/." * (number + 1)) != alone:
            wrong.append(number)

    for _ in range(rounds):
        remove_made(folder)
        threads = [threading.Thread(target=work, args=(number,)) for number in range(8)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
    return len(wrong)


def heap_bytes():
    class Information(ctypes.Structure):
        _fields_ = [(name, ctypes.c_size_t) for name in "arena ordblks smblks hblks hblkhd usmblks fsmblks uordblks "
                    "fordblks keepcost".split()]
    libc = ctypes.CDLL(None)
    libc.mallinfo2.restype = Information
    told = libc.mallinfo2()
    return told.uordblks + told.hblkhd


def held(what):
    if what == "maps":
        return len(Path("/proc/self/maps").read_text().splitlines())
    return len(os.listdir("/proc/self/fd"))


def resident_bytes():
    return int(Path("/proc/self/statm").read_text().split()[1]) * os.sysconf("SC_PAGE_SIZE")


def run_openings(library, folder, openings):
    """What has grown; nothing if all is as it was."""
    paths = [f"{folder}/{Path(name).name}".encode() for name in NAMES]

    def round_of_openings():
        for path in paths:
            library.close_file_i(library.open_file(path))

    for _ in range(50):
        round_of_openings()
    before = heap_bytes(), resident_bytes(), held("maps"), held("files")
    for _ in range(openings):
        round_of_openings()
    after = heap_bytes(), resident_bytes(), held("maps"), held("files")
    heap, resident, maps, files = (b - a for a, b in zip(before, after))
    print(f"{openings} openings of each: heap {heap:+d} bytes, resident {resident:+d} bytes, maps {maps:+d}, "
          f"open files {files:+d}")
    return [heap >= GROWTH_LIMIT, resident >= GROWTH_LIMIT, maps > 0, files > 0].count(True)


def open_all(library, paths, side_by_side):
    """Seconds."""
    def work(path):
        handle = library.open_file(path.encode())
        if handle <= 0:
            raise SystemExit(f"{path}: {handle}")
        library.close_file_i(handle)

    start = time.perf_counter()
    threads = [threading.Thread(target=work, args=(path,)) for path in paths]
    for thread in threads:
        thread.start()
        if not side_by_side:
            thread.join()
    for thread in threads:
        thread.join()
    return time.perf_counter() - start


def parallel(library, paths):
    one, two = (min(open_all(library, paths, side_by_side) for _ in range(15)) for side_by_side in (False, True))
    print(f"one behind the other {one * 1e3:.1f} ms, side by side {two * 1e3:.1f} ms: {one / two:.2f} times as fast")


def main():
    options = argparse.ArgumentParser()
    options.add_argument("library")
    options.add_argument("--rounds", type=int, default=5)
    options.add_argument("--openings", type=int, default=300)
    options.add_argument("--parallel", nargs=2)
    chosen = options.parse_args()
    library = Library(chosen.library)
    if chosen.parallel:
        return parallel(library, chosen.parallel)
    with tempfile.TemporaryDirectory() as folder:
        for name in NAMES:
            for file in (SESSIONS / name).parent.glob(Path(name).stem + ".*"):
                if file.suffix != ".json":
                    shutil.copy(file, folder)
        there = sorted(os.listdir(folder))
        alone = digest(library, folder)
        wrong = run_processes(chosen.library, folder, chosen.rounds, alone)
        print(f"{chosen.rounds} rounds of 4 processes: {wrong} wrong")
        wrong_in_threads = run_threads(library, folder, chosen.rounds, alone)
        print(f"{chosen.rounds} rounds of 8 threads: {wrong_in_threads} wrong")
        grown = run_openings(library, folder, chosen.openings)
        left = sorted(set(os.listdir(folder)) - set(there) - set(MADE))
        print(f"left behind: {', '.join(left) or 'nothing'}")
    return 1 if wrong or wrong_in_threads or grown or left else 0


if __name__ == "__main__":
    sys.exit(main())
