#!/usr/bin/env python3
"""Puts the figures of runs side by side.

usage: check_compare.py KESTO"""

import base64
import csv
import hashlib
import json
import re
import shutil
import struct
import unittest

from running import InFolder, TANK


class Compare(InFolder):
    def setUp(self):
        super().setUp()
        self.write(TANK)

    def run_into(self, folder, *options):
        done = self.kesto("run", "-q", "model.toml", "-o", folder, *options)
        self.assertEqual(done.returncode, 0, done.stderr)

    def compared(self, *arguments):
        done = self.kesto("compare", "--json", *arguments)
        self.assertEqual(done.returncode, 0, done.stderr)
        comparison = json.loads(done.stdout)
        return {row["name"]: row for row in comparison["figures"]}, comparison

    def test_figures_stand_side_by_side(self):
        # 8 + 4 - 10 are 2 left, then 4 short, then 6 short each day.
        self.run_into("a")
        self.run_into("b", "--scenario", "small")
        figures, comparison = self.compared("a", "b")
        self.assertEqual(comparison["warnings"], [])
        self.assertEqual([run["name"] for run in comparison["runs"]], ["a", "b"])
        unmet = figures["tank.unmet"]
        self.assertEqual((unmet["unit"], unmet["values"], unmet["differences"]), ("L", [16, 0], [0, -16]))
        self.assertEqual(unmet["percent"], [0, -100])
        self.assertEqual(figures["tank.demand"]["percent"][1], -50)
        self.assertNotIn("network.rain", figures)
        self.assertIn("network.rain", self.compared("a", "b", "--all")[0])

    def test_a_model_and_its_scenarios(self):
        figures, comparison = self.compared("model.toml", "--scenarios")
        self.assertEqual([(run["name"], run["title"]) for run in comparison["runs"]],
                         [("as it is", "Tank"), ("small", "Half the demand"), ("full", "Tank")])
        self.assertEqual(figures["tank.unmet"]["values"], [16, 0, 4])
        for number, scenario in enumerate(("small", "full")):
            self.run_into(scenario, "--scenario", scenario)
            summary = json.loads((self.folder / scenario / "summary.json").read_text())
            for row in summary["figures"]:
                if row["name"] in figures:
                    self.assertEqual(figures[row["name"]]["values"][number + 1], row["value"], row["name"])

    def sweep(self, *arguments):
        done = self.kesto("sweep", "-q", "model.toml", "-o", "sweep", *arguments)
        self.assertEqual(done.returncode, 0, done.stderr)

    def test_members_of_a_sweep(self):
        self.sweep("--vary", "tank.size=1,2,3,4,5,6,7,8", "--figures", "all")
        done = self.kesto("compare", "sweep")
        self.assertEqual((done.returncode, done.stderr),
                         (0, "kesto compare: note: sweep: the first 6 of 8 members; --members names others\n"))
        figures, comparison = self.compared("sweep", "--members", "1,7-8")
        self.assertEqual([(run["name"], run["title"]) for run in comparison["runs"]],
                         [(f"sweep member {n}", f"tank.size={n}") for n in (1, 7, 8)])
        self.assertEqual(comparison["warnings"], [])
        with open(self.folder / "sweep" / "members.csv", newline="") as file:
            rows = {row["member"]: row for row in csv.DictReader(file)}
        unmet = figures["tank.unmet"]
        self.assertEqual((unmet["unit"], unmet["values"]), ("L", [float(rows[n]["tank.unmet"]) for n in "178"]))
        self.assertNotIn("network.rain", figures)
        # With a run beside it, whose figures are the same.
        self.run_into("a", "--set", "tank.size=7")
        figures, comparison = self.compared("a", "sweep", "--members", "7")
        self.assertEqual(comparison["warnings"], [])
        self.assertFalse([name for name in figures if name.startswith(("network", "tank"))])

    def test_members_that_there_are_not(self):
        self.sweep("--vary", "tank.size=1,2")
        for members, text in (("3", "sweep has no member 3; it has 1 to 2"), ("0", "expected numbers of members, as in 1,5"),
                              ("2-1", "expected ascending ranges"), ("1;2", "expected numbers of members")):
            done = self.kesto("compare", "sweep", "--members", members)
            self.assertEqual((done.returncode, done.stdout), (2, ""))
            self.assertIn(text, done.stderr)
        rows = (self.folder / "sweep/members.csv").read_text()
        (self.folder / "sweep/members.csv").write_text(rows.splitlines()[0] + "\n")
        self.assertIn('sweep/members.csv: it is not what "kesto sweep" writes: it has no rows',
                      self.kesto("compare", "sweep", "--members", "1").stderr)
        (self.folder / "sweep/members.csv").write_text(rows)
        (self.folder / "sweep" / "members.json").write_text("{}")
        done = self.kesto("compare", "sweep")
        self.assertEqual(done.returncode, 2)
        self.assertIn("cannot read sweep/members.json: it is not what \"kesto sweep\" writes: key 'columns' not found; expected a folder",
                      done.stderr)
        self.run_into("a")
        self.assertEqual(self.kesto("compare", "a", "a", "--members", "1").returncode, 2)

    def test_text_and_table(self):
        done = self.kesto("compare", "model.toml", "--scenarios", "-o", "table.csv")
        lines = {line.split()[0]: line.split() for line in done.stdout.splitlines() if line.startswith("  tank.")}
        self.assertEqual(lines["tank.unmet"], ["tank.unmet", "L", "16.0", "0.0", "-16.0", "(-100.0", "%)", "4.0", "-12.0",
                                               "(-75.0", "%)"])
        self.assertEqual(lines["tank.days_short"], ["tank.days_short", "d", "3", "0", "-3", "(-100.0", "%)", "1", "-2",
                                                    "(-66.7", "%)"])
        self.assertEqual(lines["tank.demand"][-1], "=")
        self.assertEqual(lines["tank.reliability_volume"], ["tank.reliability_volume", "%", "60.0", "100.0", "+40.0",
                                                            "90.0", "+30.0"])
        with open(self.folder / "table.csv", newline="") as file:
            rows = {row["figure"]: row for row in csv.DictReader(file)}
        self.assertEqual(float(rows["tank.unmet"]["small: difference"]), -16)
        self.assertEqual(float(rows["tank.unmet"]["full: difference [%]"]), -75)

    def test_what_is_small_beside_another_is_not_nothing(self):
        # Of 4 L a day, and of a million times as much, or more.
        self.run_into("a", "--set", "asked.demand=4")
        self.run_into("b", "--set", "asked.demand=40000000 m3")
        lines = {line.split()[0]: line.split() for line in self.kesto("compare", "b", "a").stdout.splitlines() if line.startswith("  ")}
        self.assertEqual(lines["tank.demand"][:4], ["tank.demand", "GL", "160.0", "1.60e-08"])
        self.run_into("b", "--set", "asked.demand=40000 m3")
        lines = {line.split()[0]: line.split() for line in self.kesto("compare", "b", "a").stdout.splitlines() if line.startswith("  ")}
        self.assertEqual(lines["tank.demand"][:4], ["tank.demand", "ML", "160.0", "0.000016"])

    def test_what_cannot_be_compared_well_is_told(self):
        self.run_into("a")
        self.run_into("b", "--to", "2012-01-04")
        self.assertEqual(self.kesto("compare", "a", "b").stderr,
                         "kesto compare: warning: the runs are over different periods: a 2012-01-02 to 2012-01-05, "
                         "b 2012-01-02 to 2012-01-04\n")
        self.write(TANK.replace("size = 20", "size = 30"))
        self.run_into("c")
        self.assertIn("the runs are of different versions of the model file: a ", self.kesto("compare", "a", "c").stderr)
        for name, text in ("d", TANK), ("e", TANK.replace("size = 20", "size = 40")):
            (self.folder / f"{name}.toml").write_text(text)
            self.kesto("run", "-q", f"{name}.toml", "-o", name)
        self.assertEqual(self.kesto("compare", "a", "d").stderr, "")  # a copy
        self.assertIn("the runs are of different models: a ", self.kesto("compare", "a", "e").stderr)
        self.assertIn("No figure differs.", self.kesto("compare", "a", "a").stdout)

    def test_what_is_not_alike_saves_nothing(self):
        self.write(TANK + "[economics]\nwater_price = 2\ncurrency = 'EUR'\n")
        self.run_into("a")
        self.run_into("b", "--scenario", "small", "--set", "economics.currency=USD")
        comparison = self.compared("a", "b")[1]
        self.assertEqual(comparison["warnings"], ["the runs are in different currencies: a EUR, b USD"])
        self.assertEqual([row["name"] for row in comparison["savings"]], ["saved_mains"])
        self.run_into("c", "--scenario", "small", "--to", "2012-01-04")
        self.assertEqual(self.compared("a", "c")[1]["savings"], [])
        self.run_into("d", "--scenario", "small")
        self.assertEqual([row["name"] for row in self.compared("a", "d")[1]["savings"]], ["saved_mains", "saved_running_cost"])

    def test_files_that_have_changed_between_runs(self):
        self.write(TANK.replace("demand = 4", 'demand = { column = "flow", file = "flow.csv" }'))
        for folder, flow in ("a", 4), ("b", 5):
            (self.folder / "flow.csv").write_text("flow\n" + f"{flow}\n" * 4)
            self.run_into(folder)
        self.assertEqual(self.compared("a", "b")[1]["warnings"], ["between the runs these files have changed: flow.csv"])
        self.assertEqual(self.compared("a", "a")[1]["warnings"], [])

    def test_a_model_without_scenarios(self):
        self.write(TANK[:TANK.index("[scenarios")])
        done = self.kesto("compare", "model.toml", "--scenarios")
        self.assertEqual((done.returncode, done.stdout, done.stderr),
                         (2, "", "model.toml: error: there are no scenarios; expected [scenarios.NAME]\n"))

    def test_nothing_that_a_terminal_obeys(self):
        self.run_into("a")
        self.run_into("b", "--scenario", "small")
        path = self.folder / "b/summary.json"
        summary = json.loads(path.read_text())
        hostile = "\x1b[31mred\nline"
        summary["title"], summary["set"], summary["start"] = hostile, [hostile], hostile
        summary["figures"][0]["name"] = summary["figures"][0]["unit"] = hostile
        path.write_text(json.dumps(summary))
        done = self.kesto("compare", "a", "b")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn("\\u001B[31mred\\u000Aline", done.stdout)
        self.assertNotIn("\x1b", done.stdout + done.stderr)
        self.assertNotIn("\nline", done.stdout + done.stderr)

    def page(self, name="page.html"):
        """The data that a page holds."""
        text = (self.folder / name).read_text()
        self.assertTrue(text.startswith("<!doctype html>"))
        self.assertIn("default-src 'none'", text)
        self.assertNotIn(str(self.folder), text)
        return json.loads(re.search(r'<script type="application/json" id="data">(.*?)</script>', text, re.S)[1])

    @staticmethod
    def numbers(packed):
        return [value for value, in struct.iter_unpack("<f", base64.b64decode(packed))]

    def test_a_page_of_runs(self):
        (self.folder / "runs").mkdir()
        for name, *options in ("a",), ("b", "--scenario", "small"), ("c", "--set", "tank.size=30"), ("d", "--format", "netcdf"):
            self.run_into(f"runs/{name}", *options)
        done = self.kesto("compare", "runs/a", "runs/b", "runs/c", "runs/d", "-o", "page.html")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        page = self.page()
        self.assertIs(page["compare"], True)
        self.assertEqual([(run["name"], run.get("set")) for run in page["runs"]],
                         [("a", None), ("b", ["--scenario small"]), ("c", ["tank.size=30"]), ("d", None)])
        figures = {row["name"]: row for row in page["figures"]}
        self.assertEqual(figures["tank.unmet"]["values"], [16, 0, 16, 16])
        self.assertEqual(figures["saved_mains"]["values"], [None, 16, 0, 0])
        self.assertEqual(figures["network.mains"]["meaning"], "demands that no component answers")
        self.assertIn("network.rain", figures)
        overlays = {row["label"]: row for row in page["overlays"]}
        months = overlays["Used: Mains"]
        self.assertEqual((months["unit"], months["first"], months["sum"]), ("L", "2012-01", True))
        self.assertEqual([self.numbers(values) for values in months["values"]], [[16], [0], [16], [16]])
        days = overlays["tank:deficit, by day"]
        self.assertEqual((days["first"], days["step_days"]), ("2012-01-02", 1))
        self.assertEqual([self.numbers(values) for values in days["values"]], [[0, 4, 6, 6], [0] * 4, [0, 4, 6, 6], [0, 4, 6, 6]])
        labels = list(overlays)
        self.assertLess(labels.index("tank:deficit, by day"), labels.index("rain:demand, by day"), "what differs comes first")
        self.assertNotIn("sweep", page)
        parts = {part["run"]: part for part in page["made"]["parts"]}
        summary = self.json_in("runs/a/summary.json")
        self.assertEqual((parts["a"]["model"], parts["a"]["model_sha256"]), ("model.toml", summary["model_sha256"]))
        self.assertNotIn("options", parts["a"])
        self.assertEqual([parts[name]["options"] for name in "bc"], [[["--scenario", "small"]], [["--set", "tank.size=30"]]])

    def test_a_page_of_scenarios(self):
        done = self.kesto("compare", "model.toml", "--scenarios", "-o", "page.html", "--json")
        self.assertEqual(done.returncode, 0, done.stderr)
        page = self.page()
        self.assertEqual([run["name"] for run in page["runs"]], ["as it is", "small", "full"])
        self.assertEqual([run["title"] for run in page["runs"]], ["Tank", "Half the demand", "Tank"])
        of_page = {row["name"]: row["values"] for row in page["figures"]}
        for row in json.loads(done.stdout)["figures"]:
            self.assertEqual(of_page[row["name"]], row["values"])
        overlays = {row["label"]: row for row in page["overlays"]}
        self.assertEqual([self.numbers(values) for values in overlays["Used: Mains"]["values"]], [[16], [0], [4]])
        self.assertIn("tank:deficit, by day", overlays)
        digest = hashlib.sha256((self.folder / "model.toml").read_bytes()).hexdigest()
        self.assertEqual([(part["run"], part["model_sha256"], part.get("options")) for part in page["made"]["parts"]],
                         [("as it is", digest, None), ("small", digest, [["--scenario", "small"]]),
                          ("full", digest, [["--scenario", "full"]])])
        # The same as of runs that are kept in folders.
        for name, *options in ("a",), ("b", "--scenario", "small"), ("c", "--scenario", "full"):
            self.run_into(name, *options)
        self.assertEqual(self.kesto("compare", "a", "b", "c", "-o", "folders.html").returncode, 0)
        self.assertEqual(page["overlays"], self.page("folders.html")["overlays"])

    def test_a_page_of_a_sweep(self):
        (self.folder / "members.csv").write_text("tank.size,rain.demand,asked.demand\n10,4,1 L\n20,,0.002 m3\n30,5,3 L\n")
        self.sweep("members.csv", "--figures", "all")
        done = self.kesto("compare", "sweep", "-o", "page.html", "--json")
        self.assertEqual(done.returncode, 0, done.stderr)
        page = self.page()
        self.assertEqual((page["runs"], page["figures"]), ([], []))
        keys = {key["name"]: key for key in page["sweep"]["keys"]}
        self.assertEqual(keys["tank.size"], {"name": "tank.size", "unit": "L", "values": [10, 20, 30]})
        self.assertEqual(keys["rain.demand"]["values"], [4, None, 5])
        self.assertEqual(keys["asked.demand"], {"name": "asked.demand", "unit": "L", "values": [1, 2, 3]})
        self.assertEqual(page["sweep"]["members"], [1, 2, 3])
        made = self.json_in("sweep/members.json")["made_of"]
        part, = page["made"]["parts"]
        self.assertEqual(part["design"], {"members": 3, "sha256": made["design"]["sha256"], "table": "members.csv"})
        self.assertEqual((part["model"], part["model_sha256"]), ("model.toml", made["inputs"][0]["sha256"]))
        self.assertIn(["--figures", "all"], part["options"])
        rows = self.csv_rows("sweep/members.csv")
        figures = {figure["name"]: figure["values"] for figure in page["sweep"]["figures"]}
        self.assertEqual(figures["network.used"], [float(row["network.used"]) for row in rows])
        self.assertNotIn("network.rain", figures)
        self.assertEqual(self.kesto("compare", "sweep", "--members", "1,3", "-o", "page.html").returncode, 0)
        page = self.page()
        self.assertEqual([run["title"] for run in page["runs"]],
                         ["tank.size=10, rain.demand=4, asked.demand=1 L", "tank.size=30, rain.demand=5, asked.demand=3 L"])
        self.assertEqual(len(page["sweep"]["members"]), 3)

    def test_units_of_the_keys_of_a_sweep(self):
        self.write(TANK + '\n[economics]\ncurrency = "EUR"\nwater_price = 2\n')
        (self.folder / "members.csv").write_text(
            "economics.water_price,simulation.latitude,rain.demand.scale,tank.initial_storage\n"
            "2 EUR/m3,48,1,0.001 m3\n3,49,50 %,2\n")
        self.sweep("members.csv")
        self.assertEqual(self.json_in("sweep/members.json")["key_units"], ["EUR/m3", "degrees", "-", "L"])
        self.assertEqual(self.kesto("compare", "sweep", "-o", "page.html").returncode, 0)
        keys = {key["name"]: key for key in self.page()["sweep"]["keys"]}
        self.assertEqual(keys["rain.demand.scale"]["values"], [1, 0.5])
        self.assertEqual(keys["tank.initial_storage"], {"name": "tank.initial_storage", "unit": "L", "values": [1, 2]})
        # A sweep of an earlier version does not say the units of its keys.
        for given, values, unit in (("1 m3,3000 L", [1000, 3000], "L"), ("1 m3,3", ["1 m3", "3"], ""), ("4,3", [4, 3], "")):
            shutil.rmtree(self.folder / "sweep")
            self.sweep("--vary", f"tank.size={given}")
            members = self.json_in("sweep/members.json")
            del members["key_units"]
            (self.folder / "sweep/members.json").write_text(json.dumps(members))
            self.assertEqual(self.kesto("compare", "sweep", "-o", "page.html").returncode, 0)
            key, = self.page()["sweep"]["keys"]
            self.assertEqual((key["values"], key["unit"]), (values, unit), given)

    def test_a_page_is_never_written_over_something_else(self):
        self.run_into("a")
        shutil.copy(self.folder / "model.toml", self.folder / "model.html")
        shutil.copytree(self.folder / "a", self.folder / "b")
        (self.folder / "mine.html").write_text("mine")
        (self.folder / "link.html").symlink_to("a/summary.json")
        before = {path: path.read_bytes() for path in self.folder.rglob("*") if path.is_file()}
        for arguments in (["model.html", "--scenarios", "-o", "model.html"], ["a", "b", "-o", "mine.html"],
                          ["a", "b", "-o", "a/summary.json"], ["a", "b", "-o", "b/flows.csv"], ["a", "b", "-o", "link.html"]):
            done = self.kesto("compare", *arguments)
            self.assertEqual((done.returncode, done.stdout), (2, ""), arguments)
            self.assertRegex(done.stderr, "give (another name|the name of a file)")
        done = self.kesto("compare", *["a"] * 13, "-o", "page.html")
        self.assertEqual(done.returncode, 2)
        self.assertIn("a page shows 12 runs at most, and these are 13", done.stderr)
        (self.folder / "b/flows.csv").write_text("cut")
        done = self.kesto("compare", "a", "b", "-o", "page.html")
        self.assertEqual(done.returncode, 2)
        self.assertIn("cannot read b: flows.csv is not the file that the run", done.stderr)
        before[self.folder / "b/flows.csv"] = b"cut"
        self.assertEqual({path: path.read_bytes() for path in self.folder.rglob("*") if path.is_file()}, before)

    def test_what_runs_were_given_is_told(self):
        self.run_into("a")
        self.run_into("b", "--scenario", "small", "--set", "tank.size=7", "--set", "rain.demand=3")
        lines = self.kesto("compare", "a", "b").stdout.splitlines()
        self.assertEqual(lines[0], "  1  a: Tank, 2012-01-02 to 2012-01-05")
        self.assertEqual(lines[1], "  2  b: Tank, 2012-01-02 to 2012-01-05; with --scenario small, tank.size=7 and rain.demand=3")
        runs = self.compared("a", "b")[1]["runs"]
        self.assertEqual([run["set"] for run in runs], [[], ["--scenario small", "tank.size=7", "rain.demand=3"]])
        self.assertNotIn("; with", self.kesto("compare", "model.toml", "--scenarios").stdout)  # the name says it

    def test_what_is_no_run_is_refused(self):
        self.run_into("a")
        done = self.kesto("compare", "a", "b")
        self.assertEqual((done.returncode, done.stdout), (2, ""))
        self.assertIn("b: error: cannot read b/summary.json: No such file or directory", done.stderr)
        (self.folder / "b").mkdir()
        whole = self.json_in("a/summary.json")
        for text, reason in (("", "parse error at line 1"), ("[]", "expected keys or a list, found array"),
                             ("5", "expected keys or a list, found number"),
                             ('{"title": 3}', "type must be string, but is number"),
                             ('{"title": "a"}', "key 'model_file' not found"),
                             (json.dumps({**whole, "figures": [{}]}), "key 'value' not found"),
                             (json.dumps({**whole, "set": 3}), "type must be string, but is number")):
            (self.folder / "b" / "summary.json").write_text(text)
            done = self.kesto("compare", "a", "b")
            self.assertEqual((done.returncode, done.stdout), (2, ""), text)
            self.assertIn(f'b: error: cannot read b/summary.json: it is not what "kesto run" writes: {reason}', done.stderr)
        self.assertEqual(self.kesto("compare", "a").returncode, 2)
        done = self.kesto("compare", "a", "a", "--set", "tank.size=3")
        self.assertEqual(done.returncode, 2)
        self.assertIn("they need --scenarios, since folders hold results", done.stderr)
        self.assertEqual(self.kesto("compare", "model.toml", "model.toml", "--scenarios").returncode, 2)
        self.assertEqual(self.kesto("compare", "model.toml", "--scenarios", "--set", "tank.sise=3").returncode, 2)


unittest.main()
