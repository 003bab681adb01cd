#!/usr/bin/env python3
"""Drives `kesto run --states-from` as a user would: what is refused, by which name, and what is said.

usage: check_going_on.py KESTO"""

import json
import unittest

import xxhash

from running import InFolder

HEAD = """kesto_model = 1
[simulation]
start = 2023-01-01
end = 2023-01-10
latitude = 47
[brands.quota]
daily_limit = 5
monthly_limit = 50
yearly_limit = 500
[brands.panel]
yield_factor = 0.1
capacity_cost = 1
operation_cost = 1
[brands.works]
daily_capacity = 3
loss_fraction = 0.1
energy_per_volume = 0
capacity_cost = 0
operation_cost = 0
[groups.g]
temperature_min = 3
temperature_max = 12
[[components]]
name = "asked"
type = "demand_source"
demand = { weekly = [1, 2, 3, 4, 5, 6, 7] }
[[components]]
name = "rain"
type = "demand_source"
demand = 4
[[components]]
name = "tank"
type = "tank"
size = 20
initial_storage = 11
[[connections]]
from = "rain"
to = "tank:1"
[[connections]]
from = "asked"
to = "tank:2"
"""

REMEMBERING = {
    "delay": '[[components]]\nname = "x"\ntype = "delay"\nsize = 2\n[[connections]]\nfrom = "tank:overflow"\nto = "x"\n',
    "quota_limiter": '[[components]]\nname = "x"\ntype = "quota_limiter"\nbrand = "quota"\n'
                     '[[connections]]\nfrom = "tank:overflow"\nto = "x"\n',
    "solar_panel": '[[components]]\nname = "x"\ntype = "solar_panel"\ngroup = "g"\nbrand = "panel"\nsize = 1\n',
    "net_radiation": '[[components]]\nname = "x"\ntype = "net_radiation"\ngroup = "g"\nsize = 1\n',
}

WORKS = '[[components]]\nname = "works"\ntype = "{type}"\nbrand = "works"\n'
UPSTREAM = '[[components]]\nname = "early"\ntype = "demand_source"\ndemand = 4\n' + WORKS + \
    '[[connections]]\nfrom = "early"\nto = "works"\n'

WELL = """kesto_model = 1
[simulation]
start = 2023-01-01
end = 2023-01-10
trace_sources = true
[brands.well]
yield_per_area = 100
energy_per_volume = 0
capacity_cost = 0
operation_cost = 0
[brands.plant]
daily_capacity = 100
loss_fraction = 0
energy_per_volume = 0
capacity_cost = 0
operation_cost = 0
[[components]]
name = "asked"
type = "demand_source"
demand = 5
[[components]]
name = "plant"
type = "treatment_plant"
brand = "plant"
[[components]]
name = "well"
type = "well"
brand = "well"
size = 1
quality = {quality}
[[connections]]
from = "asked"
to = "plant"
[[connections]]
from = "plant:request"
to = "well"
"""


class GoingOn(InFolder):
    def kesto(self, *arguments):
        return super().kesto("run", "model.toml", *arguments)

    def whole(self, *arguments):
        done = self.kesto("-q", "-o", "whole", *arguments)
        self.assertEqual(done.returncode, 0, done.stderr)

    def go_on(self, *arguments, day="2023-01-05"):
        return self.kesto("-o", "part", "--from", day, "--states-from", "whole", *arguments)

    def lines(self, folder, name, begin):
        text = (self.folder / folder / name).read_text().splitlines()
        return [line for line in text[1:] if line >= begin]

    def expect_same(self, day="2023-01-05"):
        for name in ("flows.csv", "states.csv"):
            self.assertEqual(self.lines("part", name, day), self.lines("whole", name, day))

    def test_both_formats_give_the_run_in_one_piece(self):
        self.write(HEAD)
        for form in "csv", "netcdf":
            with self.subTest(form):
                self.whole("--format", form)
                done = self.go_on()
                self.assertEqual(done.returncode, 0, done.stderr)
                self.assertNotIn("states", done.stderr)
                self.assertNotIn("no component reads this series", done.stderr)  # but its state
                self.whole()
                self.expect_same()
                self.assertIn("States      of 2023-01-04, from whole\n", done.stdout)

    def test_a_state_may_be_no_number(self):
        soil = ('[brands.loam]\nstorage_depth = 100\ninfiltration_rate = 0.02\noutflow_rate = 0.3\n'
                'threshold_fraction = 0.6\n[groups.field]\nrainfall = 5\ntemperature = -3\n'
                '[[components]]\nname = "soil"\ntype = "soil_store"\ngroup = "field"\nbrand = "loam"\n')
        self.write(HEAD + soil)
        self.whole()
        self.assertEqual(self.go_on().returncode, 0)
        self.expect_same()
        self.assertIn(",nan", self.lines("part", "states.csv", "2023-01-05")[0])

    def test_the_account_begins_with_the_states(self):
        self.write(HEAD)
        self.whole()
        done = self.go_on("--balance")
        self.assertEqual(done.returncode, 0)
        self.assertNotIn("open-balance", done.stderr)
        stored = float(self.lines("whole", "states.csv", "2023-01-04")[0].split(",")[1])
        end = float(self.lines("whole", "states.csv", "2023-01-10")[0].split(",")[1])
        figures = {row["name"]: row["value"] for row in
                   self.json_in("part/summary.json")["figures"]}
        self.assertAlmostEqual(figures["network.storage_change"], end - stored, places=4)

    def test_each_type_that_remembers_is_refused_by_name(self):
        for name, text in REMEMBERING.items():
            with self.subTest(name):
                self.write(HEAD + text)
                self.whole()
                done = self.go_on()
                self.assertEqual(done.returncode, 2)
                self.assertRegex(done.stderr, rf'error: component "x" \({name}\): the states of a day do not hold .*'
                                              "--approximate goes on without it")
                done = self.go_on("--approximate")
                self.assertEqual(done.returncode, 0)
                self.assertIn(f'warning: component "x" ({name}): the states of a day do not hold', done.stderr)
                summary = self.json_in("part/summary.json")
                self.assertEqual([row["component"] for row in summary["warnings"] if row["code"] == "approximate"], ["x"])
                self.assertTrue(summary["approximate"])

    def test_a_quality_left_by_the_day_before_is_refused(self):
        for name in "abstraction", "potable_treatment":
            with self.subTest(name):
                head, rest = HEAD.split("[[components]]\n", 1)
                self.write(head + UPSTREAM.format(type=name) + "[[components]]\n" + rest)
                self.whole()
                done = self.go_on()
                self.assertEqual(done.returncode, 2)
                self.assertIn(f'component "works" ({name}): the states of a day do not hold the quality of '
                              '"works:excess", which it does not set', done.stderr)
                # Nobody looks at it.
                self.assertEqual(self.go_on("--record", "tank").returncode, 0)
                # The tank comes first, and sets it on the same day.
                self.write(HEAD + WORKS.format(type=name) + '[[connections]]\nfrom = "tank:deficit"\nto = "works"\n')
                self.whole()
                self.assertEqual(self.go_on().returncode, 0)
                self.expect_same()

    def test_stores_must_be_those_of_the_results(self):
        self.write(HEAD)
        self.whole()
        self.write(HEAD.replace('name = "tank"', 'name = "cistern"').replace('"tank:', '"cistern:'))
        done = self.go_on()
        self.assertEqual(done.returncode, 2)
        self.assertIn('whole/states.csv: error: it has no storage of component "cistern" (tank)\n', done.stderr)
        self.assertIn('whole/states.csv: warning: the model has no store that takes the state of "tank" [unused-state]',
                      done.stderr)
        self.write(HEAD.replace("size = 20", "size = 3"))
        done = self.go_on()
        self.assertEqual(done.returncode, 0)
        self.assertIn("whole/states.csv: warning:", done.stderr)
        self.assertIn("initial_storage is 14 L, but it can hold 3 L", done.stderr)

    def test_the_day_before_must_be_there(self):
        self.write(HEAD)
        self.whole("--to", "2023-01-03")
        done = self.go_on()
        self.assertEqual(done.returncode, 2)
        self.assertIn("whole/states.csv: error: it holds 2023-01-01 to 2023-01-03; expected 2023-01-04, the day before the "
                      "run begins", done.stderr)
        self.assertEqual(self.go_on(day="2023-01-04").returncode, 0)
        self.assertEqual(self.go_on(day="2023-01-01").returncode, 2)
        (self.folder / "whole" / "states.csv").write_text("mine")
        self.assertIn("is not the file that the run of summary.json wrote", self.go_on(day="2023-01-04").stderr)
        self.assertIn("cannot read none/summary.json", self.kesto("--states-from", "none").stderr)
        self.assertEqual(self.kesto("--approximate").returncode, 2)

    def test_broken_results_are_an_error(self):
        self.write(HEAD)
        self.whole("--format", "netcdf")
        path = self.folder / "whole" / "results.nc"
        good = path.read_bytes()
        summary = self.json_in("whole/summary.json")
        for number, part in enumerate((0.0, 0.2, 0.5, 0.8)):
            begin = int(part * len(good))
            broken = good[:begin] + b"\xff" * 300 + good[begin + 300:]
            path.write_bytes(broken)
            summary["files"][0].update(bytes=len(broken), xxh128=xxhash.xxh3_128_hexdigest(broken))
            (self.folder / "whole" / "summary.json").write_text(json.dumps(summary))
            done = self.go_on()
            self.assertIn(done.returncode, (0, 2), (number, done.stderr))
            if number == 0:
                self.assertEqual(done.returncode, 2)
                self.assertIn("--states-from whole: error: cannot read whole/results.nc", done.stderr)

    def test_results_that_are_read_stay(self):
        self.write(HEAD)
        self.whole()
        done = self.kesto("-o", "whole", "--from", "2023-01-05", "--states-from", "whole")
        self.assertEqual(done.returncode, 2)
        self.assertIn("would be written over whole/states.csv, which the run reads", done.stderr)

    def test_what_is_read_of_the_day_before_has_its_value(self):
        self.write(WELL.format(quality="{ weekly = [10, 20, 30, 40, 50, 60, 70] }"))
        self.whole()
        self.assertEqual(self.go_on().returncode, 0)
        self.expect_same()
        (self.folder / "quality.csv").write_text(
            "date,mg\n" + "".join(f"2023-01-{day:02},{day * day}\n" for day in range(5, 11)))
        self.write(WELL.format(quality='{ column = "mg", file = "quality.csv", time = "date" }'))
        done = self.go_on()
        self.assertEqual(done.returncode, 2)
        self.assertIn("2023-01-04", done.stderr)

    def test_the_summary_says_what_the_model_was_read_with(self):
        self.write(HEAD + '[scenarios.dry]\n"rain.demand" = 1\n')
        self.whole()
        done = self.go_on("--scenario", "dry", "--set", "tank.size=30")
        self.assertEqual(done.returncode, 0)
        self.assertIn("Scenario    dry\nSet         tank.size=30\nStates      of 2023-01-04, from whole\n", done.stdout)
        summary = self.json_in("part/summary.json")
        self.assertEqual((summary["scenarios"], summary["set"], summary["states_from"]),
                         (["dry"], ["tank.size=30"], "whole"))
        self.assertIn("whole/states.csv", [row["file"] for row in summary["inputs"]])


if __name__ == "__main__":
    unittest.main()
