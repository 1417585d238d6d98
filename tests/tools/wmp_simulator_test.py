# SPDX-License-Identifier: MIT
"""Sessions of older loggers: what the simulator writes, and what the command-line host makes of it.

    python3 wmp_simulator_test.py PATH_OF_TRAGUARDO [unittest options]

The parser below knows every version of the files and nothing of the library or the simulator: it finds the records by
their offsets and holds lengths and sums against each other. Needs Debian's python3.
"""
import collections
import functools
import json
import os
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest

TOOL = ""

VERSIONS = (100, 200, 320, 400, 450, 451, 500, 550, 600, 700)
RATES = (1, 2, 10, 20, 50, 100, 200, 500, 1000, 5, 0, 4, 8)
FORMULAS = ["Speed ms", "Engine krpm", "Acc Calc", "Lap Dist", "Lap Clock"]
OLD_NAMES = ["Engine", "Speed #1", "Water Temp", "Exhaust", "Oil Press", "AccLat", "AccLong", "Yaw Rate", "Steering",
             "Throttle", "Suspension", "Battery", "Lambda", "Torque"]
NAMES = ["Engine", "Speed #1", "Water Temp", "Oil Temp", "Cold Junction", "Exhaust", "Oil Press", "Brake Press",
         "Airbox", "AccLat", "AccLong", "AccVert", "Yaw Rate", "Steering", "Throttle", "Suspension", "Battery", "Gear",
         "Lambda", "Torque"]
EXTENDED_NAMES = ["Switches", "GPS_Speed"]

# What a car on a circuit shows, whatever filters a reader runs.
BOUNDS = {
    "Engine": (0, 7750), "Speed #1": (0, 290), "GPS_Speed": (0, 290), "Water Temp": (30, 95), "Oil Temp": (25, 110),
    "Cold Junction": (20, 45), "Exhaust": (350, 870), "Oil Press": (0, 7), "Brake Press": (-1, 90),
    "Airbox": (0.9, 1.1), "AccLat": (-1.7, 1.7), "AccLong": (-1.7, 1.2), "AccVert": (0.85, 1.15), "Yaw Rate": (-89, 89),
    "Steering": (-150, 150), "Throttle": (-1, 101), "Suspension": (-20, 100), "Battery": (13, 14.2), "Gear": (1, 6),
    "Lambda": (0.8, 1.1), "Torque": (-60, 400), "Switches": (0, 9999), "Shaft": (0, 8000),
}
UNITS = {"Engine": "rpm", "Speed #1": "km/h", "Oil Temp": "C", "Oil Press": "bar", "Brake Press": "bar",
         "Airbox": "bar", "AccLat": "g", "AccVert": "g", "Steering": "mm", "Battery": "V", "Gear": "#",
         "Lambda": "lambda", "Torque": "Nm"}


def text(field):
    return field.split(b"\0")[0].decode("ascii")


class Channel:
    def __init__(self, record, extension=b""):
        self.name, self.unit = text(record[:20]), record[20:30]
        self.origin, = struct.unpack_from("<I", record, 38)
        self.sensor, = struct.unpack_from("<H", record, 64)
        rate, self.count = struct.unpack_from("<HI", record, 70)
        self.rate = RATES[rate]
        self.parameters = struct.unpack_from("<5f", record, 92)
        gain, offset = struct.unpack_from("<2f", record, 132)
        assert (gain, offset) == (1, 0), self.name
        self.formula = text(record[140:396])
        self.is_current = struct.unpack_from("<I", record, 656)[0] == 1
        self.is_digit = len(extension) > 0 and extension[111] != 0
        self.words = []


class OldChannel:
    def __init__(self, record, duration_ms):
        self.name, self.unit = text(record[:20]), record[20:30]
        self.sensor, = struct.unpack_from("<H", record, 36)
        code, = struct.unpack_from("<H", record, 46)
        assert code <= 5, self.name
        self.rate = RATES[code + 1]
        self.count = duration_ms * self.rate // 1000
        self.values = []


Lap = collections.namedtuple("Lap", "start time number samples run counts true_time")


def read_lap(record):
    start, time = struct.unpack_from("<2I", record, 0)
    return Lap(start, time, struct.unpack_from("<h", record, 16)[0], struct.unpack_from("<I", record, 34)[0],
               struct.unpack_from("<H", record, 83)[0], struct.unpack_from("<H", record, 112)[0],
               struct.unpack_from("<I", record, 118)[0])


class WmpFile:
    """A sound file, read by the offsets of its version. The first wrong byte count or sum is an assertion."""

    def __init__(self, data):
        self.data, self.at = data, 0
        self.version, = struct.unpack_from("<H", data, 2)
        self.groups, self.runs, self.extras = 0, [], []
        self.configuration = self.identity = self.extended_names = b""
        if self.version < 500:
            self.header, self.names = self.take(150), self.take(360)
        elif self.version < 600:
            self.header, self.configuration, self.names, self.extended_names = map(self.take, (150, 874, 360, 664))
        else:
            self.header, self.configuration = self.group(150, 874)
            self.names, self.extended_names = self.group(360, 664)
            self.identity, = self.group(128)
        self.read_header()
        self.read_tables()
        self.read_samples()

    def take(self, size):
        piece = self.data[self.at : self.at + size]
        assert len(piece) == size, self.at
        self.at += size
        return piece

    def group(self, *sizes):
        total, = struct.unpack_from("<I", self.take(32), 4)
        records = [self.take(size) for size in sizes]
        assert total == sum(map(sum, records)), f"sum of group {self.groups}"
        self.groups += 1
        return records

    def read_header(self):
        header = self.header
        assert struct.unpack_from("<H", header, 0)[0] == 22349
        self.date = text(header[44:84])
        length, self.duration_ms, self.value_size, m, laps, logged, derived, self.reference, self.family, raw = (
            struct.unpack_from("<3I4h14xhBI", header, 84))
        assert length == len(self.data)
        assert derived == m - logged
        self.counts, self.raw_size = (m, laps, logged), raw
        self.best = struct.unpack_from("<HI", header, 125) + struct.unpack_from("<H", header, 147)

    def read_tables(self):
        m, laps, logged = self.counts
        if self.version <= 320:
            self.channels = [OldChannel(self.take(98), self.duration_ms) for _ in range(m)]
            self.laps = [read_lap(self.take(134)) for _ in range(laps)]
        elif self.version < 500:
            self.channels = [Channel(self.take(668)) for _ in range(m)]
            self.laps = [read_lap(self.take(134)) for _ in range(laps)]
        elif self.version < 600:
            self.channels = [Channel(self.take(668), self.take(356)) for _ in range(m)]
            self.laps = [read_lap(self.take(256)[:134]) for _ in range(laps)]
        else:
            runs, extras = struct.unpack_from("<H2xH", self.configuration, 18)
            self.channels = [Channel(*self.group(668, 356)) for _ in range(m)]
            self.laps = [read_lap(self.group(134, 122)[0]) for _ in range(laps)]
            self.runs = [self.group(4096)[0] for _ in range(runs)]
            self.extras = [self.group(64)[0] for _ in range(extras)]
        self.logged, self.derived = self.channels[:logged], self.channels[logged:]
        self.tables_end = self.at

    def read_samples(self):
        m, laps, _ = self.counts
        total = sum(c.count for c in self.logged)
        assert self.value_size == 4 * sum(c.count for c in self.channels)
        if self.version > 320:
            assert self.raw_size == 2 * total
        if self.version <= 320:
            for channel in self.logged:
                channel.values = struct.unpack(f"<{channel.count}f", self.take(4 * channel.count))
        elif self.version == 500:
            offset, = struct.unpack_from("<I", self.configuration, 0)
            assert offset == 65536 + 65536 * ((laps + 4 * (m + 2)) // 256) and offset >= self.at
            self.dump = Dump(self.data[offset:], self.family)
            assert len(self.dump.words) == len(self.logged)
            for channel, number in zip(self.logged, sorted(self.dump.words)):
                channel.words = self.dump.words[number]
                assert len(channel.words) == channel.count, channel.name
            return
        elif self.version == 550:
            areas = ((256 * (laps + 4 * m) + 2047) & ~0xFFFF) + 65536
            assert areas >= self.at and len(self.logged) <= 2
            for i, channel in enumerate(self.logged):
                assert channel.count <= 32768
                channel.words = struct.unpack_from(f"<{channel.count}H", self.data, areas + 65536 * i)
            dump_size = len(self.data) - areas - 131072
            assert len(self.data) == dump_size + 196608 + 65536 * ((laps + 8 + 4 * m) // 256)
            return
        else:
            for channel in self.logged:
                channel.words = struct.unpack(f"<{channel.count}H", self.take(2 * channel.count))
        assert self.at == len(self.data), "bytes are left"


class Dump:
    """The stream of a logger's memory, taken apart without mercy for damage."""

    def __init__(self, data, family):
        self.is_old = data[195] + 256 * data[194] + 65536 * data[193] < 0x10300
        schedule = data[200 : 200 + {5: 500, 7: 1000}[family]]
        self.round = [e for e in schedule if e < 24 or (family == 7 and 32 <= e <= 249)]
        assert any(data[:24]) and self.round
        self.words, self.lap_ends, self.lap_records, self.blocks = collections.defaultdict(list), 0, [], 0
        at, position, total = 24576 if self.is_old else 65536, 0, 0

        def word():
            nonlocal at
            at += 2
            return struct.unpack_from("<H", data, at - 2)[0]

        while True:
            value = word()
            low, high = value & 0xFF, value >> 8
            if value == 0xFFFF:
                assert data[at : at + 512] == b"\xFF" * 512, "the end is a long run"
                break
            if high == 0xD0:
                assert low == total & 0xFF and position == 0, at
                total, self.blocks = 0, self.blocks + 1
                continue
            total += low + high
            if high == 0x90:
                if low:
                    self.lap_ends += 1
                else:
                    assert position == 0, at
            elif high == 0xD1:
                for _ in range(3):
                    value = word()
                    total += (value & 0xFF) + (value >> 8)
            elif high == 0xD2:
                record = [word() for _ in range(4)]
                total += sum((w & 0xFF) + (w >> 8) for w in record)
                assert word() & 0xFF == total & 0xFF, at
                total = 0
                self.lap_records.append((record[0] & 0xFFF, record[1] | record[2] << 16))
            else:
                self.words[self.round[position]].append(value)
                position = (position + 1) % len(self.round)


class Trace:
    def __init__(self, data):
        assert data[:4] == data[16:20] == b"HEAD" and data[48:52] == b"NSOL"
        count, = struct.unpack_from("<I", data, 30)
        assert len(data) == 64 + 64 * count
        self.records = [data[at + 4 : at + 60] for at in range(64, len(data), 64)]
        assert all(data[at : at + 4] == b"NSOL" for at in range(64, len(data), 64))

    def good(self):
        return [r for r in self.records if 3 <= r[14] <= 249]


def run(*arguments):
    return subprocess.run([TOOL, *map(str, arguments)], capture_output=True, text=True, timeout=300)


def for_every_version(test):
    @functools.wraps(test)
    def run_test(self):
        for version, path in self.sessions.items():
            with self.subTest(version=version):
                test(self, version, path, self.file(path))
    return run_test


class WmpSimulatorTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.mkdtemp(prefix="traguardo_wmp_")
        cls.sessions = {}
        for version in VERSIONS:
            cls.sessions[version] = cls.simulate(f"version_{version}", "--version", version, "--laps", 3, "--seed", 4)
        cls.logger_session = cls.path("same_car.qlt")
        done = run("simulate", "--laps", 3, "--seed", 4, "-o", cls.logger_session)
        assert done.returncode == 0, done.stderr

    @classmethod
    def tearDownClass(cls):
        shutil.rmtree(cls.folder)

    @classmethod
    def path(cls, name):
        return os.path.join(cls.folder, name)

    @classmethod
    def simulate(cls, name, *options):
        """Gives the path of a new session."""
        path = cls.path(name + ".wmp")
        done = run("simulate", *options, "-o", path)
        assert done.returncode == 0 and done.stderr == "", done.stderr
        return path

    def ok(self, *arguments):
        done = run(*arguments)
        self.assertEqual((done.returncode, done.stderr), (0, ""), arguments)
        return done.stdout

    def json(self, *arguments):
        return json.loads(self.ok(*arguments, "--json"))

    def bytes(self, path):
        with open(path, "rb") as file:
            return file.read()

    def file(self, path):
        return WmpFile(self.bytes(path))

    def trace(self, path):
        return Trace(self.bytes(path[:-3] + "jts"))

    def logged_names(self, version):
        if version == 550:
            return NAMES[:2]
        return OLD_NAMES if version <= 320 else NAMES + (EXTENDED_NAMES if version >= 500 else [])

    # --- The files, by the parser above ---------------------------------------------------------------------------

    @for_every_version
    def test_tables_samples_and_traces(self, version, path, file):
        self.assertEqual(file.version, version)
        self.assertEqual([c.name for c in file.logged], self.logged_names(version))
        self.assertEqual([c.name for c in file.derived], FORMULAS if version >= 451 else [])
        for channel in file.channels:
            self.assertEqual(channel.count * 1000, channel.rate * file.duration_ms, channel.name)
        for channel in file.logged:
            samples = channel.values if version <= 320 else channel.words
            self.assertGreater(len(set(samples)), 2, channel.name)
            if version > 320:
                self.assertLess(max(samples), 0x8000, channel.name)
        for channel in file.derived:
            self.assertEqual((channel.origin, channel.is_current), (0, True))
            self.assertNotEqual(channel.formula, "")
        self.assertEqual(file.reference, 1)
        self.assertEqual(file.date, "12-05-24 14:03:20")
        trace = self.trace(path)
        self.assertEqual(len(trace.records), file.duration_ms // 100)
        self.assertEqual([struct.unpack_from("<I", r)[0] for r in trace.records[:3]], [0, 100, 200])
        self.assertEqual(len(trace.good()), len(trace.records) - 20)

    def test_units_in_both_descriptor_forms(self):
        channels = {c.name: c for c in self.file(self.sessions[600]).logged}
        self.assertEqual(channels["Oil Temp"].unit, b"\x0901001\0\0\0\0")
        self.assertEqual(channels["Oil Press"].unit, struct.pack("<BH", 11, 300 | 2 << 12) + bytes(7))
        self.assertTrue(channels["Switches"].is_digit)
        self.assertEqual([n for n, c in channels.items() if c.sensor == 999], ["Airbox", "Torque"])

    @for_every_version
    def test_laps_and_runs(self, version, _, file):
        rate = sum(c.rate for c in file.logged)
        start = 0
        for lap in file.laps:
            self.assertEqual(lap.start, start)
            self.assertTrue(40000 < lap.time < 300000, lap)
            self.assertAlmostEqual(lap.samples, lap.time * rate / 1000, delta=1)
            self.assertEqual(lap.counts, 1)
            unset = {100: 0, 200: 0, 320: 0, 400: 0, 450: 0xCB3434CB}
            self.assertEqual(lap.true_time, unset.get(version, lap.time))
            start += lap.time
        self.assertTrue(2000 <= file.duration_ms - start <= 3000)
        self.assertEqual(file.best[1], min(lap.time for lap in file.laps))
        expected = [(1, 1), (1, 2), (2, 1)] if version >= 600 else [(1, 1), (1, 2), (1, 3)]
        numbers = [0, 0, 0] if version == 100 else [number for _, number in expected]
        self.assertEqual([lap.number for lap in file.laps], numbers)
        self.assertEqual([lap.run for lap in file.laps], [run_number for run_number, _ in expected])
        self.assertEqual(len(file.runs), 2 if version >= 600 else 0)
        for number, record in enumerate(file.runs, 1):
            self.assertEqual(struct.unpack_from("<H2x2if", record, 0), (number, 17, 53, 1985.0))
            self.assertEqual(text(record[67:107]), f"Run {number}")

    def test_dumps(self):
        for form in ("new", "old"):
            with self.subTest(form=form):
                path = self.simulate("dump_" + form, "--version", 500, "--dump", form, "--laps", 3, "--seed", 4)
                file = self.file(path)
                dump = file.dump
                self.assertEqual(dump.is_old, form == "old")
                self.assertEqual(len(dump.round), sum(c.rate for c in file.logged))
                if form == "old":
                    self.assertLessEqual(len(dump.round), 500)
                    self.assertEqual((dump.lap_ends, dump.lap_records), (3, []))
                else:
                    self.assertEqual(dump.lap_ends, 0)
                    self.assertEqual(dump.lap_records, [(lap.number, lap.time) for lap in file.laps])
                self.assertGreater(dump.blocks, file.duration_ms // 4000)
                engine = self.json("samples", path, "Engine")["values"]
                self.assertEqual(engine, list(file.logged[0].words))
                self.assertEqual(len(self.json("laps", path)), 3)

    # --- What the host reads --------------------------------------------------------------------------------------

    @for_every_version
    def test_info_and_gps(self, version, path, file):
        info = self.json("info", path)
        self.assertEqual((info["vehicle"], info["track"], info["racer"]),
                         (text(file.names[:40]), text(file.names[40:80]), text(file.names[80:120])))
        self.assertEqual(info["championship"], text(file.extended_names[:40]) if version >= 500 else "")
        self.assertEqual(info["venue_type"], "Practice 1" if version >= 500 else "Generic testing")
        self.assertEqual(info["date"], "2024-05-12T14:03:20")
        last = max((c.count - 1) / c.rate for c in file.channels)
        self.assertAlmostEqual(info["duration_s"], last, places=6)
        self.assertEqual((info["laps"], info["channels"]), (3, len(file.channels)))
        good = len(self.trace(path).good())
        self.assertEqual((info["gps_channels"], info["gps_raw_samples"]), (15, good))
        gps = self.json("gps", path)
        self.assertEqual(gps["fixes"], good)
        self.assertTrue(44.49 < gps["latitude_min_deg"] < 44.5 < gps["latitude_max_deg"] < 44.51, gps)
        self.assertFalse(os.path.exists(path[:-3] + "bak"), "nobody asked for a copy")

    @for_every_version
    def test_laps(self, _, path, file):
        laps = self.json("laps", path)
        same_car = self.json("laps", self.logger_session)
        self.assertEqual([lap["lap"] for lap in laps], [1, 2, 3])
        for lap, stored, driven in zip(laps, file.laps, same_car):
            self.assertAlmostEqual(lap["start_s"], stored.start / 1000, places=6)
            self.assertAlmostEqual(lap["duration_s"], stored.time / 1000, places=6)
            self.assertAlmostEqual(lap["duration_s"], driven["duration_s"], delta=0.0011)

    @for_every_version
    def test_channels(self, version, path, file):
        channels = self.json("channels", path)
        self.assertEqual([c["name"] for c in channels], [c.name for c in file.channels])
        for got, stored in zip(channels, file.channels):
            self.assertEqual(got["samples"], stored.count, stored.name)
            self.assertAlmostEqual(got["rate_hz"], stored.rate, places=3, msg=stored.name)
            low, high = BOUNDS.get(stored.name, (-1e6, 1e6))
            self.assertTrue(low <= got["min"] < got["max"] <= high, f"{stored.name}: {got}")
        self.assertGreater(channels[0]["max"], 6000)
        if version > 320:
            units = {c["name"]: c["unit"] for c in channels}
            for name, unit in UNITS.items():
                self.assertEqual(units.get(name, unit), unit, name)

    def test_formulas(self):
        for version in (451, 500, 550, 600, 700):
            with self.subTest(version=version):
                path = self.sessions[version]
                speed = self.json("samples", path, "Speed #1")["values"]
                metres_per_second = self.json("samples", path, "Speed ms")["values"]
                for kmh, value in zip(speed, metres_per_second):
                    self.assertAlmostEqual(value, kmh / 3.6, delta=1e-4)
                clock = self.json("samples", path, "Lap Clock", "--lap", 2)
                distance = self.json("samples", path, "Lap Dist", "--lap", 2)["values"]
                lap = self.json("laps", path)[1]
                self.assertAlmostEqual(max(clock["values"]), lap["duration_s"], delta=0.3)
                driven = sum(self.json("samples", path, "Speed ms", "--lap", 2)["values"]) * 0.1
                self.assertAlmostEqual(max(distance) / driven, 1, delta=0.02)
                krpm = self.json("samples", path, "Engine krpm", "--head", 100)["values"]
                rpm = self.json("samples", path, "Engine", "--head", 100)["values"]
                for thousands, value in zip(krpm, rpm):
                    self.assertAlmostEqual(thousands, value / 1000, places=5)

    # --- Devices --------------------------------------------------------------------------------------------------

    def test_devices_whose_readers_add_channels(self):
        path = self.simulate("device_48", "--device-code", 48, "--laps", 3, "--seed", 4)
        file = self.file(path)
        self.assertEqual(struct.unpack_from("<I", file.identity, 4)[0], 48)
        self.assertEqual({"Engine": 0, "Shaft": 77}, {c.name: c.sensor for c in file.logged if c.sensor in (0, 77)})
        names = [c["name"] for c in self.json("channels", path)]
        self.assertEqual(names, [c.name for c in file.channels] + ["Speed", "CVT", "Drive", "Linear"])
        end = file.laps[-1].start + file.laps[-1].time
        wheel = self.json("samples", path, "Speed #1")["values"]
        by_shaft = self.json("samples", path, "Speed")["values"]  # at twice the rate
        pairs = [(a, b) for i, (a, b) in enumerate(zip(wheel, by_shaft[::2])) if i * 100 < end - 100]
        self.assertGreater(len(pairs), 1000)
        self.assertLess(sum(abs(a - b) for a, b in pairs) / len(pairs), 1)
        ratios = sorted(self.json("samples", path, "CVT")["values"])
        self.assertTrue(0.9 < ratios[len(ratios) // 2] < 4)

        path = self.simulate("device_18", "--device-code", 18, "--laps", 1)
        self.assertEqual([c["name"] for c in self.json("channels", path)][-1], "SpeedCalc")
        shaft = next(c for c in self.file(path).logged if c.name == "Shaft")
        # A speed that stands still for some samples becomes a ramp, by less than a word.
        for value, word in zip(self.json("samples", path, "SpeedCalc", "--head", 500)["values"], shaft.words):
            self.assertAlmostEqual(value, word / shaft.parameters[0], delta=0.06)

    # --- Options --------------------------------------------------------------------------------------------------

    def test_same_seed_same_bytes(self):
        for version in (320, 500, 600):
            again = self.simulate("again", "--version", version, "--laps", 3, "--seed", 4)
            other = self.simulate("other", "--format", "wmp", "--version", version, "--laps", 3, "--seed", 5)
            first = self.sessions[version]
            for path, alike in ((again, True), (other, False)):
                for ending in ("wmp", "jts"):
                    same = self.bytes(path[:-3] + ending) == self.bytes(first[:-3] + ending)
                    self.assertEqual(same, alike, f"{version} {ending}")

    def test_numbers_of_channels(self):
        for version, count in ((100, 20), (400, 1), (451, 3), (500, 60), (550, 1), (600, 45)):
            with self.subTest(version=version):
                path = self.simulate(f"channels_{version}", "--version", version, "--channels", count, "--laps", 1)
                file = self.file(path)
                self.assertEqual(len(file.logged), count)
                self.assertEqual(len(file.derived), len(FORMULAS) if version >= 451 and count > 1 else 0)
                channels = self.json("channels", path)
                self.assertEqual([c["name"] for c in channels], [c.name for c in file.channels])
                for channel in channels:
                    if channel["name"].startswith("Aux "):
                        self.assertTrue(-1 <= channel["min"] < channel["max"] <= 221, channel)

    def test_one_rate_and_a_lap_that_the_end_cuts(self):
        path = self.simulate("minutes", "--version", 700, "--rate", 4, "--minutes", 0.5)
        file = self.file(path)
        self.assertEqual({c.rate for c in file.channels}, {4})
        self.assertEqual([(lap.time, lap.counts) for lap in file.laps], [(30000, 0)])
        self.assertEqual([(lap["duration_s"], lap["finished"]) for lap in self.json("laps", path)], [(30.0, False)])
        *whole, cut = self.json("laps", self.simulate("longer", "--minutes", 5))
        self.assertEqual((cut["finished"], cut["gap_s"]), (False, None))
        self.assertEqual(({lap["finished"] for lap in whole}, min(lap["gap_s"] for lap in whole)), ({True}, 0))

    def test_damage_is_in_the_samples(self):
        for version in (320, 500, 550, 600):
            with self.subTest(version=version):
                sound = self.bytes(self.sessions[version])
                path = self.simulate(f"damaged_{version}", "--version", version, "--laps", 3, "--seed", 4,
                                     "--damage", 25)
                damaged = self.bytes(path)
                self.assertEqual(len(damaged), len(sound))
                changed = [i for i, (a, b) in enumerate(zip(sound, damaged)) if a != b]
                self.assertEqual(len(changed), 25)
                self.assertGreaterEqual(changed[0], self.file(self.sessions[version]).tables_end)
                channels = self.json("channels", path)
                self.assertEqual([c["name"] for c in channels], self.logged_names(version) +
                                 (FORMULAS if version >= 451 else []))
                self.assertEqual(len(self.json("laps", path)), 3)

    def test_options_that_do_not_fit(self):
        cases = (
            ("x.wmp", ["--version", 123], "no version 123"),
            ("x.wmp", ["--version", 500, "--device-code", 48], "no place for a device code"),
            ("x.wmp", ["--dump", "old"], "has no dump"),
            ("x.wmp", ["--frames", "single"], "no frames"),
            ("x.wmp", ["--version", 550, "--channels", 3], "at most 2"),
            ("x.wmp", ["--version", 500, "--dump", "old", "--channels", 25], "at most 24"),
            ("x.wmp", ["--version", 320, "--rate", 5], "rate"),
            ("x.wmp", ["--version", 500, "--rate", 100], "samples a second"),
            ("x.wmp", ["--version", 550, "--minutes", 30], "32768"),
            ("x.dat", ["--format", "wmp"], "needs a name"),
            ("-", ["--format", "wmp"], "needs a name"),
            ("x.qlt", ["--version", 600], "belong to .wmp"),
            ("no_such_folder/x.wmp", [], "cannot write"),
        )
        before = set(os.listdir(self.folder))
        for name, options, saying in cases:
            with self.subTest(options=options):
                done = run("simulate", *options, "-o", name if name == "-" else self.path(name))
                self.assertEqual(done.returncode, 1)
                self.assertRegex(done.stderr, r"\Atraguardo: [^\n]+\n\Z")
                self.assertIn(saying, done.stderr)
        self.assertEqual(set(os.listdir(self.folder)), before, "something is left behind")


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    TOOL = sys.argv.pop(1)
    unittest.main()
