#!/usr/bin/env python3
"""What a run costs and saves, against the same worked out here from prices, capital and the run's volumes.

usage: check_economics.py KESTO"""

import csv
import json
import os
import pathlib
import signal
import subprocess
import time
import unittest

from running import InFolder, KESTO, SCARCE, TANK

DAYS = 10
YEARS = DAYS / 365.25

MODEL = """kesto_model = 1
[simulation]
start = 2012-01-01
end = 2012-01-10
[economics]
currency = "EUR"
water_price = "2 EUR/m3"
sewage_price = 3
sewage_to = "sewer"
energy_price = "200 /MWh"
interest = "4 %"
horizon = "20 years"
baseline = "before"
[scenarios.before]
"roof.size" = 0.001
"tank.size" = 0
"brands.buried.capital" = 0
"brands.buried.capital_per_size" = 0
"brands.pump.energy_per_volume" = 0
[groups.house]
occupancy = 2
uses = { 1 = 5 }
[groups.rainwater]
rainfall = { weekly = [0, 2, 6, 0, 0, 1, 4] }
[brands.toilet]
volume_per_use = 6
[brands.roof]
evaporation_fraction = 0.1
[brands.buried]
capital = 500
capital_per_size = "400 EUR/m3"
life = 40
[brands.pump]
energy_per_volume = "0.6 kWh/m3"
operation_cost = 12
loss_fraction = 0
[[components]]
name = "toilet"
type = "appliance"
kind = 1
group = "house"
brand = "toilet"
[[components]]
name = "roof"
type = "impervious_surface"
group = "rainwater"
brand = "roof"
size = 60
[[components]]
name = "tank"
type = "tank"
group = "rainwater"
brand = "buried"
size = "2 m3"
initial_storage = 100
[[components]]
name = "pump"
type = "supply_link"
group = "rainwater"
brand = "pump"
size = 1
capital_by_size = [[1, 300], [3, "700 EUR"]]
[[components]]
name = "sewer"
type = "water_body"
[[components]]
name = "garden"
type = "water_body"
[[connections]]
from = "toilet:demand"
to = "pump"
[[connections]]
from = "pump"
to = "tank:demand"
[[connections]]
from = "toilet:wastewater"
to = "sewer"
[[connections]]
from = "roof"
to = "tank:inflow"
[[connections]]
from = "tank:overflow"
to = "garden"
"""

# The baseline asks for more than the intake may deliver.
THIRSTY = SCARCE + """[economics]
baseline = "thirsty"
[scenarios.thirsty]
asked.demand = 30
"""


def annuity(capital, interest, years):
    """The payment each year that a loan of this sum takes."""
    growth = (1 + interest) ** years
    return capital * interest * growth / (growth - 1)


class Economics(InFolder):
    def run_model(self, *options, text=MODEL):
        self.write(text)
        done = self.kesto("run", "model.toml", "--json", *options)
        self.assertEqual(done.returncode, 0, done.stderr)
        rows = json.loads(done.stdout)["figures"]
        self.units = {row["name"]: row["unit"] for row in rows}
        return {row["name"]: row["value"] for row in rows}

    def same(self, figures, **expected):
        for name, value in expected.items():
            self.assertAlmostEqual(figures[name.replace("__", ".")], value, delta=1e-9 * max(1, abs(value)), msg=name)

    def test_costs_of_the_network(self):
        now = self.run_model()
        capital = 500 + 400 * 2 + 300
        yearly = annuity(1300, 0.04, 40) + annuity(300, 0.04, 20)
        mains = 2 * now["network.mains"] / 1000 / YEARS
        sewage = 3 * 600 / 1000 / YEARS  # what the toilet lets go: 2 persons, 5 uses, 6 L, 10 days
        energy = 0.2 * now["network.energy"] / YEARS
        self.assertGreater(now["network.energy"], 0)
        self.same(now, network__capital=capital, network__annuity=yearly, network__mains_cost=mains,
                  network__sewage_cost=sewage, network__energy_cost=energy)
        operation = now["network.operation_cost"]
        self.assertGreater(operation, 0)
        running = mains + sewage + energy + operation
        self.same(now, network__running_cost=running, network__yearly_cost=running + yearly,
                  network__present_cost=(running + yearly) * (1 - 1.04 ** -20) / 0.04)
        self.assertEqual(self.units["network.capital"], "EUR")
        self.assertEqual(self.units["network.yearly_cost"], "EUR/a")
        served = now["tank.served"] / 1000
        self.same(now, tank__capital=1300, pump__capital=300,
                  tank__cost_per_m3=(yearly + energy + operation) * YEARS / served)
        self.assertEqual(self.units["tank.cost_per_m3"], "EUR/m3")

    def test_savings_are_those_between_two_runs(self):
        now = self.run_model()
        before = self.run_model("--scenario", "before")
        saved = before["network.mains"] - now["network.mains"]
        self.assertGreater(saved, 0)
        less = before["network.running_cost"] - now["network.running_cost"]
        spent = sum(now.get(name, 0) - before.get(name, 0)
                    for name in ("network.annuity", "network.energy_cost", "network.operation_cost"))
        self.same(now, network__saved_mains=saved, network__saved_running_cost=less,
                  network__saved_energy=before.get("network.energy", 0) - now["network.energy"],
                  network__cost_per_m3_saved=spent * YEARS / (saved / 1000))
        self.assertEqual(now["network.payback"], None if less <= 0 else (1600 - 300) / less)
        self.same(before, network__saved_mains=0)

    def test_the_baseline_wins_over_the_command_line(self):
        self.assertGreater(self.run_model("--set", "tank.size=5 m3")["network.saved_mains"], 0)
        # What both runs share is no saving.
        wet = self.run_model("--set", "groups.rainwater.rainfall.scale=3")
        dry = self.run_model("--set", "groups.rainwater.rainfall.scale=0.1")
        self.assertGreater(wet["network.saved_mains"], dry["network.saved_mains"])

    def test_prices_and_capital_are_keys(self):
        now = self.run_model("--set", "economics.water_price=4", "--set", "tank.capital=900", "--set", "tank.life=20")
        self.same(now, network__mains_cost=4 * now["network.mains"] / 1000 / YEARS, tank__capital=900,
                  tank__annuity=annuity(900, 0.04, 20))

    def test_nothing_is_shown_without_prices(self):
        begin, end = MODEL.index("[economics]"), MODEL.index("[scenarios")
        text = MODEL[:begin] + MODEL[end:]
        for key in ("capital = 500\n", 'capital_per_size = "400 EUR/m3"\n', "life = 40\n",
                    'capital_by_size = [[1, 300], [3, "700 EUR"]]\n', '"brands.buried.capital" = 0\n',
                    '"brands.buried.capital_per_size" = 0\n'):
            text = text.replace(key, "")
        figures = self.run_model(text=text)
        for name in figures:
            self.assertNotRegex(name, "cost|capital|annuity|saved|payback")
        self.assertNotIn("Costs", self.kesto("run", "model.toml").stdout)

    def test_multipliers_count_capital(self):
        text = MODEL.replace('[[connections]]\nfrom = "tank:overflow"\nto = "garden"\n', """[[components]]
name = "street"
type = "multiplier"
size = 100
multiplier = 7
[[connections]]
from = "tank:overflow"
to = "street"
[[connections]]
from = "street"
to = "garden"
""")
        self.same(self.run_model(text=text), tank__capital=7 * 1300, tank__annuity=7 * annuity(1300, 0.04, 40))

    def test_without_interest_it_is_divided_by_the_years(self):
        figures = self.run_model("--set", "economics.interest=0")
        self.same(figures, tank__annuity=1300 / 40, pump__annuity=300 / 20,
                  network__present_cost=20 * figures["network.yearly_cost"])

    def test_a_curve_of_costs(self):
        for size, capital in (1, 300), (2, 500), (3, 700), (4, 900), (0.5, 200):
            self.same(self.run_model("--set", f"pump.size={size}"), pump__capital=capital)

    def test_the_capacity_cost_counts_when_the_model_says_so(self):
        text = MODEL.replace("operation_cost = 12", "operation_cost = 12\ncapacity_cost = 0.5")
        apart, counted = (self.run_model("--set", f"economics.count_capacity_cost={says}", text=text)
                          for says in ("false", "true"))
        capacity = apart["network.capacity_cost"]
        self.assertGreater(capacity, 0)
        self.assertEqual(counted["network.capacity_cost"], capacity)
        self.same(counted, network__yearly_cost=apart["network.yearly_cost"] + capacity)

    def test_sweeps_and_comparisons_have_them(self):
        self.write(MODEL)
        done = self.kesto("sweep", "model.toml", "--vary", "tank.size=1 m3,2 m3", "--vary", "economics.sewage_price=2,5",
                          "-o", "sweep")
        self.assertEqual(done.returncode, 0, done.stderr)
        rows = self.csv_rows("sweep/members.csv")
        self.assertEqual([float(row["network.capital"]) for row in rows], [1200, 1200, 1600, 1600])
        ratio = float(rows[1]["network.sewage_cost"]) / float(rows[0]["network.sewage_cost"])
        self.assertAlmostEqual(ratio, 2.5)
        done = self.kesto("compare", "model.toml", "--scenarios")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertRegex(done.stdout, r"network.capital +EUR +1600.0 +300.0")

    def members(self, *arguments, text=MODEL, status=0):
        self.write(text)
        done = self.kesto("sweep", "model.toml", *arguments, "-o", "sweep", "--figures", "all", "--restart")
        self.assertEqual(done.returncode, status, done.stderr)
        return self.csv_rows("sweep/members.csv")

    def expect_as_run(self, row, text, *options):
        for name, value in self.run_model(*options, text=text).items():
            self.assertEqual(float(row[name]) if row[name] else None, value, (row["member"], name))

    def test_members_of_a_sweep_save_what_their_runs_do(self):
        rows = self.members("--vary", "tank.size=30,2 m3", "--vary", "groups.rainwater.rainfall.scale=0.1,3")
        for row in rows:
            self.expect_as_run(row, MODEL, *(f"--set={key}={row[key]}" for key in
                                             ("tank.size", "groups.rainwater.rainfall.scale")))
        self.assertEqual(len({row["network.saved_mains"] for row in rows}), 4)
        rows = self.members("--scenarios", "--vary", "brands.buried.capital=100,200")
        for row in rows:
            chosen = ["--scenario", row["scenario"]] if row["scenario"] else []
            self.expect_as_run(row, MODEL, *chosen, "--set", f"brands.buried.capital={row['brands.buried.capital']}")
        self.assertEqual([float(row["network.saved_mains"]) == 0 for row in rows], [False, False, True, True])

    def test_members_of_a_table_and_of_a_slice(self):
        (self.folder / "members.csv").write_text("tank.size,economics.water_price\n500,2\n1000,2\n,4\n2000,4\n")
        whole = self.members("members.csv")
        for row in whole:
            keys = [key for key in ("tank.size", "economics.water_price") if row[key]]
            self.expect_as_run(row, MODEL, *(f"--set={key}={row[key]}" for key in keys))
        self.assertEqual(self.members("members.csv", "--members", "2-4"), whole[1:])

    def test_the_baseline_itself_is_varied(self):
        text = MODEL.replace("[scenarios.before]", "[scenarios.half]\ntank.size = 50\n[scenarios.before]")
        rows = self.members("--vary", "economics.baseline=before,half", "--vary", "tank.size=1 m3,2 m3", text=text)
        for row in rows:
            self.expect_as_run(row, text, "--set", f"economics.baseline={row['economics.baseline']}", "--set",
                               f"tank.size={row['tank.size']}")
        self.assertNotEqual(rows[0]["network.saved_mains"], rows[2]["network.saved_mains"])

    def test_baselines_of_a_sweep_that_cannot_be_run(self):
        text = MODEL.replace('"roof.size" = 0.001', '"roof.size" = -1')
        self.write(text)
        done = self.kesto("sweep", "model.toml", "--vary", "tank.size=1,2,3", "-o", "sweep")
        self.assertEqual(done.returncode, 2)
        self.assertIn('[economics]: the baseline "before" cannot be run: component "roof"', done.stderr)
        self.assertFalse((self.folder / "sweep").exists())
        rows = self.members("--vary", "brands.intake.daily_capacity=10,100", text=THIRSTY, status=1)
        self.assertEqual([row["outcome"] for row in rows], ["failed", "finished"])
        self.assertIn('[economics]: the baseline "thirsty" cannot be run: ', rows[0]["message"])
        done = self.kesto("run", "model.toml", "--set", "brands.intake.daily_capacity=10")
        self.assertEqual(done.returncode, 2)
        self.assertIn(rows[0]["message"], done.stderr)
        self.expect_as_run(rows[1], THIRSTY, "--set", "brands.intake.daily_capacity=100")

    def test_a_comparison_tells_what_is_saved(self):
        now = self.run_model("-o", "now")
        self.run_model("-o", "before", "--scenario", "before")
        for runs in (["before", "now"], ["model.toml", "--scenarios"]):
            done = self.kesto("compare", "--json", *runs)
            self.assertEqual(done.returncode, 0, done.stderr)
            savings = {row["name"]: row for row in json.loads(done.stdout)["savings"]}
            if runs[0] == "before":
                for name, row in savings.items():
                    self.assertEqual(row["values"], [None, now[f"network.{name}"]])
                    self.assertEqual(row["unit"], self.units[f"network.{name}"])
                self.assertIn("saved_running_cost", savings)
            else:  # the other way round: the first run is the one with the tank
                self.assertEqual(savings["saved_mains"]["values"], [None, -now["network.saved_mains"]])
                self.assertNotIn("cost_per_m3_saved", savings)
        self.assertRegex(self.kesto("compare", "before", "now").stdout,
                         r"(?s)\nAgainst 1\n +2\n  saved_mains +L +540\.0\n.*  cost_per_m3_saved +EUR/m3 +\d\.\d\d\n")
        self.kesto("compare", "before", "now", "-o", "table.csv")
        with open(self.folder / "table.csv", newline="") as file:
            rows = {row["figure"]: row for row in csv.DictReader(file)}
        self.assertEqual(float(rows["saved_mains"]["now"]), now["network.saved_mains"])
        self.assertEqual(rows["saved_mains"]["before"], "")

    def test_heat_is_no_energy(self):
        plain = self.run_model()
        text = MODEL.replace("[simulation]", """[brands.lawn]
storage_depth = 20
capacity_cost = 0
operation_cost = 0
water_quality = 0
infiltration_rate = 0.1
[groups.lawn]
rainfall = 2
temperature_min = 8
temperature_max = 20
[[components]]
name = "lawn"
type = "green_area"
group = "lawn"
brand = "lawn"
size = 100
[simulation]
latitude = 47""")
        now = self.run_model("-o", "out", text=text)
        booked = self.json_in("out/summary.json")["potentials"]
        heat = next(row["total"] for row in booked if (row["group"], row["potential"]) == ("lawn", "energy"))
        self.assertLess(heat, -100)
        self.same(now, network__heat=heat, network__energy=plain["network.energy"],
                  network__energy_cost=plain["network.energy_cost"], network__saved_energy=plain["network.saved_energy"])
        self.assertNotIn("network.heat", plain)
        # What a group books is one sum.
        mixed = self.run_model(text=text.replace('group = "lawn"', 'group = "rainwater"').replace(
            "[groups.rainwater]", "[groups.rainwater]\ntemperature_min = 8\ntemperature_max = 20"))
        self.assertNotIn("network.heat", mixed)
        self.assertLess(mixed["network.energy"], 0)
        self.assertIn('"pump" of the same group the energy of a machine: all of it counts as energy; put one of them into a '
                      "group of its own [mixed-energy]", self.kesto("check", "model.toml").stderr)

    def test_what_has_no_price_or_capital_is_not_compared(self):
        prices = '[economics]\nbaseline = "small"\nwater_price = 2\n'
        now = self.run_model("-o", "now", text=TANK + prices)
        self.assertIn("network.saved_running_cost", now)
        self.assertFalse({"network.payback", "network.cost_per_m3_saved"} & now.keys())
        self.run_model("-o", "more", "--set", "economics.sewage_price=3", text=TANK + prices)
        done = self.kesto("compare", "--json", "--all", "now", "more", "now")
        savings = {row["name"] for row in json.loads(done.stdout)["savings"]}
        self.assertFalse(savings & {"saved_running_cost", "cost_per_m3_saved", "payback"}, done.stdout)

    def test_a_component_called_network(self):
        text = MODEL.replace('name = "tank"', 'name = "network"').replace('"tank.', '"network.').replace('"tank:', '"network:')
        now = self.run_model(text=text)
        plain = self.run_model()
        self.assertEqual(now["network.capital"], plain["network.capital"])
        self.assertEqual(now["components.network.capital"], plain["tank.capital"])

    def test_what_the_baseline_reads_is_read(self):
        (self.folder / "dry.csv").write_text("rain\n" + "0.5\n" * DAYS)
        text = MODEL.replace("[scenarios.before]", '[scenarios.before]\n"groups.rainwater.rainfall" = { column = "rain", '
                                                   'file = "dry.csv" }')
        self.run_model("-o", "out", text=text)
        self.assertEqual([row["file"] for row in self.json_in("out/summary.json")["inputs"]], ["dry.csv"])
        (self.folder / "dry.csv").rename(self.folder / "out/flows.csv")
        self.write(text.replace("dry.csv", "out/flows.csv"))
        done = self.kesto("run", "model.toml", "-o", "out")
        self.assertEqual(done.returncode, 2)
        self.assertIn("results would be written over out/flows.csv, which the run reads", done.stderr)

    def test_a_table_of_components(self):
        begin = MODEL.index('[[components]]\nname = "pump"')
        end = MODEL.index('[[components]]\nname = "sewer"')
        text = MODEL[:begin] + MODEL[end:]
        text = text.replace("[simulation]", '[tables]\ncomponents = "parts.csv"\n[simulation]')
        (self.folder / "parts.csv").write_text(
            "name,type,group,brand,size,capital,life\npump,supply_link,rainwater,pump,1,250 EUR,\n")
        self.same(self.run_model(text=text), pump__capital=250)

    def test_an_interrupt_of_the_baseline_ends_the_run(self):
        pumps = "".join(f'[[components]]\nname = "p{i}"\ntype = "demand_source"\ndemand = 1\n' for i in range(400))
        self.write(MODEL.replace("end = 2012-01-10", "end = 2400-01-01") + pumps)
        running = subprocess.Popen([KESTO, "run", "model.toml", "-q", "-o", "out"], cwd=self.folder, stderr=subprocess.PIPE,
                                   start_new_session=True)
        end = time.monotonic() + 30
        children = pathlib.Path(f"/proc/{running.pid}/task/{running.pid}/children")
        while not children.read_text() and time.monotonic() < end:  # the first of which runs the baseline
            time.sleep(0.001)
        time.sleep(0.05)
        os.killpg(running.pid, signal.SIGINT)
        errors = running.communicate(timeout=60)[1].decode()
        self.assertEqual(running.returncode, -signal.SIGINT, errors)
        self.assertIn("baseline", errors)
        self.assertFalse((self.folder / "out" / "summary.json").exists())

    def test_a_baseline_that_cannot_be_run(self):
        self.write(MODEL.replace('"roof.size" = 0.001', '"roof.size" = -1'))
        done = self.kesto("run", "model.toml")
        self.assertEqual(done.returncode, 2)
        self.assertIn('model.toml:5:1: error: [economics]: the baseline "before" cannot be run: component "roof"',
                      done.stderr)


unittest.main()
