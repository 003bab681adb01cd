#!/usr/bin/env python3
"""Reaches the values of a model from the command line and from scenarios: each key has the effect that the same value has
in the file.

usage: check_values.py KESTO"""

import csv
import json
import unittest

from running import InFolder

MODEL = """kesto_model = 1
[simulation]
start = 2012-01-02
end = 2012-01-04
[series]
file = "weather.csv"
rainfall = { column = "rain", for = ["house"] }
[brands.roof]
evaporation_fraction = 0.25
[brands.wc]
volume_per_use = 6
[groups.house]
occupancy = 2
uses = { 1 = 5 }
demand_fluctuation = 1
[groups.garden]
rainfall = "rain"
[[components]]
name = "roof"
type = "impervious_surface"
group = "house"
brand = "roof"
size = 10
[[components]]
name = "lawn"
type = "impervious_surface"
group = "garden"
brand = "roof"
size = 10
[[components]]
name = "wc"
type = "appliance"
kind = 1
group = "house"
brand = "wc"
[[components]]
name = "series"
type = "demand_source"
demand = 5
[[components]]
name = "a.b"
type = "demand_source"
demand = { column = "asked", scale = 2 }
"""

SCENARIOS = """[scenarios.dry]
title = "Half the rain"
series.rainfall.scale = 0.5
[scenarios.large]
"roof.size" = "20 m2"
components."a.b".demand.value = 7
groups = { house = { occupancy = 4, uses.1 = 1 } }
[scenarios.larger]
roof = { size = 40 }
"""


class Values(InFolder):
    def setUp(self):
        super().setUp()
        (self.folder / "weather.csv").write_text("rain,asked,snow\n8,1,1\n0,2,1\n4,3,1\n")
        (self.folder / "other.csv").write_text("rain,asked\n1,1\n1,1\n1,1\n")
        self.write(MODEL)

    def kesto(self, command, *options):
        return super().kesto(command, "model.toml", *options)

    def totals(self, *options):
        done = self.kesto("run", "--json", *options)
        self.assertEqual(done.returncode, 0, done.stderr)
        return {flow["name"]: flow["total"] for flow in json.loads(done.stdout)["flows"]}

    def total(self, name, *set_values):
        return self.totals(*(option for value in set_values for option in ("--set", value)))[name]

    def error(self, *options):
        done = self.kesto("check", *options)
        self.assertEqual(done.returncode, 2, done.stdout)
        return done.stderr.splitlines()[0]

    def test_series_are_reached(self):
        self.assertEqual(self.total("roof:runoff"), 90)
        self.assertEqual(self.total("roof:runoff", "series.rainfall.scale=0.5"), 45)
        self.assertEqual(self.total("roof:runoff", "series.rainfall.scale=50 %"), 45)
        self.assertEqual(self.total("roof:runoff", "series.rainfall.offset=1"), 90 + 3 * 7.5)
        self.assertEqual(self.total("roof:runoff", "series.rainfall.column=snow"), 3 * 7.5)
        self.assertEqual(self.total("roof:runoff", "series.rainfall.value=2"), 3 * 15)
        self.assertEqual(self.total("roof:runoff", "series.rainfall.value=2", "series.rainfall.scale=3"), 9 * 15)
        self.assertEqual(self.total("roof:runoff", "series.rainfall.file=other.csv"), 3 * 7.5)
        self.assertEqual(self.total("roof:runoff", "series.file=other.csv"), 3 * 7.5)
        # The garden has a series of its own.
        self.assertEqual(self.total("lawn:runoff", "series.rainfall.scale=0.5"), 90)
        self.assertEqual(self.total("lawn:runoff", "groups.garden.rainfall.scale=0.5"), 45)
        self.assertEqual(self.total("lawn:runoff", "groups.garden.rainfall.weekly=[1, 2, 3, 0, 0, 0, 0]"), 6 * 7.5)

    def test_scale_and_offset_follow_the_units_and_are_rounded_once(self):
        self.write(MODEL.replace('rainfall = "rain"',
                                 'rainfall = { column = "rain", unit = "cm", scale = 0.1, offset = 0.3 }'))
        self.kesto("run", "-o", "out")
        expected = [80 * 0.1 + 0.3, 0.3, 40 * 0.1 + 0.3]
        with open(self.folder / "out" / "flows.csv", newline="") as file:
            found = [float(row["lawn:runoff [L]"]) for row in csv.DictReader(file)]
        for value, rain in zip(found, expected):
            self.assertAlmostEqual(value, rain * 7.5, places=4)

    def test_groups_and_components_are_reached(self):
        self.assertEqual(self.total("wc:demand"), 3 * 60)
        self.assertEqual(self.total("wc:demand", "groups.house.uses.1=2"), 3 * 24)
        self.assertEqual(self.total("wc:demand", "groups.house.occupancy=1", "brands.wc.volume_per_use=9"), 3 * 45)
        self.assertEqual(self.total("wc:demand", "groups.house.occupancy.weekly=[1, 0, 0, 0, 0, 0, 0]"), 30)
        self.assertEqual(self.total("series:demand", "components.series.demand=7"), 21)
        self.assertEqual(self.total("a.b:demand"), 12)
        self.assertEqual(self.total("a.b:demand", '"a.b".demand.scale=1'), 6)
        self.assertEqual(self.total("a.b:demand", 'components."a.b".demand=1'), 3)
        self.assertEqual(self.totals("--set", "simulation.end=2012-01-02")["roof:runoff"], 60)

    def test_uses_given_in_a_table(self):
        head = MODEL.replace("uses = { 1 = 5 }\n", "").replace("[groups.house]", '[tables]\ngroups = "groups.csv"\n[groups.house]')
        self.write(head)
        (self.folder / "groups.csv").write_text("name,use_1,use_2\nhouse,5,1\n")
        self.assertEqual(self.total("wc:demand"), 3 * 60)
        for value in "groups.house.uses.1=2", "groups.house.uses={ 1 = 2 }", "groups.house.use_1=2":
            self.assertEqual(self.total("wc:demand", value), 3 * 24, value)
        self.write(head.replace("[groups.house]", "[groups.house]\nuses = { 1 = 3 }"))
        self.assertIn('use_1 and uses both give kind 1', self.error())

    def test_a_kind_of_use_is_given_once(self):
        text = ' error: group "house": uses: "01" gives kind 1 for the second time; expected it once'
        self.assertEqual(self.error("--set", "groups.house.uses.01=3"), "--set groups.house.uses.01=3:" + text)
        self.write(MODEL.replace("{ 1 = 5 }", "{ 1 = 5, 01 = 3 }"))
        self.assertTrue(self.error().endswith(text))

    def test_a_scenario_gives_a_value_once(self):
        for lines, text in (
                ('"roof.size" = 3\nroof.size = 4', "roof.size is given twice; expected it once"),
                ("series.rainfall.value = 3\nseries.rainfall.weekly = [1, 1, 1, 1, 1, 1, 1]",
                 "series.rainfall.weekly replaces series.rainfall.value; expected one of them"),
                ('groups.house.uses.1 = 3\n"groups.house.uses" = [1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1]',
                 "groups.house.uses replaces groups.house.uses.1; expected one of them")):
            self.write(MODEL + "[scenarios.twice]\n" + lines + "\n")
            self.assertIn(": error: [scenarios.twice]: " + text + "\n", self.kesto("check").stderr)
        self.write(MODEL + '[scenarios.once]\n"roof.size" = 3\nseries.rainfall.value = 1\nseries.rainfall.scale = 2\n')
        self.assertEqual(self.kesto("check").returncode, 0)

    def test_a_scenario_has_a_name(self):
        self.write(MODEL + '[scenarios.""]\nroof.size = 3\n')
        self.assertIn(": error: a scenario has no name; expected [scenarios.NAME]\n", self.kesto("check").stderr)

    def test_uses_given_as_a_list(self):
        self.write(MODEL.replace("{ 1 = 5 }", "[5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0]"))
        self.assertEqual(self.total("wc:demand", "groups.house.uses.1=2"), 3 * 24)

    def test_what_leads_nowhere_is_an_error(self):
        for value, text in (
                ("series.rainfal.scale=2", '[series] has no key "rainfal"; did you mean "rainfall"?'),
                ("series.wind.scale=2", "[series] wind has 0 of the keys value, column, monthly and weekly; "
                                        "expected exactly one"),
                ("house.occupancy=3", 'there is no "house" in the model; did you mean "groups.house.occupancy"?'),
                ("roof.sise=3", 'component "roof" has no key "sise"; did you mean "size"?'),
                ("roof=3", "expected COMPONENT.KEY=VALUE, brands.NAME.KEY=VALUE, groups.NAME.KEY=VALUE, "
                           "series.KEY=VALUE, economics.KEY=VALUE or simulation.KEY=VALUE"),
                ("series.rainfall.offset=2 in", "[series] rainfall: offset is the text \"2 in\"; expected a number of mm"),
        ):
            self.assertEqual(self.error("--set", value), f"--set {value}: error: {text}")
        self.write(MODEL.replace('rainfall = "rain"\n', "").replace(
            'rainfall = { column = "rain", for = ["house"] }',
            'rainfall = [{ column = "rain", for = ["house"] }, { column = "snow", for = ["garden"] }]'))
        self.assertEqual(self.error("--set", "series.rainfall.scale=2"),
                         "--set series.rainfall.scale=2: error: [series] rainfall is a list of several; expected one "
                         "series, or a group's or component's own, as in groups.NAME.rainfall.scale")

    def test_scenarios(self):
        self.write(MODEL + SCENARIOS)
        self.assertEqual(self.totals()["roof:runoff"], 90)
        self.assertEqual(self.totals("--scenario", "dry")["roof:runoff"], 45)
        large = self.totals("--scenario", "large")
        self.assertEqual((large["roof:runoff"], large["a.b:demand"], large["wc:demand"]), (180, 42, 72))
        self.assertEqual(self.totals("--scenario", "large", "--scenario", "dry")["roof:runoff"], 90)
        self.assertEqual(self.totals("--scenario", "large", "--scenario", "larger")["roof:runoff"], 360)
        self.assertEqual(self.totals("--scenario", "larger", "--scenario", "large")["roof:runoff"], 180)
        self.assertEqual(self.totals("--scenario", "larger", "--set", "roof.size=1")["roof:runoff"], 9)
        self.assertEqual(self.error("--scenario", "dri"), '--scenario dri: error: there is no scenario "dri"; its '
                         'scenarios are dry, large and larger; did you mean "dry"?')
        self.assertEqual(self.kesto("draw", "--scenario", "dri", "-o", "x.dot").returncode, 2)
        self.assertEqual(self.kesto("draw", "--scenario", "dry", "-o", "x.dot").returncode, 0)

    def test_each_scenario_is_checked(self):
        self.write(MODEL + SCENARIOS + '[scenarios.broken]\nroof.sise = 3\nroof.size = -1\n"nonsense" = 3\n')
        done = self.kesto("check")
        line = len((MODEL + SCENARIOS).splitlines())
        self.assertEqual(done.returncode, 2)
        self.assertEqual([text for text in done.stderr.splitlines() if ": error: " in text], [
            f'model.toml:{line + 4}:1: error: [scenarios.broken]: "nonsense" leads to no value; expected a key such as '
            'tank.size or series.rainfall.scale'])
        self.write(MODEL + SCENARIOS + "[scenarios.broken]\nroof.sise = 3\nroof.size = -1\n")
        done = self.kesto("check")
        self.assertEqual(done.returncode, 2)
        errors = [text for text in done.stderr.splitlines() if ": error: " in text]
        self.assertEqual(len(errors), 2, errors)
        where = f"model.toml:{line + 2}:6: error: scenario \"broken\": "
        self.assertTrue(errors[0].startswith(where + 'component "roof" has no key "sise"'), errors)
        self.assertIn('scenario "broken": component "roof" (impervious_surface): its area is -1 m2', errors[1])

    def test_names_that_need_quotes_are_noted(self):
        notes = [line.split("note: ")[1] for line in self.kesto("check").stderr.splitlines() if ": note: " in line]
        self.assertEqual(notes, ['"series" is reached as components.series.KEY by --set and scenarios',
                                 '"a.b" is reached as "a.b".KEY by --set and scenarios'])

    def test_groups_partly_in_a_table(self):
        table = MODEL.replace("[brands.roof]", '[tables]\ngroups = "groups.csv"\n[brands.roof]')
        self.write(table.replace("uses = { 1 = 5 }\n", "").replace("occupancy = 2\n", ""))
        (self.folder / "groups.csv").write_text("name,occupancy,use_1,use_4\nhouse,3,4,2 1/week\nother,1,1,1\n")
        self.assertEqual(self.total("wc:demand"), 3 * 72)
        self.assertEqual(self.total("wc:demand", "groups.house.use_1=1"), 3 * 18)
        (self.folder / "groups.csv").write_text("name,demand_fluctuation,use_12\nhouse,3,1\n")
        done = self.kesto("check")
        self.assertEqual(done.returncode, 2)
        self.assertIn('groups.csv:2:7: error: group "house": demand_fluctuation stands here and at model.toml:', done.stderr)
        self.assertIn('groups.csv:2:9: error: group "house" has no key "use_12"', done.stderr)
        self.write(table)
        (self.folder / "groups.csv").write_text("name,use_1\nhouse,4\n")
        self.assertIn('group "house": use_1 and uses both give kind 1', self.kesto("check").stderr)


unittest.main()
