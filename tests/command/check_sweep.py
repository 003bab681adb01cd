#!/usr/bin/env python3
"""Runs many members of a model, and expects of each what `kesto run --set` gives.

usage: check_sweep.py KESTO EXAMPLES [--long]"""

import csv
import json
import os
import pathlib
import random
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

LONG = "--long" in sys.argv
if LONG:
    sys.argv.remove("--long")
EXAMPLES = pathlib.Path(sys.argv.pop()).resolve()
KESTO = str(pathlib.Path(sys.argv.pop()).resolve())

MODEL = """kesto_model = 1
title = "Tank"
[simulation]
start = 2012-01-02
end = 2012-01-05
[groups.house]
[[components]]
name = "rain"
type = "demand_source"
demand = 4
[[components]]
name = "asked"
type = "demand_source"
demand = 10
[[components]]
name = "tank"
type = "tank"
group = "house"
size = 20
initial_storage = 8
[[connections]]
from = "rain"
to = "tank:inflow"
[[connections]]
from = "asked"
to = "tank:demand"
[scenarios.small]
asked.demand = 5
[scenarios.full]
tank.initial_storage = 20
"""


class Sweeping(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name)
        (self.folder / "model.toml").write_text(MODEL)

    def kesto(self, *arguments):
        return subprocess.run([KESTO, *map(str, arguments)], cwd=self.folder, capture_output=True, text=True, timeout=300)

    def sweep(self, *arguments, model="model.toml", output="out", status=0):
        done = self.kesto("sweep", model, *arguments, "-o", output)
        self.assertEqual(done.returncode, status, done.stderr)
        return done

    def rows(self, output="out"):
        with open(self.folder / output / "members.csv", newline="") as file:
            return list(csv.DictReader(file))

    def figures_of_run(self, *options, model="model.toml"):
        done = self.kesto("run", "--json", model, *options)
        summary = json.loads(done.stdout)
        figures = {row["name"]: row["value"] for row in summary["figures"]}
        for row in summary["account"]:
            name = f"account.{row['side']}.{row['kind']}"
            figures[name] = figures.get(name, 0) + row["litres"]
        return figures

    def expect_as_run(self, row, figures):
        for name, value in figures.items():
            cell = row[name]
            self.assertEqual(float(cell) if cell else None, value, (row["member"], name))

    def errors(self, *arguments):
        done = self.sweep(*arguments, status=2)
        self.assertFalse((self.folder / "out").exists(), "nothing is written")
        return [line for line in done.stderr.splitlines() if ": error: " in line]


class Designs(Sweeping):
    def test_a_table(self):
        (self.folder / "members.csv").write_text(
            "tank.size,asked.demand,tank.initial_storage\n20,10,8\n0.03 m3,5,\n,,12\n")
        self.sweep("members.csv", "--figures", "all")
        rows = self.rows()
        self.assertEqual([row["member"] for row in rows], ["1", "2", "3"])
        self.assertEqual([row["tank.size"] for row in rows], ["20", "0.03 m3", ""])
        self.assertEqual({row["outcome"] for row in rows}, {"finished"})
        self.expect_as_run(rows[0], self.figures_of_run())
        self.expect_as_run(rows[1], self.figures_of_run("--set", "tank.size=0.03 m3", "--set", "asked.demand=5"))
        self.expect_as_run(rows[2], self.figures_of_run("--set", "tank.initial_storage=12"))

    def test_a_spreadsheet_with_decimal_commas(self):
        (self.folder / "members.csv").write_text("tank.size;asked.demand\n20,5;2,5\n")
        self.sweep("members.csv", "--figures", "all")
        self.expect_as_run(self.rows()[0], self.figures_of_run("--set", "tank.size=20.5", "--set", "asked.demand=2.5"))

    def test_lists_and_ranges_are_crossed(self):
        self.sweep("--vary", "tank.size=10:30:3", "--vary", "asked.demand=5 L, 0.01 m3")
        self.assertEqual([(row["tank.size"], row["asked.demand"]) for row in self.rows()],
                         [(size, demand) for size in ("10", "20", "30") for demand in ("5 L", "0.01 m3")])

    def test_ranges_with_units(self):
        self.sweep("--vary", "tank.size=0.5 m3:2:4")
        self.assertEqual([row["tank.size"] for row in self.rows()], ["0.5 m3", "1 m3", "1.5 m3", "2 m3"])

    def test_scenarios(self):
        self.sweep("--scenarios", "--vary", "tank.size=20,30", "--figures", "all")
        rows = self.rows()
        self.assertEqual([(row["scenario"], row["tank.size"]) for row in rows],
                         [(name, size) for name in ("", "small", "full") for size in ("20", "30")])
        self.expect_as_run(rows[3], self.figures_of_run("--scenario", "small", "--set", "tank.size=30"))

    def test_options_hold_for_all(self):
        self.sweep("--vary", "tank.size=20,30", "--set", "tank.size=1", "--set", "asked.demand=7", "--to", "2012-01-03",
                   "--figures", "all")
        self.expect_as_run(self.rows()[1], self.figures_of_run(
            "--set", "tank.size=30", "--set", "asked.demand=7", "--to", "2012-01-03"))

    def test_series_of_other_files(self):
        for number in (1, 2):
            days = "".join(f"2012-01-0{day},{number * day}\n" for day in range(2, 6))
            (self.folder / f"rain{number}.csv").write_text("date,mm\n" + days)
        model = MODEL.replace("demand = 4", 'demand = "mm"') + '[series]\nfile = "rain1.csv"\ntime = "date"\n'
        (self.folder / "model.toml").write_text(model)
        self.sweep("--vary", "series.file=rain1.csv,rain2.csv", "--vary", "rain.demand.scale=1,0.3", "--figures", "all")
        rows = self.rows()
        self.expect_as_run(rows[3], self.figures_of_run("--set", "series.file=rain2.csv", "--set", "rain.demand.scale=0.3"))
        made = json.loads((self.folder / "out/members.json").read_text())["made_of"]
        self.assertEqual([row["file"] for row in made["inputs"]], ["model.toml", "rain1.csv", "rain2.csv"])


class Refusals(Sweeping):
    def test_a_wrong_key_is_told_once(self):
        (self.folder / "members.csv").write_text("tank.sise,tonk.size\n" + "3,4\n" * 50)
        self.assertEqual(self.errors("members.csv"), [
            'members.csv:1: error: component "tank" has no key "sise"; did you mean "size"?; in all 50 members',
            'members.csv:1: error: there is no "tonk" in the model; did you mean "tank"?; in all 50 members'])
        self.assertEqual(self.errors("--vary", "tank.sise=1:50:50"), [
            '--vary tank.sise=1:50:50: error: component "tank" has no key "sise"; did you mean "size"?; in all 50 '
            'members'])

    def test_a_wrong_cell_is_told_with_row_and_column(self):
        (self.folder / "members.csv").write_text("asked.demand,tank.size\n3,4\n3,4 l\nmany,5\n")
        errors = self.errors("members.csv")
        self.assertEqual(len(errors), 2, errors)
        self.assertTrue(errors[0].startswith('members.csv:3:3: error: component "tank": size is the text "4 l"'), errors)
        self.assertTrue(errors[1].startswith("members.csv:4:1: error: "), errors)

    def test_a_warning_is_told_once(self):
        (self.folder / "members.csv").write_text("tank.initial_storage\n" + "3\n" * 5 + "30\n40\n")
        warnings = [line for line in self.sweep("members.csv").stderr.splitlines() if ": warning: " in line]
        self.assertEqual(len(warnings), 2, warnings)
        self.assertTrue(warnings[0].startswith("members.csv:7:1: warning: "), warnings)
        self.assertIn("in 2 of 7 members, the first 6", warnings[0])
        self.assertIn("in all 7 members [demand-to-water]", warnings[1])

    def test_designs_that_are_none(self):
        for arguments, text in (
                (["--vary", "tank.size"], "expected KEY=VALUE,VALUE,... or KEY=FROM:TO:COUNT"),
                (["--vary", "tank.size="], "expected KEY=VALUE,VALUE,... or KEY=FROM:TO:COUNT"),
                (["--vary", "tank.size=1,,2"], 'a value of "1,,2" is empty'),
                (["--vary", "tank.size=1:2:1"], '"1" values; expected a whole number of at least 2'),
                (["--vary", "tank.size=1:2:2.5"], '"2.5" values; expected a whole number of at least 2'),
                (["--vary", "tank.size=1 L:2 m3:3"], 'from "1 L" to "2 m3"; expected one unit for both'),
                (["--vary", "tank=1,2"], '"tank" leads to no value'),
                (["--vary", "tank.size=1,2", "--vary", "tank.size=3,4"], "tank.size is given twice"),
                (["--vary", "tank.size=1,2", "--members", "2-3"], "expected FIRST-LAST, both from 1 to 2"),
                (["--vary", "tank.size=1,2", "--members", "0-1"], "expected FIRST-LAST, both from 1 to 2"),
                (["--vary", "tank.size=1,2", "--members", "2"], "expected FIRST-LAST, both from 1 to 2"),
                (["--vary", "tank.size=1,2", "--record", "tonk"], 'there is no component "tonk"'),
                (["missing.csv"], "cannot read missing.csv: No such file or directory"),
                ([], "expected a table of members, --vary or --scenarios")):
            errors = self.errors(*arguments)
            self.assertEqual(len(errors), 1, (arguments, errors))
            self.assertIn(text, errors[0], arguments)
        (self.folder / "empty.csv").write_text("tank.size\n")
        self.assertIn("the table has no rows", self.errors("empty.csv")[0])
        (self.folder / "model.toml").write_text(MODEL.split("[scenarios")[0])
        self.assertIn("the model has no scenarios", self.errors("--scenarios")[0])

    def test_the_model_is_checked(self):
        (self.folder / "model.toml").write_text(MODEL.replace('type = "tank"', 'type = "tonk"'))
        self.assertIn('did you mean "tank"?; in all 2 members', self.errors("--vary", "tank.size=1,2")[0])
        self.assertEqual(json.loads(self.sweep("--vary", "tank.size=1,2", "--json", status=2).stdout)["outcome"], "not run")


unittest.main()
