# SPDX-License-Identifier: MIT
"""Sessions of older loggers: what the simulator writes, and what the command-line host makes of it.

    python3 wmp_simulator_test.py PATH_OF_TRAGUARDO [unittest options]

The files themselves come from the one writer, which the tests of the reader hold. Needs Debian's python3.
"""
import json
import os
import shutil
import subprocess
import sys
import tempfile
import unittest

TOOL = ""

VERSIONS = (100, 200, 320, 400, 450, 451, 500, 550, 600, 700)
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


def run(*arguments):
    return subprocess.run([TOOL, *map(str, arguments)], capture_output=True, text=True, timeout=300)


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

    def logged(self, path):
        return [c for c in self.json("channels", path) if not c["derived_from_gps"]]

    def json(self, *arguments):
        return json.loads(self.ok(*arguments, "--json"))

    def bytes(self, path):
        with open(path, "rb") as file:
            return file.read()

    def logged_names(self, version):
        if version == 550:
            return NAMES[:2]
        return OLD_NAMES if version <= 320 else NAMES + (EXTENDED_NAMES if version >= 500 else [])

    # --- What the host reads --------------------------------------------------------------------------------------

    def test_every_version(self):
        """Texts, laps, channels and GPS of one drive, whatever version keeps it."""
        driven = self.json("laps", self.logger_session)
        for version, path in self.sessions.items():
            with self.subTest(version=version):
                names = self.logged_names(version) + (FORMULAS if version >= 451 else [])
                info = self.json("info", path)
                self.assertEqual((info["vehicle"], info["track"], info["racer"]),
                                 ("GT 42", "Collina Grande", "J. Whitlock"))
                self.assertEqual((info["championship"], info["venue_type"]),
                                 ("Club Trophy", "Practice 1") if version >= 500 else ("", "Generic testing"))
                self.assertEqual((info["date"], info["laps"], info["channels"], info["gps_channels"]),
                                 ("2024-05-12T14:03:20", 3, len(names), 15))
                self.assertFalse(os.path.exists(path[:-3] + "bak"), "nobody asked for a copy")
                laps = self.json("laps", path)
                self.assertEqual([lap["lap"] for lap in laps], [1, 2, 3])
                for lap, of_same_car in zip(laps, driven):
                    self.assertAlmostEqual(lap["duration_s"], of_same_car["duration_s"], delta=0.0011)
                gps = self.json("gps", path)
                self.assertEqual(gps["fixes"], info["gps_raw_samples"])
                self.assertTrue(44.49 < gps["latitude_min_deg"] < 44.5 < gps["latitude_max_deg"] < 44.51, gps)
                self.check_channels(version, names, self.logged(path), info["duration_s"])

    def check_channels(self, version, names, channels, duration_s):
        self.assertEqual([c["name"] for c in channels], names)
        for channel in channels:
            name = channel["name"]
            self.assertAlmostEqual((channel["samples"] - 1) / channel["rate_hz"], duration_s, delta=1, msg=name)
            low, high = BOUNDS.get(name, (-1e6, 1e6))
            self.assertTrue(low <= channel["min"] < channel["max"] <= high, channel)
            if version > 320:
                self.assertEqual(channel["unit"], UNITS.get(name, channel["unit"]), name)
        self.assertGreater(channels[0]["max"], 6000)

    def test_both_forms_of_a_dump(self):
        """One drive, in the two forms in which a logger keeps its memory."""
        newer, older = (self.simulate("dump_" + form, "--version", 500, "--dump", form, "--laps", 3, "--seed", 4,
                                      "--rate", 10) for form in ("new", "old"))
        self.assertNotEqual(self.bytes(older), self.bytes(newer))
        for read in (lambda path: self.json("laps", path), lambda path: self.json("samples", path, "Engine")["values"]):
            self.assertEqual(read(older), read(newer))

    # --- Devices --------------------------------------------------------------------------------------------------

    def test_devices_whose_readers_add_channels(self):
        path = self.simulate("device_48", "--device-code", 48, "--laps", 3, "--seed", 4)
        names = [c["name"] for c in self.logged(path)]
        self.assertEqual(names[-4:], ["Speed", "CVT", "Drive", "Linear"])
        last = self.json("laps", path)[-1]
        end = 1000 * (last["start_s"] + last["duration_s"])
        wheel = self.json("samples", path, "Speed #1")["values"]
        by_shaft = self.json("samples", path, "Speed")["values"]  # at twice the rate
        pairs = [(a, b) for i, (a, b) in enumerate(zip(wheel, by_shaft[::2])) if i * 100 < end - 100]
        self.assertGreater(len(pairs), 1000)
        self.assertLess(sum(abs(a - b) for a, b in pairs) / len(pairs), 1)
        ratios = sorted(self.json("samples", path, "CVT")["values"])
        self.assertTrue(0.9 < ratios[len(ratios) // 2] < 4)

        path = self.simulate("device_18", "--device-code", 18, "--laps", 1)
        self.assertEqual([c["name"] for c in self.logged(path)][-1], "SpeedCalc")

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

    def test_one_rate_and_a_lap_that_the_end_cuts(self):
        path = self.simulate("minutes", "--version", 700, "--rate", 4, "--minutes", 0.5)
        self.assertEqual({c["rate_hz"] for c in self.logged(path)}, {4})
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
                channels = self.logged(path)
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
