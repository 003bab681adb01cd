#!/usr/bin/env python3
"""The folder of a sweep, and of a join of slices: whatever stops it, and wherever, the same command goes on and comes to
the same files, and leaves nothing else there.

usage: check_sweep_folder.py KESTO"""

import resource
import shutil
import signal
import subprocess
import time
import unittest

from running import InFolder, KESTO, TANK

HIDDEN = ".kesto-sweep"
SWEEP = ("sweep", "model.toml", "--vary", "tank.size=11:16:6", "--record", "tank:overflow", "--figures", "all", "-q")
JOIN = ("sweep", "--join", "a", "b", "c", "-q")


def can_trace():
    if not shutil.which("strace"):
        return False
    return subprocess.run(["strace", "-o", "/dev/null", "true"], capture_output=True).returncode == 0


def limit_files(size):
    return lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (size, size))


class Stopped(InFolder):
    def setUp(self):
        super().setUp()
        self.write(TANK)
        self.good(*SWEEP, "-o", "whole")
        for name, slice_ in (("a", "1-2"), ("b", "3-4"), ("c", "5-6")):
            self.good(*SWEEP, "--members", slice_, "-o", name)
        self.out = self.folder / "out"

    def good(self, *arguments):
        done = self.kesto(*arguments)
        self.assertEqual((done.returncode, done.stdout), (0, ""), done.stderr)

    def files(self, name):
        return {path.name: path.read_bytes() for path in (self.folder / name).iterdir()}

    def expect_to_go_on(self, *command):
        for _ in range(2):
            self.good(*command, "-o", "out")
            self.assertEqual(self.files("out"), self.files("whole"))

    def test_no_room_for_the_summary(self):
        # The table and the journal fit, and members.json, which is longer, does not.
        sweep = ("sweep", "model.toml", "--vary", "tank.size=11:16:6", "-q")
        for name, slice_ in (("d", "1-3"), ("e", "4-6")):
            self.good(*sweep, "--members", slice_, "-o", name)
        shutil.rmtree(self.folder / "whole")
        self.good(*sweep, "-o", "whole")
        room = len(self.files("whole")["members.json"]) - 1
        for command in sweep, ("sweep", "--join", "d", "e", "-q"):
            shutil.rmtree(self.out, ignore_errors=True)
            done = self.kesto(*command, "-o", "out", preexec_fn=limit_files(room), restore_signals=False)
            self.assertIn("members.json: File too large", done.stderr)
            self.assertNotEqual(done.returncode, 0)
            self.expect_to_go_on(*command)

    def files_but_hidden(self):
        return {path.name for path in self.out.iterdir()} - {HIDDEN}

    def test_stopped_between_the_table_and_the_summary(self):
        # A folder that appears in the place of members.json stops the second move.
        self.write(TANK.replace("2012-01-05", "2500-01-01"), "long.toml")
        options = ["sweep", "long.toml", "--vary", "tank.size=11:16:6", "--jobs", "1", "-q"]
        self.good(*options, "-o", "whole2")
        running = subprocess.Popen([KESTO, *options, "-o", "out"], cwd=self.folder, stderr=subprocess.PIPE, text=True)
        journal = self.out / HIDDEN / "journal"
        while running.poll() is None and not journal.exists():
            time.sleep(0.001)
        running.send_signal(signal.SIGSTOP)
        (self.out / "members.json").mkdir()
        running.send_signal(signal.SIGCONT)
        errors = running.communicate(timeout=300)[1]
        self.assertEqual(running.returncode, 1, errors)
        self.assertIn("out/members.json is no file that a sweep has left here", errors)
        self.assertEqual(self.files_but_hidden(), {"members.csv", "members.json"})
        (self.out / "members.json").rmdir()
        for more in (), ("--restart",):
            shutil.copytree(self.out, self.folder / "again")
            self.good(*options, *more, "-o", "again")
            self.assertEqual(self.files("again"), self.files("whole2"))
            shutil.rmtree(self.folder / "again")

    def test_a_file_that_appears_during_the_sweep_is_kept(self):
        self.write(TANK.replace("2012-01-05", "2500-01-01"), "long.toml")
        running = subprocess.Popen([KESTO, "sweep", "long.toml", "--vary", "tank.size=11:16:6", "--jobs", "1", "-q", "-o",
                                    "out"], cwd=self.folder, stderr=subprocess.PIPE, text=True)
        while running.poll() is None and not (self.out / HIDDEN / "journal").exists():
            time.sleep(0.001)
        running.send_signal(signal.SIGSTOP)
        (self.out / "members.csv").write_text("mine")
        running.send_signal(signal.SIGCONT)
        errors = running.communicate(timeout=300)[1]
        self.assertEqual(running.returncode, 1, errors)
        self.assertIn("out/members.csv is no file that a sweep has left here", errors)
        self.assertEqual((self.out / "members.csv").read_text(), "mine")

    @unittest.skipUnless(can_trace(), "strace cannot trace here")
    def test_killed_and_without_room_at_each_call(self):
        for command, more in ((SWEEP, ("--jobs", "1")), (JOIN, ())):
            for what in "signal=SIGKILL", "error=ENOSPC":
                for call in "fsync", "rename", "unlink":
                    with self.subTest(command=command[1], what=what, call=call):
                        stopped = self.stop_at_each(call, what, (*command, *more))
                        self.assertGreater(stopped, 0)

    def stop_at_each(self, call, what, command):
        """How often it was stopped; each time it goes on to the same files."""
        stopped = 0
        for count in range(1, 30):
            shutil.rmtree(self.out, ignore_errors=True)
            done = self.kesto(*command, "-o", "out", before=(
                "strace", "-qq", "-o", "trace", "-e", f"trace={call}", "-e", f"inject={call}:{what}:when={count}"))
            trace = (self.folder / "trace").read_text()
            stopped += done.returncode != 0
            self.expect_to_go_on(*command)
            if "INJECTED" not in trace and "killed by" not in trace:
                break
        return stopped

    def test_what_is_left_aside_is_cleared(self):
        for command in SWEEP, JOIN:
            shutil.rmtree(self.out, ignore_errors=True)
            (self.out / HIDDEN).mkdir(parents=True)
            (self.out / HIDDEN / "members.csv").write_text("half a table")
            self.expect_to_go_on(*command)
            (self.out / HIDDEN).mkdir()
            (self.out / HIDDEN / "members.csv").write_text("half a table")
            self.expect_to_go_on(*command)

    def test_a_changed_table_of_the_same_length_is_seen(self):
        self.good(*SWEEP, "-o", "out")
        table = self.out / "members.csv"
        before = table.read_text()
        after = before.replace(",finished,", ",vanished,", 1)
        table.write_text(after)
        for more in (), ("--restart",):
            done = self.kesto(*SWEEP, *more, "-o", "out")
            self.assertEqual(done.returncode, 2)
            self.assertIn("out/members.csv is no file that a sweep has left here", done.stderr)
        self.assertEqual(table.read_text(), after)
        done = self.kesto("compare", "out")
        self.assertEqual((done.returncode, done.stdout), (2, ""))
        self.assertIn("out/members.csv is not as the sweep has written it", done.stderr)
        table.write_text(before)
        self.assertEqual(self.kesto("compare", "out").returncode, 0)
        self.expect_to_go_on(*SWEEP)


unittest.main()
