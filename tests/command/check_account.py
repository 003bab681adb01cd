#!/usr/bin/env python3
"""Accounts for the water of networks, and derives figures, that can be worked out by hand; and finds both the same in all
files of a run.

usage: check_account.py KESTO EXAMPLES

Runs in the system's own Python, whose package python3-xarray reads NetCDF."""

import csv
import json
import pathlib
import subprocess
import sys
import unittest

import xarray

from running import InFolder, KESTO

EXAMPLES = pathlib.Path(sys.argv.pop(1)).resolve()

HEAD = """kesto_model = 1
[simulation]
start = 2012-01-02
end = {end}
"""


def component(name, kind, **keys):
    lines = [f'name = "{name}"', f'type = "{kind}"'] + [f"{key} = {json.dumps(value)}" for key, value in keys.items()]
    return "[[components]]\n" + "\n".join(lines) + "\n"


def connection(sender, receiver):
    return f'[[connections]]\nfrom = "{sender}"\nto = "{receiver}"\n'


# A well gives 400 L a day of the 700 that a service reservoir serves, whether or not it has them.
TOWER = (HEAD.format(end="2012-01-11") + """[brands.well]
yield_per_area = 4
[brands.tower]
refill_rate = 1
[groups.town]
""" + component("asked", "demand_source", demand=700) + component("tower", "service_reservoir", group="town",
                                                                   brand="tower", size=500, initial_storage=500)
         + component("well", "well", group="town", brand="well", size=100)
         + connection("asked", "tower") + connection("tower:request", "well"))

# Nothing flows into a reservoir that seeps 30 L a day: 50 are there.
SEEPING = (HEAD.format(end="2012-01-05") + """[brands.lake]
storage_capacity = 100
seepage_constant = 30
[groups.lake]
""" + component("river", "demand_source", demand=0) + component("asked", "demand_source", demand=0)
           + component("lake", "reservoir", group="lake", brand="lake", initial_storage=50, initial_quality=1)
           + connection("river", "lake:inflow") + connection("asked", "lake:demand"))


# A dry roof garden in summer.
DRY = (HEAD.format(end="2012-01-11").replace("end =", "latitude = 47\nend =") + """[brands.sedum]
storage_depth = 30
infiltration_rate = 0
[groups.roof]
rainfall = 0
temperature_min = 10
temperature_max = 25
""" + component("roof", "green_area", group="roof", brand="sedum", size=100, initial_storage=0))

# Runoff that feeds two drains.
DOUBLED = (HEAD.format(end="2012-01-05") + """[groups.street]
rainfall = 2
[brands.roof]
evaporation_fraction = 0.25
""" + component("roof", "impervious_surface", group="street", brand="roof", size=10) + component("sewer", "water_body")
           + component("river", "water_body") + connection("roof", "sewer") + connection("roof", "river"))

# A store of 20 L, asked for 15 L every other day of the week; 4 L come in each day.
SHORT = (HEAD.format(end="2012-01-09") + """[groups.house]
""" + component("inflow", "demand_source", demand=4)
         + component("asked", "demand_source", demand="WEEK")
         + component("tank", "tank", group="house", size=20, initial_storage=10)
         + connection("inflow", "tank:inflow") + connection("asked", "tank:demand"))
SHORT = SHORT.replace('"WEEK"', "{ weekly = [15, 0, 15, 0, 15, 0, 15] }")


class Account(InFolder):
    def kesto(self, model, *options):
        if "\n" in str(model):
            self.write(model)
            model = self.folder / "model.toml"
        return super().kesto("run", model, *options)

    def summary(self, model, *options):
        done = self.kesto(model, "--json", *options)
        self.assertEqual(done.returncode, 0, done.stderr)
        return json.loads(done.stdout)

    def account(self, model, *options):
        rows = self.summary(model, *options)["account"]
        found = {(row["side"], row["kind"], row.get("component", "")): row["litres"] for row in rows}
        self.assertEqual(len(found), len(rows), "each row once")
        return found

    def assert_rows(self, found, expected, places=3):
        rounding = {key: litres for key, litres in found.items() if key[1] == "rounding"}
        self.assertEqual(set(found) - set(rounding), set(expected))
        for key, litres in expected.items():
            self.assertAlmostEqual(found[key], litres, places=places, msg=key)

    def test_the_house_of_4_and_a_half_litres_a_flush(self):
        found = self.account(EXAMPLES / "rainwater-house" / "model.toml", "--record", "none",
                             "--set", "brands.toilet.volume_per_use=4.5", "--set", "brands.shower.volume_per_use=82.5")
        self.assertEqual({key: round(litres) for key, litres in found.items() if key[1] != "rounding"}, {
            ("in", "rain", "roof"): 265560, ("in", "mains", "mains"): 412228, ("out", "water_body", "sewer"): 618613,
            ("out", "evaporated", "roof"): 39834, ("out", "infiltrated", "garden"): 18007,
            ("out", "storage", "tank"): 1334})
        self.assertLess(sum(litres for (_, kind, _), litres in found.items() if kind == "rounding"), 0.1)

    def test_all_water_of_the_examples_is_explained(self):
        for example in sorted(EXAMPLES.glob("*/model.toml")):
            with self.subTest(example.parent.name):
                found = self.account(example)
                kinds = {kind for _, kind, _ in found}
                self.assertFalse(kinds & {"unexplained", "not_recorded"})
                through = sum(litres for (side, *_), litres in found.items() if side == "in")
                rounding = sum(litres for (_, kind, _), litres in found.items() if kind == "rounding")
                self.assertLess(rounding, 1e-6 * through)

    def test_a_service_reservoir_above_a_small_well(self):
        found = self.account(TOWER)
        # 500 L are asked for each day and taken for delivered. 300 are left after the first day, 100 after the second; 100 are
        # lacking on the third, 200 on each of the seven days after it.
        self.assert_rows(found, {
            ("in", "drawn", "well"): 4000, ("in", "mains", "well"): 1000, ("in", "storage", "tower"): 500,
            ("in", "created", "tower"): 1500, ("out", "used", "asked"): 7000})
        figures = {row["name"]: row["value"] for row in self.summary(TOWER)["figures"]}
        self.assertEqual(figures["well.demand"], 5000)
        self.assertEqual(figures["well.unmet"], 1000)

    def test_a_reservoir_that_seeps_while_dry(self):
        found = self.account(SEEPING)
        self.assert_rows(found, {("in", "storage", "lake"): 50, ("in", "created", "lake"): 70,
                                 ("out", "infiltrated", "lake"): 120})
        done = self.kesto(SEEPING, "--strict")
        self.assertEqual(done.returncode, 1)
        self.assertIn('component "lake" (reservoir) creates 70.0 L: it seeps water that it does not hold [created-water]',
                      done.stderr)

    def test_a_dry_green_area(self):
        summary = self.summary(DRY)
        rows = {(row["side"], row["kind"]): row["litres"] for row in summary["account"]}
        self.assertGreater(rows["in", "created"], 100)
        self.assertAlmostEqual(rows["in", "created"], rows["out", "evaporated"], places=2)
        figures = {row["name"]: row["value"] for row in summary["figures"]}
        self.assertAlmostEqual(figures["roof.evaporation_booked"], rows["out", "evaporated"], places=2)
        self.assertAlmostEqual(figures["roof.evaporation_actual"], 0, places=2)

    def test_a_shortfall_that_is_served_is_taken_for_delivered(self):
        served = (DRY + component("can", "tank", group="roof", size=10000, initial_storage=10000)
                  + component("rain", "demand_source", demand=0)
                  + connection("rain", "can:inflow") + connection("roof:shortfall", "can:demand"))
        done = self.kesto(served, "--strict", "--accept", "demand-to-water can")
        self.assertEqual(done.returncode, 0, done.stderr)
        kinds = {kind for _, kind, _ in self.account(served)}
        self.assertNotIn("created", kinds)
        rows = {row["name"]: row for row in self.summary(served, "--balance")["balance"]}
        self.assertGreater(rows["roof"]["taken_for_delivered"], 100)
        self.assertEqual(rows["roof"]["created"], 0)

    def test_an_output_that_feeds_two(self):
        found = self.account(DOUBLED)
        self.assert_rows(found, {
            ("in", "rain", "roof"): 80, ("in", "created", "roof"): 60, ("out", "water_body", "sewer"): 60,
            ("out", "water_body", "river"): 60, ("out", "evaporated", "roof"): 20})

    def test_strict_accepts_water_from_nothing_where_it_is_known(self):
        model = 'accept = ["created-water roof"]\n' + DRY
        self.assertEqual(self.kesto(model, "--strict").returncode, 0)
        self.assertIn("[created-water, accepted]", self.kesto(model, "--strict").stderr)

    def test_figures_of_a_store_by_hand(self):
        figures = {row["name"]: row for row in self.summary(SHORT)["figures"]}
        storage, unmet, short = 10, [], 0
        for day in range(8):
            asked = 0 if day % 7 % 2 else 15
            served = min(asked, storage + 4)
            unmet.append(asked - served)
            storage = min(20, storage + 4 - served)
        value = {name: row["value"] for name, row in figures.items()}
        self.assertEqual(value["tank.demand"], 75)
        self.assertEqual(value["tank.unmet"], sum(unmet))
        self.assertEqual(value["tank.served"], 75 - sum(unmet))
        self.assertAlmostEqual(value["tank.reliability_volume"], 1 - sum(unmet) / 75)
        self.assertEqual(value["tank.days_short"], sum(1 for litres in unmet if litres > 0))
        self.assertAlmostEqual(value["tank.reliability_time"], 1 - value["tank.days_short"] / 5)
        # Sunday the 8th and Monday the 9th.
        self.assertEqual(value["tank.longest_shortage"], 2)
        self.assertEqual((figures["tank.longest_shortage"]["from"], figures["tank.longest_shortage"]["to"]),
                         ("2012-01-08", "2012-01-09"))
        self.assertEqual(value["tank.unmet_jan"], sum(unmet))
        self.assertEqual(value["tank.unmet_feb"], 0)

    def test_the_same_in_all_files_and_whatever_is_recorded(self):
        model = EXAMPLES / "rainwater-house" / "model.toml"
        for number, options in enumerate((("--format", "csv"), ("--format", "netcdf", "--record", "none"),
                                          ("--balance", "--record", "tank:overflow"))):
            folder = self.folder / str(number)
            done = self.kesto(model, "-o", str(folder), *options)
            self.assertEqual(done.returncode, 0, done.stderr)
            summary = json.loads((folder / "summary.json").read_text())
            account = [(row["side"], row["kind"], row["component"] or "", row["litres"])
                       for row in summary["account"]]
            figures = [(row["name"], row["value"], row["unit"]) for row in summary["figures"]]
            if number == 0:
                first = account, figures
            self.assertEqual((account, figures), first, options)
            if "netcdf" in options:
                data = xarray.open_dataset(folder / "results.nc")
                of_file = zip(data.account_side.values, data.account_kind.values, data.account_component.values,
                              data.account_litres.values)
                self.assertEqual([tuple(row) for row in of_file], account)
                self.assertEqual(list(zip(data.figure_name.values, data.figure_value.values, data.figure_unit.values)),
                                 figures)
            else:
                with open(folder / "account.csv", newline="") as file:
                    self.assertEqual([(row["side"], row["kind"], row["component"], float(row["litres"]))
                                      for row in csv.DictReader(file)], account)
                with open(folder / "figures.csv", newline="") as file:
                    self.assertEqual([(row["figure"], float(row["value"]), row["unit"])
                                      for row in csv.DictReader(file)], figures)

    def test_figures_are_those_of_the_list(self):
        listed = json.loads(subprocess.run([KESTO, "figures", "--json"], capture_output=True, text=True,
                                           check=True).stdout)
        # Those of money have a test of their own.
        listed = [figure for figure in listed if "money" not in figure["unit"] and "saved" not in figure["name"]
                  and figure["name"] != "payback"]
        known = {figure["name"]: figure for figure in listed}
        self.assertEqual(len(known), len(listed))
        model = json.loads(subprocess.run([KESTO, "run", EXAMPLES / "town" / "model.toml", "--json"],
                                          capture_output=True, text=True, check=True).stdout)
        used = set()
        for row in model["figures"]:
            name = row["name"].rsplit(".", 1)[1]
            used.add(name)
            self.assertEqual(row["unit"], known[name]["unit"])
            self.assertLessEqual("from" in row, known[name]["dated"], row)
        self.assertEqual(used, set(known))


unittest.main()
