#!/usr/bin/env python3
"""Gives kesto the files and arguments of somebody who means it no good: each is refused in a line, in no time.

usage: check_strangers.py KESTO; KESTO_TEST_LONG=1 breaks 400 files of results instead of 40"""

import fcntl
import json
import os
import pathlib
import pty
import random
import re
import resource
import signal
import struct
import subprocess
import termios
import time
import unittest

import xxhash

from running import InFolder, KESTO

HEAD = """kesto_model = 1
[simulation]
start = 2012-01-01
end = 2012-01-05
"""
SOURCE = HEAD + """[[components]]
name = "source"
type = "demand_source"
demand = 0.7
"""
ROOF = HEAD + """[brands.roof]
evaporation_fraction = 0.1
[groups.roof]
rainfall = { column = "rain", file = "rain.csv" }
[[components]]
name = "roof"
type = "impervious_surface"
group = "roof"
brand = "roof"
size = 10
"""
RAIN = "date,rain\n" + "".join(f"2012-01-{day:02},1\n" for day in range(1, 6))


class Strangers(InFolder):
    def write(self, name, text):
        super().write(text, name)
        return name

    def kesto(self, *arguments, memory=None, **options):
        def limit():
            if memory:
                resource.setrlimit(resource.RLIMIT_AS, (memory, memory))

        return super().kesto(*arguments, preexec_fn=limit, **{"timeout": 60, **options})

    def refused(self, *arguments, lines=None, **options):
        """What it says on stderr; with an exit status of its own, not by a signal."""
        done = self.kesto(*arguments, **options)
        self.assertIn(done.returncode, (1, 2), done.stderr[:2000])
        if lines:
            self.assertLessEqual(len(done.stderr.splitlines()), lines, done.stderr[:2000])
        return done.stderr


class Depth(Strangers):
    def test_what_nests_deep_is_an_error_with_its_line(self):
        for text in ("a" + ".a" * 40000 + " = 1\n", "a = " + "[" * 40000 + "]" * 40000 + "\n",
                     "a = " + "{a=" * 40000 + "1" + "}" * 40000 + "\n", "[a" + ".a" * 40000 + "]\n",
                     "a" + " . 'b c'" * 40000 + " = 1\n",
                     "a = " + ("{a" + ".a" * 9 + " = ") * 1000 + "1" + "}" * 1000 + "\n"):
            self.write("deep.toml", HEAD + text)
            said = self.refused("check", "deep.toml")
            self.assertIn("deep.toml:5:", said, text[:20])
            self.assertIn("nest deeper than 64 levels", said)

    def test_after_set_too(self):
        self.write("source.toml", SOURCE)
        for value in ("{a" + ".a" * 40000 + " = 1}", "[" * 40000 + "]" * 40000):
            said = self.refused("check", "source.toml", "--set", "source.demand=" + value)
            self.assertIn("--set source.demand=", said)
            self.assertIn("nests deeper than 64 levels", said)
            self.assertLess(len(said), 2000)
        self.assertIn('there is no "', self.refused("check", "source.toml", "--set", "a" + ".a" * 40000 + "=1"))

    def test_what_a_model_needs_is_not_deep(self):
        dots = "".join(f"# a{'.a' * 100}\n" for _ in range(3))
        self.write("source.toml", dots + 'title = "' + "." * 200 + "[" * 200 + '"\n' + SOURCE +
                   "[brands]\n" + "".join(f"b{i}.volume_per_use = 1.5\n" for i in range(100)) +
                   "[groups.a]\nrainfall = { monthly = [1.5, 2.5, 3.5, 4.5, 5.5, 6.5,\n7.5, 8.5, 9.5, 1.5, 1.5, 1.5] }\n")
        self.assertEqual(self.kesto("check", "source.toml").returncode, 0)


class Many(Strangers):
    def seconds(self, *arguments):
        """Of processor time: other work on the machine does not count."""
        def used():
            usage = resource.getrusage(resource.RUSAGE_CHILDREN)
            return usage.ru_utime + usage.ru_stime

        begin = used()
        said = self.refused(*arguments)
        return used() - begin, said

    def test_ten_thousand_wrong_names(self):
        components = "".join(f'[[components]]\nname = "component{i}"\ntype = "junction"\n' for i in range(10000))
        connections = "".join(f'[[connections]]\nfrom = "compnent{i}"\nto = "komponent{i}"\n' for i in range(6002))
        self.write("many.toml", HEAD + components + connections)
        quickest, said = min(self.seconds("check", "many.toml") for _ in range(5))
        self.assertLess(quickest, 0.5)
        self.assertIn("… and 11,984 more of this kind (unknown-name)\n", said)
        self.assertEqual(said.count("did you mean"), 20)
        self.assertLess(len(said.splitlines()), 25)
        done = self.kesto("check", "--json", "many.toml")
        self.assertEqual(len(json.loads(done.stdout)["errors"]), 12004)

    def test_each_kind_is_told(self):
        unnamed = "".join('[[components]]\ntype = "junction"\n' for _ in range(25))
        self.write("kinds.toml", SOURCE + unnamed + "".join(f"wrong{i} = 1\n" for i in range(22)))
        said = self.refused("check", "kinds.toml")
        self.assertIn("… and 5 more of this kind (missing-key)", said)
        self.assertIn("… and 2 more of this kind (unknown-key)", said)

    def test_strict_names_some(self):
        many = "".join(f'[[components]]\nname = "j{i}"\ntype = "junction"\n' for i in range(3000))
        self.write("strict.toml", SOURCE + many)
        said = self.refused("check", "--strict", "strict.toml", lines=200)
        self.assertIn("not accepted", said)
        self.assertLess(len(said), 30000)

    def test_five_megabytes_of_a_name(self):
        long = "x" * 5_000_000
        for text in (SOURCE.replace('"source"', f'"{long}"', 1).replace('type = "demand_source"', 'type = "demand_sourec"'),
                     SOURCE.replace('type = "demand_source"', f'type = "{long}"'), SOURCE + f'group = "{long}"\n[groups.other]\n',
                     SOURCE + f"{long} = 1\n", SOURCE + f'[[connections]]\nfrom = "source:{long}"\nto = "{long}"\n'):
            self.write("long.toml", text)
            took, said = self.seconds("check", "long.toml")
            self.assertLess(took, 5)
            self.assertLess(len(said), 5000)
            self.assertRegex(said, "xxx….*xxx")
        self.assertIn("expected the name of a type", self.refused("check", self.write(
            "long.toml", SOURCE.replace('type = "demand_source"', f'type = "{long}"'))))


class Files(Strangers):
    def setUp(self):
        super().setUp()
        os.mkfifo(self.folder / "pipe")
        (self.folder / "folder").mkdir()
        with open(self.folder / "huge", "wb") as file:
            file.truncate(1 << 40)

    NAMES = {"pipe": "it is a pipe", "/dev/zero": "it is a device", "folder": "a folder", "huge": "it has 1099511 MB"}

    def test_a_model(self):
        for name, why in self.NAMES.items():
            for command in (["check"], ["run"], ["draw", "-o", "picture.dot"]):
                said = self.refused(command[0], name, *command[1:], lines=2, timeout=10, memory=1 << 30)
                self.assertIn(f"{name}: ", said)
                self.assertIn(why, said)

    def test_a_series_or_a_table(self):
        for name, why in self.NAMES.items():
            self.write("roof.toml", ROOF.replace("rain.csv", name))
            said = self.refused("run", "roof.toml", lines=2, timeout=10, memory=1 << 30)
            self.assertIn("roof.toml:8:", said)
            self.assertIn(why, said)
            self.write("table.toml", SOURCE + f'[tables]\ncomponents = "{name}"\n')
            self.assertIn(why, self.refused("run", "table.toml", lines=4, timeout=10, memory=1 << 30))

    def test_a_summary(self):
        results = self.folder / "results"
        results.mkdir()
        for name, why in self.NAMES.items():
            (results / "summary.json").unlink(missing_ok=True)
            (results / "summary.json").symlink_to(self.folder / name)
            said = self.refused("report", results, "-o", "page.html", lines=1, timeout=10, memory=1 << 30)
            self.assertIn(why, said)

    def test_links_to_files_are_followed(self):
        self.write("data.csv", RAIN)
        (self.folder / "rain.csv").symlink_to("data.csv")
        self.write("original.toml", ROOF)
        (self.folder / "model.toml").symlink_to("original.toml")
        done = self.kesto("run", "model.toml")
        self.assertEqual(done.returncode, 0, done.stderr)

    def test_memory_that_does_not_suffice(self):
        many = "".join(f'[[components]]\nname = "t{i}"\ntype = "demand_source"\ndemand = 1\n' for i in range(300))
        self.write("big.toml", SOURCE.replace("2012-01-05", "2099-12-31") + many)
        expected = self.kesto("check", "big.toml").stdout.splitlines()[-1].split(" for a run")[0]
        self.assertIn(" MB", expected)
        # Too little for the memory that the engine's process shares, and enough for that, but not for the engine.
        for memory in (80 << 20, 140 << 20):
            said = self.refused("run", "-q", "big.toml", memory=memory, lines=2)
            self.assertIn(f"memory ran out; a run with all outputs recorded is expected to take {expected}\n", said)
        self.write("long.toml", "a" * 50_000_000)
        self.assertIn("memory ran out while this file was read", self.refused("run", "long.toml", memory=80 << 20, lines=2))


class ControlCharacters(Strangers):
    def check(self, name, *arguments, where=""):
        done = self.kesto("check", name, *arguments)
        self.assertEqual(done.returncode, 2)
        for stream in (done.stdout, done.stderr):
            self.assertTrue(all(c.isprintable() or c == "\n" for c in stream), repr(stream))
        self.assertIn("holds the control character U+", done.stderr)
        self.assertIn(where, done.stderr)
        return done.stderr

    def test_a_model(self):
        for code in ("\\u001b", "\\u0007", "\\n", "\\u007f", "\\u009b", "\\u0000"):
            red = f'"a{code}[31mred"'
            for text in (f"title = {red}\n" + SOURCE, SOURCE.replace('"source"', red, 1), SOURCE + f"group = {red}\n",
                         SOURCE + f"[brands.{red}]\nvolume_per_use = 1\n", SOURCE + f"[groups.{red}]\noccupancy = 1\n",
                         SOURCE + f"{red} = 1\n", SOURCE + f'[[connections]]\nfrom = "source"\nto = {red}\n'):
                self.check(self.write("red.toml", text), where="red.toml:")

    def test_a_table(self):
        for text in ("name,type,demand\na\x1b[31mred,demand_source,1\n", "name,type,demand\na\u009bred,demand_source,1\n",
                     "name,type,dem\x1band\nred,demand_source,1\n"):
            self.write("components.csv", text)
            self.write("model.toml", HEAD + '[tables]\ncomponents = "components.csv"\n')
            self.check("model.toml", where="components.csv:2:")

    def test_set(self):
        self.write("source.toml", SOURCE)
        self.check("source.toml", "--set", "source.group=a\x1b[31mred", where="--set source.group=a\\u001B[31mred: ")
        self.check("source.toml", "--set", 'source.group="a\\u001b[31mred"', where="--set source.group=")

    def test_what_is_shown_of_a_file_name_or_a_wrong_value(self):
        for arguments in (["check", "no\x1b[31mred.toml"], ["run", "source.toml", "--record", "\x1b[31mred"],
                          ["check", "source.toml", "--accept", "\x1b[31mred"], ["report", "\x1b[31mred", "-o", "p.html"],
                          ["types", "\x1b[31mred"], ["draw", "source.toml", "-o", "\x1b[31mred"], ["\x1b[31mred"],
                          ["run", "source.toml", "--format", "\x1b[31mred"]):
            self.write("source.toml", SOURCE)
            said = self.refused(*arguments)
            self.assertNotIn("\x1b", said, arguments)
            self.assertIn("\\u001B[31mred", said, arguments)


class BrokenResults(Strangers):
    """What report reads: whatever it is, an exit status and a line, never a crash."""

    def setUp(self):
        super().setUp()
        self.write("rain.csv", RAIN)
        self.write("roof.toml", ROOF)

    @staticmethod
    def list_in_summary(file):
        """As if a run had written it: what is not listed as it stands is not read."""
        summary = file.parent / "summary.json"
        content = json.loads(summary.read_text())
        row = {"file": file.name, "bytes": file.stat().st_size, "xxh128": xxhash.xxh3_128_hexdigest(file.read_bytes())}
        content["files"] = [row if one["file"] == file.name else one for one in content["files"]]
        summary.write_text(json.dumps(content))

    def report(self):
        done = self.kesto("report", "results", "-o", "page.html")
        self.assertIn(done.returncode, (0, 1), done.stderr)
        if done.returncode:
            errors = [line for line in done.stderr.splitlines() if "warning: " not in line]
            self.assertEqual(len(errors), 1, done.stderr)
            self.assertIn("cannot read results", errors[0])
        return done.stderr if done.returncode else ""

    def test_bytes_of_netcdf(self):
        self.assertEqual(self.kesto("run", "-q", "roof.toml", "-o", "results", "--format", "netcdf").returncode, 0)
        self.assertEqual(self.report(), "")
        netcdf = self.folder / "results/results.nc"
        good, random_ = netcdf.read_bytes(), random.Random(12)
        said = []
        mutants = 400 if os.environ.get("KESTO_TEST_LONG") else 40
        for _ in range(mutants):
            bad = bytearray(good)
            for _ in range(random_.choice((1, 2, 5, 20))):
                bad[random_.randrange(len(bad))] = random_.choice((0, 255, random_.randrange(256)))
            if random_.random() < 0.1:
                del bad[random_.randrange(len(bad)):]
            netcdf.write_bytes(bad)
            self.list_in_summary(netcdf)
            said.append(self.report())
        print(f"results.nc: of {len(said)} mutants {said.count('')} were read, {sum('signal' in one for one in said)} killed the reader")
        self.assertGreater(len(said) - said.count(""), mutants // 10)
        netcdf.unlink()
        os.mkfifo(netcdf)
        self.assertIn("results.nc is not the file that the run of summary.json wrote", self.report())

    def test_a_summary_that_is_none(self):
        self.assertEqual(self.kesto("run", "-q", "roof.toml", "-o", "results").returncode, 0)
        self.assertEqual(self.report(), "")
        summary = self.folder / "results/summary.json"
        good = summary.read_text()
        for text in ("", "{", "[]", "5", '{"title": 5}', '{"model_file": []}',
                     json.dumps({**json.loads(good), "inputs": 5}), json.dumps({**json.loads(good), "inputs": [[]]}),
                     good.replace('"title": ""', '"title": {}').replace('"outcome"', '"deep": ' + "[" * 200000 + "]" * 200000 +
                                                                         ', "outcome"')):
            summary.write_text(text)
            self.assertNotEqual(self.report(), "", text[:50])


class Streams(Strangers):
    """What kesto itself gets to write to, and arguments that are empty."""

    def test_a_full_disk(self):
        self.write("source.toml", SOURCE)
        with open("/dev/full", "w") as full:
            for arguments in (["--version"], ["--help"], ["run", "--help"], ["types"], ["types", "tank"], ["types", "--json"],
                              ["codes"], ["codes", "--json"], ["schema"], ["check", "source.toml"],
                              ["check", "--json", "source.toml"], ["run", "source.toml"], ["run", "--json", "source.toml"],
                              ["new", "fresh"]):
                done = self.kesto(*arguments, capture_output=False, stdout=full, stderr=subprocess.PIPE)
                self.assertEqual(done.returncode, 1, arguments)
                self.assertIn("cannot write to the standard output", done.stderr, arguments)

    def test_empty_arguments(self):
        self.write("source.toml", SOURCE)
        for arguments in (["run", ""], ["run", "source.toml", "-o", ""], ["run", "source.toml", "--from", ""],
                          ["run", "source.toml", "--to", ""], ["run", "source.toml", "--record", ""],
                          ["run", "source.toml", "--set", ""], ["check", "source.toml", "--accept", ""], ["new", ""],
                          ["draw", "source.toml", "-o", ""], ["report", "", "-o", "page.html"], ["types", ""],
                          ["report", ".", "-o", ""], ["report", ".", "-o", "page.html", "--model", ""]):
            done = self.kesto(*arguments)
            self.assertEqual(done.returncode, 2, arguments)
            self.assertIn("expected a value, found nothing", done.stderr, arguments)
        self.assertEqual([path.name for path in self.folder.iterdir()], ["source.toml"])

    def drawn(self, columns, terminal):
        """What a run draws on a terminal while its engine is held for a second."""
        master, slave = pty.openpty()
        fcntl.ioctl(slave, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
        process = subprocess.Popen([KESTO, "run", "--record", "none", "long.toml"], cwd=self.folder, stdout=subprocess.DEVNULL,
                                   stderr=slave, env={**os.environ, "TERM": terminal})
        os.close(slave)
        children = pathlib.Path(f"/proc/{process.pid}/task/{process.pid}/children")
        while process.poll() is None and not (engine := children.read_text()):
            pass
        os.kill(int(engine), signal.SIGSTOP)
        time.sleep(1)
        os.kill(int(engine), signal.SIGCONT)
        text = b""
        try:
            while part := os.read(master, 4096):
                text += part
        except OSError:
            pass  # the terminal ends with the process
        os.close(master)
        self.assertEqual(process.wait(), 0)
        return text.decode()

    def test_the_progress_bar(self):
        sources = "".join(f'[[components]]\nname = "d{i}"\ntype = "demand_source"\ndemand = 1\n' for i in range(600))
        self.write("long.toml", SOURCE.replace("2012-01-05", "2099-12-31") + sources)
        lines = re.findall(r"\r([^\r\n]*)\x1b\[K", self.drawn(25, "xterm"))
        self.assertTrue(lines)
        self.assertTrue(all(len(line) < 25 for line in lines), lines)
        drawn = self.drawn(80, "dumb")
        self.assertIn("warning", drawn)
        self.assertNotIn("\x1b", drawn)
        self.assertNotIn("%", drawn)


if __name__ == "__main__":
    unittest.main()
