#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Kills the command-line host at random moments of its work and looks at what is left.

    signals_test.py TOOL [MOMENTS [MINUTES]]

Each command is stopped at so many moments (default 4), by each of the signals in turn, on a session of so many minutes
(default 1; 75 make 50 MB). Whatever the moment, files that stood there before are as they were, and a new one is whole or
not there. The exit status is 128 + the signal's number, unless the command was done before.

The seed of the moments is printed; SEED in the environment repeats them."""
import hashlib
import os
import random
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

TOOL, MOMENTS, MINUTES = "", 4, 1
RULES = "BarometricPressure=1\nRPM=Engine\nPboost=Speed #1\nThrottle=Throttle\nMaxPboost=limits.txt\n"
SIGNALS = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGPIPE)


def snapshot(folder):
    """Every file and folder below, with the checksum of its bytes."""
    found = {}
    for where, folders, files in os.walk(folder):
        for name in folders:
            found[os.path.relpath(os.path.join(where, name), folder)] = "folder"
        for name in files:
            with open(os.path.join(where, name), "rb") as file:
                found[os.path.relpath(os.path.join(where, name), folder)] = hashlib.sha256(file.read()).hexdigest()
    return found


class Signals(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.root = tempfile.mkdtemp(prefix="traguardo_signals_")
        cls.stock = os.path.join(cls.root, "stock")
        os.makedirs(cls.stock)
        cls.seed = int(os.environ.get("SEED", random.randrange(1 << 32)))
        print(f"SEED={cls.seed}", file=sys.stderr)
        cls.random = random.Random(cls.seed)
        for name in ("s.qlt", "c.qlc", "w.wmp"):
            minutes = min(MINUTES, 5) if name == "w.wmp" else MINUTES
            subprocess.run([TOOL, "simulate", "--minutes", str(minutes), "-o", name], cwd=cls.stock, check=True,
                           stdout=subprocess.DEVNULL)
        for name in ("out.csv", "s.qlt.tag", "rules/FMI-output.txt"):
            path = os.path.join(cls.stock, name)
            os.makedirs(os.path.dirname(path), exist_ok=True)
            with open(path, "w", encoding="ascii") as file:
                file.write("of yesterday\n")
        # The configurations of a reader of .wmp, and a logger's own section.
        for name, content in (("FIA.txt", RULES), ("limits.txt", "1000=1\n9000=2\n"),
                              ("FMI-limiter.txt", ""), ("Exporter.txt", "frq=500\nch=Engine\nch=Speed #1\n")):
            with open(os.path.join(cls.stock, "rules", name), "w", encoding="ascii") as file:
                file.write(content)

    @classmethod
    def tearDownClass(cls):
        shutil.rmtree(cls.root)

    def stopped_in_the_midst(self, place, arguments, is_at_work):
        """A process that stands still in its work; one that was done before it could be stopped is started again."""
        while True:
            process = self.start(place, arguments)
            while process.poll() is None:
                if is_at_work():
                    process.send_signal(signal.SIGSTOP)
                    os.waitid(os.P_PID, process.pid, os.WSTOPPED | os.WEXITED | os.WNOWAIT)
                    if process.poll() is None and is_at_work():
                        return process
                    process.send_signal(signal.SIGCONT)
                time.sleep(0.001)

    def fresh(self):
        """A folder with the sessions, one for the system's temporary files and one for the user's configuration."""
        place = os.path.join(self.root, "work")
        shutil.rmtree(place, ignore_errors=True)
        for name in ("temporary", "config"):
            os.makedirs(os.path.join(place, name))
        shutil.copytree(self.stock, os.path.join(place, "data"))
        return place

    def start(self, place, arguments, **streams):
        """A command; behind "rules" one whose configurations are those of the data."""
        environment = dict(os.environ, TMPDIR=os.path.join(place, "temporary"),
                           XDG_CONFIG_HOME=os.path.join(place, "config"))
        environment.pop("TRAGUARDO_STORE_FOLDER", None)
        environment.pop("TRAGUARDO_HOME", None)
        if arguments[0] == "rules":
            arguments = arguments[1:]
            environment["TRAGUARDO_HOME"] = os.path.join(place, "data", "rules")
        return subprocess.Popen([TOOL, *arguments], cwd=os.path.join(place, "data"), env=environment,
                                stderr=subprocess.DEVNULL, **{"stdout": subprocess.DEVNULL, **streams})

    def stop_at_moments(self, arguments):
        place = self.fresh()
        before = snapshot(place)
        began = time.monotonic()
        self.assertEqual(self.start(place, arguments).wait(), 0, arguments)
        duration = time.monotonic() - began
        whole = snapshot(place)
        stopped = 0
        for i in range(MOMENTS):
            place = self.fresh()
            number = SIGNALS[i % len(SIGNALS)]
            moment = self.random.uniform(0, duration * 1.05)
            with self.start(place, arguments) as process:
                time.sleep(moment)
                process.send_signal(number)
                status = process.wait()
            case = f"{arguments} stopped by {number.name} after {moment:.4f} of {duration:.4f} s"
            # A process that hasn't begun yet dies of the signal itself.
            self.assertIn(status, (0, 128 + number, -number), case)
            stopped += status != 0
            after = snapshot(place)
            for name, content in before.items():
                self.assertIn(after.get(name), (content, whole[name]), f"{case}: {name}")
            for name in after.keys() - before.keys():
                self.assertEqual(after[name], whole.get(name), f"{case}: {name} is left")
            if status == 0:
                self.assertEqual(after, whole, case)
        return stopped

    def test_every_command(self):
        for arguments in (
            ["info", "s.qlt"],
            ["info", "c.qlc"],
            ["info", "w.wmp"],
            ["export", "s.qlt", "-o", "out.csv"],
            ["export", "s.qlt", "--geojson", "-o", "new.json"],
            ["export", "c.qlc", "--channel", "Speed", "-o", "new.csv"],
            ["eval", "Speed*2", "s.qlt", "-o", "out.csv"],
            ["report", "s.qlt", "--tag", "ABC=.tag"],
            ["unpack", "c.qlc", "-o", "new.qlt"],
            ["export", "s.qlt", "--gpx", "-o", "out.csv"],
            ["eval", "Speed*2", "s.qlt", "--json", "-o", "new.json"],
            ["samples", "s.qlt", "Engine RPM"],
            ["report", "c.qlc"],
            ["unpack", "c.qlc"],
            ["predict", "w.wmp"],
            ["check", "w.wmp", "--fia", "rules/FIA.txt"],
            ["check", "w.wmp", "--fmi", "rules/FMI-limiter.txt"],
            ["rules", "info", "w.wmp"],
            ["simulate", "-o", "new.qlt", "--laps", "2"],
            ["simulate", "-o", "new.wmp", "--laps", "2"],
            ["simulate", "-o", "new.qlc", "--laps", "2"],
        ):
            with self.subTest(arguments=arguments):
                stopped = self.stop_at_moments(arguments)
                print(f"{' '.join(arguments)}: {stopped} of {MOMENTS} stopped", file=sys.stderr)

    def test_a_reader_that_has_enough(self):
        place = self.fresh()
        before = snapshot(place)
        for arguments in (["export", "s.qlt", "-o", "-"], ["samples", "s.qlt", "Speed"], ["unpack", "c.qlc", "-o", "-"]):
            with self.start(place, arguments, stdout=subprocess.PIPE) as process:
                process.stdout.read(100)
                process.stdout.close()
                self.assertEqual(process.wait(), 128 + signal.SIGPIPE, arguments)
            self.assertEqual(snapshot(place), before, arguments)

    def test_what_a_killed_export_left_goes_with_the_next(self):
        place = self.fresh()
        data = os.path.join(place, "data")
        # By a name that is nearly one of ours.
        own = ["out.csv.part", "out.csv.traguardo-0123456789abcdeg.part", "out.csv.traguardo-0123456789abcdef.parts"]
        for name in own:
            with open(os.path.join(data, name), "w", encoding="ascii") as file:
                file.write("the user's own")
        before = snapshot(place)
        export = ["export", "s.qlt", "-o", "out.csv"]

        def parts():
            return [name for name in os.listdir(data) if name not in own and name.startswith("out.csv.traguardo-")]

        def writes(known):
            new = [name for name in parts() if name not in known]
            return new and os.path.getsize(os.path.join(data, new[0])) > 0

        def started():
            known = set(parts())
            return self.stopped_in_the_midst(place, export, lambda: writes(known))

        with started() as process:
            process.kill()
        self.assertEqual(len(parts()), 1)
        # The next one removes that, but not what a living process is writing.
        with started() as living:
            try:
                written = parts()
                self.assertEqual(len(written), 1)
                self.assertEqual(self.start(place, export).wait(), 0)
                self.assertEqual(parts(), written)
            finally:
                living.send_signal(signal.SIGCONT)
            self.assertEqual(living.wait(), 0)
        after = snapshot(place)
        after.pop("data/out.csv")
        before.pop("data/out.csv")
        self.assertEqual(after, before)

    def test_what_a_killed_report_left_goes_with_the_next(self):
        place = self.fresh()
        temporary = os.path.join(place, "temporary")
        own = "traguardo-0123456789abcdeg"  # nearly a name of ours
        os.makedirs(os.path.join(temporary, own, "in it"))

        def working():
            return {name for name in os.listdir(temporary) if name != own and os.listdir(os.path.join(temporary, name))}

        def started():
            known = working()
            return self.stopped_in_the_midst(place, ["report", "s.qlt"], lambda: working() - known)

        with started() as process:
            process.kill()
        self.assertEqual(len(working()), 1)
        with started() as living:
            try:
                living_only = working()
                self.assertEqual(len(living_only), 1)
                self.assertEqual(self.start(place, ["report", "s.qlt"]).wait(), 0)
                self.assertEqual(working(), living_only)
            finally:
                living.send_signal(signal.SIGCONT)
            self.assertEqual(living.wait(), 0)
        self.assertEqual(os.listdir(temporary), [own])
        # No moment at which a killed opening of the older family would leave a copy.
        with self.start(place, ["info", "w.wmp"]) as process:
            while process.poll() is None:
                self.assertFalse(os.path.exists(os.path.join(place, "data", "w.bak")))


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    TOOL = os.path.abspath(sys.argv[1])
    MOMENTS = int(sys.argv[2]) if len(sys.argv) > 2 else MOMENTS
    MINUTES = float(sys.argv[3]) if len(sys.argv) > 3 else MINUTES
    unittest.main(argv=sys.argv[:1])
