#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""What the command-line host writes, where, and over what: nothing of a user's is lost, nothing is left lying about.

    outputs_test.py TOOL [unittest options]"""
import json
import os
import pty
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest
import zlib

from cli_test import SessionFile, tag

TOOL = ""
MATH_CHANNELS = "MATHCHANNELS/ZEP_TWMATH_2.ZMC"
TABLE = "user/et_prediction/Default.etp"
RULES = "BarometricPressure=1\nRPM=Engine RPM\nPboost=Speed\nThrottle=Throttle\nMaxPboost=limits.txt\n"


class Outputs(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.stock = tempfile.mkdtemp(prefix="traguardo_outputs_")
        for name in ("s.qlt", "c.qlc", "w.wmp"):
            subprocess.run([TOOL, "simulate", "--laps", "1", "-o", name], cwd=cls.stock, check=True,
                           stdout=subprocess.DEVNULL)

    @classmethod
    def tearDownClass(cls):
        shutil.rmtree(cls.stock)

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="traguardo_outputs_")
        self.addCleanup(folder.cleanup)
        self.data = os.path.join(folder.name, "data")
        self.config = os.path.join(folder.name, "config")
        shutil.copytree(self.stock, self.data)
        self.environment = {**os.environ, "XDG_CONFIG_HOME": self.config}
        for name in ("TRAGUARDO_HOME", "TRAGUARDO_STORE_FOLDER"):
            self.environment.pop(name, None)

    def run_tool(self, *arguments, **options):
        return subprocess.run([TOOL, *map(str, arguments)], cwd=self.data, env=self.environment, capture_output=True,
                              timeout=120, **options)

    def ok(self, *arguments):
        done = self.run_tool(*arguments)
        self.assertEqual((done.returncode, done.stderr), (0, b""), arguments)
        return done.stdout

    def fails(self, *arguments, saying):
        done = self.run_tool(*arguments)
        self.assertEqual(done.returncode, 1, arguments)
        self.assertRegex(done.stderr, rb"\Atraguardo: [^\n]+\n\Z", arguments)
        self.assertIn(saying, done.stderr.decode(), arguments)

    def path(self, *names):
        return os.path.join(self.data, *names)

    def write(self, name, content):
        with open(self.path(name), "wb") as file:
            file.write(content if isinstance(content, bytes) else content.encode())

    def read(self, name):
        with open(self.path(name), "rb") as file:
            return file.read()

    def everything(self):
        return {name: self.read(name) for name in os.listdir(self.data) if os.path.isfile(self.path(name))}

    # --- An output that is an input ---------------------------------------------------------------------------------

    def aliases(self, name):
        """The name itself and others for the same file, made as needed."""
        os.symlink(name, self.path("symbolic"))
        if os.path.exists(self.path(name)):
            os.link(self.path(name), self.path("hard"))
            yield "hard"
        os.makedirs(self.path("folder"), exist_ok=True)
        os.symlink("..", self.path("folder", "up"))
        yield from (name, "symbolic", self.path(name), "folder/../" + name, "folder/up/" + name)

    def read_beside_a_wmp(self):
        """All that the reader of a .wmp takes from its folder of configurations."""
        return {"FIA.txt": RULES, "limits.txt": "1000=1\n9000=2\n", "FMI-limiter.txt": "", "Exporter.txt": "ch=Nope\n",
                MATH_CHANNELS: "", TABLE: ""}

    def test_no_output_replaces_an_input(self):
        # What lies beside the session is nothing that its reader takes.
        self.write("FIA.txt", RULES)
        self.ok("export", "w.wmp", "--channel", "Speed #1", "-o", "FIA.txt")
        self.environment["TRAGUARDO_HOME"] = self.data
        for name, content in self.read_beside_a_wmp().items():
            os.makedirs(os.path.dirname(self.path(name)), exist_ok=True)
            self.write(name, content)
        cases = [(command, source, taken) for source, inputs in (
            ("s.qlt", ["s.qlt"]), ("c.qlc", ["c.qlc", "c.qlt"]),
            ("w.wmp", ["w.wmp", "w.jts", *self.read_beside_a_wmp()])) for taken in inputs for command in (
                ["export"], ["export", "--channel", "Speed"], ["export", "--gpx"], ["export", "--geojson"],
                ["eval", "1+1"], ["eval", "1+1", "--json"])]
        cases.append((["unpack"], "c.qlc", "c.qlc"))
        before = self.everything()
        for command, source, taken in cases:
            for alias in self.aliases(taken):
                with self.subTest(command=command, source=source, taken=taken, alias=alias):
                    self.fails(*command, source, "-o", alias, saying="onto itself" if command == ["unpack"] else alias)
            for link in ("symbolic", "hard", "folder"):
                path = self.path(link)
                shutil.rmtree(path) if os.path.isdir(path) else os.path.lexists(path) and os.unlink(path)
            self.assertEqual(self.everything(), before)

    def test_outputs_with_names_of_their_own_replace_no_input_either(self):
        self.write("FIA.txt", RULES.replace("limits.txt", "FIA_comp_output.txt"))
        self.write("FIA_comp_output.txt", "1000=1\n9000=2\n")
        self.write("FMI-limiter.txt", "")
        os.symlink("s.qlt", self.path("FMI-output.txt"))
        os.link(self.path("s.qlt"), self.path("s.qlt.tw3.log"))
        os.symlink("c.qlc", self.path("c.qlt.tag"))
        os.symlink("n.wmp", self.path("n.jts"))
        before = self.everything()
        self.fails("check", "w.wmp", "--fia", "FIA.txt", saying="FIA_comp_output.txt")
        self.fails("check", "s.qlt", "--fmi", "FMI-limiter.txt", saying="FMI-output.txt")
        self.fails("report", "s.qlt", saying="s.qlt.tw3.log")
        self.fails("report", "c.qlc", "--tag", "ABC=.tag", saying="c.qlt.tag")
        self.fails("report", "c.qlc", "--tag", "ABC=.tw3.log", saying="one file")
        self.fails("simulate", "-o", "n.wmp", saying="one file")
        os.makedirs(self.path("user/et_prediction"))
        self.write(TABLE, "")
        for command, onto in ((["export", "s.qlt", "-o", "-"], "s.qlt"), (["samples", "s.qlt", "Speed"], "s.qlt"),
                              (["report", "s.qlt"], "s.qlt"), (["info", "w.wmp"], "w.jts"),
                              (["export", "s.qlt", "-o", "/dev/stdout"], "s.qlt"),
                              (["predict", "s.qlt", "--tables", "."], TABLE)):
            with open(self.path(onto), "ab") as file:
                done = subprocess.run([TOOL, *command], cwd=self.data, env=self.environment, stdout=file,
                                      stderr=subprocess.PIPE, check=False)
            self.assertEqual((done.returncode, b"which the command reads" in done.stderr), (1, True), command)
        self.assertEqual(self.everything(), before)

    def test_no_report_of_the_reader_goes_through_to_an_input(self):
        home = self.environment["TRAGUARDO_HOME"] = self.path("home")
        os.makedirs(os.path.join(home, "MATHCHANNELS"))
        os.makedirs(os.path.join(home, "user/et_prediction"))
        for name, content in self.read_beside_a_wmp().items():
            self.write(os.path.join("home", name), content)
        self.ok("info", "w.wmp")  # Gives the limiter its section.
        reports = ("w.wmp.export.csv", "home/FIA_comp_output.txt", "home/FMI-output.txt")
        self.assertTrue(all(os.path.exists(self.path(name)) for name in reports))
        self.assertIn(b"No valid channel name", self.read(reports[0]))
        inputs = ["w.wmp", "w.jts"] + ["home/" + name for name in self.read_beside_a_wmp() if name != TABLE]
        for channel in ("Nope", "Speed #1"):
            self.write("home/Exporter.txt", f"ch={channel}\n")
            before = {name: self.read(name) for name in inputs}
            for taken in inputs:
                for report in reports:
                    for link in (os.symlink, os.link):
                        os.unlink(self.path(report))
                        link(self.path(taken), self.path(report))
                        self.ok("info", "w.wmp")
                        self.assertEqual({name: self.read(name) for name in inputs}, before, (taken, report, link))
                        self.assertTrue(os.path.samefile(self.path(taken), self.path(report)))
        # A session that is the limiter's configuration, too, gets no section.
        for taken in ("w.wmp", "w.jts"):
            for link in (os.symlink, os.link):
                os.unlink(self.path("home/FMI-limiter.txt"))
                link(self.path(taken), self.path("home/FMI-limiter.txt"))
                self.ok("info", "w.wmp")
                self.assertEqual(self.read(taken), before[taken])

    def test_what_is_open_already_is_written_to_where_it_stands(self):
        command = f"{TOOL} export s.qlt --channel Speed -o"
        wanted = self.ok("export", "s.qlt", "--channel", "Speed", "-o", "-")
        self.write("log", "earlier\n")
        for line, text in ((f"{command} /dev/stdout | cat", wanted), (f"{command} /dev/fd/3 3>&1 | cat", wanted),
                           (f"{command} /dev/fd/3 3>> log; cat log", b"earlier\n" + wanted),
                           (f"{command} >(cat > copy); sleep 0.3; cat copy", wanted),
                           (f"{command} pipe & cat pipe", wanted),
                           (f"{TOOL} unpack c.qlc -o /dev/stdout | cmp - c.qlt && echo same", b"same\n")):
            if line.endswith("cat pipe"):
                os.mkfifo(self.path("pipe"))
            if "c.qlt" in line:
                self.ok("unpack", "c.qlc")
            done = subprocess.run(["bash", "-c", line], cwd=self.data, env=self.environment, capture_output=True,
                                  timeout=60, check=False)
            self.assertEqual((done.stdout == text, done.stderr), (True, b""), line)

    def test_a_protected_file_stays(self):
        self.write("old.csv", "old\n")
        os.chmod(self.path("old.csv"), 0o444)
        user = {}
        if os.geteuid() == 0:  # whom no protection holds
            user = {"user": 65534, "group": 65534, "extra_groups": []}
            for folder in (os.path.dirname(self.data), self.data):
                os.chmod(folder, 0o777)
        for command in (["export", "s.qlt", "-o", "old.csv"], ["simulate", "-o", "old.csv"], ["unpack", "c.qlc", "-o", "old.csv"]):
            done = self.run_tool(*command, **user)
            self.assertEqual((done.returncode, done.stderr),
                             (1, b"traguardo: cannot write old.csv: Permission denied\n"), command)
        self.assertEqual(self.read("old.csv"), b"old\n")

    def test_an_output_keeps_its_permissions_and_its_links(self):
        self.write("old.csv", "old\n")
        os.chmod(self.path("old.csv"), 0o640)
        os.symlink("old.csv", self.path("link.csv"))
        os.symlink("new.csv", self.path("dangling.csv"))
        for name in ("link.csv", "dangling.csv"):
            self.ok("export", "s.qlt", "--channel", "Speed", "-o", name)
            self.assertTrue(os.path.islink(self.path(name)))
        self.assertEqual(self.read("old.csv"), self.read("new.csv"))
        self.assertTrue(self.read("old.csv").startswith(b"channel,"))
        self.assertEqual(os.stat(self.path("old.csv")).st_mode & 0o777, 0o640)

    def test_a_failed_report_leaves_the_earlier_one(self):
        self.ok_report = self.run_tool("report", "s.qlt", "--tag", "ABC=.tag")
        self.assertEqual(self.ok_report.returncode, 0)
        before = {name: self.read(name) for name in ("s.qlt.tw3.log", "s.qlt.tag")}
        for content in (b"", b"no tags here" * 100):
            self.write("s.qlt", content)
            self.assertEqual(self.run_tool("report", "s.qlt", "--tag", "ABC=.tag").returncode, 1)
            self.assertEqual({name: self.read(name) for name in before}, before)
        os.unlink(self.path("s.qlt"))
        self.fails("report", "s.qlt", saying="No such file")
        self.assertEqual({name: self.read(name) for name in before}, before)

    def test_a_bad_compressed_file_costs_no_good_expansion(self):
        whole = self.read("s.qlt")
        self.write("x.qlt", whole)
        self.write("x.qlc", zlib.compress(whole)[: 10000])
        self.fails("unpack", "x.qlc", saying="damaged or cut short")
        self.assertEqual(self.read("x.qlt"), whole)

    # --- Places -----------------------------------------------------------------------------------------------------

    def test_nothing_is_left_lying_about(self):
        before = sorted(os.listdir(self.data))
        beside_the_tool = sorted(os.listdir(os.path.dirname(TOOL)))
        for command in (["info"], ["laps"], ["gps"], ["channels"], ["samples", "Speed"], ["predict"], ["eval", "1"]):
            for session in ("s.qlt", "w.wmp"):
                name, *rest = command
                self.run_tool(*(["eval", "1", session] if name == "eval" else [name, session, *rest]))
        self.assertEqual(sorted(os.listdir(self.data)), before)
        self.assertEqual(sorted(os.listdir(os.path.dirname(TOOL))), beside_the_tool)
        table = os.path.join("user", "et_prediction", "Default.etp")
        self.assertTrue(os.path.exists(os.path.join(self.config, "traguardo", table)))
        self.environment["TRAGUARDO_HOME"] = os.path.join(self.config, "elsewhere")
        self.ok("info", "w.wmp")
        self.assertTrue(os.path.exists(os.path.join(self.config, "elsewhere", table)))

    def test_read_only_media(self):
        here = [self.ok("laps", name) for name in ("s.qlt", "c.qlc", "w.wmp")]
        os.unlink(self.path("c.qlt"))
        if os.geteuid() != 0:
            os.chmod(self.data, 0o555)
            self.addCleanup(os.chmod, self.data, 0o755)
        elif subprocess.run(["mount", "--bind", "-o", "ro", self.data, self.data], stderr=subprocess.DEVNULL,
                            check=False).returncode == 0:
            self.addCleanup(subprocess.run, ["umount", self.data], check=True)
            subprocess.run(["mount", "-o", "remount,bind,ro", self.data], check=True)
        else:
            self.skipTest("no right to make a medium read-only")
        temporary = os.path.join(os.path.dirname(self.data), "temporary")
        os.mkdir(temporary)
        self.environment["TMPDIR"] = temporary
        self.assertEqual([self.ok("laps", name) for name in ("s.qlt", "c.qlc", "w.wmp")], here)
        for name in ("s.qlt", "c.qlc"):
            done = self.run_tool("report", name)
            self.assertIn(b"User information", done.stdout)
            self.assertIn(b"cannot write", done.stderr)
        self.fails("export", "s.qlt", "-o", "out.csv", saying="cannot write out.csv")
        self.assertEqual(os.listdir(temporary), [])
        self.environment["TRAGUARDO_STORE_FOLDER"] = os.path.join(temporary, "missing")
        self.fails("info", "s.qlt", saying="no room or no place")
        self.fails("report", "c.qlc", saying="no room or place for its expansion in " + temporary)
        self.fails("report", "s.qlt", saying="no room or place for its samples in " + temporary)
        del self.environment["TRAGUARDO_STORE_FOLDER"]
        self.environment["TMPDIR"] = os.path.join(temporary, "missing")
        self.fails("info", "s.qlt", saying="no room or no place for its samples in .")
        self.fails("report", "s.qlt", saying="no room or place to work")

    def test_a_report_without_a_folder_for_temporary_files(self):
        self.environment["TMPDIR"] = "/nonexistent"
        before = sorted(os.listdir(self.data))
        self.assertIn(b"User information", self.run_tool("report", "s.qlt").stdout)
        self.assertEqual(sorted(os.listdir(self.data)), sorted([*before, "s.qlt.tw3.log"]))

    def test_why_a_session_is_not_opened(self):
        self.write("notes.txt", "no session\n")
        self.write("empty.qlt", "")
        self.write("junk.qlt", "no tags here" * 100)
        os.mkfifo(self.path("pipe.qlt"))
        os.mkdir(self.path("folder.qlt"))
        for trace, name in ((None, "bare.wmp"), ("folder.jts", "folder.wmp")):
            shutil.copy(self.path("w.wmp"), self.path(name))
            if trace is not None:
                os.mkdir(self.path(trace))
        cases = {"bare.wmp": "its trace file is missing", "folder.wmp": "its trace file folder.jts can't be read: Is a",
                 "missing.qlt": "No such file", "folder.qlt": "Is a directory", "pipe.qlt": "a pipe",
                 "/dev/null": "a device", "notes.txt": "not a kind of session file", "empty.qlt": "no session",
                 "junk.qlt": "no session"}
        if os.geteuid() != 0:
            self.write("secret.qlt", self.read("s.qlt"))
            os.chmod(self.path("secret.qlt"), 0)
            cases["secret.qlt"] = "Permission denied"
        for name, saying in cases.items():
            with self.subTest(name=name):
                self.fails("info", name, saying=saying)
        self.fails("unpack", "pipe.qlt", "-o", "x", saying="a pipe")
        done = subprocess.run(["sh", "-c", 'exec "$0" info s.qlt >&-', TOOL], cwd=self.data, capture_output=True,
                              check=False)
        self.assertEqual((done.returncode, done.stderr[:43]), (1, b"traguardo: cannot write standard output: Ba"))

    # --- Texts ------------------------------------------------------------------------------------------------------

    def named(self, name, channel, unit=None):
        """A session whose first channel has another name, in bytes; the checksums are made right again."""
        data = bytearray(self.read("s.qlt"))
        at = data.index(b"<hCHS\0") + 12
        data[at + 32: at + 64] = channel.ljust(32, b"\0")
        if unit is not None:
            struct.pack_into("<I", data, at + 12, unit)
        struct.pack_into("<H", data, at + 112 + 5, sum(data[at: at + 112]) & 0xFFFF)
        table = data.index(b"<hCNF\0")
        size, = struct.unpack_from("<I", data, table + 6)
        payload = data[table + 12: table + 12 + size]
        struct.pack_into("<H", data, table + 12 + size + 5, sum(payload) & 0xFFFF)
        self.write(name, bytes(data))

    def in_terminal(self, *arguments):
        """What a terminal behind both streams gets to see."""
        master, slave = pty.openpty()
        with subprocess.Popen([TOOL, *arguments], cwd=self.data, env=self.environment, stdout=slave, stderr=slave) as p:
            os.close(slave)
            seen = b""
            while True:
                try:
                    piece = os.read(master, 65536)
                except OSError:  # how Linux tells that the other side is closed
                    piece = b""
                if not piece:
                    break
                seen += piece
            p.wait()
        os.close(master)
        return seen

    def test_a_terminal_gets_no_commands_out_of_a_file(self):
        evil = b"\x1b]0;x\x07a\rb\nc\x9bd"
        shown = rb"\x1b]0;x\x07a\rb\nc\x9bd"
        self.named("evil.qlt", evil)
        utf8 = evil.decode("latin-1")
        for command in (["channels", "evil.qlt"], ["samples", "evil.qlt", utf8, "--head", "1"],
                        ["export", "evil.qlt", "--channel", utf8, "-o", "-"], ["samples", "evil.qlt", utf8 + "?"]):
            with self.subTest(command=command):
                seen = self.in_terminal(*command)
                self.assertTrue(shown in seen, seen[:200])
                for control in (b"\x1b", b"\x07", b"\rb", b"\x9b"):
                    self.assertFalse(control in seen, seen[:200])
        for command in (["report", "evil.qlt"], ["channels", "evil.qlt", "--json"]):
            seen = self.in_terminal(*command)
            self.assertFalse(b"\x1b" in seen or b"\x9b" in seen, command)
        # A file gets the text as it is, in UTF-8; JSON escapes it.
        self.assertTrue(utf8.encode() in self.ok("export", "evil.qlt", "--channel", utf8, "-o", "-"))
        self.assertEqual(json.loads(self.ok("channels", "evil.qlt", "--json"))[0]["name"], utf8)

    def test_all_text_is_utf8(self):
        lambda_sensor = 30  # function word
        self.named("l.qlt", b"Caf\xe9", lambda_sensor)
        for command in (["channels", "l.qlt"], ["channels", "l.qlt", "--json"], ["export", "l.qlt", "-o", "-"],
                        ["report", "l.qlt"], ["samples", "l.qlt", "Café", "--head", "1"],
                        ["samples", "l.qlt", "Café", "--head", "1", "--json"]):
            with self.subTest(command=command):
                text = self.run_tool(*command).stdout.decode("utf-8")
                self.assertTrue("Café" in text)
                self.assertTrue(command[0] == "report" or "λ" in text)

    def test_a_degree_sign_of_another_character_set(self):
        self.ok("simulate", "--version", "450", "--laps", "1", "-o", "g.wmp")
        data = bytearray(self.read("g.wmp"))
        at = data.index(b"Yaw Rate\0")
        gyro = 42
        data[at + 20: at + 30] = bytes(10)  # unit
        struct.pack_into("<H", data, at + 64, gyro)
        self.write("g.wmp", bytes(data))
        units = {channel["name"]: channel["unit"] for channel in json.loads(self.ok("channels", "g.wmp", "--json"))}
        self.assertEqual(units["Yaw Rate"], "°/sec")

    # --- Bounds -----------------------------------------------------------------------------------------------------

    def test_two_solutions_far_apart(self):
        data = self.read("s.qlt")
        session = SessionFile(data)
        channel = next(c for c in session.visible() if c.samples)

        def sample(clock_ms):
            return b"(S" + struct.pack("<IH", clock_ms, channel.index) + channel.samples[0][1] + b")"

        early, late = session.good_gps()[:2]
        start, = struct.unpack_from("<I", early, 0)
        wild = start + 4_000_000_000
        late = struct.pack("<I", wild) + late[4:]
        header = data[: data.index(b"<hGPS\0")]
        self.write("gap.qlt", header + sample(start) + tag("GPS", early) + sample(wild) + tag("GPS", late) +
                   tag("EVT", b"stop"))

        for arguments in (["export", "gap.qlt", "-o", "-"], ["samples", "gap.qlt", "GPS Speed", "--json"],
                          ["samples", "gap.qlt", "GPS Speed", "--head", "2"], ["gps", "gap.qlt"], ["info", "gap.qlt"]):
            with self.subTest(arguments=arguments):
                with subprocess.Popen([TOOL, *arguments], cwd=self.data, env=self.environment, stdout=subprocess.PIPE,
                                      stderr=subprocess.PIPE) as process:
                    self.assertGreater(len(process.stdout.read(50_000_000)), 50)
                    process.stdout.close()
                    said = process.stderr.read()
                    _, status, usage = os.wait4(process.pid, 0)
                    process.returncode = os.waitstatus_to_exitcode(status)
                self.assertIn(process.returncode, (0, 141), said)
                self.assertLess(usage.ru_maxrss, 200_000, "kilobytes")
                writes_all = arguments[0] == "export" or arguments[-1] == "--json"
                self.assertEqual(b"about to write" in said, writes_all)

    def test_a_question_about_an_unknown_channel(self):
        for wanted, meant in (("speeds", '"Speed"'), ("EngineRPM", '"Engine RPM"'), ("Brakepres", '"Brake Press"')):
            self.fails("samples", "s.qlt", wanted, saying=f'no channel "{wanted}" in s.qlt; did you mean {meant}')
        done = self.run_tool("eval", "2*engin rpm/60", "s.qlt")
        self.assertIn(b'is unknown; did you mean "Engine RPM"?\n  2*engin rpm/60\n    ^\n', done.stderr)
        self.assertIn(b"nearest names are", self.run_tool("samples", "s.qlt", "Nothing").stderr)
        for arguments, saying in ((("samples", "s.qlt", "Speed", "--head", "-3"), b"0 to 2147483647"),
                                  (("predict", "s.qlt", "--length", "100"), b"330,500,660,1320"),
                                  (("eval", "1", "s.qlt", "--rate", "nan"), b"not a number")):
            done = self.run_tool(*arguments)
            self.assertEqual(done.returncode, 2, arguments)
            self.assertIn(saying, done.stderr)


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    TOOL = os.path.abspath(sys.argv.pop(1))
    unittest.main()
