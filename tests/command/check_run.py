#!/usr/bin/env python3
"""Drives `kesto run` as a person and as a program would: options, exit statuses, files, an interrupt.

usage: check_run.py KESTO"""

import csv
import json
import os
import pathlib
import resource
import signal
import struct
import subprocess
import time
import unittest

from running import InFolder, KESTO

MODEL = """kesto_model = 1
[simulation]
start = 2012-01-01
end = 2012-01-05
[brands.roof]
evaporation_fraction = 0.1
[groups.roof]
rainfall = {{ column = "rain", file = "rain.csv"{time} }}
[[components]]
name = "roof"
type = "impervious_surface"
group = "roof"
brand = "roof"
size = 10
[[components]]
name = "asked"
type = "demand_source"
demand = 0.7
[[components]]
name = "tank"
type = "tank"
size = 1
initial_storage = 0.5
[[connections]]
from = "roof"
to = "tank:inflow"
[[connections]]
from = "asked"
to = "tank:demand"
"""


def single(text):
    """The bits of the float that a cell stands for."""
    return struct.pack("<f", float(text))


class Run(InFolder):
    def setUp(self):
        super().setUp()
        (self.folder / "rain.csv").write_text(
            "date,rain\n2012-01-01,0.1\n2012-01-02,0.3\n2012-01-03,0\n2012-01-04,7.7e-3\n2012-01-05,0.2\n")
        self.write(MODEL.format(time=', time = "date"'))

    def flows(self, *arguments):
        done = self.kesto("run", "model.toml", "-o", "out", *arguments)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return self.csv_rows("out/flows.csv")

    def test_results_are_written_with_units_and_dates(self):
        rows = self.flows()
        self.assertEqual([row["date"] for row in rows], [f"2012-01-0{day}" for day in range(1, 6)])
        self.assertEqual(list(rows[0])[1:], ["roof:runoff [L]", "asked:demand [L]", "tank:deficit [L]", "tank:overflow [L]"])
        self.assertAlmostEqual(float(rows[0]["roof:runoff [L]"]), 0.9, places=6)
        summary = self.json_in("out/summary.json")
        self.assertEqual((summary["outcome"], summary["steps_run"]), ("finished", 5))

    def test_values_survive_bit_for_bit(self):
        first = self.flows()
        with open(self.folder / "again.csv", "w", newline="") as file:
            writer = csv.writer(file)
            writer.writerow(["date", "demand"])
            writer.writerows([row["date"], row["roof:runoff [L]"]] for row in first)
        text = MODEL.format(time=', time = "date"')
        self.write(text.replace("demand = 0.7", 'demand = { column = "demand", file = "again.csv", time = "date" }'))
        second = self.flows()
        self.assertEqual([single(row["asked:demand [L]"]) for row in second],
                         [single(row["roof:runoff [L]"]) for row in first])

    def test_a_part_of_the_period_begins_with_the_initial_state(self):
        whole = self.flows()
        part = self.flows("--from", "2012-01-02", "--to", "2012-01-03")
        self.assertEqual([row["date"] for row in part], ["2012-01-02", "2012-01-03"])
        self.assertEqual(part[0]["roof:runoff [L]"], whole[1]["roof:runoff [L]"])
        deficit = 0.7 - 0.5 - 10 * 0.9 * 0.3
        self.assertAlmostEqual(float(part[0]["tank:overflow [L]"]), -deficit - 1, places=5)
        self.write(MODEL.format(time=""))  # without dates the rows count from the model's own first day
        self.assertEqual(self.flows("--from", "2012-01-02", "--to", "2012-01-03"), part)

    def test_values_can_be_set(self):
        rows = self.flows("--set", "roof.size=20", "--set", "brands.roof.evaporation_fraction=0",
                          "--set", "tank.size=2 m3", "--set", "simulation.end=2012-01-02")
        self.assertEqual(len(rows), 2)
        self.assertAlmostEqual(float(rows[1]["roof:runoff [L]"]), 6, places=5)
        self.assertEqual(float(rows[1]["tank:overflow [L]"]), 0)

    def test_what_cannot_be_recorded_is_named(self):
        with open(self.folder / "model.toml", "a") as model:
            model.write('[[components]]\nname = "pump"\ntype = "pump"\n[[connections]]\nfrom = "tank:deficit"\n'
                        'to = "pump:2"\n')
        reason = ' not recorded, since that would change results: nothing is connected to input 1 of "pump"'
        done = self.kesto("run", "model.toml")
        self.assertEqual(done.returncode, 0)
        self.assertIn('note: "roof:runoff", "asked:demand", "tank:deficit", "tank:overflow" and "pump:outflow" are'
                      + reason, done.stderr)
        done = self.kesto("run", "model.toml", "--record", "tank:deficit")
        self.assertEqual(done.returncode, 2)
        self.assertIn('error: "tank:deficit" is' + reason, done.stderr)

    def test_recordings_can_be_chosen(self):
        self.assertEqual(list(self.flows("--record", "tank:overflow,asked")[0])[1:],
                         ["asked:demand [L]", "tank:overflow [L]"])
        self.assertEqual(list(self.flows("--record", "tank")[0])[1:], ["tank:deficit [L]", "tank:overflow [L]"])
        done = self.kesto("run", "model.toml", "--record", "tank:inflow")
        self.assertEqual(done.returncode, 2)
        self.assertIn('a tank has no output "inflow"', done.stderr)

    def test_machines_get_json_alone(self):
        done = self.kesto("run", "model.toml", "--json", "-o", "out")
        summary = json.loads(done.stdout)
        self.assertEqual(summary["tanks"][0]["name"], "tank")
        self.assertAlmostEqual(summary["tanks"][0]["demand"], 3.5, places=5)
        self.assertEqual(self.kesto("run", "model.toml", "-q").stdout, "")

    def test_the_summary_fits_a_screen(self):
        street = "".join(f'''
[groups.house{i}]
occupancy = 2
uses = {{ 1 = 5 }}
[[components]]
name = "toilet{i}"
type = "appliance"
kind = 1
group = "house{i}"
brand = "toilet"
[[components]]
name = "tank{i}"
type = "tank"
group = "house{i}"
size = "2 m3"
initial_storage = {10 * i}
capital = 900
[[connections]]
from = "toilet{i}:demand"
to = "tank{i}:demand"
[[connections]]
from = "rain{i}"
to = "tank{i}:inflow"
[[components]]
name = "rain{i}"
type = "demand_source"
demand = 1
''' for i in range(200))
        (self.folder / "street.toml").write_text('''kesto_model = 1
[simulation]
start = 2012-01-01
end = 2012-12-31
[economics]
water_price = 2
horizon = 30
[brands.toilet]
volume_per_use = 6
''' + street)
        options = [f"--set=tank{i}.initial_storage={i}" for i in range(30)]
        brief = self.kesto("run", "street.toml", "--balance", "-o", "out", *options)
        self.assertEqual(brief.returncode, 0, brief.stderr)
        lines = brief.stdout.splitlines()
        table = lines.index(next(line for line in lines if line.startswith("Balance")))
        self.assertLessEqual(table, 40, brief.stdout)
        self.assertLessEqual(len(lines) - table, 26, brief.stdout)
        self.assertLessEqual(max(map(len, lines[:table])), 82, brief.stdout)
        for part in ("Set         29 more", "Served least of what was asked, of 200 stores and sources",
                     "network.capital       money    180000.00",
                     "The largest of 1,000 flows, total and mean of a step; --full shows all",
                     "Results     out, summary.json and 8 other files"):
            self.assertIn(part, brief.stdout)
        account = {row["kind"]: 0 for row in self.json_in("out/summary.json")["account"]}
        for row in self.json_in("out/summary.json")["account"]:
            account[row["kind"]] += row["litres"]
        self.assertIn(f"mains                  {account['mains'] / 1000:>8.1f}  tank0 and 199 more", brief.stdout)
        full = self.kesto("run", "street.toml", "--full", *options).stdout
        for i in range(200):
            for name in (f"toilet{i}:demand", f"tank{i}:overflow", f"tank{i}.capital"):
                self.assertIn(f"  {name} ", full)
        self.assertIn("Set         tank29.initial_storage=29", full)

    def test_a_new_model_runs_without_a_warning(self):
        self.assertEqual(self.kesto("new", "first").returncode, 0)
        done = self.kesto("run", "first/model.toml")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertRegex(done.stdout, r"tank  \d+\.\d %")
        self.assertEqual(sorted(path.name for path in (self.folder / "first").iterdir()),
                         ["kesto-schema.json", "model.toml", "weather.csv"])
        self.assertEqual((self.folder / "first/kesto-schema.json").read_text(), self.kesto("schema").stdout)
        self.assertTrue((self.folder / "first/model.toml").read_text().startswith("#:schema ./kesto-schema.json\n"))
        (self.folder / "second").mkdir()
        (self.folder / "second/kesto-schema.json").write_text("mine")
        done = self.kesto("new", "second")
        self.assertEqual((done.returncode, done.stderr), (2, "kesto new: error: second/kesto-schema.json is there already\n"))
        self.assertEqual([path.read_text() for path in (self.folder / "second").iterdir()], ["mine"])
        again = self.kesto("new", "first")
        self.assertEqual(again.returncode, 2)
        self.assertIn("is there already", again.stderr)

    def test_results_take_the_place_of_earlier_ones(self):
        self.flows("--balance")
        self.assertTrue((self.folder / "out" / "balance.csv").exists())
        (self.folder / "out" / "notes.txt").write_text("mine")
        self.assertEqual(self.kesto("run", "model.toml", "-q", "-o", "out", "--format", "netcdf").returncode, 0)
        self.assertEqual(sorted(path.name for path in (self.folder / "out").iterdir()),
                         ["notes.txt", "overview.json", "results.nc", "summary.json"])

    def test_a_file_that_cannot_grow_is_told(self):
        for form, file in ("csv", "flows.csv"), ("netcdf", "results.nc"):
            with self.subTest(form):
                done = subprocess.run(
                    [KESTO, "run", "model.toml", "-o", "out", "--format", form], cwd=self.folder, capture_output=True,
                    text=True, timeout=60,
                    preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (100, 100)))
                self.assertEqual(done.returncode, 1)
                self.assertIn(f"out: error: cannot write out/.kesto-run/{file}: ", done.stderr)
                self.assertIn("Served of what was asked", done.stdout)

    def test_a_folder_that_cannot_be_is_told_before_the_run(self):
        done = self.kesto("run", "model.toml", "-o", "rain.csv/out")
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertIn("cannot make the folder rain.csv/out: Not a directory", done.stderr)

    def test_the_same_fault_is_told_once(self):
        text = MODEL.format(time="").replace("evaporation_fraction", "loss_fraction")
        for i in range(50):
            text += f'[[components]]\nname = "roof{i}"\ntype = "impervious_surface"\nbrand = "roof"\ngroup = "bare"\nsize = 1\n'
        self.write(text + "[groups.bare]\n")
        done = self.kesto("check", "model.toml")
        self.assertEqual(done.returncode, 2)
        self.assertEqual([line.split(": ", 1)[1] for line in done.stderr.splitlines()[:-1]], [
            'error: brand "roof" does not give evaporation_fraction [-], fraction of the rain that evaporates; needed by '
            'component "roof" (impervious_surface) and 50 more',
            'warning: brand "roof": no component that uses it reads this parameter (specification 2) [unread-parameter]',
            'error: group "bare" has no rainfall [mm], needed by component "roof0" (impervious_surface) and 49 more; '
            'expected it in [groups.bare] or in [series]'])

    def test_splits_can_stand_in_a_table(self):
        stores = "".join(f'[[components]]\nname = "{name}"\ntype = "connector"\nbrand = "store"\nstorage = {stored}\n'
                         for name, stored in (("lake", 600), ("fish pond", 30)))
        text = ('kesto_model = 1\n[simulation]\nstart = 2024-01-01\nend = 2024-01-02\n[brands.store]\n1 = 1000\n'
                '[[components]]\nname = "use"\ntype = "demand_source"\ndemand = 100\n'
                '[[components]]\nname = "fork"\ntype = "splitter"\nsize = 20\n{splits}' + stores +
                '[[connections]]\nfrom = "use"\nto = "fork"\n[[connections]]\nfrom = "fork:first"\nto = "lake"\n'
                '[[connections]]\nfrom = "fork:second"\nto = "fish pond"\n{tables}')
        self.write(text.format(splits='splits = [{ members = ["lake", "fish pond"], beta = 50 }, '
                                      '{ members = ["fish pond"], beta = -10 }]\n', tables=""))
        inline = self.flows()
        self.write(text.format(splits="", tables='[tables]\nsplits = "splits.csv"\n'))
        (self.folder / "splits.csv").write_text("splitter,beta,members\nfork,50,lake; fish pond\nfork,-10,fish pond\n")
        self.assertEqual(self.flows(), inline)
        self.assertNotEqual(float(inline[0]["fork:first [L]"]), 20)
        (self.folder / "splits.csv").write_text("splitter,beta,members\nfrok,1,lake\nfork,x,lake; pond\nfork,1,\n")
        done = self.kesto("check", "model.toml")
        self.assertEqual(done.stderr, """splits.csv:2:1: error: a split: splitter is the text "frok"; expected the name of a splitter; did you mean "fork"?
splits.csv:3:6: error: component "fork": splits: beta is the text "x"; expected a number in %
splits.csv:3:14: error: component "fork": splits: members holds the text "pond", which is no component
splits.csv:4:1: error: component "fork": splits has no members; expected a list of components
4 errors, 0 warnings
""")

    def test_what_means_nothing_is_refused(self):
        done = self.kesto("check", "model.toml", "--set", "brands.roof.evaporation_fraction=10", "--set", "tank.size=-1",
                          "--set", "tank.initial_storage=1e39")
        self.assertEqual(done.returncode, 2)
        self.assertEqual(done.stderr, """\
--set brands.roof.evaporation_fraction=10: error: brand "roof": evaporation_fraction is 10; expected 0 to 1; 10 % is 0.1; read \
by component "roof" (impervious_surface)
--set tank.initial_storage=1e39: error: component "tank": initial_storage is the number 1e+39; expected a number that single \
precision can hold, at most 3.4e38
--set tank.size=-1: error: component "tank" (tank): its capacity is -1 L; expected 0 or more
3 errors, 0 warnings
""")

    def test_costs_are_told_to_machines(self):
        costs = json.loads(self.kesto("run", "model.toml", "--json").stdout)["costs"]
        self.assertEqual(set(costs), {"read_seconds", "engine_seconds", "write_seconds", "peak_bytes"})
        self.assertGreater(costs["peak_bytes"], 1e6)

    def test_wrong_usage_is_status_2(self):
        for arguments in ((), ("run",), ("run", "none.toml"), ("fly",), ("run", "model.toml", "--colour"),
                          ("run", "model.toml", "--from", "soon"), ("run", "model.toml", "--to", "2011-12-31")):
            with self.subTest(arguments):
                done = self.kesto(*arguments)
                self.assertEqual(done.returncode, 2)
                self.assertNotEqual(done.stderr, "")

    def test_unknown_command_is_named(self):
        self.assertEqual(self.kesto("chekc", "model.toml").stderr,
                         'kesto: error: there is no command "chekc"; kesto --help lists them; did you mean "check"?\n')

    def test_brands_and_groups_are_set_by_their_whole_names(self):
        self.kesto("new", "plain")
        for given, meant in (("tiles.evaporation_fraction", "brands.tiles.evaporation_fraction"),
                             ("house.occupancy", "groups.house.occupancy")):
            done = self.kesto("check", "plain/model.toml", "--set", given + "=0.2")
            self.assertEqual(done.returncode, 2)
            self.assertIn(f'in the model; did you mean "{meant}"?', done.stderr)
            self.assertEqual(self.kesto("check", "plain/model.toml", "--set", meant + "=0.2").returncode, 0)

    def test_unit_without_blank(self):
        self.assertEqual(self.kesto("run", "model.toml", "--set", "tank.size=3m3").stderr,
                         '--set tank.size=3m3: error: component "tank": size is the text "3m3"; expected a number in L, '
                         "or a text with a number, a blank and one of L, m3, ML or hm3\n")

    def start_long_run(self, *arguments):
        """A run of some seconds, and the id of the engine's process."""
        text = ["kesto_model = 1\n[simulation]\nstart = 1970-01-01\nend = 6000-12-31\n",
                '[[components]]\nname = "p0"\ntype = "demand_source"\ndemand = 1\n']
        for i in range(1, 10000):  # some seconds of work
            text.append(f'[[components]]\nname = "p{i}"\ntype = "pump"\n')
            text.append(f'[[connections]]\nfrom = "p{i - 1}"\nto = "p{i}"\n')
        self.write("".join(text))
        running = subprocess.Popen([KESTO, "run", "model.toml", "--json", "--record", "p99", *arguments],
                                   cwd=self.folder, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        children = pathlib.Path(f"/proc/{running.pid}/task/{running.pid}/children")
        while running.poll() is None and not children.read_text():
            time.sleep(0.01)
        engine = int(children.read_text())
        time.sleep(0.2)  # it runs by now
        return running, engine

    def test_an_interrupt_keeps_the_steps_that_ran(self):
        running, _ = self.start_long_run()
        running.send_signal(signal.SIGINT)
        out, errors = running.communicate(timeout=60)
        self.assertEqual(running.returncode, -signal.SIGINT, errors)
        self.assertIn("interrupted on", errors)
        summary = json.loads(out)
        self.assertEqual(summary["outcome"], "interrupted")
        self.assertGreater(summary["steps_run"], 0)
        self.assertEqual(summary["flows"][0]["total"], summary["steps_run"])

    def test_an_engine_that_is_killed_leaves_no_step(self):
        running, engine = self.start_long_run("-o", "out")
        os.kill(engine, signal.SIGKILL)
        out, errors = running.communicate(timeout=60)
        self.assertEqual(running.returncode, 1, errors)
        self.assertIn("ended by signal 9", errors)
        summary = json.loads(out)
        self.assertEqual((summary["outcome"], summary["steps_run"]), ("crashed", 0))
        self.assertEqual((self.folder / "out" / "flows.csv").read_text(), "date,p99:outflow [L]\n")
        self.assertIn("0 of 1472293 steps", (self.folder / "out" / "STOPPED.txt").read_text())


unittest.main()
