#!/usr/bin/env python3
"""What the page of `kesto report` is told of a run: the same figures as the files have, of a size and a memory that do not grow
with the network.

usage: check_page_data.py KESTO EXAMPLES"""

import base64
import csv
import json
import math
import os
import pathlib
import re
import struct
import subprocess
import sys
import tempfile
import unittest

EXAMPLES = pathlib.Path(sys.argv.pop()).resolve()
KESTO = str(pathlib.Path(sys.argv.pop()).resolve())
HOUSE = EXAMPLES / "rainwater-house" / "model.toml"
LARGEST_PAGE = 5_000_000  # bytes
LARGEST_MEMORY = 500_000  # KB

STREET = """kesto_model = 1
[simulation]
start = 2011-12-30
end = {end}
[brands.toilet]
volume_per_use = 6
[brands.roof]
evaporation_fraction = 0.2
[brands.tank]
"""
HOUSEHOLD = """[groups.h{n}]
occupancy = 2
uses = [5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0]
demand_fluctuation = 1
rainfall = {{ weekly = [0, 3, 0, 0.5, 8, 0, {rain}] }}
"""
COMPONENTS = {"wc": "appliance\"\nkind = 1\nbrand = \"toilet\"\ngroup = \"h{n}",
              "roof": "impervious_surface\"\nbrand = \"roof\"\nsize = 40\ngroup = \"h{n}",
              "tank": "tank\"\nbrand = \"tank\"\nsize = {size}\ninitial_storage = 0\ngroup = \"h{n}",
              "drain": "junction", "meter": "junction"}
CONNECTIONS = ("wc{n}:demand", "tank{n}:demand"), ("roof{n}", "tank{n}:inflow"), ("tank{n}:deficit", "meter{n}"), \
    ("wc{n}:wastewater", "drain{n}"), ("tank{n}:overflow", "drain{n}"), ("drain{n}", "sewers")


def street(households, end):
    """A model of households that each flush with rain."""
    parts = [STREET.format(end=end)]
    parts += [HOUSEHOLD.format(n=n, rain=n % 50) for n in range(households)]
    parts.append('[[components]]\nname = "sewers"\ntype = "junction"\n[[components]]\nname = "sewer"\ntype = "water_body"\n'
                 '[[connections]]\nfrom = "sewers"\nto = "sewer"\n')
    for n in range(households):
        for name, kind in COMPONENTS.items():
            parts.append(f'[[components]]\nname = "{name}{n}"\ntype = "{kind.format(n=n, size=300 + n)}"\n')
    for n in range(households):
        for sender, receiver in CONNECTIONS:
            parts.append(f'[[connections]]\nfrom = "{sender.format(n=n)}"\nto = "{receiver.format(n=n)}"\n')
    return "".join(parts)


def data_of(page):
    return json.loads(re.search(r'<script type="application/json" id="data">(.*?)</script>', page, re.S).group(1))


def unpacked(text):
    data = base64.b64decode(text)
    return list(struct.unpack(f"<{len(data) // 4}f", data))


def as_single(text):
    return struct.unpack("<f", struct.pack("<f", float(text)))[0]


class PageData(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name)
        self.out = self.folder / "out"

    def kesto(self, *arguments, status=0):
        done = subprocess.run([KESTO, *map(str, arguments)], capture_output=True, text=True, timeout=300)
        self.assertEqual(done.returncode, status, done.stderr)
        return done

    def report(self, *options):
        self.kesto("report", self.out, "-o", self.folder / "page.html", *options)
        return data_of((self.folder / "page.html").read_text())

    def run_and_report(self, model, *options, status=0):
        self.kesto("run", model, "-q", "-o", self.out, *options, status=status)
        return self.report()

    def model(self, text):
        path = self.folder / "model.toml"
        path.write_text(text)
        return path

    def figures(self):
        with open(self.out / "figures.csv", newline="") as file:
            return {row["figure"]: row for row in csv.DictReader(file)}

    def columns(self, name):
        with open(self.out / name, newline="") as file:
            rows = list(csv.reader(file))
        return {header: [as_single(row[i]) for row in rows[1:]] for i, header in enumerate(rows[0]) if i}

    @staticmethod
    def cards(data):
        return {card["id"]: card for card in data["cards"]}

    def test_series_are_those_of_the_files(self):
        data = self.run_and_report(HOUSE)
        shown = {series["name"]: series for series in data["series"]["list"]}
        flows = self.columns("flows.csv")
        for header, values in flows.items():
            name = header[:header.index(" [")]
            series = shown[name]
            self.assertEqual(unpacked(series["days"]), values, name)
            months = unpacked(series["months"])
            self.assertEqual(len(months), 48)
            self.assertAlmostEqual(months[0], math.fsum(values[:31]), delta=1e-5 * abs(months[0]))
            self.assertAlmostEqual(math.fsum(months), math.fsum(values), delta=1e-5 * abs(math.fsum(values)))
        level = self.columns("states.csv")["tank:storage [L]"]
        self.assertEqual(unpacked(shown["tank:storage"]["days"]), level)
        self.assertAlmostEqual(unpacked(shown["tank:storage"]["months"])[1], math.fsum(level[31:60]) / 29, places=2)
        self.assertNotIn("omitted", data["series"])
        together = unpacked(shown["type:appliance:wastewater"]["months"])
        each = [unpacked(shown[name]["months"]) for name in shown
                if re.fullmatch("(toilet|shower|bath|taps|dishwasher|washing_machine|garden):wastewater", name)]
        self.assertEqual(len(each), 7)
        self.assertAlmostEqual(together[5], math.fsum(one[5] for one in each), delta=1)
        first = [series["name"] for series in data["series"]["list"] if series.get("first_shown")]
        self.assertEqual(first[:2], ["tank:deficit", "tank:storage"])

    def test_cards_and_years_by_hand(self):
        data = self.run_and_report(HOUSE)
        cards, figures, flows = self.cards(data), self.figures(), self.columns("flows.csv")
        used = math.fsum(math.fsum(flows[name + ":demand [L]"]) for name in
                         ("toilet", "shower", "bath", "taps", "dishwasher", "washing_machine", "garden"))
        self.assertAlmostEqual(cards["use"]["value"], used / 1461 / 2.46, places=3)
        mains = float(figures["network.mains"]["value"])
        self.assertAlmostEqual(cards["other_sources"]["value"], 100 * (1 - mains / used), places=4)
        self.assertAlmostEqual(cards["reliability"]["value"],
                               100 * float(figures["tank.reliability_volume"]["value"]), places=9)
        self.assertIn(f'{100 * float(figures["tank.reliability_time"]["value"]):.1f} %', cards["reliability"]["note"])
        shortage = figures["tank.longest_shortage"]
        self.assertEqual([cards["shortage"][key] for key in ("value", "from", "to")],
                         [float(shortage["value"]), shortage["from"], shortage["to"]])
        self.assertEqual(cards["shortage"]["note"], "tank, 28 July to 11 October 2012")
        self.assertEqual(cards["shortage"]["name"], "tank")
        self.assertIn("of the days with a demand", cards["reliability"]["note"])
        self.assertEqual(cards["use"]["note"], f"{used / 1461:.1f} L a day for 2.46 persons")
        self.assertEqual(cards["overflow"]["note"].split(",")[0],
                         f'{math.fsum(flows["tank:overflow [L]"]) / 4 / 1000:.1f} m\u00b3 a year')
        spilled, ran_off = (math.fsum(flows[name]) for name in ("tank:overflow [L]", "roof:runoff [L]"))
        self.assertAlmostEqual(cards["overflow"]["value"], 100 * spilled / ran_off, places=4)
        self.assertEqual(cards["unexplained"]["value"], 0)
        years = {row["label"]: row["values"] for row in data["years"]["rows"]}
        self.assertEqual(data["years"]["years"], [2012, 2013, 2014, 2015])
        for label, figure in ("Rain", "rain"), ("Mains", "mains"), ("Evaporated", "evaporated"), \
                ("Infiltrated", "infiltrated"), ("To water bodies", "discharged"):
            total = float(figures["network." + figure]["value"])
            self.assertAlmostEqual(math.fsum(years[label]), total, delta=1e-7 * total, msg=label)
        deficit = flows["tank:deficit [L]"]
        self.assertEqual(years["Days on which tank fell short"][0], sum(value > 1e-4 for value in deficit[:366]))
        months = {series["label"]: series["values"] for series in data["months"]["series"]}
        self.assertEqual(set(months), {"Mains", "tank"})
        self.assertAlmostEqual(math.fsum(months["Mains"] + months["tank"]), used, delta=1)
        store = data["stores"]["list"][0]
        level = self.columns("states.csv")["tank:storage [L]"]
        self.assertEqual(store["empty_share"], sum(value <= 1.5 for value in level) / 1461)
        self.assertEqual(store["full_share"], sum(value >= as_single(1498.5) for value in level) / 1461)

    def test_place(self):
        self.assertEqual(self.run_and_report(HOUSE)["place"], "Seattle")

    def test_paths_by_hand(self):
        data = self.run_and_report(HOUSE)
        labels = {node["id"]: node["label"] for node in data["paths"]["nodes"]}
        links = {(labels[link["from"]], labels[link["to"]]): link["litres"] for link in data["paths"]["links"]}
        flows = {name[:-4]: math.fsum(values) for name, values in self.columns("flows.csv").items()}
        # What the tank lacks comes from the mains beside it, to toilet and garden in the shares of what they ask for.
        lacking = flows["tank:deficit"] / (flows["toilet:demand"] + flows["garden:demand"])
        without_tank = sum(flows[name + ":demand"] for name in ("shower", "bath", "taps", "dishwasher", "washing_machine"))
        expected = {("Mains", "house"): without_tank + lacking * flows["toilet:demand"],
                    ("Mains", "garden"): lacking * flows["garden:demand"],
                    ("tank", "house"): (1 - lacking) * flows["toilet:demand"],
                    ("tank", "garden"): (1 - lacking) * flows["garden:demand"],
                    ("tank", "sewer"): flows["tank:overflow"],
                    ("house", "sewer"): flows["drain:outflow"] - flows["tank:overflow"],
                    ("garden", "Infiltrated"): flows["garden:demand"],
                    ("Rain on roof", "tank"): flows["roof:runoff"]}
        for ends, litres in expected.items():
            self.assertAlmostEqual(links[ends], litres, delta=1e-5 * litres, msg=ends)
        self.assertEqual(set(links) - set(expected), {("tank", "Stored"), ("Rain on roof", "Evaporated")})

    def test_reused_water_makes_no_loop(self):
        data = self.run_and_report(EXAMPLES / "town" / "model.toml")
        nodes = {node["id"]: node for node in data["paths"]["nodes"]}
        waiting = {name: sum(link["to"] == name for link in data["paths"]["links"]) for name in nodes}
        free = [name for name, count in waiting.items() if count == 0]
        for name in free:
            for link in data["paths"]["links"]:
                if link["from"] == name:
                    waiting[link["to"]] -= 1
                    free += [link["to"]] * (waiting[link["to"]] == 0)
        self.assertEqual(len(free), len(nodes))
        again = [node["litres"] for node in nodes.values() if node["label"] in ("Used again", "Reused water")]
        self.assertEqual(len(again), 2)
        self.assertAlmostEqual(again[0], again[1], delta=1e-6 * again[0])

    def test_both_formats_say_the_same(self):
        for options in (), ("--record", "none"), ("--record", "tank,roof:runoff"), ("--balance",):
            with self.subTest(options):
                pages = [self.run_and_report(HOUSE, *options, "--format", form) for form in ("csv", "netcdf")]
                self.assertEqual(pages[0], pages[1])

    def test_what_is_not_recorded_is_left_out(self):
        data = self.run_and_report(HOUSE, "--record", "none")
        self.assertNotIn("use", self.cards(data))
        self.assertEqual(self.cards(data)["reliability"]["value"], 100 * float(
            self.figures()["tank.reliability_volume"]["value"]))
        ends = {node["label"]: node["litres"] for node in data["paths"]["nodes"]}
        self.assertAlmostEqual(ends["Mains"], float(self.figures()["network.mains"]["value"]), delta=1)
        self.assertIn("the network", ends)
        self.assertNotIn("months", data)
        self.assertEqual({series["name"] for series in data["series"]["list"] if series["quantity"] == "flow"},
                         {"sewer"})
        data = self.run_and_report(HOUSE, "--record", "tank")
        self.assertIn("tank:overflow", {series["name"] for series in data["series"]["list"]})

    def test_short_runs(self):
        for first, last, whole, months in (("2012-02-29", "2012-02-29", [False], 1),
                                           ("2012-02-01", "2012-02-29", [False], 1),
                                           ("2012-12-31", "2014-01-01", [False, True, False], 14)):
            with self.subTest(first):
                data = self.run_and_report(HOUSE, "--from", first, "--to", last)
                self.assertEqual(data["years"]["whole"], whole)
                self.assertEqual(data["months"]["whole"], [first.endswith("01")] + [True] * (months - 2) +
                                 [last != "2014-01-01"] * (months > 1))
                self.assertEqual(len(data["months"]["series"][0]["values"]), months)
                self.assertEqual(len(unpacked(data["series"]["list"][0]["months"])), months)

    # A quality is known on days on which water flowed.
    def test_means_of_months_know_their_days(self):
        data = self.run_and_report(EXAMPLES / "office-greywater" / "model.toml")
        shown = {series["name"]: series for series in data["series"]["list"]}
        self.assertNotIn("month_days", shown["tank:storage"])
        overflow = shown["plant:overflow:quality"]
        known = [not math.isnan(value) for value in unpacked(overflow["days"])]
        self.assertEqual(overflow["month_days"][:2], [sum(known[:31]), sum(known[31:59])])
        self.assertTrue(0 < overflow["month_days"][0] < 31)

    def test_longer_steps_are_no_days(self):
        text = HOUSE.read_text().replace("[simulation]", "[simulation]\ntime_step = 2")
        (self.folder / "weather.csv").write_bytes((HOUSE.parent / "weather.csv").read_bytes())
        data = self.run_and_report(self.model(text))
        cards = self.cards(data)
        self.assertEqual(cards["use"]["unit"], "L per person and step")
        self.assertIn("of the steps with a demand", cards["reliability"]["note"])
        self.assertEqual(cards["shortage"]["unit"], "steps")
        self.assertNotIn("year", "".join(card.get("note", "") for card in cards.values()))
        self.assertEqual(data["years"]["rows"][-1]["label"], "Steps on which tank fell short")

    def test_the_largest_stores(self):
        data = self.run_and_report(self.model(street(600, "2012-02-10")))
        sizes = [store["capacity"] for store in data["stores"]["list"]]
        self.assertEqual(sizes, [300 + n for n in range(599, 587, -1)])
        self.assertEqual(data["stores"]["more"], 588)

    def test_a_currency_with_a_slash(self):
        office = EXAMPLES / "office-greywater"
        for file in office.glob("*.csv"):
            (self.folder / file.name).write_bytes(file.read_bytes())
        text = (office / "model.toml").read_text()
        self.assertIn('currency = "EUR"', text)
        data = self.run_and_report(self.model(re.sub(r"\bEUR\b", "</i>", text)))
        self.assertEqual(self.cards(data)["cost"]["unit"], "</i>/m³")
        self.assertEqual(self.cards(data)["cost"]["note"], "2,476.24 </i> a year")

    def test_a_run_that_failed(self):
        folder = pathlib.Path(__file__).parent / "failing"
        self.kesto("run", folder / "infeasible.toml", "-q", "-o", self.out, status=1)
        data = self.report()
        self.assertEqual(data["outcome"], "failed")
        self.assertLess(data["steps_run"], data["steps"])
        self.assertTrue(data["message"])

    def test_results_of_an_earlier_version(self):
        self.kesto("run", HOUSE, "-q", "-o", self.out)
        summary = json.loads((self.out / "summary.json").read_text())
        summary["files"] = [file for file in summary["files"] if file["file"] != "overview.json"]
        (self.out / "summary.json").write_text(json.dumps(summary))
        data = self.report()
        self.assertNotIn("paths", data)
        self.assertIn("shortage", self.cards(data))
        self.assertGreater(len(data["series"]["list"]), 20)

    def test_series_that_are_asked_for(self):
        self.kesto("run", HOUSE, "-q", "-o", self.out)

        def shown(*options):
            series = self.report(*options)["series"]
            return {one["name"] for one in series["list"] if "days" in one}, series.get("omitted", 0)

        names, omitted = shown("--series", "tank,roof:runoff,garden:infiltration")
        self.assertEqual(names, {"tank:deficit", "tank:overflow", "tank:storage", "tank:overflow:quality", "roof:runoff",
                                 "roof:runoff:quality", "garden:infiltration"})
        self.assertEqual(omitted, 32 - 5)
        self.assertGreater(len(shown("--series", "all")[0]), 32)
        wrong = self.kesto("report", self.out, "-o", self.folder / "page.html", "--series", "cistern", status=1)
        self.assertIn("--series cistern: the results hold no series of this name", wrong.stderr)

    def test_no_path_of_the_machine(self):
        self.kesto("run", HOUSE, "-q", "-o", self.out)
        self.report()
        self.assertNotIn(str(EXAMPLES), (self.folder / "page.html").read_text())
        self.assertNotIn(str(self.folder), (self.folder / "page.html").read_text())

    def test_hostile_names(self):
        names = ["</script><img src=x onerror=alert(1)>", "it's <b>", "{{data}}", "näme ☂", "a -> b [x]"]
        text = street(len(names), "2012-02-10")
        for n, name in enumerate(names):
            for old in f'"tank{n}"', f'"tank{n}:':
                text = text.replace(old, old.replace(f"tank{n}", name))
        data = self.run_and_report(self.model(text))
        page = (self.folder / "page.html").read_text()
        self.assertNotIn("<img", page)
        self.assertEqual([component[0] for component in data["network"]["components"]][4::5], names)
        shown = {series["name"] for series in data["series"]["list"]}
        for name in names:
            self.assertIn(name + ":storage", shown)
        netcdf = self.run_and_report(self.model(text), "--format", "netcdf")
        self.assertEqual(data, netcdf)

    def test_a_large_network_makes_a_page_like_any_other(self):
        text = street(2000, "2012-12-31")
        for form in "csv", "netcdf":
            with self.subTest(form):
                data = self.run_and_report(self.model(text), "--format", form)
                self.assertLess((self.folder / "page.html").stat().st_size, LARGEST_PAGE)
                self.assertEqual(len([1 for series in data["series"]["list"] if "days" in series]), 50)
                self.assertLessEqual(len(data["stores"]["list"]), 12)
                shown = [one for one in data["series"]["list"] if "days" in one and "quality" not in one["quantity"]]
                self.assertEqual(data["series"]["omitted"], self.series_in_files() - len(shown))
                self.assertEqual(len(data["network"]["components"]), 10002)
                links = struct.unpack(f"<{3 * 12001}i", base64.b64decode(data["network"]["packed_links"]))
                self.assertLessEqual(len(data["network"]["details"]), 100)
                tank = [int(number) for number in data["network"]["details"] if int(number) % 5 == 4][0]
                values = dict(data["network"]["details"][str(tank)]["values"])
                self.assertEqual(values["size"], f"{300 + (tank - 4) // 5} L")
                self.assertEqual(links[:6], (0, 1, 1 + 4 * 1, 2, 4, 2 + 4 * 2 + 16))
                self.assertLessEqual(len(data["figures"]) + len(data["account"]) + len(data["potentials"]), 900)
                if os.name != "nt":
                    self.assertLess(self.peak_of_report(), LARGEST_MEMORY)

    def series_in_files(self):
        summary = json.loads((self.out / "summary.json").read_text())
        return len(summary["flows"]) + len(summary["potentials"]) + 2000  # with what tanks hold

    def test_a_century_makes_a_page_like_any_other(self):
        text = HOUSE.read_text().replace("2015-12-31", "2111-12-31")
        text = re.sub(r'rainfall = \{ column.*', "", text).replace("[groups.roof]\n", "[groups.roof]\nrainfall = 2\n")
        text = re.sub(r'\[series\]\nfile = .*\ntime = .*\n', "", text)
        data = self.run_and_report(self.model(text))
        self.assertLess((self.folder / "page.html").stat().st_size, LARGEST_PAGE)
        with_days = [series for series in data["series"]["list"] if "days" in series]
        self.assertGreater(len(with_days), 5)
        self.assertLess(len(with_days), len(data["series"]["list"]))

    # In a process of its own, whose largest child is the one that reads.
    def peak_of_report(self):
        code = ("import resource, subprocess, sys; subprocess.run(sys.argv[1:], check=True); "
                "print(resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss)")
        done = subprocess.run([sys.executable, "-c", code, KESTO, "report", str(self.out), "-o",
                               str(self.folder / "page.html")], capture_output=True, text=True, check=True)
        return int(done.stdout.split()[-1])


if __name__ == "__main__":
    unittest.main()
