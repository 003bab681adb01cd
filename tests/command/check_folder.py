#!/usr/bin/env python3
"""The folder of results holds the old results, or the new, or is marked as stopped: whatever kills a run, fills the disk,
runs beside it or lies in its way; and what somebody else made is left alone.

usage: check_folder.py KESTO

With KESTO_TEST_LONG=1 in the environment, 200 runs of each format are killed at random moments instead of 20, and there
are more kinds of faults."""

import json
import os
import pathlib
import random
import resource
import shutil
import signal
import subprocess
import sys
import time
import unittest

import xxhash

from running import InFolder, KESTO

LONG = bool(os.environ.get("KESTO_TEST_LONG"))
KILLS = 200 if LONG else 20
# Bringing files to a real disk takes most of the time, and shows nothing more.
MEMORY = "/dev/shm" if os.access("/dev/shm", os.W_OK | os.X_OK) else None
RESULTS = {"flows.csv", "qualities.csv", "states.csv", "potentials.csv", "account.csv", "figures.csv", "balance.csv",
           "results.nc", "overview.json", "summary.json"}
HIDDEN = ".kesto-run"
FORMATS = (("csv", ()), ("netcdf", ("--format", "netcdf")), ("balance", ("--balance",)))


def can_trace():
    if not shutil.which("strace"):
        return False
    return subprocess.run(["strace", "-o", "/dev/null", "true"], capture_output=True).returncode == 0


def model(title, end="2012-12-31", tanks=3, weather="weather.csv"):
    text = [f'kesto_model = 1\ntitle = "{title}"\n[simulation]\nstart = 2012-01-01\nend = {end}\n'
            f'[groups.g]\nrainfall = {{ column = "rain", file = "{weather}", time = "date" }}\n'
            '[brands.roof]\nevaporation_fraction = 0.1\n']
    for i in range(tanks):
        text.append(f'[[components]]\nname = "roof{i}"\ntype = "impervious_surface"\ngroup = "g"\nbrand = "roof"\n'
                    f'size = {i + (20 if title == "new" else 10)}\n[[components]]\nname = "tank{i}"\ntype = "tank"\nsize = 100\n'
                    f'[[components]]\nname = "use{i}"\ntype = "demand_source"\ndemand = 3.7\n'
                    f'[[connections]]\nfrom = "roof{i}"\nto = "tank{i}:inflow"\n'
                    f'[[connections]]\nfrom = "use{i}"\nto = "tank{i}:demand"\n')
    return "".join(text)


def listed(folder):
    summary = json.loads((folder / "summary.json").read_text())
    return summary["title"], {row["file"]: row for row in summary["files"]}


def state(folder):
    """none, stopped, or the title of the one run that all results in the folder are of; everything else fails."""
    if (folder / "STOPPED.txt").exists():
        return "stopped"
    present = {path.name for path in folder.iterdir()} & RESULTS if folder.exists() else set()
    if not present:
        return "none"
    assert "summary.json" in present, f"results without a summary: {present}"
    title, files = listed(folder)
    assert present == set(files) | {"summary.json"}, f"{present} with a summary of {set(files)}"
    for name, row in files.items():
        found = (folder / name).read_bytes()
        assert (len(found), xxhash.xxh3_128_hexdigest(found)) == (row["bytes"], row["xxh128"]), f"{name} is of another run"
    return title


class Folder(InFolder):
    where = MEMORY

    def setUp(self):
        super().setUp()
        self.out = self.folder / "out"
        days = [f"2012-{m:02}-{d:02}" for m in range(1, 13) for d in range(1, 32) if d <= (29 if m == 2 else 30 + (m in (1, 3, 5, 7, 8, 10, 12)))]
        self.weather = "date,rain\n" + "".join(f"{day},{i % 7}.5\n" for i, day in enumerate(days))
        (self.folder / "weather.csv").write_text(self.weather)
        for title in "old", "new":
            (self.folder / f"{title}.toml").write_text(model(title))

    def good(self, *arguments):
        done = self.kesto(*arguments)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return done

    def run_into(self, title, *options, folder="out"):
        self.good("run", f"{title}.toml", "-q", "-o", folder, *options)
        self.assertEqual(state(self.folder / folder), title)

    def refused(self, code, *arguments):
        """The text of a refusal that changes nothing."""
        before = self.contents()
        done = self.kesto(*arguments)
        self.assertEqual(done.returncode, 2, done.stderr)
        self.assertEqual(self.contents(), before)
        if code:
            again = json.loads(self.kesto(*arguments, "--json").stdout)
            self.assertEqual((again["outcome"], [row["code"] for row in again["errors"]]), ("not run", [code]))
        return done.stderr

    def contents(self):
        return {str(path): path.is_symlink() and os.readlink(path) or path.is_file() and path.read_bytes()
                for path in self.folder.rglob("*")}


class OtherFiles(Folder):
    def test_an_input_is_never_written_over(self):
        (self.folder / "weather.csv").rename(self.folder / "flows.csv")
        (self.folder / "old.toml").write_text(model("old", weather="flows.csv"))
        self.assertIn("results would be written over ./flows.csv, which the run reads",
                      self.refused("over-input", "run", "old.toml", "-o", "."))
        # By another name, too.
        (self.folder / "flows.csv").rename(self.folder / "weather.csv")
        (self.folder / "old.toml").write_text(model("old"))
        self.out.mkdir()
        os.link(self.folder / "weather.csv", self.out / "flows.csv")
        self.refused("over-input", "run", "old.toml", "-o", "out")
        (self.out / "flows.csv").unlink()
        (self.out / "flows.csv").symlink_to("../weather.csv")
        self.refused("over-input", "run", "old.toml", "-o", "out")

    def test_the_model_is_an_input(self):
        (self.folder / "old.toml").rename(self.folder / "summary.json")
        self.refused("over-input", "run", "summary.json", "-o", ".")

    def test_results_that_are_read_are_not_removed(self):
        self.run_into("old")
        text = model("new").replace('column = "rain"', 'column = "roof0:runoff [L]"').replace("weather.csv", "out/flows.csv")
        (self.folder / "new.toml").write_text(text)
        for options in (), ("--format", "netcdf"):
            self.refused("over-input", "run", "new.toml", "-o", "out", *options)
        self.run_into("new", folder="other")

    def test_files_of_others_are_never_replaced(self):
        self.out.mkdir()
        for name, options in [("flows.csv", ()), ("summary.json", ()), ("STOPPED.txt", ()), ("results.nc", ("--format", "netcdf")),
                              ("balance.csv", ("--balance",))]:
            with self.subTest(name):
                (self.out / name).write_text('{"name": "mine", "files": ["flows.csv"], "outcome": 1}')
                self.assertIn(f"out/{name} is no file that a run has left here",
                              self.refused("not-results", "run", "old.toml", "-o", "out", *options))
                (self.out / name).unlink()

    def test_everything_else_is_left_alone(self):
        self.run_into("old", "--balance")
        mine = {"report.html": "a page", "notes.txt": "mine", "results.nc": "mine, too", "rain.csv": "1"}
        for name, text in mine.items():
            (self.out / name).write_text(text)
        (self.out / "folder").mkdir()
        self.good("run", "new.toml", "-q", "-o", "out")
        self.assertEqual({path.name for path in self.out.iterdir()},
                         {*mine, "folder", *RESULTS} - {"balance.csv"})
        for name, text in mine.items():
            self.assertEqual((self.out / name).read_text(), text)

    def test_results_that_somebody_changed_are_theirs(self):
        self.run_into("old")
        with open(self.out / "flows.csv", "a") as file:
            file.write("2013-01-01,1\n")
        self.assertIn("out/flows.csv is no file", self.refused("not-results", "run", "new.toml", "-o", "out"))

    def test_a_summary_cannot_name_files_elsewhere(self):
        self.run_into("old")
        victim = self.folder / "victim.csv"
        victim.write_text("mine")
        summary = json.loads((self.out / "summary.json").read_text())
        for name in ("../victim.csv", str(victim)):
            summary["files"].append({"file": name, "bytes": 4, "xxh128": ""})
        (self.out / "summary.json").write_text(json.dumps(summary))
        self.good("run", "new.toml", "-q", "-o", "out")
        self.assertEqual(victim.read_text(), "mine")

    def test_links_are_not_followed(self):
        self.run_into("old")
        victim = self.folder / "victim.csv"
        (self.out / "flows.csv").rename(victim)
        before = victim.read_bytes()
        (self.out / "flows.csv").symlink_to(victim)
        self.refused("not-results", "run", "new.toml", "-o", "out")
        self.assertEqual(victim.read_bytes(), before)
        report = self.kesto("report", "out", "-o", "page.html")
        self.assertEqual(report.returncode, 1)
        self.assertIn("flows.csv is not the file that the run", report.stderr)
        elsewhere = self.folder / "elsewhere"
        elsewhere.mkdir()
        (self.folder / "linked").mkdir()
        (self.folder / "linked" / HIDDEN).symlink_to(elsewhere)
        self.assertEqual(self.kesto("run", "old.toml", "-o", "linked").returncode, 1)
        self.assertEqual(list(elsewhere.iterdir()), [])

    def test_a_file_that_appears_during_the_run_is_kept(self):
        # Seen when the moves are about to begin: the file is made while the run waits for the disk.
        if not can_trace():
            self.skipTest("strace cannot trace here")
        self.out.mkdir()
        running = subprocess.Popen(["strace", "-f", "-qq", "-o", "/dev/null", "-e", "trace=fsync", "-e",
                                    "inject=fsync:delay_enter=1500000:when=1", KESTO, "run", "old.toml", "-q", "-o", "out"],
                                   cwd=self.folder, stderr=subprocess.PIPE, text=True)
        until(lambda: (self.out / HIDDEN / "summary.json").exists())
        (self.out / "flows.csv").write_text("mine")
        errors = running.communicate(timeout=60)[1]
        self.assertEqual(running.returncode, 1)
        self.assertIn("out/flows.csv is no file that a run has left here", errors)
        self.assertEqual({path.name: path.read_text() for path in self.out.iterdir()}, {"flows.csv": "mine"})

    def test_pages_and_pictures_spare_other_files(self):
        self.run_into("old")
        (self.folder / "page.html").write_text("<html>mine")
        for target in "old.toml", "weather.csv", "out/flows.csv", "out/summary.json", "page.html":
            with self.subTest(target):
                self.assertIn("give another name", self.refused(None, "report", "out", "-o", target))
        os.link(self.folder / "old.toml", self.folder / "model.dot")
        (self.folder / "other.svg").write_text("mine")
        (self.folder / "link.dot").symlink_to("weather.csv")
        for target, reason in (("model.dot", "reads"), ("other.svg", "is there already"), ("link.dot", "symbolic link")):
            with self.subTest(target):
                self.assertIn(reason, self.refused(None, "draw", "old.toml", "-o", target))

    def test_comparisons_spare_other_files(self):
        self.run_into("old")
        self.run_into("new", folder="other")
        for target in "old.toml", "weather.csv", "out/flows.csv", "out/summary.json", "out/figures.csv":
            with self.subTest(target):
                self.assertIn("give another name", self.refused(None, "compare", "out", "other", "-o", target))
        for _ in range(2):
            self.assertEqual(self.kesto("compare", "out", "other", "-o", "table.csv").returncode, 0)

    def test_pages_and_pictures_replace_their_own(self):
        self.run_into("old")
        for _ in range(2):
            self.assertEqual(self.kesto("report", "out", "-o", "out/report.html").returncode, 0)
            self.good("draw", "old.toml", "-o", "net.dot")
        before = self.contents()
        done = self.kesto("draw", "old.toml", "-o", "net.dot", preexec_fn=limit_files(100), restore_signals=False)
        self.assertEqual(done.returncode, 1)
        self.assertIn("cannot write net.dot: File too large", done.stderr)
        self.assertEqual(self.contents(), before)

    def test_what_is_no_regular_file_is_written_to_as_it_is(self):
        pipe = self.folder / "pipe.dot"
        os.mkfifo(pipe)
        reader = subprocess.Popen(["cat", str(pipe)], stdout=subprocess.PIPE, text=True)
        self.addCleanup(reader.stdout.close)
        self.addCleanup(reader.wait)
        self.addCleanup(reader.kill)
        self.good("draw", "old.toml", "-o", "pipe.dot")
        self.assertTrue(reader.communicate(timeout=60)[0].startswith("digraph"))
        self.assertTrue(pipe.is_fifo())


class Reports(Folder):
    def spoiled(self, reason):
        report = self.kesto("report", "out", "-o", "page.html")
        self.assertEqual(report.returncode, 1)
        self.assertIn(reason, report.stderr)
        self.assertFalse((self.folder / "page.html").exists())

    def test_only_what_the_summary_lists_is_read(self):
        self.run_into("new", "--format", "netcdf", folder="other")
        self.run_into("old")
        shutil.copy(self.folder / "other" / "results.nc", self.out)
        self.assertEqual(self.kesto("report", "out", "-o", "page.html").returncode, 0)
        (self.folder / "page.html").unlink()
        shutil.copy(self.folder / "other" / "summary.json", self.out)
        (self.out / "results.nc").unlink()
        self.spoiled("results.nc is no longer there")

    def test_files_of_two_runs_are_refused(self):
        for form, name in (((), "flows.csv"), (("--format", "netcdf"), "results.nc")):
            self.run_into("new", *form, folder="other")
            self.run_into("old", *form)
            shutil.copy(self.folder / "other" / name, self.out)
            self.spoiled(f"cannot read out: {name} is not the file that the run of summary.json wrote; the results there do not "
                         "belong together: run the model again")
            shutil.rmtree(self.out)

    def test_a_changed_figure_of_the_same_length_is_seen(self):
        self.run_into("old")
        flows = self.out / "flows.csv"
        flows.write_text(flows.read_text().replace("2012-12-31,", "2012-12-30,"))
        self.spoiled("flows.csv is not the file")

    def test_a_mark_of_a_killed_run_is_heeded(self):
        self.run_into("old")
        (self.out / "STOPPED.txt").write_text("A run was stopped.")
        self.spoiled("STOPPED.txt says that a run was stopped while it wrote")

    def test_a_summary_that_lists_nothing(self):
        self.out.mkdir()
        for text in "{}", "[1]", "nothing", '{"outcome": "finished", "files": [{"file": 1}]}':
            (self.out / "summary.json").write_text(text)
            self.spoiled("does not list the files of a run; run the model again")


def until(condition, seconds=30):
    end = time.monotonic() + seconds
    while not condition():
        assert time.monotonic() < end, "nothing happened"
        time.sleep(0.002)


def limit_files(size):
    return lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (size, size))


class Faults(Folder):
    """After each of them the folder is whole, and another run succeeds."""

    # With how many of them are between two faults: what writes long files is called often.
    CALLS = {"mkdir": 1, "openat": 1, "write": 1 if LONG else 4, "pwrite64": 1 if LONG else 4, "fsync": 1, "rename": 1,
             "unlink": 1}

    def begin(self, form):
        shutil.rmtree(self.out, ignore_errors=True)
        before = self.folder / f"before{len(form)}"
        if not before.exists():
            self.run_into("old", *form, folder=before.name)
        shutil.copytree(before, self.out)

    def check(self, done, seen):
        now = state(self.out)
        self.assertIn(now, ("old", "new", "stopped"))
        seen[now] = seen.get(now, 0) + 1
        if now != "new":
            self.assertNotEqual(done.returncode, 0)
        self.run_into("new")
        self.assertFalse((self.out / HIDDEN).exists())
        self.assertFalse((self.out / "STOPPED.txt").exists())

    def inject(self, what, old, new):
        """Lets each call of each kind meet the fault in turn, and counts what the folder then is."""
        seen = {}
        for call, stride in self.CALLS.items():
            for count in range(1, 90, stride):
                self.begin(old)
                trace = self.folder / "trace"
                path = ("-P", str(self.out)) if call == "openat" else ()
                done = self.kesto("run", "new.toml", "-q", "-o", "out", *new,
                                  before=("strace", "-f", "-qq", "-o", str(trace), *path, "-e", f"trace={call}", "-e",
                                          f"inject={call}:{what}:when={count}+1000"))
                lines = trace.read_text().splitlines()
                hit = any("INJECTED" in line or "killed by" in line for line in lines)
                self.check(done, seen)
                if not hit:
                    self.assertEqual(done.returncode, 0, done.stderr)
                    break
        return seen

    @unittest.skipUnless(can_trace(), "strace cannot trace here")
    def test_each_call_fails(self):
        for error in ("ENOSPC", "EDQUOT", "EROFS") if LONG else ("ENOSPC",):
            seen = self.inject(f"error={error}", (), ("--format", "netcdf"))
            self.assertGreater(seen["old"], 10)
            self.assertGreater(seen["stopped"], 2)

    @unittest.skipUnless(can_trace(), "strace cannot trace here")
    def test_killed_at_each_call(self):
        pairs = list(zip(FORMATS, (*FORMATS[1:], FORMATS[0])))
        for (_, old), (_, new) in pairs if LONG else pairs[:1]:
            seen = self.inject("signal=SIGKILL", old, new)
            self.assertGreater(seen["old"], 10)
            self.assertGreater(seen["stopped"], 2)
            self.assertGreater(seen["new"], 2)

    def test_a_small_disk(self):
        disk = self.folder / "disk"
        disk.mkdir()
        (self.folder / "new.toml").write_text(model("new", tanks=1500))
        for size, before in (("size=8m", "old"), ("size=8m,nr_inodes=3", "none")):
            with self.subTest(size):
                if subprocess.run(["mount", "-t", "tmpfs", "-o", size, "tmpfs", str(disk)], capture_output=True).returncode:
                    self.skipTest("only root can mount a small disk")
                self.addCleanup(subprocess.run, ["umount", str(disk)], check=True)
                if before == "old":
                    self.run_into("old", folder="disk")
                for form, options in FORMATS[:2]:
                    if form == "netcdf" and before == "old":
                        (disk / "ballast").write_bytes(bytes(7 << 20))  # its results are smaller
                    done = self.kesto("run", "new.toml", "-q", "-o", "disk", *options)
                    self.assertEqual(done.returncode, 1)
                    self.assertRegex(done.stderr, "^disk: error: cannot write disk/.*; disk holds what it held before\n$")
                    if form == "csv":
                        self.assertIn("No space left on device", done.stderr)
                    self.assertEqual(state(disk), before)
                    self.assertFalse((disk / HIDDEN).exists())

    def test_a_folder_that_is_read_only(self):
        self.begin(())
        other = {"user": 65534, "group": 65534, "extra_groups": []} if os.geteuid() == 0 else {}
        self.folder.chmod(0o755)
        self.out.chmod(0o555)
        try:
            self.kesto("--version", **other)
        except PermissionError:
            self.skipTest("root's own folder holds the command, and other users cannot reach it")
        done = self.kesto("run", "new.toml", "-q", "-o", "out", **other)
        self.out.chmod(0o755)
        self.assertEqual(done.returncode, 1)
        self.assertEqual(done.stderr, "out: error: cannot write into out: Permission denied\n")
        self.assertEqual(state(self.out), "old")

    def test_a_limit_of_file_sizes(self):
        for form, options in FORMATS[:2]:
            self.begin(options)
            done = self.kesto("run", "new.toml", "-q", "-o", "out", *options, preexec_fn=limit_files(1000))
            self.assertEqual(done.returncode, 1)
            self.assertIn("out holds what it held before", done.stderr)
            self.assertEqual(state(self.out), "old")


class RandomKills(Folder):
    where = None  # on a real disk writing takes longer

    def test_killed_at_random_moments(self):
        for title in "old", "new":
            (self.folder / f"{title}.toml").write_text(model(title, tanks=150))
        moments = random.Random(7)
        for form, options in FORMATS[:2]:
            begin = time.monotonic()
            self.run_into("old", *options)
            whole = time.monotonic() - begin
            seen = {}
            for _ in range(KILLS):
                running = subprocess.Popen([KESTO, "run", "new.toml", "-q", "-o", "out", *options], cwd=self.folder)
                time.sleep(moments.uniform(0, 1.1 * whole))
                running.kill()
                running.wait()
                now = state(self.out)
                self.assertIn(now, ("old", "new", "stopped"))
                seen[now] = seen.get(now, 0) + 1
                if now != "old":
                    self.run_into("old", *options)
            print(f"{KILLS} kills with {form}: {seen}, no mixture", file=sys.stderr)
            self.assertIn("old", seen)


class LongRuns(Folder):
    def start_long_run(self, *arguments):
        """A run of many seconds whose engine is at work."""
        text = ["kesto_model = 1\n[simulation]\nstart = 1970-01-01\nend = 6000-12-31\n",
                '[[components]]\nname = "p0"\ntype = "demand_source"\ndemand = 1\n']
        for i in range(1, 30000):
            text.append(f'[[components]]\nname = "p{i}"\ntype = "pump"\n[[connections]]\nfrom = "p{i - 1}"\nto = "p{i}"\n')
        (self.folder / "long.toml").write_text("".join(text))
        running = subprocess.Popen([*arguments, KESTO, "run", "long.toml", "-q", "--record", "p99", "-o", "out"],
                                   cwd=self.folder, stderr=subprocess.PIPE, text=True)
        self.addCleanup(running.stderr.close)
        self.addCleanup(running.wait)
        self.addCleanup(running.kill)
        return running

    @staticmethod
    def has_ended(process):
        try:
            return pathlib.Path(f"/proc/{process}/stat").read_text().rpartition(")")[2].split()[0] in "XZ"
        except FileNotFoundError:
            return True

    @staticmethod
    def children(process):
        return [int(pid) for pid in pathlib.Path(f"/proc/{process}/task/{process}/children").read_text().split()]

    def until_steps_are_run(self, process):
        """Waits for as much of the processor as lets the engine of a long run begin, however busy the machine is."""
        until(lambda: self.children(process.pid))
        child = pathlib.Path(f"/proc/{self.children(process.pid)[0]}/stat")
        until(lambda: int(child.read_text().split(") ")[1].split()[11]) / os.sysconf("SC_CLK_TCK") > 0.3)


class Neighbours(LongRuns):
    def test_the_second_run_is_refused_at_once(self):
        running = self.start_long_run()
        until(lambda: (self.out / HIDDEN / "lock").exists())
        (self.folder / "link").symlink_to("out")
        for folder in "out", "link":
            begin = time.monotonic()
            done = self.kesto("run", "old.toml", "-o", folder)
            self.assertLess(time.monotonic() - begin, 2)
            self.assertEqual((done.returncode, done.stdout), (1, ""))
            self.assertEqual(done.stderr, f"{folder}: error: process {running.pid} is writing results into {folder}; wait for "
                                          "it, or choose another folder\n")
        self.assertEqual([row["code"] for row in json.loads(self.kesto("run", "old.toml", "-o", "out", "--json").stdout)["errors"]],
                         ["folder-busy"])
        self.assertEqual(self.kesto("run", "old.toml", "-q").returncode, 0)  # writes nothing
        running.kill()
        running.wait()
        self.run_into("old")

    def test_pairs(self):
        refused = 0
        for _ in range(15):
            pair = [subprocess.Popen([KESTO, "run", f"{title}.toml", "-q", "-o", "out"], cwd=self.folder, text=True,
                                     stderr=subprocess.PIPE) for title in ("old", "new")]
            ends = [(one.communicate(timeout=60)[1], one.returncode) for one in pair]
            for errors, status in ends:
                if status:
                    self.assertRegex(errors, r"^out: error: process \d+ is writing results into out")
                    refused += 1
            self.assertIn(0, [status for _, status in ends])
            self.assertIn(state(self.out), ("old", "new"))
            self.assertFalse((self.out / HIDDEN).exists())
        self.assertGreater(refused, 0)


class Signals(LongRuns):
    def summary(self):
        return json.loads((self.out / "summary.json").read_text())

    def test_an_interrupted_run_is_a_result(self):
        for number in signal.SIGINT, signal.SIGTERM, signal.SIGHUP:
            with self.subTest(number):
                shutil.rmtree(self.out, ignore_errors=True)
                self.run_into("old", "--balance")
                running = self.start_long_run()
                self.until_steps_are_run(running)
                running.send_signal(number)
                errors = running.communicate(timeout=60)[1]
                self.assertEqual(running.returncode, -number, errors)
                self.assertIn("the run was interrupted on", errors)
                summary = self.summary()
                self.assertEqual(summary["outcome"], "interrupted")
                self.assertGreater(summary["steps_run"], 0)
                self.assertEqual(len((self.out / "flows.csv").read_text().splitlines()), 1 + summary["steps_run"])
                self.assertIn(f"hold the {summary['steps_run']} of", (self.out / "STOPPED.txt").read_text())
                self.assertEqual({path.name for path in self.out.iterdir()},
                                 {row["file"] for row in summary["files"]} | {"summary.json"})
                self.assertEqual(self.kesto("report", "out", "-o", "page.html").returncode, 0)
                self.run_into("old")

    def test_a_request_that_arrives_twice_is_one(self):
        running = self.start_long_run("setsid")
        self.until_steps_are_run(running)
        running.terminate()  # as the program timeout does it: the child, and then the group
        os.killpg(running.pid, signal.SIGTERM)
        running.communicate(timeout=60)
        self.assertEqual(running.returncode, -signal.SIGTERM)
        self.assertEqual(self.summary()["outcome"], "interrupted")

    def test_a_second_request_ends_it_at_once(self):
        self.run_into("old")
        running = self.start_long_run()
        self.until_steps_are_run(running)
        engine = self.children(running.pid)[0]  # knows by now that it must not outlive its parent
        os.kill(engine, signal.SIGSTOP)  # it keeps nothing for now
        running.send_signal(signal.SIGINT)
        time.sleep(0.3)
        self.assertIsNone(running.poll())
        running.send_signal(signal.SIGINT)
        self.assertEqual(running.wait(timeout=5), -signal.SIGINT)
        self.assertEqual(state(self.out), "old")
        until(lambda: self.has_ended(engine))

    def test_what_is_ignored_stays_ignored(self):
        self.run_into("old")
        (self.folder / "new.toml").write_text(model("new", tanks=400))
        running = subprocess.Popen([KESTO, "run", "new.toml", "-q", "-o", "out"], cwd=self.folder,
                                   preexec_fn=lambda: signal.signal(signal.SIGHUP, signal.SIG_IGN))
        sent = 0
        for _ in range(20):
            time.sleep(0.01)
            for process in (*self.children(running.pid), running.pid):
                try:
                    os.kill(process, signal.SIGHUP)
                except ProcessLookupError:
                    continue  # it has just ended
                sent += process != running.pid
        self.assertGreater(sent, 0)
        self.assertEqual(running.wait(timeout=60), 0)
        self.assertEqual(state(self.out), "new")

    def stopped_writing(self):
        """A run that has begun to write, and the process of it that writes, which is stopped."""
        text = ['kesto_model = 1\ntitle = "new"\n[simulation]\nstart = 1970-01-01\nend = 2500-12-31\n']
        text += [f'[[components]]\nname = "p{i}"\ntype = "demand_source"\ndemand = 1.{i:04}\n' for i in range(60)]
        (self.folder / "new.toml").write_text("".join(text))
        self.run_into("old")
        running = subprocess.Popen([KESTO, "run", "new.toml", "-q", "-o", "out"], cwd=self.folder)
        self.addCleanup(running.wait)
        self.addCleanup(running.kill)
        until(lambda: (self.out / HIDDEN / "flows.csv").exists())
        writer = self.children(running.pid)[0]
        os.kill(writer, signal.SIGSTOP)
        return running, writer

    def test_a_signal_while_writing_lets_it_finish(self):
        for number in signal.SIGINT, signal.SIGTERM, signal.SIGHUP:
            running, writer = self.stopped_writing()
            running.send_signal(number)
            time.sleep(0.1)
            self.assertIsNone(running.poll())
            os.kill(writer, signal.SIGCONT)
            self.assertEqual(running.wait(timeout=60), -number)
            self.assertEqual((state(self.out), self.summary()["outcome"]), ("new", "finished"))

    def test_a_second_signal_while_writing_ends_it(self):
        running, _ = self.stopped_writing()
        running.terminate()
        time.sleep(0.1)
        running.terminate()
        self.assertEqual(running.wait(timeout=1), -signal.SIGTERM)
        self.assertEqual(state(self.out), "old")
        self.assertTrue((self.out / HIDDEN).exists())
        self.run_into("old")
        self.assertFalse((self.out / HIDDEN).exists())

    @unittest.skipUnless(can_trace(), "strace cannot trace here")
    def test_a_signal_after_the_last_step_comes_too_late(self):
        # The engine's process changes what signals do to it before the first step, and again after the last one.
        outcomes = []
        for call in range(8, 18):
            done = self.kesto("run", "new.toml", "-q", "-o", "out", before=(
                "strace", "-f", "-qq", "-o", "/dev/null", "-e", "trace=rt_sigaction",
                "-e", f"inject=rt_sigaction:signal=SIGHUP:when={call}"))
            outcomes.append(self.summary()["outcome"])
            if done.returncode in (0, 1):  # else the request has reached the first process, which ends by it
                self.assertEqual(done.returncode == 0, outcomes[-1] == "finished", done.stderr)
            self.assertEqual((self.out / "STOPPED.txt").exists(), outcomes[-1] != "finished")
        self.assertEqual(outcomes[-1], "finished")
        self.assertLess(outcomes.count("finished"), len(outcomes))

    def test_a_signal_at_any_time_tells_the_truth(self):
        (self.folder / "new.toml").write_text(model("new", tanks=400))
        begin = time.monotonic()
        self.run_into("new")
        whole = time.monotonic() - begin
        moments = random.Random(3)
        for _ in range(KILLS // 2):
            shutil.rmtree(self.out)
            running = subprocess.Popen([KESTO, "run", "new.toml", "-q", "-o", "out"], cwd=self.folder, text=True,
                                       start_new_session=True, stderr=subprocess.PIPE)
            time.sleep(moments.uniform(0.1 * whole, whole))
            os.killpg(running.pid, signal.SIGINT)  # as a terminal does
            errors = running.communicate(timeout=60)[1]
            self.assertIn(running.returncode, (0, -signal.SIGINT))
            if (self.out / "summary.json").exists():
                summary = self.summary()
                if "before the first step" in errors:
                    self.assertEqual(summary["steps_run"], 0)
                if summary["steps_run"] == 366:
                    self.assertTrue(summary["outcome"] == "finished" or "after the last step" in errors, errors)
                self.assertEqual((self.out / "STOPPED.txt").exists(), summary["outcome"] != "finished")
            self.out.mkdir(exist_ok=True)


unittest.main()
