# SPDX-License-Identifier: MIT
"""What an engineer does every day: channels and laps by their names, statistics, wide tables, laps compared.

    python3 engineer_test.py COMMAND [unittest options]

Laps are compared where the simulator knows the truth, and by a program of its own below."""
import bisect
import contextlib
import csv
import json
import math
import os
import pty
import re
import shlex
import statistics
import subprocess
import sys
import tempfile
import time
import unittest

TOOL = []
DOCUMENT = os.path.join(os.path.dirname(__file__), "../../docs/json.md")


def run(*arguments, **options):
    return subprocess.run([*TOOL, *map(str, arguments)], capture_output=True, encoding="utf-8", timeout=300, cwd=FOLDER,
                          **options)


def ok(*arguments):
    done = run(*arguments)
    if done.returncode or done.stderr:
        raise AssertionError(f"{arguments}: {done.returncode} {done.stderr}")
    return done.stdout


def table(*arguments):
    return json.loads(ok(*arguments, "--json"))


def wide(*arguments):
    rows = list(csv.reader(ok("export", *arguments, "--wide", "-o", "-").splitlines()))
    return rows[0], [[float(cell) if cell else None for cell in row] for row in rows[1:]]


def at(xs, ys, x):
    """In a straight line between the two neighbours."""
    k = min(max(bisect.bisect_left(xs, x), 1), len(xs) - 1)
    return ys[k - 1] + (ys[k] - ys[k - 1]) * (x - xs[k - 1]) / (xs[k] - xs[k - 1])


class Engineer(unittest.TestCase):
    def fails(self, *arguments, saying):
        done = run(*arguments)
        self.assertEqual((done.returncode, done.stdout), (1, ""), arguments)
        self.assertRegex(done.stderr, r"\Atraguardo: [^\n]+\n\Z", arguments)
        self.assertIn(saying, done.stderr)

    def test_channels_as_people_name_them(self):
        speed = table("samples", "a.qlt", "Speed")["values"]
        for name in ("speed", "#3", "Spe?d", "SPEED"):
            self.assertEqual(table("samples", "a.qlt", name)["values"], speed, name)
        self.assertEqual(table("samples", "a.qlt", "oil t")["name"], "Oil Temp")
        for choice, unit, change in (("Speed=MPH", "mph", lambda v: v / 1.609344), ("oil temp=F", "F", lambda v: v * 1.8 + 32),
                                     ("gps speed=km/h", "km/h", lambda v: v * 3.6), ("brake p=PSI", "psi", lambda v: v * 14.50377)):
            plain, got = table("samples", "a.qlt", choice.split("=")[0]), table("samples", "a.qlt", choice)
            self.assertEqual(got["unit"], unit)
            for value, want in zip(got["values"], plain["values"]):
                self.assertAlmostEqual(value, change(want), delta=1e-4 * abs(want) + 1e-5, msg=choice)
        for name, saying in (("temp", '"temp" fits 4 channels of a.qlt: "Water Temp", "Oil Temp"'), ("sped", '"Speed"?'),
                             ("Speed=kg", "there is mph, m/s"), ("xyzzy", "nearest names are"), ("#99", "no channel")):
            self.fails("samples", "a.qlt", name, saying=saying)
        names = {row["channel"] for row in table("stats", "a.qlt", "--channel", "*temp", "--channel", "gps l*", "--lap", 2)}
        self.assertEqual(names, {"Water Temp", "Oil Temp", "Exhaust Temp", "Air Temp", "GPS LatAcc", "GPS LonAcc",
                                 "GPS Latitude", "GPS Longitude"})
        formula = table("eval", "gps speed * 3.6 - #3", "a.qlt", "--rate", 10, "--lap", "2-3")
        exact = table("eval", "GPS Speed * 3.6 - Speed", "a.qlt", "--rate", 10)
        laps = table("laps", "a.qlt")[1:3]
        inside = [v for t, v in zip(exact["times"], exact["values"])
                  if laps[0]["start_s"] <= t < laps[1]["start_s"] + laps[1]["duration_s"]]
        self.assertEqual(formula["values"], inside)
        self.assertLess(max(map(abs, inside)), 1, "the receiver agrees with the wheel")

    def test_laps_of_many_files(self):
        done = run("laps", "?.qlt", "broken.qlt", "--json")
        self.assertEqual((done.returncode, len(done.stderr.splitlines())), (1, 1), done.stderr)
        rows = json.loads(done.stdout)
        self.assertEqual([row["file"] for row in rows], ["a.qlt", "b.qlt", "broken.qlt"])
        best = [min(lap["duration_s"] for lap in table("laps", name)) for name in ("a.qlt", "b.qlt")]
        self.assertEqual([row["best_s"] for row in rows], best + [None])
        self.assertEqual(min(row["gap_s"] for row in rows[:2]), 0)
        self.assertIn("no session can be read", rows[2]["error"])

    def test_stats(self):
        for row in table("stats", "a.qlt", "--channel", "Speed", "--channel", "GPS Altitude"):
            values = table("samples", "a.qlt", row["channel"], "--lap", row["lap"])["values"]
            self.assertEqual((row["samples"], row["min"], row["max"], row["first"], row["last"]),
                             (len(values), min(values), max(values), values[0], values[-1]))
            self.assertAlmostEqual(row["mean"], statistics.fmean(values), places=6)
            self.assertAlmostEqual(row["stddev"], statistics.pstdev(values), places=6)
        # From a standstill the first lap is slow.
        self.assertEqual([row["lap"] for row in table("stats", "a.qlt", "--channel", "Speed", "--clean")], [2, 3, 4])

    def test_wide(self):
        head, rows = wide("a.qlt", "--channel", "Speed=mph", "--channel", "Gear", "--channel", "GPS Altitude", "--lap", "2-3")
        self.assertEqual(head, ["lap", "time (s)", "Speed (mph)", "Gear (gear)", "GPS Altitude (m)"])
        laps = table("laps", "a.qlt")
        self.assertEqual([row[0] for row in rows if row[1] == 0], [2, 3])
        self.assertEqual(len(rows), sum(math.ceil(round(lap["duration_s"] * 100, 6)) for lap in laps[1:3]))
        speed = table("samples", "a.qlt", "Speed=mph")
        for lap, time_s, value, gear, _ in rows[::97]:
            moment = laps[int(lap) - 1]["start_s"] + time_s
            self.assertAlmostEqual(value, at(speed["times_s"], speed["values"], moment), delta=1e-3)
            self.assertEqual(gear, int(gear), "gears are held")
        head, rows = wide("a.qlt", "--channel", "Speed", "--by-distance", 7.5, "--lap", "best")
        self.assertEqual(head, ["lap", "distance (m)", "time (s)", "Speed (km/h)"])
        for before, row in zip(rows, rows[1:]):
            self.assertEqual(row[1] - before[1], 7.5)
            self.assertAlmostEqual((row[2] - before[2]) * (before[3] + row[3]) / 7.2, 7.5, delta=0.05)
        # The rate is that of the channel.
        head, rows = wide("a.qlt", "--channel", "Water Temp")
        self.assertEqual([row[0] for row in rows[:3]], [0, 1, 2])
        done = run("export", "a.qlt", "--wide", "--rate", 4000, "--channel", "Gear", "-o", "long.csv")
        self.assertEqual(done.returncode, 0)
        self.assertRegex(done.stderr, r"\Atraguardo: \d+ rows are more than the 1048576 that a spreadsheet takes\n\Z")

    # The truth of b.qlt's driver, who is slower in two corners of the same circuit.
    def test_compare_finds_the_corners_that_the_simulator_knows(self):
        truths = [json.load(open(os.path.join(FOLDER, name + ".json"), encoding="utf-8")) for name in "ab"]
        got = table("compare", "a.qlt:2", "b.qlt:3", "--every", 50)
        self.assertEqual((got["laid_by"], got["sectors_by"], len(got["sectors"]), len(got["places"])), ("gps", "splits", 3, 10))
        mine, theirs = truths[0]["laps_s"][1], truths[1]["laps_s"][2]
        step = truths[0]["step_m"]
        places = [min(i * step, truths[0]["length_m"]) for i in range(len(mine))]
        scale = truths[0]["length_m"] / got["length_m"]
        for point in got["deltas"]:
            place = point["distance_m"] * scale
            self.assertAlmostEqual(point["delta_s"], at(places, theirs, place) - at(places, mine, place), delta=0.025)
        apexes = truths[0]["apexes_m"]
        worst = [got["places"][0]["from_m"], next(p["from_m"] for p in got["places"][1:]
                                                  if abs(p["from_m"] - got["places"][0]["from_m"]) > 250)]
        for corner in SLOW:
            self.assertTrue(any(abs(place - apexes[corner - 1]) < 150 for place in worst), (worst, apexes[corner - 1]))
        for corner in SLOW:
            apex = min(got["apexes"], key=lambda a, c=corner: abs(a["reference_m"] - apexes[c - 1]))
            self.assertAlmostEqual(apex["reference_m"], apexes[corner - 1], delta=15)
            self.assertLess(apex["other_kmh"], apex["reference_kmh"] * 0.96)
        for session, ideal in zip("ab", got["ideal"]):
            best = min(lap["duration_s"] for lap in table("laps", session + ".qlt"))
            self.assertLessEqual(ideal["duration_s"], best + 1e-9)
            self.assertAlmostEqual(ideal["duration_s"], sum(s["time_s"] for s in ideal["sectors"]), places=9)
        self.assertEqual(len(table("compare", "a.qlt", "b.qlt", "--sectors", 7)["sectors"]), 7)

    def test_compare_without_gps_is_scaled_distance(self):
        """The same by a program of its own: trapezoids over the speed's samples, scaled to the reference's length."""
        def way(name, lap):
            lap = table("laps", name)[lap - 1]
            speed = table("samples", name, "Speed")
            times = [t - lap["start_s"] for t in speed["times_s"]]
            inside = [0.0] + [t for t in times if 0 < t < lap["duration_s"]] + [lap["duration_s"]]
            speeds = [max(at(times, speed["values"], t), 0) / 3.6 for t in inside]
            distances = [0.0]
            for (t0, t1), (v0, v1) in zip(zip(inside, inside[1:]), zip(speeds, speeds[1:])):
                distances.append(distances[-1] + (v0 + v1) / 2 * (t1 - t0))
            return distances, inside
        mine, theirs = way("nogps_a.qlt", 2), way("nogps_b.qlt", 2)
        scaled = [d * mine[0][-1] / theirs[0][-1] for d in theirs[0]]
        got = table("compare", "nogps_a.qlt:2", "nogps_b.qlt:2", "--every", 20)
        self.assertEqual(got["laid_by"], "distance")
        self.assertAlmostEqual(got["length_m"], mine[0][-1], places=3)
        for point in got["deltas"][1:-1]:
            want = at(scaled, theirs[1], point["distance_m"]) - at(mine[0], mine[1], point["distance_m"])
            self.assertAlmostEqual(point["delta_s"], want, places=5)

    def test_keys_of_json_are_those_of_the_document(self):
        text = open(DOCUMENT, encoding="utf-8").read()
        def documented(section):
            body = re.search(rf"^## {section}\n(.*?)(?=^## |\Z)", text, re.M | re.S).group(1)
            return set(re.findall(r"`(\w+)`", body))
        def keys(value):
            found = set()
            for item in value if isinstance(value, list) else [value]:
                if isinstance(item, dict):
                    found |= set(item)
                    for key, inner in item.items():
                        found |= keys(inner) if key != "missing_samples" else set()
            return found
        for arguments in (["info", "a.qlt", "--verbose"], ["laps", "a.qlt"], ["laps", "a.qlt", "b.qlt"], ["channels", "a.qlt"],
                          ["samples", "a.qlt", "Gear"], ["stats", "a.qlt", "--channel", "Gear"],
                          ["compare", "a.qlt", "b.qlt"], ["gps", "a.qlt"], ["eval", "1", "a.qlt"]):
            self.assertEqual(keys(table(*arguments)) - documented(arguments[0]), set(), arguments)
        for section, extra in (("compare", {"gps", "distance", "splits", "length"}), ("stats", set()), ("channels", set())):
            arguments = {"compare": ["a.qlt", "b.qlt"], "stats": ["a.qlt", "--channel", "Gear"], "channels": ["a.qlt"]}[section]
            self.assertEqual(documented(section) - keys(table(section, *arguments)), extra)

    def test_what_cannot_be_done_is_one_line_and_leaves_nothing(self):
        before = sorted(os.listdir(FOLDER))
        for arguments, saying in (
                (["stats", "short.qlt", "--clean"], "no clean lap in short.qlt"), (["compare", "short.qlt", "a.qlt"], "no finished lap"),
                (["compare", "a.qlt:9", "a.qlt"], "no lap 9"), (["compare", "a.qlt:1-2", "a.qlt"], "one lap is wanted"),
                (["compare", "a.qlt", "a.qlt", "--speed", "Gear"], "is no speed"),
                (["export", "a.qlt", "--wide", "--channel", "ECEF*x", "-o", "new.csv"], "raw GPS channels"),
                (["export", "a.qlt", "--wide", "--lap", "3-9", "-o", "new.csv"], "no lap 3-9"),
                (["export", "a.qlt", "--wide", "--channel", "Speed=kg", "-o", "new.csv"], "no unit"),
                (["export", "nogps_a.qlt", "--gpx", "-o", "new.gpx"], "no GPS track"), (["info", "-"], "standard input"),
                (["simulate", "-o", "new.wmp", "--truth", "new.json"], "truth")):
            self.fails(*arguments, saying=saying)
        self.assertEqual(sorted(os.listdir(FOLDER)), before)
        for arguments in (["samples", "a.qlt", "Speed", "--lap", "x"], ["export", "a.qlt", "--rate", 5, "-o", "new.csv"],
                          ["help", "fly"], ["simulate", "--slow", "3", "-o", "new.qlt"]):
            self.assertEqual(run(*arguments).returncode, 2, arguments)
        self.assertEqual(ok("help", "laps"), ok("laps", "--help"))
        self.assertEqual(ok("-V"), ok("--version"))

    def test_ctrl_c_leaves_nothing_behind(self):
        ok("simulate", "--minutes", 25, "-o", "long.qlt")
        before = sorted(os.listdir(FOLDER))
        process, terminal = pty.fork()
        if process == 0:
            os.chdir(FOLDER)
            os.execvp(TOOL[0], [*TOOL, "export", "long.qlt", "-o", "new.csv"])
        while not any(name.endswith(".part") for name in os.listdir(FOLDER)):
            time.sleep(0.01)
        os.write(terminal, b"\x03")
        with contextlib.suppress(OSError):  # how Linux tells that the other side is closed
            while os.read(terminal, 4096):
                pass
        self.assertEqual(os.waitstatus_to_exitcode(os.waitpid(process, 0)[1]), 130)
        self.assertEqual(sorted(os.listdir(FOLDER)), before)

    def test_completion_knows_every_command_and_option(self):
        commands = re.findall(r"^  (\w+)  ", ok("--help").split("Subcommands:")[1], re.M)
        self.assertGreater(len(commands), 12)
        self.assertNotIn("completion", commands)
        for shell in ("bash", "zsh", "fish"):
            text = ok("completion", shell)
            for command in commands:
                self.assertIn(command, text)
                for option in re.findall(r"(?<![\w-])--[a-z][\w-]+", ok(command, "--help").split("Options:")[1]):
                    self.assertIn(option if shell != "fish" else "-l " + option[2:], text, (shell, command))


def make_sessions():
    global SLOW
    SLOW = (4, 9)
    for name, seed, more in (("a", 1, []), ("b", 2, [part for corner in SLOW for part in ("--slow", f"{corner}=12")])):
        ok("simulate", "--laps", 4, "--seed", seed, "--circuit", 1, *more, "--truth", name + ".json", "-o", name + ".qlt")
        # The same without what the receiver sent.
        with open(os.path.join(FOLDER, name + ".qlt"), "rb") as file:
            data = file.read()
        with open(os.path.join(FOLDER, f"nogps_{name}.qlt"), "wb") as file:
            file.write(re.sub(rb"<hGPS\0.{62}<GPS\0..>", b"", data, flags=re.S))
    ok("simulate", "--minutes", 0.3, "-o", "short.qlt", "--seed", 1)
    with open(os.path.join(FOLDER, "broken.qlt"), "wb") as file:
        file.write(b"no tags here")


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    TOOL[:] = shlex.split(sys.argv.pop(1))
    with tempfile.TemporaryDirectory(prefix="traguardo_engineer_") as FOLDER:
        make_sessions()
        unittest.main()
