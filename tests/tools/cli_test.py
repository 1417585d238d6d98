"""Runs the command-line host on simulated sessions and holds it against a reader of its own.

    python3 cli_test.py PATH_OF_TRAGUARDO [unittest options]

The reader below walks the bytes of a session file and knows nothing of the library; it is a few dozen lines, decodes plain
channels only, and stops at the first byte that it doesn't understand. Needs Debian's python3; gpsbabel is used if it is
there.
"""
import csv
import json
import math
import os
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest
import zlib

TOOL = ""

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

    def good_gps(self):
        return [g for g in self.gps if 3 <= g[14] <= 249]


def run(*arguments, **options):
    return subprocess.run([TOOL, *map(str, arguments)], capture_output=True, text=True, timeout=300, **options)


class CliTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.mkdtemp(prefix="traguardo_cli_")
        cls.session = os.path.join(cls.folder, "session.qlt")
        done = run("simulate", "--laps", 3, "--seed", 11, "-o", cls.session)
        assert done.returncode == 0, done.stderr
        with open(cls.session, "rb") as file:
            cls.bytes = file.read()
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

    def fails(self, *arguments, saying, **options):
        done = run(*arguments, **options)
        self.assertEqual(done.returncode, 1, arguments)
        self.assertRegex(done.stderr, r"\Atraguardo: [^\n]+\n\Z", arguments)
        self.assertIn(saying, done.stderr)

    # --- What the file says ---------------------------------------------------------------------------------------

    def test_info(self):
        info = self.json("info", self.session)
        self.assertEqual(
            list(info),
            ["file", "vehicle", "track", "racer", "championship", "venue_type", "date", "duration_s", "laps", "channels",
             "gps_channels", "gps_raw_samples"])
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

    def test_laps(self):
        laps = self.json("laps", self.session)
        marks = self.expected.lap_marks
        self.assertEqual([lap["lap"] for lap in laps], [mark[0] for mark in marks])
        self.assertEqual(len(self.expected.split_marks), 2 * len(marks))
        best = min(mark[2] for mark in marks)
        end = 0
        for lap, (_, _, lap_ms, _, stamp) in zip(laps, marks):
            self.assertEqual(list(lap), ["lap", "start_s", "duration_s", "gap_s"])
            self.assertAlmostEqual(lap["start_s"], end, places=9)
            self.assertAlmostEqual(lap["duration_s"], lap_ms / 1000, places=9)
            self.assertAlmostEqual(lap["gap_s"], (lap_ms - best) / 1000, places=9)
            end = stamp / 1000 - self.expected.first_us() * 1e-6
        self.assertEqual(len(self.ok("laps", self.session).splitlines()), 1 + len(laps))

    def test_channels(self):
        channels = self.json("channels", self.session)
        expected = self.expected.visible()
        self.assertEqual(self.expected.frame_kinds, set("SMGAcC"), "the usual session has every kind of frame")
        self.assertEqual([c["name"] for c in channels], [c.name for c in expected])
        self.assertEqual([c["index"] for c in channels], list(range(len(expected))))
        for got, want in zip(channels, expected):
            self.assertEqual(list(got), ["index", "name", "unit", "samples", "rate_hz", "min", "max"])
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
        first = self.expected.first_us()
        checked = 0
        for channel in self.expected.visible():
            layout = DECODERS.get(channel.format)
            if layout is None or channel.name == "Battery":
                continue
            got = self.json("samples", self.session, channel.name)
            self.assertEqual(got["name"], channel.name)
            self.assertEqual(got["times_s"], [(t - first) * 1e-6 for t, _ in channel.samples], channel.name)
            self.assertEqual(got["values"], [float32(struct.unpack(layout, b)[0]) for _, b in channel.samples],
                             channel.name)
            checked += 1
        self.assertGreaterEqual(checked, 20)

    def test_stored_millivolts_are_shown_as_volts(self):
        battery = next(c for c in self.expected.visible() if c.name == "Battery")
        got = self.json("samples", self.session, "Battery")
        scale = float32(0.001)
        self.assertEqual(got["values"], [float32(float(struct.unpack("<H", b)[0]) * scale) for _, b in battery.samples])

    def test_codes_show_their_number(self):
        for name, digit_at in (("Gear Code", 2), ("ECU Status", None)):
            channel = next(c for c in self.expected.visible() if c.name == name)
            got = self.json("samples", self.session, name)
            want = [struct.unpack("<h", b[:2])[0] if digit_at is None else int(chr(b[digit_at]))
                    for _, b in channel.samples]
            self.assertEqual(got["values"], want)

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
        with open(out, newline="", encoding="utf-8") as file:
            rows = list(csv.reader(file))
        self.assertEqual(rows[0], ["channel", "unit", "time", "value"])
        for name, unit in (("Brake Press", "bar"), ("GPS Speed", "m/s")):
            samples = self.json("samples", self.session, name)
            self.assertEqual([r for r in rows if r[0] == name and r[1] != unit], [])
            mine = [r for r in rows[1:] if r[0] == name]
            self.assertEqual([float(r[2]) for r in mine], samples["times_s"])
            self.assertEqual([float(r[3]) for r in mine], samples["values"])

    def test_export_without_names_has_every_channel(self):
        done = run("export", self.session, "--lap", 2, "-o", "-")
        self.assertEqual(done.returncode, 0, done.stderr)
        names = {line.split(",")[0] for line in done.stdout.splitlines()[1:]}
        self.assertTrue({c.name for c in self.expected.visible()} <= names)
        self.assertIn("GPS Latitude", names)
        self.assertNotIn("ECEF position_X", names)

    def test_derived_gps_times_are_seconds(self):
        times = self.json("samples", self.session, "GPS Speed")["times_s"]
        self.assertEqual(times[:3], [0.0, 0.01, 0.02])
        raw = self.json("samples", self.session, "ECEF position_X")["times_s"]
        self.assertLess(abs(times[-1] - raw[-1]), 0.02)

    def test_tracks(self):
        gps = self.json("gps", self.session)
        self.assertEqual(gps["fixes"], len(self.expected.good_gps()))
        accuracies = [struct.unpack_from("<I", g, 28)[0] for g in self.expected.good_gps()]
        self.assertAlmostEqual(gps["quality_cm"], sum(accuracies) / len(accuracies), delta=0.05)
        # The start line of the simulator lies at 44.5 north, 11.3 east, on a circuit less than a kilometre around it.
        self.assertTrue(44.49 < gps["latitude_min_deg"] < 44.5 < gps["latitude_max_deg"] < 44.51, gps)
        self.assertTrue(11.28 < gps["longitude_min_deg"] < 11.3 < gps["longitude_max_deg"] < 11.32, gps)
        self.assertTrue(45 < gps["altitude_min_m"] < 60 < gps["altitude_max_m"] < 75, gps)
        speeds = self.json("samples", self.session, "GPS Speed")["values"]
        self.assertAlmostEqual(gps["distance_m"] / (sum(speeds) * 0.01), 1, delta=0.02)

        geojson = self.path("track.geojson")
        self.ok("export", self.session, "--geojson", "-o", geojson)
        with open(geojson, encoding="utf-8") as file:
            feature = json.load(file)["features"][0]
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
        with open(gpx, encoding="utf-8") as file:
            text = file.read()
        self.assertIn("<time>2024-05-12T14:", text)

    # --- The simulator --------------------------------------------------------------------------------------------

    def test_same_seed_same_bytes(self):
        again, other = self.path("again.qlt"), self.path("other.qlt")
        self.ok("simulate", "--laps", 3, "--seed", 11, "-o", again)
        self.ok("simulate", "--laps", 3, "--seed", 12, "-o", other)
        with open(again, "rb") as file:
            self.assertEqual(file.read(), self.bytes)
        with open(other, "rb") as file:
            self.assertNotEqual(file.read(), self.bytes)

    def test_compressed_session(self):
        packed = self.path("packed.qlc")
        self.ok("simulate", "--laps", 3, "--seed", 11, "-o", packed)
        with open(packed, "rb") as file:
            self.assertEqual(zlib.decompress(file.read()), self.bytes)
        self.assertEqual(self.json("laps", packed), self.json("laps", self.session))

    def test_frames_channels_and_rates(self):
        for frames, kinds in (("single", {"S"}), ("block", {"M", "S"}), ("group", {"G", "S"})):
            with self.subTest(frames=frames):
                path = self.path(frames + ".qlt")
                self.ok("simulate", "--minutes", 0.2, "--channels", 60, "--rate", 50, "--frames", frames, "-o", path)
                with open(path, "rb") as file:
                    expected = SessionFile(file.read())
                self.assertEqual(expected.frame_kinds, kinds)  # the odometer's packets are always single
                channels = self.json("channels", path)
                self.assertEqual([c["samples"] for c in channels], [600] * 60)
                self.assertEqual([len(c.samples) for c in expected.visible()], [600] * 60)

    def test_lap_that_the_end_cuts(self):
        path = self.path("minutes.qlt")
        self.ok("simulate", "--minutes", 4, "--channels", 8, "-o", path)
        with open(path, "rb") as file:
            marks = SessionFile(file.read()).lap_marks
        laps = self.json("laps", path)
        self.assertGreaterEqual(len(marks), 1)
        self.assertEqual(len(laps), len(marks) + 1)
        self.assertAlmostEqual(laps[-1]["start_s"] + laps[-1]["duration_s"], self.json("info", path)["duration_s"],
                               delta=0.2)

    def test_damaged_session(self):
        path = self.path("damaged.qlt")
        self.ok("simulate", "--laps", 3, "--seed", 11, "--damage", 40, "-o", path)
        with open(path, "rb") as file:
            damaged = file.read()
        self.assertNotEqual(damaged, self.bytes)
        self.assertLessEqual(abs(len(damaged) - len(self.bytes)), 40)
        channels = self.json("channels", path)
        self.assertEqual([c["name"] for c in channels], [c.name for c in self.expected.visible()])
        total = sum(len(c.samples) for c in self.expected.visible())
        self.assertTrue(0 < sum(c["samples"] for c in channels) <= total)

    # --- Failures -------------------------------------------------------------------------------------------------

    def test_files_that_cannot_be_opened(self):
        empty, text, folder = self.path("empty.qlt"), self.path("notes.txt"), self.path("folder.qlt")
        with open(empty, "wb"):
            pass
        with open(text, "w", encoding="ascii") as file:
            file.write("no session\n")
        os.mkdir(folder)
        for command in (["info"], ["laps"], ["channels"], ["samples", "Speed"], ["export", "-o", self.path("never.csv")],
                        ["gps"]):
            for file, saying in ((self.path("missing.qlt"), "No such file"), (empty, "no session can be read"),
                                 (text, "not a kind of session file"), (folder, "Is a directory")):
                with self.subTest(command=command, file=file):
                    self.fails(command[0], file, *command[1:], saying=saying)
        self.assertFalse(os.path.exists(self.path("never.csv")))
        if os.geteuid() != 0:
            os.chmod(text, 0)
            self.fails("info", text, saying="Permission denied")

    def test_unknown_channel_and_lap(self):
        out = self.path("never.csv")
        self.fails("samples", self.session, "Nothing", saying='no channel "Nothing"')
        self.fails("export", self.session, "--channel", "Nothing", "-o", out, saying='no channel "Nothing"')
        for lap in (-1, 0, 4):
            self.fails("samples", self.session, "Speed", "--lap", lap, saying=f"no lap {lap}")
        self.assertFalse(os.path.exists(out))

    def test_outputs_that_cannot_be_written(self):
        lost = self.path("no_such_folder/out")
        self.fails("export", self.session, "-o", lost, saying="cannot write")
        self.fails("simulate", "-o", lost + ".qlt", saying="cannot write")
        self.fails("export", self.session, "-o", self.folder, saying="Is a directory")
        if not os.path.exists("/dev/full"):
            return
        self.fails("export", self.session, "-o", "/dev/full", saying="No space left")
        self.fails("simulate", "-o", "/dev/full", saying="No space left")
        for command in (["info"], ["laps", "--json"], ["channels"], ["gps"]):
            with open("/dev/full", "wb") as full:
                done = subprocess.run([TOOL, command[0], self.session, *command[1:]], stdout=full,
                                      stderr=subprocess.PIPE, text=True, timeout=300)
            self.assertEqual(done.returncode, 1, command)
            self.assertRegex(done.stderr, r"\Atraguardo: cannot write standard output[^\n]*\n\Z")

    def test_failed_export_keeps_the_old_file(self):
        out = self.path("kept.csv")
        with open(out, "w", encoding="ascii") as file:
            file.write("old\n")
        self.fails("export", self.session, "--channel", "Nothing", "-o", out, saying="no channel")
        with open(out, encoding="ascii") as file:
            self.assertEqual(file.read(), "old\n")
        self.ok("export", self.session, "--channel", "Gear", "-o", out)
        with open(out, encoding="ascii") as file:
            self.assertEqual(file.readline(), "channel,unit,time,value\n")

    def test_wrong_command_lines(self):
        for arguments in ([], ["fly"], ["info"], ["export", self.session], ["simulate"],
                          ["export", self.session, "--gpx", "--geojson", "-o", "x"]):
            done = run(*arguments)
            self.assertEqual(done.returncode, 2, arguments)
            self.assertNotEqual(done.stderr, "", arguments)
        self.fails("simulate", "--rate", 7, "-o", self.path("never.qlt"), saying="divisor of 1000")
        self.assertEqual(run("--help").returncode, 0)
        self.assertIn("traguardo", run("--version").stdout)


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    TOOL = sys.argv.pop(1)
    unittest.main()
