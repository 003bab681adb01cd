#!/usr/bin/env python3
"""Balances the examples and small models whose balance is known, and one that cannot close; and accounts for the water
of their networks.

usage: check_balance.py KESTO EXAMPLES"""

import csv
import json
import pathlib
import sys
import unittest

from running import InFolder

EXAMPLES = pathlib.Path(sys.argv.pop(1)).resolve()

HOUSE = """kesto_model = 1
[simulation]
start = 2012-01-02
end = 2012-01-04
[brands.roof]
evaporation_fraction = 0.25
[brands.sewer]
loss_fraction = 0.5
[groups.house]
rainfall = { weekly = [8, 0, 4, 0, 0, 0, 0] }
[groups.street]
[[components]]
name = "roof"
type = "impervious_surface"
group = "house"
brand = "roof"
size = 10
[[components]]
name = "asked"
type = "demand_source"
demand = 30
[[components]]
name = "tank"
type = "tank"
group = "house"
size = 20
initial_storage = 5
[[components]]
name = "sewer"
type = "sewer_link"
group = "street"
brand = "sewer"
[[components]]
name = "river"
type = "water_body"
group = "street"
[[connections]]
from = "roof"
to = "tank:inflow"
[[connections]]
from = "asked"
to = "tank:demand"
[[connections]]
from = "tank:overflow"
to = "sewer"
[[connections]]
from = "sewer"
to = "river"
"""

# The soil store is not defined below the freezing point.
FROST = """kesto_model = 1
[simulation]
start = 2012-01-02
end = 2012-01-04
[brands.soil]
storage_depth = 100
infiltration_rate = 0.1
outflow_rate = 0.1
threshold_fraction = 0.5
[groups.field]
rainfall = 1
temperature = -3
[[components]]
name = "soil"
type = "soil_store"
group = "field"
brand = "soil"
"""

# A logger on the unused output of the splitter would change the sources that are traced.
TRACED = """kesto_model = 1
[simulation]
start = 2012-01-02
end = 2012-01-04
trace_sources = true
[brands.store]
refill_rate = 1
[brands.works]
daily_capacity = 100
loss_fraction = 0.1
[groups.town]
[[components]]
name = "asked"
type = "demand_source"
demand = 30
[[components]]
name = "store"
type = "service_reservoir"
group = "town"
brand = "store"
size = 50
[[components]]
name = "split"
type = "splitter"
size = 40
[[components]]
name = "works"
type = "treatment_plant"
group = "town"
brand = "works"
[[connections]]
from = "asked"
to = "store"
[[connections]]
from = "store"
to = "split"
[[connections]]
from = "split:first"
to = "works"
"""


COLUMNS = ("in", "rain", "drawn", "released", "taken_for_delivered", "created", "out", "evaporated", "infiltrated", "lost",
           "destroyed", "storage_change", "error")


class Balance(InFolder):
    def kesto(self, model, *options):
        return super().kesto("run", model, "--balance", *options)

    def rows(self, model, *options):
        done = self.kesto(model, "--json", "--strict", *options)
        self.assertEqual(done.returncode, 0, done.stderr)
        return {(row["level"], row["name"]): row for row in json.loads(done.stdout)["balance"]}

    def small(self, text):
        path = self.folder / "model.toml"
        path.write_text(text)
        return path

    def test_the_examples_close(self):
        for example, components in (("rainwater-house", 13), ("town", 120)):
            with self.subTest(example):
                rows = self.rows(EXAMPLES / example / "model.toml")
                self.assertGreaterEqual(sum(level == "component" for level, _ in rows), components)
                network = next(row for (level, _), row in rows.items() if level == "network")
                self.assertLess(network["relative_error"], 1e-6)
                for (level, name), row in rows.items():
                    if level == "component":
                        self.assertTrue(row.get("balanced"), row)
                        through = row["in"] + row["rain"] + row["drawn"] + row["released"] + row["out"] + 1
                        self.assertLess(abs(row["error"]), 1e-5 * through, name)

    def test_a_balance_by_hand(self):
        rows = self.rows(self.small(HOUSE))
        # Day 1: 80 L of rain, 60 run off; 5 + 60 - 30 are 35, of which the tank holds 20.
        # Day 2: 20 of 30 are served. Day 3: 30 run off, and are served.
        network = ("network", str(self.folder / "model.toml"))
        expected = {
            ("component", "roof"): {"rain": 120, "out": 90, "evaporated": 30},
            ("component", "tank"): {"in": 90, "out": 80 + 15, "storage_change": -5},
            ("component", "sewer"): {"in": 15, "out": 7.5, "lost": 7.5},
            ("component", "river"): {"in": 7.5, "out": 7.5},
            ("component", "asked"): {"taken_for_delivered": 90, "out": 90},
            # The mains serve the 10 L of the second day that the tank has not.
            ("group", "house"): {"in": 10, "rain": 120, "out": 15 + 90, "evaporated": 30, "storage_change": -5},
            ("group", "street"): {"in": 15, "out": 7.5, "lost": 7.5},
            network: {"in": 10, "rain": 120, "out": 7.5 + 90, "evaporated": 30, "lost": 7.5, "storage_change": -5},
        }
        for key, values in expected.items():
            for name in COLUMNS:
                self.assertAlmostEqual(rows[key][name], values.get(name, 0), places=4, msg=f"{key} {name}")
        self.assertEqual(rows[("component", "asked")]["carries"], "demand")

    def test_what_is_recorded_stays_what_was_asked(self):
        model = self.small(HOUSE)
        done = self.kesto(model, "--record", "tank:overflow", "-o", "out")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        with open(self.folder / "out" / "flows.csv", newline="") as file:
            self.assertEqual(next(csv.reader(file)), ["date", "tank:overflow [L]", "river [L]"])
        rows = self.csv_rows("out/balance.csv")
        self.assertEqual({row["state"] for row in rows}, {"balanced"})
        self.assertIn("Balance", done.stdout)

    def test_a_balance_that_does_not_close_is_loud(self):
        model = self.small(FROST)
        done = self.kesto(model)
        self.assertEqual(done.returncode, 0)
        self.assertIn('warning: the balance of component "soil" does not close', done.stderr)
        self.assertEqual(self.kesto(model, "-q").stderr, "")
        self.assertEqual(self.kesto(model, "-q", "--strict").returncode, 1)

    def test_what_cannot_be_recorded_is_named(self):
        done = self.kesto(self.small(TRACED), "--json", "--record", "none")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        rows = {row["name"]: row for row in json.loads(done.stdout)["balance"]}
        self.assertIn('"split:second" cannot be recorded unchanged', rows["split"]["not_balanced"])
        self.assertTrue(rows["works"]["balanced"])


unittest.main()
