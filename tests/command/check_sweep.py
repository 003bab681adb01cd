#!/usr/bin/env python3
"""Runs many members of a model, and expects of each what `kesto run --set` gives.

usage: check_sweep.py KESTO EXAMPLES; KESTO_TEST_LONG=1 compares each of 1,000 members with a run,
and slices and jobs of 1,000 members instead of 300"""

import json
import os
import pathlib
import random
import shutil
import signal
import subprocess
import sys
import time
import unittest

from running import InFolder, KESTO, SCARCE, TANK

LONG = bool(os.environ.get("KESTO_TEST_LONG"))
EXAMPLES = pathlib.Path(sys.argv.pop(1)).resolve()


class Sweeping(InFolder):
    def setUp(self):
        super().setUp()
        self.write(TANK)

    def sweep(self, *arguments, model="model.toml", output="out", status=0):
        done = self.kesto("sweep", model, *arguments, "-o", output)
        self.assertEqual(done.returncode, status, done.stderr)
        return done

    def rows(self, output="out"):
        return self.csv_rows(f"{output}/members.csv")

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

    def test_numbers_of_spreadsheets_are_those_of_tables(self):
        for row, size in (("1 500;1,5", "1500"), ("1.500;1,5", "1500"), ("1.500 L;1,5", "1500"), ("20,5 L;2,5", "20.5"),
                          ("0,0205 m3;2,5", "20.5"), ("20;2,5", "20")):
            (self.folder / "members.csv").write_text("tank.size;asked.demand\n" + row + "\n")
            done = self.sweep("members.csv", "--figures", "all", "--restart")
            demand = row.split(";")[1].replace(",", ".")
            self.expect_as_run(self.rows()[0], self.figures_of_run("--set", f"tank.size={size}", "--set", f"asked.demand={demand}"))
        (self.folder / "members.csv").write_text("tank.size;asked.demand\n1 500;1\n")
        self.assertIn('members.csv:2:1: note: column "tank.size": "1 500" is read as 1500',
                      self.sweep("members.csv", "--restart").stderr)
        for head, row in (("tank.size;asked.demand", "1.500;2"), ("tank.size;asked.demand", "1.500 L;2"),
                          ("tank.size\tasked.demand", "1.500 L\t2")):
            (self.folder / "members.csv").write_text(head + "\n" + row + "\n")
            done = self.sweep("members.csv", "--restart", status=2)
            self.assertIn("members.csv:2:1: error: ", done.stderr)
            self.assertIn("which is 1.5 or 1500: no other number of the file tells its decimal mark", done.stderr)

    def test_lists_and_ranges_are_crossed(self):
        self.sweep("--vary", "tank.size=10:30:3", "--vary", "asked.demand=5 L, 0.01 m3")
        self.assertEqual([(row["tank.size"], row["asked.demand"]) for row in self.rows()],
                         [(size, demand) for size in ("10", "20", "30") for demand in ("5 L", "0.01 m3")])

    def test_ranges_with_units(self):
        self.sweep("--vary", "tank.size=0.5 m3:2:4")
        self.assertEqual([row["tank.size"] for row in self.rows()], ["0.5 m3", "1 m3", "1.5 m3", "2 m3"])

    def test_a_figure_with_the_name_of_a_key(self):
        self.write(TANK.replace("[groups.house]", '[economics]\ncurrency = "EUR"\nhorizon = 20\n[groups.house]').replace(
            'group = "house"', 'group = "house"\ncapital_per_size = "300 EUR/m3"'))
        options = ["--vary", "tank.capital=100 EUR,200", "--figures", "all"]
        self.sweep(*options)
        with open(self.folder / "out/members.csv") as table:
            header = table.readline().strip().split(",")
        self.assertEqual(len(header), len(set(header)))
        rows = self.rows()
        self.assertEqual([row["tank.capital"] for row in rows], ["100 EUR", "200"])
        for row, given in zip(rows, ("100", "200")):
            figures = self.figures_of_run("--set", f"tank.capital={given}")
            self.assertEqual(float(row.pop("figure.tank.capital")), figures.pop("tank.capital"))
            self.expect_as_run(row, figures)
        names = [column["name"] for column in self.json_in("out/members.json")["columns"]]
        self.assertIn("figure.tank.capital", names)
        self.assertNotIn("tank.capital", names)
        # Beside each other, and beside a run.
        self.kesto("run", "model.toml", "-q", "-o", "run", "--set", "tank.capital=200")
        for folders in (["out"], ["run", "out", "--members", "1,2"]):
            compared = json.loads(self.kesto("compare", *folders, "--json", "--all").stdout)
            values = {row["name"]: row["values"][-2:] for row in compared["figures"]}
            self.assertEqual(values["tank.capital"], values["network.capital"])
            self.assertEqual(values["tank.capital"], [106, 206])
        for name, slice_ in (("a", "1-1"), ("b", "2-2")):
            self.sweep(*options, "--members", slice_, output=name)
        self.assertEqual(self.kesto("sweep", "--join", "a", "b", "-o", "joined").returncode, 0)
        self.assertEqual((self.folder / "joined/members.csv").read_bytes(), (self.folder / "out/members.csv").read_bytes())

    def test_scenarios(self):
        self.sweep("--scenarios", "--vary", "tank.size=20,30", "--figures", "all")
        rows = self.rows()
        self.assertEqual([(row["scenario"], row["tank.size"]) for row in rows],
                         [(name, size) for name in ("", "small", "full") for size in ("20", "30")])
        self.expect_as_run(rows[3], self.figures_of_run("--scenario", "small", "--set", "tank.size=30"))

    def test_set_wins_over_scenarios_and_says_so(self):
        warning = ("--set asked.demand=7: warning: it wins over the value of scenario small; give --vary, or change the model, "
                   "if these are meant to keep theirs [replaced-value]\n")
        self.assertIn(warning, self.sweep("--scenarios", "--set", "asked.demand=7", "--figures", "all").stderr)
        self.expect_as_run(self.rows()[1], self.figures_of_run("--scenario", "small", "--set", "asked.demand=7"))
        self.assertNotIn("replaced-value", self.sweep("--scenarios", "--set", "tank.size=30", output="other").stderr)
        self.assertNotIn("replaced-value", self.sweep("--vary", "tank.size=3,4", "--scenario", "small", "--set",
                                                      "asked.demand=7", output="third").stderr)

    def test_options_hold_for_all(self):
        self.sweep("--vary", "tank.size=20,30", "--set", "tank.size=1", "--set", "asked.demand=7", "--to", "2012-01-03",
                   "--figures", "all")
        self.expect_as_run(self.rows()[1], self.figures_of_run(
            "--set", "tank.size=30", "--set", "asked.demand=7", "--to", "2012-01-03"))

    def test_series_of_other_files(self):
        for number in (1, 2):
            days = "".join(f"2012-01-0{day},{number * day}\n" for day in range(2, 6))
            (self.folder / f"rain{number}.csv").write_text("date,mm\n" + days)
        model = TANK.replace("demand = 4", 'demand = "mm"') + '[series]\nfile = "rain1.csv"\ntime = "date"\n'
        self.write(model)
        self.sweep("--vary", "series.file=rain1.csv,rain2.csv", "--vary", "rain.demand.scale=1,0.3", "--figures", "all")
        rows = self.rows()
        self.expect_as_run(rows[3], self.figures_of_run("--set", "series.file=rain2.csv", "--set", "rain.demand.scale=0.3"))
        made = self.json_in("out/members.json")["made_of"]
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
                (["--vary", "tank.size=1:2:1"], '"1" values; expected a whole number from 2 to 10000000'),
                (["--vary", "tank.size=1:2:2.5"], '"2.5" values; expected a whole number from 2 to 10000000'),
                (["--vary", "tank.size=1 L:2 m3:3"], 'from "1 L" to "2 m3"; expected one unit for both'),
                (["--vary", "tank=1,2"], '"tank" leads to no value'),
                (["--vary", "tank.size=1,2", "--vary", "tank.size=3,4"], "tank.size is given twice"),
                (["--vary", "tank.size=1,2", "--members", "2-3"], "expected FIRST-LAST, both from 1 to 2"),
                (["--vary", "tank.size=1,2", "--members", "0-1"], "expected FIRST-LAST, both from 1 to 2"),
                (["--vary", "tank.size=1,2", "--members", "2"], "expected FIRST-LAST, both from 1 to 2"),
                (["--vary", "tank.size=1,2", "--record", "tonk"], 'there is no component "tonk"'),
                (["--vary", "tank.size=1,2", "--every", "month"], "--every: error: nothing is recorded; expected --record, too"),
                (["--vary", "tank.size=1,2", "--format", "csv"], "--format: error: nothing is recorded; expected --record, too"),
                (["missing.csv"], "cannot read missing.csv: No such file or directory"),
                ([], "expected a table of members, --vary or --scenarios")):
            errors = self.errors(*arguments)
            self.assertEqual(len(errors), 1, (arguments, errors))
            self.assertIn(text, errors[0], arguments)
        (self.folder / "empty.csv").write_text("tank.size\n")
        self.assertIn("the table has no rows", self.errors("empty.csv")[0])
        self.write(TANK.split("[scenarios")[0])
        self.assertIn("the model has no scenarios", self.errors("--scenarios")[0])

    def test_keys_that_replace_each_other(self):
        for first, second, shown in (("rain.demand.scale=1,2", "rain.demand=3,4", "rain.demand replaces rain.demand.scale"),
                                     ("rain.demand.value=1,2", "rain.demand.weekly=[1,2,3,4,5,6,7]",
                                      "rain.demand.weekly replaces rain.demand.value"),
                                     ("groups.house.uses.1=1,2", "groups.house.uses={ 2 = 3 }",
                                      "groups.house.uses replaces groups.house.uses.1")):
            errors = self.errors("--vary", first, "--vary", second)
            self.assertIn(shown + ", which is given before it; expected one of them", errors[0])
        # Where the second one leaves the first in force, or a row has one of them alone, there is nothing to refuse.
        self.sweep("--vary", "rain.demand=3,4", "--vary", "rain.demand.scale=1,2", "--figures", "all")
        self.expect_as_run(self.rows()[1], self.figures_of_run("--set", "rain.demand=3", "--set", "rain.demand.scale=2"))
        table = "rain.demand.scale,rain.demand\n2,\n,3\n"
        (self.folder / "members.csv").write_text(table)
        self.sweep("members.csv", output="rows")
        (self.folder / "members.csv").write_text(table + "2,3\n")
        self.assertFalse((self.folder / "wrong").exists())
        done = self.sweep("members.csv", output="wrong", status=2)
        self.assertIn("members.csv:4:3: error: rain.demand replaces rain.demand.scale", done.stderr)

    def test_what_is_recorded_is_the_same_for_all(self):
        errors = self.errors("--vary", "simulation.end=2012-01-05,2012-01-04", "--record", "tank")
        self.assertEqual(len(errors), 1, errors)
        self.assertIn("what is recorded must be the same for all members", errors[0])
        self.assertTrue(errors[0].endswith("; in member 2"), errors)
        self.sweep("--vary", "simulation.end=2012-01-05,2012-01-04")

    def test_the_model_is_checked(self):
        self.write(TANK.replace('type = "tank"', 'type = "tonk"'))
        self.assertIn('did you mean "tank"?; in all 2 members', self.errors("--vary", "tank.size=1,2")[0])
        self.assertEqual(json.loads(self.sweep("--vary", "tank.size=1,2", "--json", status=2).stdout)["outcome"], "not run")


class House(Sweeping):
    """Members of the house, of which each takes about a millisecond."""

    def setUp(self):
        super().setUp()
        shutil.copytree(EXAMPLES / "rainwater-house", self.folder / "house")
        self.model = "house/model.toml"
        draw = random.Random(13)
        self.members = [(round(draw.uniform(200, 8000), 1), round(draw.uniform(20, 200), 1), round(draw.uniform(0.5, 1.5), 3))
                        for _ in range(1000)]
        (self.folder / "members.csv").write_text("tank.size,roof.size,series.rainfall.scale\n" + "".join(
            f"{size},{roof},{scale}\n" for size, roof, scale in self.members))

    def files(self, output):
        return {path.name: path.read_bytes() for path in (self.folder / output).iterdir()}

    def expect_same(self, a, b):
        a, b = self.files(a), self.files(b)
        self.assertEqual(sorted(a), sorted(b))
        for name in a:
            self.assertTrue(a[name] == b[name], f"{name} differs")

    def test_each_member_is_as_a_run(self):
        self.sweep("members.csv", "--figures", "all", model=self.model)
        rows = self.rows()
        self.assertEqual(len(rows), 1000)
        for row in rows if LONG else random.Random(7).sample(rows, 30):
            size, roof, scale = self.members[int(row["member"]) - 1]
            self.expect_as_run(row, self.figures_of_run(
                "--record", "none", "--set", f"tank.size={size}", "--set", f"roof.size={roof}",
                "--set", f"series.rainfall.scale={scale}", model=self.model))

    def test_jobs_slices_and_the_whole(self):
        many = 1000 if LONG else 300
        rows = (self.folder / "members.csv").read_text().splitlines(keepends=True)
        self.write("".join(rows[:1 + many]), "few.csv")
        options = ["few.csv", "--record", "tank:overflow,roof", "--every", "month"]
        self.sweep(*options, model=self.model, output="whole")
        for jobs in (1, 2, 7):
            self.sweep(*options, "--jobs", jobs, model=self.model, output=f"jobs{jobs}")
            self.expect_same("whole", f"jobs{jobs}")
        self.assertEqual(sorted(self.files("whole")), ["members.csv", "members.json"] + [
            f"part-0000{part}.nc" for part in range(-(-many // 256))])
        self.sweep(*options, "--members", f"1-{many // 2}", model=self.model, output="a")
        self.sweep(*options, "--members", f"{many // 2 + 1}-{many}", model=self.model, output="b")
        self.assertEqual(self.rows("b")[0]["member"], str(many // 2 + 1))
        done = self.kesto("sweep", "--join", "b", "a", "-o", "joined")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.expect_same("whole", "joined")

    def test_slices_that_make_no_whole(self):
        options = ["--vary", "tank.size=1:9:9"]
        for name, slice_ in (("a", "1-3"), ("b", "4-6"), ("c", "3-9"), ("d", "7-9")):
            self.sweep(*options, "--members", slice_, model=self.model, output=name)
        self.sweep("--vary", "tank.size=2:9:9", "--members", "7-9", model=self.model, output="other")
        for folders, text in ((["a", "b"], "member 7 of 9 is in none of the folders"),
                              (["b", "d"], "member 1 of 9 is in none of the folders"),
                              (["a", "c"], "member 3 stands in c and in another folder"),
                              (["a", "b", "other"], "a and other are of different sweeps"),
                              (["a", "house"], "cannot read house/members.json")):
            done = self.kesto("sweep", "--join", *folders, "-o", "joined")
            self.assertEqual((done.returncode, done.stdout), (2, ""), folders)
            self.assertIn(text, done.stderr)
        (self.folder / "d/members.csv").write_text("member\n")
        done = self.kesto("sweep", "--join", "a", "b", "d", "-o", "joined")
        self.assertIn("d/members.csv is not as the sweep has written it", done.stderr)
        self.assertFalse((self.folder / "joined").exists())
        self.assertEqual(self.kesto("sweep", self.model, "--join", "a", "b", "-o", "joined").returncode, 2)
        self.assertEqual(self.kesto("sweep", "-o", "joined").returncode, 2)
        for option, value in (("--jobs", "2"), ("--record", "tank"), ("--every", "month"), ("--members", "1-2"),
                              ("--set", "foo.bar=3"), ("--figures", "all")):
            done = self.kesto("sweep", "--join", "a", "b", option, value, "-o", "joined")
            self.assertEqual(done.returncode, 2, option)
            self.assertIn("kesto sweep --join: error: it takes folders of slices alone; values", done.stderr)

    def test_recorded_flows_are_those_of_the_runs(self):
        self.sweep("members.csv", "--record", "tank:overflow", "--members", "250-260", model=self.model)
        done = subprocess.run(
            ["/usr/bin/python3", "-c",
             "import sys, xarray\n"
             "with xarray.open_mfdataset(sys.argv[1:3]) as data:\n"
             "    print(data.member.values.tolist(), data.flow_name.values.tolist())\n"
             "    print(repr(float(data.quantity.sel(member=258).sum().astype('f8'))))\n"
             "    print(data.quantity.sel(member=258).values.astype('f8').sum())",
             self.folder / "out/part-00000.nc", self.folder / "out/part-00001.nc"],
            capture_output=True, text=True)
        members, _, total = done.stdout.splitlines()
        self.assertEqual(members, f"{list(range(250, 261))} ['tank:overflow']", done.stderr)
        self.assertAlmostEqual(float(total), float(self.rows()[8]["tank:overflow"]), delta=1e-6)

    def start(self, *options, output="out"):
        return subprocess.Popen([KESTO, "sweep", self.model, *options, "-o", output], cwd=self.folder,
                                stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)

    def test_killed_at_any_moment_it_goes_on(self):
        options = ["members.csv", "--record", "tank:overflow", "--every", "month"]
        begun = time.monotonic()
        self.sweep(*options, model=self.model, output="whole")
        takes = time.monotonic() - begun
        draw = random.Random(time.time_ns())
        kills = 0
        for _ in range(40):
            if kills == 20:
                break
            running = self.start(*options)
            time.sleep(draw.uniform(0, takes / 6))
            running.kill()
            kills += running.wait() == -signal.SIGKILL
            running.communicate()
            if (self.folder / "out/members.json").exists():
                self.expect_same("whole", "out")
                shutil.rmtree(self.folder / "out")
        self.assertEqual(kills, 20)
        self.sweep(*options, model=self.model)
        self.expect_same("whole", "out")

    def test_what_is_done_is_not_done_again(self):
        draw = random.Random(time.time_ns())
        journal = self.folder / "out/.kesto-sweep/journal"
        before = 0
        for _ in range(3):
            running = self.start("members.csv")
            while running.poll() is None and (not journal.exists() or journal.read_bytes().count(b"\nm\t") < before + 20):
                time.sleep(0.002)
            time.sleep(draw.uniform(0, 0.05))
            running.kill()
            running.communicate()
            lines = [line.split("\t")[1] for line in journal.read_text().split("\n")[:-1] if line.startswith("m\t")]
            self.assertEqual(len(lines), len(set(lines)), "no member twice")
            self.assertGreaterEqual(len(lines), before + 20)
            before = len(lines)

    def test_an_interrupt_leaves_what_can_be_gone_on_with(self):
        journal = self.folder / "out/.kesto-sweep/journal"
        lines = 0
        for request in (signal.SIGINT, signal.SIGTERM):
            running = self.start("members.csv")
            while running.poll() is None and (not journal.exists() or journal.read_bytes().count(b"\n") < lines + 20):
                time.sleep(0.002)
            lines = journal.read_bytes().count(b"\n")
            running.send_signal(request)
            _, errors = running.communicate(timeout=60)
            self.assertEqual(running.returncode, -request, errors)
            self.assertRegex(errors, r"kesto sweep: stopped after \d+ of 1000 members; the same command goes on\n")
        self.assertEqual(sorted(path.name for path in (self.folder / "out").iterdir()), [".kesto-sweep"])
        self.sweep("members.csv", model=self.model)
        self.assertEqual(len(self.rows()), 1000)

    def test_a_finished_sweep_is_left_as_it_is(self):
        options = ["--vary", "tank.size=1:9:9"]
        first = self.sweep(*options, model=self.model)
        stamp = (self.folder / "out/members.csv").stat().st_mtime_ns
        self.assertEqual(self.sweep(*options, model=self.model).stdout, first.stdout)
        self.assertEqual((self.folder / "out/members.csv").stat().st_mtime_ns, stamp)
        self.sweep(*options, "--restart", model=self.model)
        self.assertNotEqual((self.folder / "out/members.csv").stat().st_mtime_ns, stamp)

    def refused(self, *options):
        done = self.sweep(*options, model=self.model, status=2)
        return done.stderr.splitlines()[-1]

    def test_another_sweep_is_refused_with_the_reason(self):
        options = ["--vary", "tank.size=1:9:9"]
        self.sweep(*options, model=self.model)
        before = self.files("out")
        start = "out: error: out holds a sweep that this one cannot go on with: "
        end = "; --restart begins anew, or choose another folder"
        for changed, reason in (
                (["--vary", "tank.size=1:8:9"], "its design of 9 members differs"),
                ([*options, "--set", "roof.size=3"], "--set was not given, and is roof.size=3"),
                ([*options, "--record", "tank", "--every", "year"],
                 "--record was none, and is tank, --every was day, and is year"),
                ([*options, "--members", "1-3"], "it holds members 1 to 9")):
            self.assertEqual(self.refused(*changed), start + reason + end)
        weather = self.folder / "house/weather.csv"
        weather.write_text(weather.read_text() + "2099-01-01,1,1,1,1\n")
        self.assertEqual(self.refused(*options), start + "weather.csv has changed" + end)
        self.assertEqual(self.files("out"), before)
        self.sweep(*options, "--restart", model=self.model)
        self.assertNotEqual(self.files("out"), before)

    def test_what_somebody_has_changed_is_refused(self):
        options = ["--vary", "tank.size=1:4:4"]
        for name, slice_ in (("a", "1-2"), ("b", "3-4")):
            self.sweep(*options, "--members", slice_, model=self.model, output=name)
        members = self.json_in("a/members.json")
        made = members["made_of"]
        for changed, reason in (({"keys": 3}, "type must be array, but is number"),
                                ({"columns": [{"name": "tank.unmet"}]}, "key 'unit' not found"),
                                ({"warnings": [{}]}, "key 'line' not found"), ({"files": {}}, "type must be array"),
                                ({"made_of": {**made, "members": [1]}}, "array index 1 is out of range"),
                                ({"made_of": 3}, "expected keys or a list, found number")):
            self.write(json.dumps({**members, **changed}), "a/members.json")
            done = self.kesto("sweep", "--join", "a", "b", "-o", "joined")
            self.assertEqual(done.returncode, 2, done.stderr)
            self.assertIn(f'a/members.json: it is not what "kesto sweep" writes: {reason}', done.stderr)
            self.assertFalse((self.folder / "joined").exists())
        self.write(json.dumps({**members, "outcomes": "many"}), "a/members.json")
        done = self.sweep(*options, "--members", "1-2", model=self.model, output="a", status=1)
        self.assertIn('a/members.json: it is not what "kesto sweep" writes: type must be number, but is string', done.stderr)
        (self.folder / "a/members.json").unlink()
        (self.folder / "a/members.csv").unlink()
        (self.folder / "a/.kesto-sweep").mkdir()
        columns = 'c\t1\t[["tank.unmet","L"]]\n'
        for line in ("x", "m\t1", 'c\t1\t[3]', 'm\t1\t0\tfinished\t""\t\t1', 'p\tpart-00000.nc', 'm\t1\t7\tfinished\t""\t',
                     columns + 'm\t1\t0\tfinished\t"\t\t1', columns + 'm\t1\t0\tfinished\t""\t\t1\t2'):
            self.write(json.dumps(made, separators=(",", ":")) + "\n" + line + "\n", "a/.kesto-sweep/journal")
            done = self.sweep(*options, "--members", "1-2", model=self.model, output="a", status=1)
            self.assertIn(f"a/.kesto-sweep/journal: line {3 if columns in line else 2} is broken; remove the folder", done.stderr)

    def test_files_of_others_are_never_replaced(self):
        options = ["--vary", "tank.size=1:9:9", "--record", "tank"]
        (self.folder / "out").mkdir()
        for name in ("members.csv", "members.json", "part-00000.nc"):
            path = self.folder / "out" / name
            path.write_text("mine")
            for more in ([], ["--restart"]):
                self.assertIn(f"out/{name} is no file that a sweep has left here", self.refused(*options, *more))
            self.assertEqual(path.read_text(), "mine")
            path.unlink()
        self.sweep(*options, model=self.model)
        (self.folder / "out/members.csv").write_text("mine")
        self.assertIn("out/members.csv is no file that a sweep has left here", self.refused(*options, "--restart"))
        done = self.kesto("sweep", self.model, "members.csv", "-o", ".")
        self.assertEqual(done.returncode, 2)
        self.assertIn("would be written over ./members.csv, which the sweep reads", done.stderr)

    def test_two_sweeps_into_one_folder(self):
        running = self.start("members.csv")
        journal = self.folder / "out/.kesto-sweep/journal"
        while running.poll() is None and not journal.exists():
            time.sleep(0.002)
        done = self.sweep("members.csv", model=self.model, status=1)
        self.assertIn(f"process {running.pid} is writing results into out", done.stderr)
        running.communicate()
        self.assertEqual(running.returncode, 0)


class Failures(Sweeping):
    def test_a_member_that_fails_is_a_row(self):
        self.write(SCARCE)
        options = ["--vary", "asked.demand=1:20:20", "--record", "intake:excess"]
        done = self.sweep(*options, status=1)
        rows = self.rows()
        failed = [row for row in rows if row["outcome"] == "failed"]
        self.assertTrue(0 < len(failed) < 20, rows)
        for row in failed:
            run = self.kesto("run", "model.toml", "--json", "--set", f"asked.demand={row['asked.demand']}")
            summary = json.loads(run.stdout)
            self.assertEqual((row["outcome"], row["message"]), (summary["outcome"], summary["message"]))
            self.assertEqual(row["network.mains"], "")
        self.assertIn(f"20 members: {len(failed)} failed, {20 - len(failed)} finished", done.stdout)
        # Given again, it has nothing to do, and says the same.
        self.assertEqual(self.sweep(*options, status=1).stdout, done.stdout)

    def test_one_of_ten_members_aborts(self):
        model = TANK.replace("2012-01-05", "4500-01-01")
        self.write(model)
        running = subprocess.Popen([KESTO, "sweep", "model.toml", "--vary", "tank.size=11:20:10", "--jobs", "1", "-o", "out"],
                                   cwd=self.folder, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        journal = self.folder / "out/.kesto-sweep/journal"
        while running.poll() is None and (not journal.exists() or b"\nm\t" not in journal.read_bytes()):
            time.sleep(0.001)
        children = pathlib.Path(f"/proc/{running.pid}/task/{running.pid}/children")
        aborted = False
        while running.poll() is None and not aborted:
            for child in children.read_text().split():
                os.kill(int(child), signal.SIGABRT)
                aborted = True
        out, errors = running.communicate(timeout=300)
        self.assertEqual(running.returncode, 1, errors)
        outcomes = [(row["outcome"], row["message"]) for row in self.rows()]
        self.assertEqual(outcomes.count(("finished", "")), 9, outcomes)
        self.assertEqual(outcomes.count(("crashed", "ended by signal 6 (Aborted)")), 1, outcomes)
        self.assertIn("10 members: 1 crashed, 9 finished", out)


unittest.main()
