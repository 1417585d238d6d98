#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Sessions under the limits of a machine: a full disk, few open files, little memory, two readers at a time.

    limits_test.py LIBRARY TOOL

Each case runs a small host (this file again, over ctypes) in a process of its own, so that a crash shows as what it is."""
import ctypes as ct
import os
import resource
import shutil
import struct
import subprocess
import sys
import tempfile
import threading
import time
import unittest
from pathlib import Path

LIBRARY = TOOL = None


def tag(name, payload, version=1):
    return b"<h%s%s%c>%s<%s%s>" % (name, struct.pack("<I", len(payload)), version, payload, name,
                                    struct.pack("<H", sum(payload) & 0xFFFF))


def load(library):
    lib = ct.CDLL(library)
    doubles = ct.POINTER(ct.c_double)
    lib.open_file.argtypes = [ct.c_char_p]
    lib.get_channel_samples.argtypes = [ct.c_int, ct.c_int, doubles, doubles, ct.c_int]
    return lib


def host(library, path, mode):
    """Opens the session and reads every channel twice; prints the result of the opening and the number of samples."""
    if mode == "files":
        resource.setrlimit(resource.RLIMIT_NOFILE, (1024, 1024))
    if mode == "memory":
        resource.setrlimit(resource.RLIMIT_DATA, (96 << 20, 96 << 20))
    lib = load(library)
    if mode == "cut":
        print(*open_while_it_is_cut(lib, path))
        return
    if mode == "bounded":
        # Far above what is needed: seconds that tell a line from a square, and memory beside what Python has.
        resource.setrlimit(resource.RLIMIT_CPU, (10, 10))
        held = int(Path("/proc/self/statm").read_text().split()[5]) * resource.getpagesize()
        room = held + 4 * os.path.getsize(path) + (16 << 20)
        resource.setrlimit(resource.RLIMIT_DATA, (room, room))
    handle = lib.open_file(path.encode())
    samples = 0
    if handle > 0 and mode == "pause":
        print("open", flush=True)
        sys.stdin.readline()
    if handle > 0 and mode == "killed":
        if os.fork() == 0:  # what it closes and leaves is its own
            lib.close_file_i(handle)
            sys.exit()
        os.wait()
    if handle > 0 and mode != "memory":
        for _ in range(2):
            for channel in range(lib.get_channels_count(handle)):
                count = lib.get_channel_samples_count(handle, channel)
                times, values = (ct.c_double * count)(), (ct.c_double * count)()
                if lib.get_channel_samples(handle, channel, times, values, count) != count:
                    raise SystemExit("a channel was not read whole")
                samples += count
    if handle > 0 and mode not in ("leave", "killed"):
        lib.close_file_i(handle)
    print(handle, samples, flush=True)
    if mode == "killed":
        os.kill(os.getpid(), 9)


def open_while_it_is_cut(lib, whole):
    """How many of 20 openings failed, and how many samples the others saw, which are those of a whole session or of
    one that was cut before it was opened."""
    path = os.path.join(os.path.dirname(whole), "a.qlt")

    def opened(cut_after_s, source=whole):
        shutil.copy(source, path)
        cut = threading.Timer(cut_after_s, os.truncate, (path, 4096))
        cut.start()
        start = time.perf_counter()
        handle = lib.open_file(path.encode())
        duration = time.perf_counter() - start
        samples = sum(lib.get_channel_samples_count(handle, c) for c in range(lib.get_channels_count(handle)))
        lib.close_file_i(handle)
        cut.cancel()
        cut.join()
        return handle, samples, duration

    _, of_whole, duration = opened(60)
    seen = [opened(duration * i / 20)[:2] for i in range(20)]
    head = path + ".head"
    shutil.copy(path, head)
    os.truncate(head, 4096)
    _, of_cut, _ = opened(60, head)
    os.remove(head)
    failed = [handle for handle, _ in seen].count(0)
    good = all(handle == 0 or samples in (of_whole, of_cut) for handle, samples in seen)
    return failed, of_whole if good else 0


def run_host(path, mode="plain", check=True):
    out = subprocess.run([sys.executable, __file__, "--host", LIBRARY, str(path), mode], capture_output=True, text=True,
                         check=check, timeout=300).stdout.split()
    return int(out[0]), int(out[1])


class Limits(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.path = Path(self.folder.name)

    def tearDown(self):
        self.folder.cleanup()

    def simulate(self, path, *options):
        subprocess.run([TOOL, "simulate", "-o", str(path), *options], check=True, stdout=subprocess.DEVNULL)
        return path

    def test_two_thousand_channels_need_no_two_thousand_open_files(self):
        session = self.simulate(self.path / "many.qlt", "--channels", "2000", "--laps", "1")
        handle, samples = run_host(session, "files")
        self.assertGreater(handle, 0)
        self.assertGreater(samples, 2000)
        self.assertEqual([p.name for p in self.path.iterdir()], ["many.qlt"])

    def test_memory_does_not_grow_with_the_session(self):
        session = self.simulate(self.path / "long.qlt", "--minutes", "120", "--channels", "60")
        self.assertGreater(session.stat().st_size, 100 << 20)
        self.assertGreater(run_host(session, "memory")[0], 0)

    def test_cost_is_bounded_by_the_file(self):
        channels = b"".join(tag(b"CHS\0", struct.pack("<H10xI4xi8x32sIIIII28x", i, 0x10, 4, b"c%d" % i, 10000, 0, 2, 0, 0))
                            for i in range(65536))
        laps = b"".join(tag(b"LAP\0", struct.pack("<BBHiI16xI", 1, 0, i + 1, 1000, 0, 1000 * i), 2)
                        for i in range(40000))
        for name, content in ("channels.qlt", tag(b"CNF\0", channels)), ("laps.qlt", laps), ("zeros.qlt", bytes(1 << 26)):
            (self.path / name).write_bytes(content)
            handle, _ = run_host(self.path / name, "bounded")
            self.assertEqual(handle > 0, name != "zeros.qlt", name)

    def test_a_full_disk_is_a_failed_open_that_leaves_nothing(self):
        room = self.path / "room"
        room.mkdir()
        if os.geteuid() != 0 or subprocess.run(["mount", "-t", "tmpfs", "-o", "size=6m", "tmpfs", str(room)],
                                               stderr=subprocess.DEVNULL).returncode != 0:
            self.skipTest("no right to mount a small file system")
        try:
            session = self.simulate(room / "a.qlt")
            self.assertGreater(session.stat().st_size, 3 << 20, "the stores must not fit beside it")
            self.assertEqual(run_host(session)[0], 0)
            self.assertEqual([p.name for p in room.iterdir()], ["a.qlt"])
            tool = subprocess.run([TOOL, "info", str(session)], capture_output=True, text=True)
            self.assertEqual((tool.returncode, len(tool.stderr.splitlines())), (1, 1), tool.stderr)
        finally:
            subprocess.run(["umount", str(room)], check=True)

    def test_a_host_that_ends_without_closing_leaves_nothing(self):
        session = self.simulate(self.path / "a.qlt", "--laps", "20")
        for mode in "leave", "killed":
            self.assertGreater(run_host(session, mode, check=False)[1], 1 << 20, "more than stays in memory")
            self.assertEqual([p.name for p in self.path.iterdir()], ["a.qlt"], mode)

    def test_two_processes_read_one_session_at_a_time(self):
        session = self.simulate(self.path / "a.qlt", "--laps", "2")
        alone = run_host(session)
        first = subprocess.Popen([sys.executable, __file__, "--host", LIBRARY, str(session), "pause"],
                                 stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.assertEqual(first.stdout.readline(), "open\n")
        self.assertEqual(run_host(session)[1], alone[1])
        out, _ = first.communicate("\n")
        self.assertEqual(int(out.split()[1]), alone[1])
        self.assertEqual([p.name for p in self.path.iterdir()], ["a.qlt"])

    def test_an_expansion_leaves_the_readers_of_its_target_alone(self):
        session = self.simulate(self.path / "a.qlt", "--laps", "2")
        alone = run_host(session)[1]
        short = self.simulate(self.path / "a.qlc", "--laps", "1", "--seed", "9")
        first = subprocess.Popen([sys.executable, __file__, "--host", LIBRARY, str(session), "pause"],
                                 stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.assertEqual(first.stdout.readline(), "open\n")
        self.assertNotEqual(run_host(short)[1], alone)
        out, _ = first.communicate("\n")
        self.assertEqual((first.returncode, int(out.split()[1])), (0, alone))

    def test_a_session_that_is_cut_while_it_is_read_is_a_failed_open(self):
        self.simulate(self.path / "whole.qlt", "--laps", "20")
        failed, samples = run_host(self.path / "whole.qlt", "cut")
        self.assertGreater(min(failed, samples), 0)
        self.assertEqual(sorted(p.name for p in self.path.iterdir()), ["a.qlt", "whole.qlt"])
        print(f"{failed} of 20 cuts came while the session was read")

    def test_a_pipe_is_no_session(self):
        os.mkfifo(self.path / "a.qlt")
        self.assertEqual(run_host(self.path / "a.qlt")[0], 0)


if __name__ == "__main__":
    if sys.argv[1] == "--host":
        host(*sys.argv[2:])
    else:
        LIBRARY, TOOL = sys.argv[1], sys.argv[2]
        unittest.main(argv=sys.argv[:1]+sys.argv[3:])
