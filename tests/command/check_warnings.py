#!/usr/bin/env python3
"""What is doubtful about a model or its results travels: to the terminal, summary.json, results.nc and --json; --strict
fails on it unless it is accepted.

usage: check_warnings.py KESTO COMMAND_FOLDER"""

import csv
import json
import pathlib
import subprocess
import sys
import unittest

import netCDF4

from running import InFolder, KESTO

SOURCES = pathlib.Path(sys.argv.pop(1))
COLUMNS = ["code", "severity", "text", "file", "line", "column", "component", "accepted"]

# The soil store is not defined below the freezing point.
FROST = """kesto_model = 1
[simulation]
start = 2012-01-01
end = 2012-01-05
[brands.soil]
storage_depth = 100
infiltration_rate = 0.1
outflow_rate = 0.1
threshold_fraction = 0.5
[groups.field]
rainfall = 1
temperature = { column = "t", file = "t.csv" }
[[components]]
name = "soil"
type = "soil_store"
group = "field"
brand = "soil"
"""

# On days without an overflow its quality is a division by zero, of which the mixer makes -2147483648.
MIXED = """kesto_model = 1
[simulation]
start = 2012-01-01
end = 2012-01-03
[brands.roof]
evaporation_fraction = 0
[brands.plant]
draw_per_day = 5
energy_per_volume = 0
[groups.house]
rainfall = { column = "rain", file = "rain.csv" }
[[components]]
name = "roof"
type = "impervious_surface"
group = "house"
brand = "roof"
size = 10
[[components]]
name = "plant"
type = "greywater_treatment"
brand = "plant"
size = 10
[[components]]
name = "a mixer"
type = "mixer"
[[components]]
name = "end"
type = "logger"
[[connections]]
from = "roof"
to = "plant"
[[connections]]
from = "plant:overflow"
to = "a mixer"
[[connections]]
from = "a mixer"
to = "end"
"""

# Nothing is doubtful here; the quota limiter has notes.
SOUND = """kesto_model = 1
[simulation]
start = 2012-02-01
end = 2012-02-03
[brands.quota]
daily_limit = 1
monthly_limit = 10
yearly_limit = 100
[[components]]
name = "asked"
type = "demand_source"
demand = 2
[[components]]
name = "limit"
type = "quota_limiter"
brand = "quota"
[[components]]
name = "end"
type = "logger"
[[connections]]
from = "asked"
to = "limit"
[[connections]]
from = "limit:allowed"
to = "end"
"""


class Warnings(InFolder):
    def setUp(self):
        super().setUp()
        (self.folder / "rain.csv").write_text("rain\n5\n0\n0\n")
        (self.folder / "t.csv").write_text("t\n4\n3\n-1\n2\n1\n")

    def kesto(self, command, text, *arguments):
        self.write(text)
        return super().kesto(command, "model.toml", *arguments)

    def warnings(self, command, text, *arguments):
        done = self.kesto(command, text, "--json", *arguments)
        report = json.loads(done.stdout)
        for row in report["errors"] + report["warnings"]:
            self.assertEqual(list(row), COLUMNS)
        return {(row["code"], row["component"]): row for row in report["errors"] + report["warnings"]}

    def test_series_that_are_no_numbers_are_told_with_day_and_count(self):
        done = self.kesto("run", FROST)
        self.assertEqual(done.returncode, 0)
        self.assertEqual(done.stderr.splitlines()[1:], [
            'model.toml:10:9: warning: group "field": its infiltration is not a number on 3 of 5 days, the first '
            '2012-01-03 [not-finite]',
            'model.toml:14:8: warning: component "soil" (soil_store): its runoff is not a number on 3 of 5 days, the first '
            '2012-01-03; its storage too [not-finite]'])
        rows = self.warnings("run", FROST, "--record", "none")
        self.assertIn("its runoff is not a number on 3 of 5 days, the first 2012-01-03; its storage too",
                      rows["not-finite", "soil"]["text"])
        self.assertEqual(rows["not-finite", "soil"]["line"], 14)

    def test_infinite_series_are_told(self):
        # What is multiplied twice by 1e30 is beyond the range of single precision.
        text = SOUND.replace('type = "quota_limiter"\nbrand = "quota"', 'type = "multiplier"\nmultiplier = 1e30')
        text = text.replace("demand = 2", "demand = 1e25").replace("limit:allowed", "limit")
        rows = self.warnings("run", text)
        self.assertIn("its outflow is infinite on 3 of 3 days, the first 2012-02-01", rows["not-finite", "limit"]["text"])
        self.assertIn("what it receives is infinite", rows["not-finite", "end"]["text"])

    def test_qualities_that_are_none_are_told(self):
        rows = self.warnings("run", MIXED)
        self.assertIn("the quality of its outflow is -2147483648 on 2 of 3 days, the first 2012-01-02; expected 0 to 1e9, "
                      "or -1 for none", rows["odd-quality", "a mixer"]["text"])
        self.assertIn("the quality of its overflow is not a number on 2 of 3 days, the first 2012-01-02; it has no water then",
                      rows["empty-quality", "plant"]["text"])

    def test_a_balance_of_no_numbers_is_not_balanced(self):
        done = self.kesto("run", FROST, "--json", "--balance", "-o", "out")
        rows = {row["name"]: row for row in json.loads(done.stdout)["balance"]}
        self.assertFalse(rows["soil"]["balanced"])
        self.assertIsNone(rows["soil"]["error"])
        with open(self.folder / "out" / "balance.csv", newline="") as file:
            self.assertEqual({row["state"] for row in csv.DictReader(file)}, {"off"})
        self.assertIn('the balance of component "soil" does not close: its figures are no numbers [open-balance]',
                      done.stderr)

    def test_warnings_travel_with_the_results(self):
        for form in "csv", "netcdf":
            with self.subTest(form):
                done = self.kesto("run", FROST, "-q", "-o", "out", "--format", form)
                self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""))
                summary = self.json_in("out/summary.json")
                self.assertEqual({row["code"] for row in summary["warnings"]}, {"frost", "not-finite"})
                self.assertEqual(summary["errors"], [])
        with netCDF4.Dataset(self.folder / "out" / "results.nc") as results:
            self.assertEqual(json.loads(results.warnings), summary["warnings"])

    def test_strict_fails_on_what_is_not_accepted(self):
        for command in "check", "run":
            self.assertEqual(self.kesto(command, FROST, "-q" if command == "run" else "--json").returncode, 0)
            done = self.kesto(command, FROST, "--strict")
            self.assertEqual(done.returncode, 1)
            self.assertIn(f"kesto {command}: error: --strict: ", done.stderr)
            self.assertIn('"frost soil"', done.stderr)
        done = self.kesto("run", FROST, "-q", "--strict", "--accept", "frost soil", "--accept", "open-balance soil")
        self.assertEqual(done.returncode, 1)
        self.assertEqual(done.stderr, 'kesto run: error: --strict: 2 warnings are not accepted: "not-finite", '
                                      '"not-finite soil"\n')

    def test_a_strict_run_records_what_it_needs_and_shows_what_was_asked(self):
        done = self.kesto("run", FROST, "--strict", "--record", "none", "--json")
        summary = json.loads(done.stdout)
        self.assertIn("its runoff is not a number", " ".join(row["text"] for row in summary["warnings"]))
        self.assertIn("open-balance", {row["code"] for row in summary["warnings"]})
        self.assertEqual(summary["flows"], [])
        self.assertNotIn("balance", summary)

    def test_notes_pass_strictly(self):
        done = self.kesto("check", SOUND, "--strict")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn("0 warnings, 1 note", done.stdout)
        done = self.kesto("run", SOUND, "--strict")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn(": note: ", done.stderr)
        rows = self.warnings("run", SOUND)
        self.assertEqual(rows["part-year", "limit"]["severity"], "note")

    def test_accepted_warnings_pass_and_are_shown(self):
        text = 'accept = ["frost soil", "not-finite", "open-balance soil"]\n' + FROST
        done = self.kesto("run", text, "--strict")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn("[not-finite, accepted]", done.stderr)
        self.assertTrue(all(row["accepted"] for row in self.warnings("run", text).values()))
        # A component's name may hold blanks; another component's warning is not accepted.
        accepted = 'accept = ["odd-quality a mixer"]\n' + MIXED
        self.assertTrue(self.warnings("run", accepted)["odd-quality", "a mixer"]["accepted"])
        self.assertFalse(self.warnings("run", 'accept = ["odd-quality end"]\n' + MIXED)["odd-quality", "a mixer"]["accepted"])

    def test_what_cannot_be_accepted_is_named(self):
        done = self.kesto("check", 'accept = ["frots soil", "frost sole", 3]\n' + FROST, "--accept", "wrong-value")
        self.assertEqual(done.returncode, 2)
        self.assertEqual([line for line in done.stderr.splitlines() if ": error: " in line], [
            '--accept "wrong-value": error: accept: there is no warning with the code "wrong-value"; "kesto codes" lists them',
            'model.toml:1:11: error: accept: there is no warning with the code "frots"; "kesto codes" lists them; did you '
            'mean "frost"?',
            'model.toml:1:25: error: accept: there is no component "sole"; did you mean "soil"?',
            'model.toml:1:39: error: accept holds the number 3; expected a list of texts "CODE" or "CODE COMPONENT"'])
        self.assertIn("accept is the text", self.kesto("check", 'accept = "frost"\n' + FROST).stderr)

    def test_programs_get_errors_in_the_same_form(self):
        text = FROST.replace('group = "field"', 'group = "feild"').replace("[groups.field]\n", "[groups.field]\nwind = \"3 m\"\n")
        for command in "check", "run":
            rows = self.warnings(command, text)
            self.assertEqual(self.kesto(command, text, "--json").returncode, 2)
            row = rows["unknown-name", "soil"]
            self.assertIn(("wrong-value", None), rows)
            self.assertEqual((row["severity"], row["file"], row["line"], row["column"], row["component"]),
                             ("error", "model.toml", 17, 9, "soil"))
        done = subprocess.run([KESTO, "run", "none.toml", "--json"], cwd=self.folder, capture_output=True, text=True)
        report = json.loads(done.stdout)
        self.assertEqual((done.returncode, report["outcome"]), (2, "not run"))
        self.assertEqual([(row["code"], row["file"]) for row in report["errors"]], [("no-file", "none.toml")])
        check = json.loads(self.kesto("check", SOUND, "--json").stdout)
        self.assertEqual((check["fit"], check["steps"], check["components"], check["errors"]), (True, 3, 3, []))

    def test_a_run_that_stops_is_an_error_of_its_summary(self):
        text = SOUND.replace("[simulation]\n", "[simulation]\nstop_on_infeasible = true\n").replace(
            "daily_limit = 1\nmonthly_limit = 10\nyearly_limit = 100", "daily_capacity = 1\nloss_fraction = 0").replace(
            "quota_limiter", "abstraction").replace("limit:allowed", "limit:request")
        done = self.kesto("run", text, "--json", "-o", "out")
        report = json.loads(done.stdout)
        self.assertEqual((done.returncode, report["outcome"]), (1, "failed"))
        self.assertEqual([(row["code"], row["component"]) for row in report["errors"]], [("run-failed", "limit")])
        self.assertEqual(self.json_in("out/summary.json")["errors"], report["errors"])

    def test_a_folder_that_cannot_be_is_an_error_for_programs(self):
        done = self.kesto("run", SOUND, "--json", "-o", "t.csv/out")
        report = json.loads(done.stdout)
        self.assertEqual((done.returncode, report["outcome"]), (1, "not run"))
        self.assertEqual([row["code"] for row in report["errors"]], ["cannot-write"])

    def test_codes_are_listed(self):
        done = subprocess.run([KESTO, "codes", "--json"], capture_output=True, text=True, check=True)
        rows = {row["code"]: row for row in json.loads(done.stdout)}
        self.assertEqual(rows["not-finite"]["about"], "results")
        text = "".join(path.read_text() for path in SOURCES.rglob("*.cpp"))
        self.assertEqual([code for code in rows if f'"{code}"' not in text], [], "codes that nothing has")
        self.assertEqual((rows["part-year"]["severity"], rows["no-file"]["severity"]), ("note", "error"))


unittest.main()
