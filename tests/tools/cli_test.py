# SPDX-License-Identifier: MIT
"""Runs the command-line host on simulated sessions and holds it against a reader of its own.

    python3 cli_test.py COMMAND [unittest options]     (of Windows with the emulator in front, in one argument)

The reader below walks the bytes of a session file and knows nothing of the library; it is a few dozen lines, decodes plain
channels only, and stops at the first byte that it doesn't understand. Needs Debian's python3; gpsbabel is used if it is
there.
"""
import csv
import json
import os
import pty
import re
import shlex
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest
import zlib

TOOL = []  # the command; for Windows with the emulator in front


def is_windows():
    return TOOL[-1].endswith(".exe")


PACKET_QUANTITY = 26
DECODERS = {  # sample formats whose stored value is the raw one in the channels below
    0: "<i", 1: "<h", 2: "<b", 3: "<I", 4: "<H", 5: "<B", 6: "<f", 11: "<h", 12: "<i", 13: "<B", 20: "<e", 24: "<i",
}


def float32(x):
    return struct.unpack("<f", struct.pack("<f", x))[0]


class Channel:
    def __init__(self, record):
        self.index, = struct.unpack_from("<H", record, 0)
        self.function, = struct.unpack_from("<I", record, 12)
        self.format, = struct.unpack_from("<I", record, 20)
        self.name = record[32:64].split(b"\0")[0].decode("ascii")
        self.period_us, = struct.unpack_from("<I", record, 64)
        self.size, = struct.unpack_from("<I", record, 72)
        self.is_packet = self.function & 0x7F == PACKET_QUANTITY
        self.samples = []  # (microseconds, bytes)
        self.places = []  # of the samples, in the file or in a rebuilt packet


class SessionFile:
    """An undamaged session file, read byte by byte."""

    def __init__(self, data):
        self.data, self.channels, self.sets, self.chunks = data, {}, {}, {}
        self.texts, self.gps, self.lap_marks, self.split_marks = {}, [], [], []
        self.frame_kinds = set()
        at = 0
        while at < len(data):
            at = self.tag(data, at, self.on_tag) if data[at : at + 2] == b"<h" else self.frame(data, at)

    def tag(self, data, at, take):
        name = data[at + 2 : at + 6]
        size, version, end = struct.unpack_from("<IBB", data, at + 6)
        payload = data[at + 12 : at + 12 + size]
        closing = data[at + 12 + size : at + 20 + size]
        assert end == ord(">") and closing[:1] == b"<" and closing[7:] == b">" and closing[1:5] == name, at
        assert struct.unpack_from("<H", closing, 5)[0] == sum(payload) & 0xFFFF, at
        take(name.split(b"\0")[0].decode("ascii"), version, payload)
        return at + 20 + size

    def on_tag(self, name, version, payload):
        if name == "CNF":
            at = 0
            while at < len(payload):
                at = self.tag(payload, at, self.on_table_tag)
        elif name == "GPS":
            self.gps.append(payload)
        elif name == "LAP":
            assert len(payload) == {2: 32, 3: 20}[version]
            _, split, lap, lap_ms, split_ms = struct.unpack_from("<BBHiI", payload, 0)
            stamp, = struct.unpack_from("<I", payload, {2: 28, 3: 16}[version])
            (self.split_marks if split else self.lap_marks).append((lap, split, lap_ms, split_ms, stamp))
        else:
            self.texts[name] = payload

    def on_table_tag(self, name, _version, payload):
        if name == "CHS":
            assert len(payload) == 112
            channel = Channel(payload)
            self.channels[channel.index] = channel
        elif name in ("ACD", "GRP"):
            head = 6 if name == "ACD" else 4
            index, = struct.unpack_from("<H", payload, 0)
            count, = struct.unpack_from("<H", payload, head - 2)
            assert len(payload) == head + 2 * count and count > 0
            if name == "ACD":
                assert struct.unpack_from("<H", payload, 2)[0] == 103  # one millisecond from channel to channel
            self.sets[name[0], index] = struct.unpack_from(f"<{count}H", payload, head)

    def frame(self, data, at):
        kind = chr(data[at + 1])
        assert data[at] == ord("(") and kind in "SMGAcC", f"{at}: {data[at:at + 16]!r}"
        self.frame_kinds.add(kind)
        if kind in "cC":
            return self.chunk(data, at, kind)
        clock_us = struct.unpack_from("<I", data, at + 2)[0] * 1000
        index, = struct.unpack_from("<H", data, at + 6)
        at += 8
        if kind == "S":
            at = self.sample(data, at, index, clock_us)
        elif kind == "M":
            count, = struct.unpack_from("<H", data, at)
            at += 2
            for i in range(count):
                at = self.sample(data, at, index, clock_us + i * self.channels[index].period_us)
        else:
            for i, member in enumerate(self.sets[kind, index]):
                at = self.sample(data, at, member, clock_us + (i * 1000 if kind == "A" else 0))
        assert data[at] == ord(")"), at
        return at + 1

    def sample(self, data, at, index, time_us):
        channel = self.channels[index]
        channel.samples.append((time_us, data[at : at + channel.size]))
        channel.places.append(at)
        return at + channel.size

    def chunk(self, data, at, kind):
        header, = struct.unpack_from("<I", data, at + 2)
        at += 6
        if kind == "c":
            length = data[at]
            at += 1
        else:
            length = data.index(b")", at) - at
        assert 1 <= length <= 8 and data[at + length] == ord(")"), at
        index = header >> 11 & 0x1FF
        assert header >> 20 & 0xF == 0, "only packets of one sample"
        pieces = self.chunks.setdefault(index, [])
        assert header & 0x3FF == len(pieces), at
        pieces.append(data[at : at + length])
        if header & 0x400:
            packet = b"".join(self.chunks.pop(index))
            assert len(packet) == 4 + self.channels[index].size
            self.sample(packet, 4, index, struct.unpack_from("<I", packet, 0)[0] * 1000)
        return at + length + 1

    def visible(self):
        return [c for _, c in sorted(self.channels.items()) if not c.is_packet]

    def first_us(self):
        return min(c.samples[0][0] for c in self.visible() if c.samples)

    def named(self, name):
        return next(c for c in self.visible() if c.name == name)

    def good_gps(self):
        return [g for g in self.gps if 3 <= g[14] <= 249]


def tag(name, payload):
    name = name.encode("ascii").ljust(4, b"\0")
    return (b"<h" + name + struct.pack("<IBB", len(payload), 1, ord(">")) + payload +
            b"<" + name + struct.pack("<H", sum(payload) & 0xFFFF) + b">")


def on_grid(samples, step_us):
    """Values at whole steps from 0 up to the last sample: straight lines between samples, the first one before it."""
    values, k = [], 0
    for t in range(0, samples[-1][0] + 1, step_us):
        while samples[k][0] < t:
            k += 1
        if k == 0:
            values.append(samples[0][1])
            continue
        (t0, v0), (t1, v1) = samples[k - 1], samples[k]
        values.append(float32((t - t0) * (v1 - v0) / (t1 - t0) + v0))
    return values


def run(*arguments):
    return subprocess.run([*TOOL, *map(str, arguments)], capture_output=True, text=True, timeout=300)


def run_for_bytes(*arguments):
    return subprocess.run([*TOOL, *map(str, arguments)], capture_output=True, timeout=300)


def run_in_terminal(*arguments):
    """Gives what a terminal behind standard error got to see, and the exit status."""
    master, slave = pty.openpty()
    with subprocess.Popen([*TOOL, *map(str, arguments)], stdout=subprocess.DEVNULL, stderr=slave) as process:
        os.close(slave)
        seen = b""
        while True:
            try:
                piece = os.read(master, 4096)
            except OSError:  # how Linux tells that the other side is closed
                piece = b""
            if not piece:
                break
            seen += piece
    os.close(master)
    return seen.decode("ascii"), process.returncode


class CliTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.mkdtemp(prefix="traguardo_cli_")
        cls.session = os.path.join(cls.folder, "session.qlt")
        done = run("simulate", "--laps", 3, "--seed", 11, "-o", cls.session)
        assert done.returncode == 0, done.stderr
        cls.bytes = cls.read(cls.session)
        cls.expected = SessionFile(cls.bytes)

    @classmethod
    def tearDownClass(cls):
        shutil.rmtree(cls.folder)

    def setUp(self):
        self.files_before = set(os.listdir(self.folder))

    def tearDown(self):
        left = [f for f in set(os.listdir(self.folder)) - self.files_before if f.endswith(".tmp") or ".part" in f]
        self.assertEqual(left, [], "something half-written is left behind")

    def path(self, name):
        return os.path.join(self.folder, name)

    def ok(self, *arguments):
        done = run(*arguments)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(done.stderr, "")
        return done.stdout

    def json(self, *arguments):
        return json.loads(self.ok(*arguments, "--json"))

    def logged(self, path):
        return [c for c in self.json("channels", path) if not c["derived_from_gps"]]

    def fails(self, *arguments, saying):
        done = run(*arguments)
        self.assertEqual(done.returncode, 1, arguments)
        self.assertRegex(done.stderr, r"\Atraguardo: [^\n]+\n\Z", arguments)
        self.assertIn(saying, done.stderr)

    def refuses(self, *cases):
        """Each case: the arguments of a command line that can't be understood."""
        for arguments in cases:
            done = run(*arguments)
            self.assertEqual(done.returncode, 2, arguments)
            self.assertNotEqual(done.stderr, "", arguments)

    def write(self, name, content):
        path = self.path(name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as file:
            file.write(content if isinstance(content, bytes) else content.encode("utf-8"))
        return path

    @staticmethod
    def read(path):
        with open(path, "rb") as file:
            return file.read()

    def read_text(self, path):
        """With line feeds where the system ends lines otherwise."""
        return self.read(path).decode().replace("\r\n", "\n")

    def rows(self, path):
        return list(csv.reader(self.read(path).decode("utf-8").splitlines()))

    def simulate(self, name, *options):
        """Gives the path of a new session."""
        self.ok("simulate", *options, "-o", self.path(name))
        return self.path(name)

    # --- What the file says ---------------------------------------------------------------------------------------

    def test_info(self):
        info = self.json("info", self.session)
        self.assertEqual(
            list(info),
            ["file", "vehicle", "track", "racer", "championship", "venue_type", "date", "duration_s", "laps", "channels",
             "gps_channels", "gps_raw_samples", "damage"])
        self.assertEqual(info["damage"]["bytes"] + info["damage"]["frames"], 0)
        texts = self.expected.texts
        for key, tag in (("vehicle", "VEH"), ("racer", "RCR"), ("championship", "CMP"), ("venue_type", "VTY")):
            self.assertEqual(info[key], texts[tag].decode("ascii"))
        self.assertEqual(info["track"], texts["TRK "][:32].split(b"\0")[0].decode("ascii"))
        month, day, year = texts["TMD"].decode("ascii").split("/")
        self.assertEqual(info["date"], f"{year}-{month}-{day}T{texts['TMT'].decode('ascii')}")
        self.assertEqual(info["laps"], len(self.expected.lap_marks))
        self.assertEqual(info["channels"], len(self.expected.visible()))
        self.assertEqual(info["gps_channels"], 15)
        self.assertEqual(info["gps_raw_samples"], len(self.expected.good_gps()))
        last = max(c.samples[-1][0] for c in self.expected.visible())
        self.assertAlmostEqual(info["duration_s"], (last - self.expected.first_us()) * 1e-6, places=9)
        self.assertIn(info["vehicle"], self.ok("info", self.session))

    def test_damage_is_told_and_a_wrong_clock_taken_back(self):
        starts = [m.start() for m in re.finditer(rb"\(S", self.bytes)]
        wrong = next(at for at in starts if 4000 < struct.unpack_from("<I", self.bytes, at + 2)[0] < 6000) + 2
        data = bytearray(self.bytes) + bytes(5000)
        data[wrong + 2] ^= 0x80
        path = self.write("wrong_clock.qlt", bytes(data))
        damage, recovered = (self.json("info", path, *more)["damage"] for more in ([], ["--recover"]))
        self.assertGreater(damage["refused"]["clock"], 1)
        self.assertEqual(recovered["refused"], {"broken": 0, "unknown": 0, "clock": 1, "packet": 0})
        self.assertEqual((recovered["bytes"], recovered["frames"]), (5000, 1))
        self.assertLessEqual(sum(recovered["missing_samples"].values()), 1)
        self.assertIn("--recover", self.ok("info", path))
        for command in (["channels"], ["export", "-o", "-"]):
            self.assertNotEqual(self.ok(*command, path, "--recover"), self.ok(*command, path), command)
        self.ok("laps", path, "--recover")
        self.ok("samples", path, "Speed", "--recover")
        # The report stays as it is; what is said behind it is the tool's.
        report = run_for_bytes("report", path).stdout
        self.assertTrue(report.startswith(self.read(path + ".tw3.log")))
        self.assertIn(b"Refused clocks", report)
        self.assertNotIn(b"Refused clocks", run_for_bytes("report", path, "--recover").stdout)

    def test_laps(self):
        laps = self.json("laps", self.session)
        marks = self.expected.lap_marks
        self.assertEqual([lap["lap"] for lap in laps], [mark[0] for mark in marks])
        self.assertEqual(len(self.expected.split_marks), 2 * len(marks))
        best = min(mark[2] for mark in marks)
        end = 0
        for lap, (_, _, lap_ms, _, stamp) in zip(laps, marks):
            self.assertEqual(list(lap), ["lap", "start_s", "duration_s", "gap_s", "finished"])
            self.assertTrue(lap["finished"])
            self.assertAlmostEqual(lap["start_s"], end, places=9)
            self.assertAlmostEqual(lap["duration_s"], lap_ms / 1000, places=9)
            self.assertAlmostEqual(lap["gap_s"], (lap_ms - best) / 1000, places=9)
            end = stamp / 1000 - self.expected.first_us() * 1e-6
        self.assertEqual(len(self.ok("laps", self.session).splitlines()), 1 + len(laps))

    def test_channels(self):
        channels = self.json("channels", self.session)
        expected = self.expected.visible()
        self.assertEqual(self.expected.frame_kinds, set("SMGAcC"), "the usual session has every kind of frame")
        self.assertEqual([c["index"] for c in channels], list(range(len(channels))))
        self.assertEqual([c["name"] for c in channels if c["derived_from_gps"]][:2], ["GPS Speed", "GPS Nsat"])
        channels = self.logged(self.session)
        self.assertEqual([c["name"] for c in channels], [c.name for c in expected])
        for got, want in zip(channels, expected):
            self.assertEqual(list(got), ["index", "name", "unit", "samples", "rate_hz", "min", "max",
                                         "derived_from_gps"])
            self.assertEqual(got["samples"], len(want.samples), want.name)
            self.assertAlmostEqual(got["rate_hz"] * want.period_us / 1e6, 1, places=3, msg=want.name)
            self.assertLessEqual(got["min"], got["max"], want.name)
        units = {c["name"]: c["unit"] for c in channels}
        self.assertEqual(
            {n: units[n] for n in ("Engine RPM", "Speed", "Brake Press", "Water Temp", "Battery", "Lateral Acc")},
            {"Engine RPM": "rpm", "Speed": "km/h", "Brake Press": "bar", "Water Temp": "C", "Battery": "V",
             "Lateral Acc": "g"})
        self.assertIn("Suspension FL", self.ok("channels", self.session))

    def test_samples_are_those_of_the_file(self):
        volts = float32(0.001)
        special = {"Battery": lambda b: float32(float(struct.unpack("<H", b)[0]) * volts),  # stored in millivolts
                   "Gear Code": lambda b: int(chr(b[2])), "ECU Status": lambda b: struct.unpack("<h", b[:2])[0]}
        first = self.expected.first_us()
        checked = 0
        for channel in self.expected.visible():
            layout = DECODERS.get(channel.format)
            if layout is None and channel.name not in special:
                continue
            value = special.get(channel.name, lambda b: float32(struct.unpack(layout, b)[0]))
            got = self.json("samples", self.session, channel.name)
            self.assertEqual(got["name"], channel.name)
            self.assertEqual(got["times_s"], [(t - first) * 1e-6 for t, _ in channel.samples], channel.name)
            self.assertEqual(got["values"], [value(b) for _, b in channel.samples], channel.name)
            checked += 1
        self.assertGreaterEqual(checked, 20 + len(special))

    def test_lap_and_head_choose_samples(self):
        whole = self.json("samples", self.session, "Speed")
        lap = self.json("laps", self.session)[1]
        got = self.json("samples", self.session, "Speed", "--lap", lap["lap"])
        begin, end = round(lap["start_s"] * 1e6), round((lap["start_s"] + lap["duration_s"]) * 1e6)
        inside = [(t, v) for t, v in zip(whole["times_s"], whole["values"]) if begin <= round(t * 1e6) < end]
        self.assertEqual(list(zip(got["times_s"], got["values"])), inside)
        self.assertGreater(len(inside), 1000)
        head = self.json("samples", self.session, "Speed", "--lap", lap["lap"], "--head", 5)
        self.assertEqual(head["values"], got["values"][:5])
        self.assertEqual(len(self.ok("samples", self.session, "Speed", "--head", 3).splitlines()), 4)

    # --- Export ---------------------------------------------------------------------------------------------------

    def test_csv_reads_back_to_the_same_doubles(self):
        out = self.path("two.csv")
        self.ok("export", self.session, "--channel", "Brake Press", "--channel", "GPS Speed", "-o", out)
        rows = self.rows(out)
        self.assertEqual(rows[0], ["channel", "unit", "time", "value"])
        for name, unit in (("Brake Press", "bar"), ("GPS Speed", "m/s")):
            samples = self.json("samples", self.session, name)
            self.assertEqual([r for r in rows if r[0] == name and r[1] != unit], [])
            mine = [r for r in rows[1:] if r[0] == name]
            self.assertEqual([float(r[2]) for r in mine], samples["times_s"])
            self.assertEqual([float(r[3]) for r in mine], samples["values"])

    def test_export_without_names_has_every_channel(self):
        names = {line.split(",")[0] for line in self.ok("export", self.session, "--lap", 2, "-o", "-").splitlines()[1:]}
        self.assertTrue({c.name for c in self.expected.visible()} <= names)
        self.assertIn("GPS Latitude", names)
        self.assertNotIn("ECEF position_X", names)

    def test_tracks(self):
        gps = self.json("gps", self.session)
        self.assertEqual(gps["fixes"], len(self.expected.good_gps()))
        accuracies = [struct.unpack_from("<I", g, 28)[0] for g in self.expected.good_gps()]
        self.assertAlmostEqual(gps["quality_cm"], sum(accuracies) / len(accuracies), delta=0.05)
        # The start line of the simulator lies at 44.5 north, 11.3 east, on a circuit less than a kilometre around it.
        self.assertTrue(44.49 < gps["latitude_min_deg"] < 44.5 < gps["latitude_max_deg"] < 44.51, gps)
        self.assertTrue(11.28 < gps["longitude_min_deg"] < 11.3 < gps["longitude_max_deg"] < 11.32, gps)
        self.assertTrue(45 < gps["altitude_min_m"] < 60 < gps["altitude_max_m"] < 75, gps)
        speeds = self.json("samples", self.session, "GPS Speed")
        self.assertAlmostEqual(gps["distance_m"] / (sum(speeds["values"]) * 0.01), 1, delta=0.02)
        self.assertEqual(speeds["times_s"][:3], [0.0, 0.01, 0.02])
        raw = self.json("samples", self.session, "ECEF position_X")["times_s"]
        self.assertLess(abs(speeds["times_s"][-1] - raw[-1]), 0.02)

        geojson = self.path("track.geojson")
        self.ok("export", self.session, "--geojson", "-o", geojson)
        feature = json.loads(self.read(geojson))["features"][0]
        points = feature["geometry"]["coordinates"]
        self.assertEqual(len(points), gps["fixes"])
        self.assertEqual(len(feature["properties"]["coordTimes"]), gps["fixes"])
        self.assertAlmostEqual(min(p[1] for p in points), gps["latitude_min_deg"], places=8)

    @unittest.skipUnless(shutil.which("gpsbabel"), "gpsbabel is not installed")
    def test_gpx_is_read_by_another_program(self):
        gpx = self.path("track.gpx")
        self.ok("export", self.session, "--gpx", "--lap", 2, "-o", gpx)
        done = subprocess.run(["gpsbabel", "-t", "-i", "gpx", "-f", gpx, "-o", "geojson", "-F", "-"],
                              capture_output=True, text=True, timeout=60)
        self.assertEqual(done.returncode, 0, done.stderr)
        raw = self.json("samples", self.session, "ECEF position_X", "--lap", 2)["values"]
        self.assertGreater(len(raw), 100)
        points = [p for f in json.loads(done.stdout)["features"] for p in f["geometry"]["coordinates"]]
        self.assertEqual(len(points), len(raw))
        self.assertTrue(all(44.49 < p[1] < 44.51 and 11.28 < p[0] < 11.32 for p in points))
        self.assertIn(b"<time>2024-05-12T14:", self.read(gpx))

    # --- The simulator --------------------------------------------------------------------------------------------

    def test_same_seed_same_bytes(self):
        self.assertEqual(self.read(self.simulate("again.qlt", "--laps", 3, "--seed", 11)), self.bytes)
        self.assertNotEqual(self.read(self.simulate("other.qlt", "--laps", 3, "--seed", 12)), self.bytes)
        packed = self.simulate("packed.qlc", "--laps", 3, "--seed", 11)
        self.assertEqual(zlib.decompress(self.read(packed)), self.bytes)
        self.assertEqual(self.json("laps", packed), self.json("laps", self.session))

    def test_frames_channels_and_rates(self):
        for frames, kinds in (("single", {"S"}), ("block", {"M", "S"}), ("group", {"G", "S"})):
            with self.subTest(frames=frames):
                path = self.simulate(frames + ".qlt", "--minutes", 0.2, "--channels", 60, "--rate", 50, "--frames",
                                     frames)
                expected = SessionFile(self.read(path))
                self.assertEqual(expected.frame_kinds, kinds)  # the odometer's packets are always single
                channels = self.logged(path)
                self.assertEqual([c["samples"] for c in channels], [600] * 60)
                self.assertEqual([len(c.samples) for c in expected.visible()], [600] * 60)

    def test_lap_that_the_end_cuts(self):
        path = self.simulate("minutes.qlt", "--minutes", 4, "--channels", 8)
        marks = SessionFile(self.read(path)).lap_marks
        laps = self.json("laps", path)
        self.assertGreaterEqual(len(marks), 1)
        self.assertEqual(len(laps), len(marks) + 1)
        self.assertAlmostEqual(laps[-1]["start_s"] + laps[-1]["duration_s"], self.json("info", path)["duration_s"],
                               delta=0.2)
        # It has no mark, is no lap time to compare with, and never the best.
        self.assertLess(laps[-1]["duration_s"], min(mark[2] for mark in marks) / 1000)
        self.assertEqual([lap["finished"] for lap in laps], [True] * len(marks) + [False])
        self.assertEqual((min(lap["gap_s"] for lap in laps[:-1]), laps[-1]["gap_s"]), (0, None))
        self.assertRegex(self.ok("laps", path).splitlines()[-1], r" unfinished\Z")

    def test_damaged_session(self):
        path = self.simulate("damaged.qlt", "--laps", 3, "--seed", 11, "--damage", 40)
        damaged = self.read(path)
        self.assertNotEqual(damaged, self.bytes)
        self.assertLessEqual(abs(len(damaged) - len(self.bytes)), 40)
        channels = self.logged(path)
        self.assertEqual([c["name"] for c in channels], [c.name for c in self.expected.visible()])
        total = sum(len(c.samples) for c in self.expected.visible())
        self.assertTrue(0 < sum(c["samples"] for c in channels) <= total)

    # --- The inside of a session ------------------------------------------------------------------------------------

    def test_page_or_one_line_why_there_is_none(self):
        path = self.path("session.html")
        if "was built without its page" in run("page", self.session, "-o", path).stderr:
            self.fails("page", self.session, "-o", path, saying="scripts/setup.sh bundle")
            return
        self.ok("page", self.session, "-o", path)
        head = json.loads(re.search(r' id="head">(.*?)</script>', self.read(path).decode("utf-8"), re.S).group(1))
        self.assertEqual([c["count"] for c in head["files"][0]["channels"] if c["kind"] == "logged"],
                         [len(c.samples) for c in self.expected.visible()])

    def test_derived_channels_only_if_asked_for(self):
        info = self.json("info", self.session, "--verbose")
        self.assertEqual(info["derived_channels"], [])
        self.assertIn("Derived channels", self.ok("info", self.session, "--verbose"))
        self.assertNotIn("Derived channels", self.ok("info", self.session))
        legacy = self.simulate("older.wmp", "--laps", 2)
        derived = self.json("info", legacy, "--verbose")["derived_channels"]
        self.assertTrue({"Speed ms", "Engine krpm", "Lap Clock"} <= set(derived), derived)
        self.assertTrue({"Engine", "Speed #1"}.isdisjoint(derived), derived)
        self.assertNotIn("derived_channels", self.json("info", legacy))

    def test_missing_trace_file(self):
        for name, trace in (("lonely.wmp", "lonely.jts"), ("LOUD.WMP", "LOUD.JTS")):
            self.fails("info", self.write(name, "anything"), saying="trace file is missing, which was sought as " +
                       self.path(trace))

    @unittest.skipIf(sys.argv[1:] and ".exe" in sys.argv[1], "no pseudo-terminal there")
    def test_bar_while_a_large_file_is_opened(self):
        large = self.write("large.qlt", self.bytes)
        os.truncate(large, 33 << 20)  # the rest is passed over
        seen, status = run_in_terminal("info", large)
        self.assertEqual(status, 0, seen)
        self.assertRegex(seen, r"\r\[#+ +\] +\d+ %")
        self.assertRegex(seen, r"\r {40,}\r\Z")  # nothing stays on the line
        self.assertEqual(run_in_terminal("info", self.session), ("", 0))
        self.ok("info", large)  # no terminal, no bar

    # --- Report -----------------------------------------------------------------------------------------------------

    SECTIONS = {"--channels": b"Tot Hz: ", "--laps": b"Laps in data stream",
                "--gps": b"GPS samples in normal data stream", "--gps-samples": b"\nGPS samples\n"}

    def test_report(self):
        path = self.write("reported.qlt", self.bytes)
        log = path + ".tw3.log"
        for chosen in ([], ["--laps"], ["--channels", "--gps"], ["--gps-samples"]):
            with self.subTest(chosen=chosen):
                done = run_for_bytes("report", path, *chosen)
                self.assertEqual(done.returncode, 0, done.stderr)
                self.assertEqual(done.stdout, self.read(log))
                self.assertEqual(done.stderr, f"report: {log}\n".encode())
                self.assertIn(b"User information", done.stdout)
                for option, text in self.SECTIONS.items():
                    self.assertEqual(text in done.stdout.replace(b"\r\n", b"\n"), not chosen or option in chosen, option)
        done = run_for_bytes("report", self.write("for_report.qlc", zlib.compress(self.bytes)))
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(done.stdout, self.read(self.path("for_report.qlt.tw3.log")))
        self.assertIn(self.path("for_report.qlt\n").encode(), done.stderr)

    def test_tags_go_to_files_of_their_own(self):
        path = self.write("tagged.qlt", self.bytes + tag("+ABC", b"one") + tag("+ABC", b"two"))
        done = run_for_bytes("report", path, "--tag", "ABC=.abc", "--tag", "+XYZ=.xyz", "--tag", "ABC=.second")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(self.read(path + ".abc"), b"onetwo")
        self.assertEqual(self.read(path + ".xyz"), b"")
        self.assertFalse(os.path.exists(path + ".second"))
        for suffix in (".abc", ".xyz", ".tw3.log"):
            self.assertIn((path + suffix).encode(), done.stderr)
        self.assertEqual(done.stdout, self.read(path + ".tw3.log"))
        self.refuses(*(("report", path, "--tag", bad) for bad in ("ABC", "ABCD=.x", "=.x", "+=.x", "ABC=", "A;B=.x")))

    def test_report_of_a_file_that_cannot_be_read(self):
        # Without a single tag there is no session, but a report.
        junk = self.write("junk.qlt", "no tags here" * 100)
        done = run_for_bytes("report", junk)
        self.assertEqual(done.returncode, 1)
        self.assertNotEqual(done.stdout, b"")
        self.assertEqual(done.stdout, self.read(junk + ".tw3.log"))
        self.assertRegex(done.stderr, rb"\ntraguardo: cannot read [^\n]+\n\Z")
        # An empty file has none, and what lies there from before is not its own.
        empty = self.write("nothing.qlt", "")
        self.write("nothing.qlt.tw3.log", "of yesterday")
        done = run_for_bytes("report", empty)
        self.assertEqual((done.returncode, done.stdout), (1, b""))
        self.fails("report", self.path("missing.qlt"), saying="No such file")
        # The older family has no report, and says so by what it would hold.
        self.fails("report", self.write("older_report.wmp", "x"), saying="trace file is missing")
        self.assertEqual(self.ok("report", self.simulate("older_report.wmp", "--laps", 2)), "Every channel is whole.\n")

    # --- Unpack -----------------------------------------------------------------------------------------------------

    def test_unpack(self):
        packed = self.write("whole.qlc", zlib.compress(self.bytes) + b"behind the end")
        self.ok("unpack", packed)
        self.assertEqual(self.read(self.path("whole.qlt")), self.bytes)
        elsewhere = self.path("elsewhere.bin")
        self.assertIn(str(len(self.bytes)), self.ok("unpack", packed, "-o", elsewhere))
        self.assertEqual(self.read(elsewhere), self.bytes)
        self.assertEqual(run_for_bytes("unpack", packed, "-o", "-").stdout, self.bytes)

    def test_unpack_of_damaged_files(self):
        packed = zlib.compress(self.bytes)
        cut = self.write("cut.qlc", packed[: len(packed) // 2])
        self.fails("unpack", cut, saying="damaged or cut short")
        saved = self.read(self.path("cut.qlt"))
        self.assertGreater(len(saved), len(self.bytes) // 10)
        self.assertTrue(self.bytes.startswith(saved))
        wrong_sum = self.write("wrong_sum.qlc", packed[:-1] + bytes([packed[-1] ^ 1]))
        self.fails("unpack", wrong_sum, saying="damaged or cut short")
        self.assertEqual(self.read(self.path("wrong_sum.qlt")), self.bytes)
        for name, content in (("plain.qlc", self.bytes), ("hollow.qlc", b"")):
            kept = self.write("kept.qlt", "old")
            self.fails("unpack", self.write(name, content), "-o", kept, saying="no compressed session")
            self.assertEqual(self.read(kept), b"old")

    def test_unpack_to_places_that_do_not_serve(self):
        packed = self.write("placed.qlc", zlib.compress(self.bytes))
        self.fails("unpack", self.path("missing.qlc"), saying="No such file")
        self.fails("unpack", packed, "-o", self.folder, saying="Is a directory")
        self.fails("unpack", packed, "-o", self.path("no_such_folder/out"), saying="cannot write")
        self.fails("unpack", packed, "-o", packed, saying="onto itself")
        self.fails("unpack", self.session, saying="onto itself")
        self.assertEqual(self.read(self.session), self.bytes)
        if os.path.exists("/dev/full") and not is_windows():
            self.fails("unpack", packed, "-o", "/dev/full", saying="No space left")
            self.assertFalse(os.path.isfile("/dev/full"))

    # --- Formulas ---------------------------------------------------------------------------------------------------

    def test_formula_over_a_channel(self):
        got = self.json("eval", "Speed*2", self.session, "--rate", 100)
        self.assertEqual(list(got), ["code", "rate_hz", "times", "values"])
        self.assertEqual((got["code"], got["rate_hz"]), (0, 100))
        first = self.expected.first_us()
        speed = [(t - first, struct.unpack("<f", b)[0]) for t, b in self.expected.named("Speed").samples]
        want = [2 * v for v in on_grid(speed, 10000)]
        self.assertEqual(got["values"][: len(want)], want)
        # The axis goes on to the next whole second behind the last sample of all.
        self.assertLess(len(got["values"]) - len(want), 300)
        self.assertEqual(got["times"], [i * 10000 * 1e-6 for i in range(len(got["values"]))])

        out = self.path("formula.csv")
        self.assertEqual(self.ok("eval", "Speed*2", self.session, "--rate", 100, "-o", out), "")
        rows = self.rows(out)
        self.assertEqual(rows[0], ["time", "value"])
        self.assertEqual([float(r[0]) for r in rows[1:]], got["times"])
        self.assertEqual([float(r[1]) for r in rows[1:]], got["values"])
        self.assertEqual(len(self.ok("eval", "Speed*2", self.session, "--rate", 100).splitlines()), len(rows))

    def test_formula_begins_anew_with_each_lap_and_takes_the_rate_of_the_fastest_channel(self):
        fastest = 1e6 / min(c.period_us for c in self.expected.visible() if c.period_us > 0)
        self.assertEqual(self.json("eval", "Gear", self.session)["rate_hz"], fastest)
        got = self.json("eval", "lap_integ(1)", self.session, "--rate", 10)
        falls = [t for t, a, b in zip(got["times"][1:], got["values"], got["values"][1:]) if b < a]
        ends = [lap["start_s"] + lap["duration_s"] for lap in self.json("laps", self.session)]
        self.assertEqual(len(falls), len(ends) - 1)
        for fall, end in zip(falls, ends):
            self.assertAlmostEqual(fall, end, delta=0.11)

    def test_formulas_that_cannot_be_used(self):
        for formula, code, position, column, message in (
            ("Speed $ 2", 100, 6, 6, "Error: unknown symbol"),
            ("Speed*Nope", 102, 2, 6, "Error: an identifier, a constant or a symbol is unknown; the nearest names are "
             '"Gear", "Speed" and "GPS Slope"'),
            ("Gear+max(Speed)", 105, 2, 5, "Error: the number of parameters of the function is not correct"),
            ("1+", 108, 2, 2, "Error: the element is not correct"),
        ):
            with self.subTest(formula=formula):
                done = run("eval", formula, self.session)
                self.assertEqual((done.returncode, done.stdout), (1, ""))
                self.assertEqual(done.stderr, f"traguardo: {message}\n  {formula}\n  {' ' * column}^\n")
                done = run("eval", formula, self.session, "--json")
                self.assertEqual((done.returncode, done.stderr), (1, ""))
                self.assertEqual(json.loads(done.stdout),
                                 {"code": code, "position": position, "message": message.split(";")[0]})
        never = self.path("never.csv")
        self.assertEqual(run("eval", "Nope", self.session, "-o", never).returncode, 1)
        self.assertFalse(os.path.exists(never))
        self.fails("eval", "1", self.path("missing.qlt"), saying="No such file")
        self.refuses(*(("eval", "1", self.session, "--rate", rate) for rate in (0, -5, 1e9)))

    # --- Regulations ------------------------------------------------------------------------------------------------

    BOOST = ("BarometricPressure=1.01\nRPM=Engine RPM\nPboost=Engine RPM\nThrottle=Throttle\nMaxPboost=limits.txt\n")

    def boost(self, folder, limit_bar, lines=BOOST):
        """The engine speed stands for the boost pressure, as so many mbar."""
        self.write(folder + "/limits.txt", f"1000={limit_bar}\n30000={limit_bar}\n")
        return self.write(folder + "/FIA.txt", lines)

    def test_boost_limit(self):
        report = ("Run 1 of file session.qlt\n\tNo output requested, to see computation step values please edit file "
                  "FIA.txt and add a line with 'output=1'\n")
        for folder, limit_bar, status, saying in (
            ("boost_kept", 900, 0, "Run 1: no flag\nVerdict: the boost pressure kept to its limit\n"),
            ("boost_broken", 0.001, 3, "Run 1: flag raised at "),
        ):
            configuration = self.boost(folder, limit_bar)
            for _ in range(2):  # a check begins its report anew
                done = run("check", self.session, "--fia", configuration)
                self.assertEqual((done.returncode, done.stderr), (status, ""))
                self.assertIn(saying, done.stdout)
                self.assertIn("Report: " + self.path(folder + "/FIA_comp_output.txt"), done.stdout.replace("\\", "/"))
                self.assertEqual(self.read_text(self.path(folder + "/FIA_comp_output.txt")), report)

    def test_boost_limit_that_cannot_be_computed(self):
        other = self.boost("boost_other", 900, "{\nracer=Nobody\n" + self.BOOST + "}\n")
        done = run("check", self.session, "--fia", other)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertIn("Run 1: not computed: No matching vehicle", done.stdout)
        self.assertIn("Verdict: none", done.stdout)
        missing = self.BOOST.replace("RPM=Engine RPM\n", "RPM=Nothing\n", 1)
        done = run("check", self.session, "--fia", self.boost("boost_missing", 900, missing))
        self.assertEqual(done.returncode, 1)
        self.assertIn("Run 1: not computed: Can't find any RPM channel", done.stdout)
        self.assertRegex(done.stderr, r"\Atraguardo: [^\n]+\n\Z")

    def test_limiter(self):
        legacy = self.simulate("limited.wmp", "--laps", 2, "--seed", 5)
        configuration = self.write("limiter/FMI-limiter.txt", "")
        done = run("check", legacy, "--fmi", configuration)  # writes itself a section that no engine of ours breaks
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertIn("was added to " + configuration, done.stdout)
        self.assertIn("Verdict: the engine kept to its limit", done.stdout)
        self.assertNotIn("made for .wmp", done.stdout)
        logger = re.search(r"\{\nid=(\d+)\n.*limiter=13000\n", self.read_text(configuration), re.S).group(1)

        limit = sorted(self.json("samples", legacy, "Engine")["values"])[-100]
        self.write("limiter/FMI-limiter.txt", f"{{\nid={logger}\nlimiter={limit}\n}}\n")
        done = run("check", legacy, "--fmi", configuration)
        self.assertEqual((done.returncode, done.stderr), (3, ""))
        got = float(re.search(r"Run 1: (\S+) s over the limit\nVerdict: the engine was over", done.stdout).group(1))
        self.assertTrue(0 < got < 100 / 50, "at most the hundred highest of 50 samples a second")
        report = self.read_text(self.path("limiter/FMI-output.txt"))
        self.assertIn(f"{got:g} seconds over limiter for logger id {logger}: with limiter ", report)

    def test_limiter_without_an_engine(self):
        configuration = self.write("no_engine/FMI-limiter.txt", "")
        done = run("check", self.session, "--fmi", configuration)
        self.assertEqual(done.returncode, 1)
        self.assertIn("Can't find any 'Engine' channel", done.stdout)
        self.assertIn("these regulations are made for .wmp sessions", done.stdout)
        serial, = struct.unpack_from("<I", self.expected.texts["SRC"], 12)
        self.assertIn(f"\nid={serial}\n", self.read_text(configuration))

    def test_configurations_that_do_not_serve(self):
        other = self.write("other_name/rules.txt", self.BOOST)
        self.fails("check", self.session, "--fia", other, saying="FIA.txt")
        self.fails("check", self.session, "--fmi", other, saying="FMI-limiter.txt")
        self.fails("check", self.session, "--fia", self.path("no_such_folder/FIA.txt"), saying="No such file")
        both = self.boost("boost_both", 900)
        self.refuses(("check", self.session), ("check", self.session, "--fia", both, "--fmi", both))

    def with_speeds(self, name, mph_at):
        """The session with another speed, over the seconds from its start."""
        speed = self.expected.named("Speed")
        data = bytearray(self.bytes)
        for (time_us, _), place in zip(speed.samples, speed.places):
            seconds = (time_us - self.expected.first_us()) * 1e-6
            struct.pack_into("<f", data, place, mph_at(seconds) * 1.609344)
        return self.write(name, bytes(data))

    def test_prediction(self):
        tables = self.path("tables")
        standing = self.with_speeds("standing.qlt", lambda seconds: 0)
        self.fails("predict", standing, "--tables", tables, saying="no prediction for run 1")
        self.assertTrue(os.path.exists(os.path.join(tables, "user/et_prediction/Default.etp")), "the reference run")
        driven = self.with_speeds("driven.qlt", lambda seconds: min(20 * seconds, 120))
        predicted = [float(re.search(r"^Predicted +([\d.]+) s$", self.ok("predict", driven, "--length", length, "--tables",
                                                                          tables), re.M).group(1))
                     for length in (330, 660)]
        self.assertTrue(0.5 < predicted[0] < predicted[1] < 30, predicted)
        usual = self.ok("predict", driven, "--tables", tables)
        named = self.ok("predict", driven, "--tables", tables, "--length", 660, "--run", 1, "--channel", "Speed")
        self.assertEqual(named, usual)

        for options, saying in ((("--run", 7), "no run 7"), (("--channel", "Engine RPM"), "is no speed"),
                                (("--channel", "Nothing"), 'no channel "Nothing"')):
            self.fails("predict", driven, "--tables", tables, *options, saying=saying)
        self.fails("predict", driven, "--tables", driven, saying="no table")
        self.refuses(("predict", driven, "--length", 0))

    # --- Failures -------------------------------------------------------------------------------------------------

    def test_files_that_cannot_be_opened(self):
        never, folder = self.path("never.csv"), self.path("folder.qlt")
        os.mkdir(folder)
        files = {self.path("missing.qlt"): "No such file", self.write("empty.qlt", ""): "no session can be read",
                 self.write("notes.txt", "no session\n"): "not a kind of session file", folder: "Is a directory"}
        for command in (["info"], ["laps"], ["channels"], ["samples", "Speed"], ["export", "-o", never], ["gps"]):
            for file, saying in files.items():
                with self.subTest(command=command, file=file):
                    self.fails(command[0], file, *command[1:], saying=saying)
        if os.geteuid() != 0:
            os.chmod(self.path("notes.txt"), 0)
            self.fails("info", self.path("notes.txt"), saying="Permission denied")
        self.fails("samples", self.session, "Nothing", saying='no channel "Nothing"')
        self.fails("export", self.session, "--channel", "Nothing", "-o", never, saying='no channel "Nothing"')
        for lap in (-1, 0, 4):
            self.fails("samples", self.session, "Speed", "--lap", lap, saying=f"no lap {lap}")
        self.assertFalse(os.path.exists(never))

    def test_outputs_that_cannot_be_written(self):
        lost = self.path("no_such_folder/out")
        self.fails("export", self.session, "-o", lost, saying="cannot write")
        self.fails("simulate", "-o", lost + ".qlt", saying="cannot write")
        self.fails("export", self.session, "-o", self.folder, saying="Is a directory")
        if not os.path.exists("/dev/full") or is_windows():
            return
        self.fails("export", self.session, "-o", "/dev/full", saying="No space left")
        self.fails("simulate", "-o", "/dev/full", saying="No space left")
        for command in (["info"], ["laps", "--json"], ["channels"], ["gps"]):
            with open("/dev/full", "wb") as full:
                done = subprocess.run([*TOOL, command[0], self.session, *command[1:]], stdout=full,
                                      stderr=subprocess.PIPE, text=True, timeout=300)
            self.assertEqual(done.returncode, 1, command)
            self.assertRegex(done.stderr, r"\Atraguardo: cannot write standard output[^\n]*\n\Z")

    def test_failed_export_keeps_the_old_file(self):
        out = self.write("kept.csv", "old\n")
        self.fails("export", self.session, "--channel", "Nothing", "-o", out, saying="no channel")
        self.assertEqual(self.read(out), b"old\n")
        self.ok("export", self.session, "--channel", "Gear", "-o", out)
        self.assertEqual(self.rows(out)[0], ["channel", "unit", "time", "value"])

    def test_wrong_command_lines(self):
        self.refuses([], ["fly"], ["info"], ["export", self.session], ["simulate"],
                     ["export", self.session, "--gpx", "--geojson", "-o", "x"])
        self.fails("simulate", "--rate", 7, "-o", self.path("never.qlt"), saying="divisor of 1000")
        self.assertEqual(run("--help").returncode, 0)
        self.assertIn("traguardo", run("--version").stdout)


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    TOOL[:] = shlex.split(sys.argv.pop(1))
    unittest.main()
