#!/usr/bin/env python3
"""Runs kesto.exe under wine and compares with the command of this system: what it says, its exit statuses, and all files
byte by byte, but for the path of the model in summary.json. Then what only Windows has: names, locks, kills.

usage: check_command.py --native KESTO --program KESTO_EXE --wine WINE --dot FOLDER [NAME_OF_TEST ...]"""

import argparse
import hashlib
import json
import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import time
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
MODELS = sorted([*ROOT.glob("docs/components/examples/*.toml"), *ROOT.glob("examples/*/model.toml"),
                 *ROOT.glob("tests/command/doubtful_runs/*.toml"), *ROOT.glob("tests/command/failing/*.toml")])
HOUSE = "examples/rainwater-house/model.toml"
SHORT = ROOT / "docs/components/examples/tank.toml"
CONTROL_C = 0x3A  # the last byte of 0xC000013A, which is all that wine hands on
OUTSIDE = {**os.environ, "PATH": "/nowhere"}  # no Graphviz: there is no dot.exe under wine either
GET_GRAPHVIZ = ("install graphviz (Debian: apt-get install graphviz)",
                "install Graphviz from graphviz.org and put its folder bin on PATH")

OPTIONS = argparse.ArgumentParser()
for option in ("--native", "--program", "--wine", "--dot"):
    OPTIONS.add_argument(option, type=lambda text: str(pathlib.Path(text).resolve()), required=True)
OPTIONS, REST = OPTIONS.parse_known_args()


def native(*arguments, **options):
    return subprocess.run([OPTIONS.native, *map(str, arguments)], capture_output=True, timeout=120, env=OUTSIDE, **options)


def command(*arguments):
    return [OPTIONS.wine, OPTIONS.program, *map(str, arguments)]


def windows(*arguments, **options):
    return subprocess.run(command(*arguments), capture_output=True, timeout=120, **options)


def files(folder):
    """Of a folder with results. The model's absolute path, which has a drive there, is cut short."""
    found = {}
    for path in sorted(folder.rglob("*")):
        content = path.read_bytes()
        if path.name == "summary.json":
            summary = json.loads(content)
            summary["model_file"] = summary["model_file"].removeprefix("Z:")
            content = json.dumps(summary, indent=1).encode()
        found[str(path.relative_to(folder))] = content
    return found


def long_model(folder, panels=300):
    """That runs for seconds, and takes little memory."""
    text = ["kesto_model = 1\n[simulation]\nstart = 1970-01-01\nend = 2999-12-31\nlatitude = 47.6\n"
            "[groups.roof]\ntemperature_min = 12\ntemperature_max = 24\n[brands.panel]\nyield_factor = 0.18\n"
            '[[components]]\nname = "use"\ntype = "demand_source"\ndemand = 1\n']
    for i in range(panels):
        text.append(f'[[components]]\nname = "panel{i}"\ntype = "solar_panel"\ngroup = "roof"\nbrand = "panel"\nsize = 10\n')
    (folder / "model.toml").write_text("".join(text))


class Case(unittest.TestCase):
    maxDiff = 2000

    def setUp(self):
        temporary = tempfile.TemporaryDirectory(ignore_cleanup_errors=True)
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name)

    def expect_same(self, *arguments, cwd=ROOT):
        here, there = native(*arguments, cwd=cwd), windows(*arguments, cwd=cwd)
        self.assertEqual((there.returncode, there.stderr.decode(), there.stdout.decode()),
                         (here.returncode, here.stderr.decode(), here.stdout.decode()), arguments)

    def expect_same_files(self, one, other):
        here, there = files(one), files(other)
        self.assertEqual(sorted(there), sorted(here))
        for name, content in here.items():
            self.assertTrue(content, name)
            self.assertEqual(hashlib.sha256(there[name]).hexdigest(), hashlib.sha256(content).hexdigest(), name)
        return len(here)


class Same(Case):
    def test_what_needs_no_model(self):
        # The help begins with the path of the program.
        self.assertEqual(windows("--help").stdout.splitlines()[2:], native("--help").stdout.splitlines()[2:])
        for arguments in (["--version"], ["types"], ["types", "--json"], ["types", "tank"], ["schema"], ["codes"],
                          ["figures"], ["nonsense"], ["run"], ["run", "no.toml"], ["run", "."]):
            with self.subTest(arguments):
                self.expect_same(*arguments)

    def test_broken_models(self):
        models = sorted(ROOT.glob("tests/command/broken/*.toml"))
        self.assertGreater(len(models), 15)
        for model in models:
            with self.subTest(model.name):
                done = windows("run", model.name, cwd=model.parent)
                self.assertEqual(f"exit status {done.returncode}\n{done.stderr.decode()}{done.stdout.decode()}",
                                 model.with_suffix(".expected").read_text())

    def test_runs_of_all_examples(self):
        self.assertGreater(len(MODELS), 30)
        compared = 0
        for model in MODELS:
            with self.subTest(model.name):
                one, other = self.folder / f"{compared}-here", self.folder / f"{compared}-there"
                here = native("run", "--balance", model.relative_to(ROOT), "-o", one, cwd=ROOT)
                there = windows("run", "--balance", model.relative_to(ROOT), "-o", other, cwd=ROOT)
                said = there.stdout.decode().replace(str(other), str(one)), there.stderr.decode()
                self.assertEqual(said, (here.stdout.decode(), here.stderr.decode()))
                self.assertEqual(there.returncode, here.returncode)
                compared += self.expect_same_files(one, other)
        print(f"{len(MODELS)} models, {compared} files")

    def test_a_sweep(self):
        sweep = ["sweep", "-q", HOUSE, "--vary", "tank.size=500:5000:6", "--record", "tank", "--every", "month", "--format", "csv"]
        one, other, halves = self.folder / "here", self.folder / "there", [self.folder / "a", self.folder / "b"]
        self.assertEqual(native(*sweep, "-o", one, cwd=ROOT).returncode, 0)
        done = windows(*sweep, "-o", other, cwd=ROOT)
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        self.assertEqual(self.expect_same_files(one, other), 3)
        for half, members in zip(halves, ("1-2", "3-6")):
            self.assertEqual(windows(*sweep, "--members", members, "-o", half, cwd=ROOT).returncode, 0)
        whole = self.folder / "whole"
        done = windows("sweep", "-q", "--join", *halves, "-o", whole, cwd=ROOT)
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        self.expect_same_files(one, whole)
        # Without --format, and with one that is not there.
        windows(*sweep[:-2], "-o", self.folder / "plain", cwd=ROOT)
        self.assertEqual((self.folder / "plain" / "part-00000.csv").read_bytes(), (one / "part-00000.csv").read_bytes())

    def test_no_netcdf(self):
        for arguments in (["run", HOUSE, "--format", "netcdf"],
                          ["sweep", HOUSE, "--vary", "tank.size=1,2", "--record", "all", "--format", "netcdf"]):
            done = windows(*arguments, "-o", self.folder / "out", cwd=ROOT)
            self.assertEqual(done.returncode, 1)
            self.assertEqual(done.stderr.decode().strip(),
                             f"{self.folder}/out: error: this kesto has no NetCDF; use CSV, which it writes without --format")

    def test_the_page_and_a_comparison(self):
        one, other = self.folder / "one", self.folder / "other"
        for folder, size in ((one, 500), (other, 2000)):
            self.assertEqual(native("run", "-q", HOUSE, "--set", f"tank.size={size}", "-o", folder, cwd=ROOT).returncode, 0)
        self.expect_same("compare", one, other)
        self.expect_same("compare", HOUSE, "--scenarios", "--json")
        pages = self.folder / "here.html", self.folder / "there.html"
        here, there = native("report", one, "-o", pages[0]), windows("report", one, "-o", pages[1])
        self.assertEqual(there.returncode, 0, there.stderr)
        self.assertIn('the program "dot" of Graphviz was not found; ' + GET_GRAPHVIZ[1], there.stderr.decode())
        self.assertEqual(there.stderr.decode(), here.stderr.decode().replace(*GET_GRAPHVIZ))
        self.assertEqual(pages[1].read_bytes(), pages[0].read_bytes())
        here, there = (make("draw", HOUSE, "-o", self.folder / "net.svg", cwd=ROOT) for make in (native, windows))
        self.assertEqual((there.returncode, there.stdout), (here.returncode, here.stdout))
        self.assertEqual(there.stderr.decode(), here.stderr.decode().replace(*GET_GRAPHVIZ))
        for make, name in ((native, "here.dot"), (windows, "there.dot")):
            self.assertEqual(make("draw", HOUSE, "-o", self.folder / name, cwd=ROOT).returncode, 0)
        self.assertEqual((self.folder / "there.dot").read_bytes(), (self.folder / "here.dot").read_bytes())

    def test_going_on(self):
        model = ["run", "-q", SHORT]
        one, other = self.folder / "here", self.folder / "there"
        whole = json.loads(native(*model, "--json", cwd=ROOT).stdout)
        day = whole["start"]
        native(*model, "--to", day, "-o", one, cwd=ROOT)
        windows(*model, "--to", day, "-o", other, cwd=ROOT)
        self.expect_same_files(one, other)
        after = day[:-2] + f"{int(day[-2:]) + 1:02}"
        for make, states in ((native, one), (windows, other)):
            done = make(*model, "--from", after, "--states-from", states, "-o", self.folder / f"{states.name}-on", cwd=ROOT)
            self.assertEqual((done.returncode, done.stderr), (0, b""))
        self.assertEqual((self.folder / "there-on" / "flows.csv").read_bytes(), (self.folder / "here-on" / "flows.csv").read_bytes())


class Files(Case):
    def test_a_drawing_by_the_program_on_path(self):
        environment = {**os.environ, "WINEPATH": "Z:" + OPTIONS.dot.replace("/", "\\")}
        picture, graph = self.folder / "Netz ü.svg", self.folder / "net.dot"
        for output in (picture, graph):
            done = windows("draw", HOUSE, "-o", output, cwd=ROOT, env=environment)
            self.assertEqual((done.returncode, done.stderr), (0, b""))
        self.assertEqual(picture.read_text(), f'<?xml version="1.0"?><svg>{len(graph.read_bytes())}</svg>')
        done = windows("draw", HOUSE, "-o", self.folder / "net.png", cwd=ROOT, env=environment)
        self.assertEqual(done.returncode, 1)
        self.assertIn('"dot -Tpng" failed: no such format', done.stderr.decode())

    def run_in(self, folder):
        folder.mkdir(parents=True, exist_ok=True)
        created = folder / "Gründach für Zürich"
        done = windows("new", created)
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        self.assertIn("Gründach für Zürich/model.toml", done.stdout.decode())
        results = folder / "Ergebnisse 雨"
        for _ in range(2):  # the second takes the place of the first
            done = windows("run", "-q", created / "model.toml", "-o", results)
            self.assertEqual((done.returncode, done.stderr), (0, b""))
        self.assertTrue((results / "flows.csv").stat().st_size)
        self.assertEqual([path.name for path in results.iterdir() if path.name.startswith(".")], [])
        done = windows("report", results, "-o", folder / "Seite ü.html")
        self.assertEqual(done.returncode, 0, done.stderr)
        done = windows("sweep", "-q", created / "model.toml", "--vary", "tank.size=100,200", "-o", folder / "Läufe")
        self.assertEqual((done.returncode, done.stderr), (0, b""))

    def test_umlauts_and_blanks(self):
        self.run_in(self.folder / "Übung mit Leerzeichen")

    def test_three_hundred_characters(self):
        folder = self.folder
        while len(str(folder)) < 300:
            folder = folder / "a_folder_with_a_long_name"
        self.run_in(folder)

    def test_drives_and_slashes(self):
        (self.folder / "model.toml").write_bytes(SHORT.read_bytes())
        drive = "Z:" + str(self.folder).replace("/", "\\")
        for model in (drive + "\\model.toml", "\\\\?\\" + drive + "\\model.toml"):
            done = windows("run", "-q", model, "-o", drive + "\\out")
            self.assertEqual((done.returncode, done.stderr), (0, b""), model)
        self.assertTrue((self.folder / "out" / "flows.csv").exists())

    def test_tables_as_windows_writes_them(self):
        text = (ROOT / HOUSE).read_text()
        weather = (ROOT / HOUSE).with_name("weather.csv").read_text()
        results = []
        for name, encode in (("plain", lambda t: t.encode()), ("crlf", lambda t: t.replace("\n", "\r\n").encode()),
                             ("utf16", lambda t: t.encode("utf-16"))):
            folder = self.folder / name
            folder.mkdir()
            (folder / "model.toml").write_bytes(text.replace("\n", "\r\n").encode())
            (folder / "weather.csv").write_bytes(encode(weather))
            done = windows("run", "-q", folder / "model.toml", "-o", folder / "out")
            self.assertEqual(done.returncode, 0, done.stderr)
            results.append((folder / "out" / "flows.csv").read_bytes())
        self.assertEqual(len(set(results)), 1)

    def test_a_file_that_another_program_has_open(self):
        out = self.folder / "out"
        self.assertEqual(windows("run", "-q", SHORT, "-o", out).returncode, 0)
        before = files(out)
        # A shell whose output goes to the file holds it open.
        holder = subprocess.Popen([OPTIONS.wine, r"C:\windows\system32\cmd.exe", "/c", f"more >> Z:{out}/flows.csv"], stdin=subprocess.PIPE)
        try:
            for _ in range(30):  # it may not have begun
                done = windows("run", "-q", SHORT, "-o", out)
                if done.returncode != 0:
                    break
        finally:
            holder.stdin.close()
            holder.wait()
        self.assertEqual(done.returncode, 1)
        self.assertIn("flows.csv: it is open in another program; close it there", done.stderr.decode())
        after = files(out)
        after["flows.csv"] = after["flows.csv"].removesuffix(b"\r\n")  # with which some shells end
        self.assertEqual(after, before)


class Ends(Case):
    def start(self):
        long_model(self.folder)
        started = subprocess.Popen(command("run", "-q", "model.toml", "-o", "out", "--record", "use"), cwd=self.folder,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE)

        def end():
            started.kill()
            started.communicate()

        self.addCleanup(end)
        return started

    def processes(self, word="kesto"):
        """Ids of the processes of kesto.exe in this test's folder whose command line has this word."""
        found = []
        for process in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                line = (process / "cmdline").read_bytes().decode()
                if "kesto" in line and word in line and (process / "cwd").resolve() == self.folder:
                    found.append(int(process.name))
            except OSError:
                continue
        return found

    def until_it_computes(self, started):
        """The engine's process, once it has had 0.2 s of the processor, however busy the machine is. Its start, and that
        of the engine, take a tenth of it; the steps fifty times as much."""
        end = time.monotonic() + 120
        while time.monotonic() < end:
            for process in self.processes("--child-process"):
                spent = pathlib.Path(f"/proc/{process}/stat").read_text().split(") ")[1].split()[11]
                if int(spent) / os.sysconf("SC_CLK_TCK") > 0.2:
                    return process
            self.assertIsNone(started.poll(), "it ended before it could be stopped")
            time.sleep(0.02)
        return self.fail("its engine has not begun")

    def test_a_second_run_is_refused(self):
        first = self.start()
        self.until_it_computes(first)
        done = windows("run", "-q", SHORT, "-o", "out", cwd=self.folder)
        self.assertEqual(done.returncode, 1)
        self.assertRegex(done.stderr.decode(), r"process \d+ is writing results into out; wait for it, or choose another folder")

    def expect_what_was_computed(self, run, outcome):
        errors = run.communicate(timeout=60)[1].decode()
        summary = json.loads((self.folder / "out" / "summary.json").read_text())
        self.assertEqual(summary["outcome"], outcome, errors)
        self.assertGreater(summary["steps_run"], 0)
        self.assertTrue((self.folder / "out" / "STOPPED.txt").exists())
        rows = (self.folder / "out" / "flows.csv").read_bytes().splitlines()
        self.assertEqual(len(rows), summary["steps_run"] + 1)
        self.expect_none_left()
        return errors

    def expect_none_left(self):
        end = time.monotonic() + 60
        while self.processes() and time.monotonic() < end:
            time.sleep(0.1)
        self.assertEqual(self.processes(), [])

    def test_control_c_keeps_what_was_computed(self):
        run = self.start()
        self.until_it_computes(run)
        run.send_signal(signal.SIGINT)
        errors = self.expect_what_was_computed(run, "interrupted")
        self.assertEqual(run.returncode, CONTROL_C, errors)

    def test_a_crash_of_the_engine_keeps_what_was_computed(self):
        run = self.start()
        os.kill(self.until_it_computes(run), signal.SIGSEGV)  # which wine takes for a fault of the program
        errors = self.expect_what_was_computed(run, "crashed")
        self.assertEqual(run.returncode, 1, errors)
        self.assertRegex(errors, "ended by an access violation|ended with status 0xc000001d")

    def test_no_child_outlives_its_parent(self):
        run = self.start()
        self.until_it_computes(run)
        self.assertGreaterEqual(len(self.processes()), 2)
        run.kill()
        run.wait()
        self.expect_none_left()
        # The lock went with the process.
        done = windows("run", "-q", SHORT, "-o", self.folder / "out")
        self.assertEqual((done.returncode, done.stderr), (0, b""))


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *REST])
