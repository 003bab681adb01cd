#!/usr/bin/env python3
"""The JSON Schema that `kesto schema` prints agrees with the command: all models of the examples, of the pages and of the
tests that the command takes are valid, and broken ones are not.

usage: check_schema.py KESTO SOURCES"""

import copy
import datetime
import json
import pathlib
import re
import subprocess
import sys
import tempfile
import tomllib
import unittest

import jsonschema

KESTO = str(pathlib.Path(sys.argv.pop(1)).resolve())
SOURCES = pathlib.Path(sys.argv.pop(1)).resolve()


def as_json(value):
    """What TOML has and JSON has not: dates."""
    if isinstance(value, dict):
        return {key: as_json(item) for key, item in value.items()}
    if isinstance(value, list):
        return [as_json(item) for item in value]
    return value.isoformat() if isinstance(value, (datetime.date, datetime.time)) else value


def kesto(*arguments):
    return subprocess.run([KESTO, *map(str, arguments)], capture_output=True, text=True, timeout=60)


SCHEMA = json.loads(kesto("schema").stdout)
VALIDATOR = jsonschema.Draft202012Validator(SCHEMA)


def faults(model):
    return [f"{'/'.join(map(str, error.absolute_path))}: {error.message[:200]}"
            for error in VALIDATOR.iter_errors(as_json(model))]


def models_below(*folders):
    for folder in folders:
        for path in sorted((SOURCES / folder).rglob("*.toml")):
            if "kesto_model" in path.read_text():
                yield path


MODEL = """kesto_model = 1
accept = ["no-output asked", "unused-brand"]
[simulation]
start = 2012-01-01
end = 2012-01-05
latitude = 47.6
[series]
file = "weather.csv"
time = "date"
rainfall = { column = "rain", unit = "in", for = ["house"] }
[groups.house]
occupancy = 2.46
uses = { 1 = 5.0, 4 = "2 1/week" }
temperature = { monthly = [1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12], unit = "degF" }
[brands.roof]
evaporation_fraction = "10 %"
[[components]]
name = "roof"
type = "impervious_surface"
group = "house"
brand = "roof"
size = "0.01 ha"
[[components]]
name = "tank"
type = "TN"
size = 1
initial_storage = "1 m3"
[[components]]
name = "asked"
type = 45
demand = { weekly = [1, 1, 1, 1, 1, 2, 2] }
[[components]]
name = "wc"
type = "appliance"
kind = 1
group = "house"
brand = "roof"
[[components]]
name = "split"
type = "splitter"
size = 50
splits = [{ members = ["tank"], beta = 0.5 }]
[[connections]]
from = "roof"
to = "tank:inflow"
"""


class Schema(unittest.TestCase):
    def test_is_a_schema(self):
        jsonschema.Draft202012Validator.check_schema(SCHEMA)

    def test_takes_the_models_there_are(self):
        paths = list(models_below("examples", "docs", "tests/command/doubtful", "tests/command/failing"))
        self.assertGreater(len(paths), 20)
        for path in paths:
            self.assertEqual(faults(tomllib.loads(path.read_text())), [], path)

    def test_takes_the_new_model(self):
        with tempfile.TemporaryDirectory() as folder:
            self.assertEqual(kesto("new", folder).returncode, 0)
            self.assertEqual(faults(tomllib.loads((pathlib.Path(folder) / "model.toml").read_text())), [])

    def test_refuses_what_is_broken(self):
        for name in ("missing", "names", "top", "series"):
            text = (SOURCES / f"tests/command/broken/{name}.toml").read_text()
            self.assertNotEqual(faults(tomllib.loads(text)), [], name)

    def broken(self, change, where):
        model = copy.deepcopy(self.model)
        change(model)
        found = faults(model)
        self.assertTrue(found, where)
        for fault in found:
            self.assertTrue(fault.startswith(where), f"{fault} is not at {where}")

    def test_each_fault_is_found_where_it_is(self):
        self.model = tomllib.loads(MODEL)
        self.assertEqual(faults(self.model), [])

        def put(*path, value):
            def change(model):
                for key in path[:-1]:
                    model = model[key]
                model[path[-1]] = value
            return change

        def remove(*path):
            def change(model):
                for key in path[:-1]:
                    model = model[key]
                del model[path[-1]]
            return change

        self.broken(remove("kesto_model"), ":")
        self.broken(put("kesto_model", value=2), "kesto_model")
        self.broken(put("colour", value="blue"), ":")
        self.broken(put("accept", 1, value="frots"), "accept/1")
        self.broken(remove("simulation", "end"), "simulation")
        self.broken(put("simulation", "start", value="yesterday"), "simulation/start")
        self.broken(put("simulation", "latitude", value=91), "simulation/latitude")
        self.broken(put("simulation", "time_step", value=0), "simulation/time_step")
        self.broken(put("series", "rainfall", "unit", value="knots"), "series/rainfall")
        self.broken(put("series", "rainfall", "value", value=3), "series/rainfall")
        self.broken(put("groups", "house", "uses", "12", value=1), "groups/house/uses")
        self.broken(put("groups", "house", "uses", value=[1, 2]), "groups/house/uses")
        self.broken(put("groups", "house", "occupancy", value=True), "groups/house/occupancy")
        self.broken(put("groups", "house", "temperature", "monthly", value=[1]), "groups/house/temperature")
        self.broken(put("brands", "roof", "evaporation", value=1), "brands/roof")
        self.broken(put("brands", "roof", "evaporation_fraction", value="10 mm"), "brands/roof/evaporation_fraction")
        self.broken(put("components", 0, "type", value="imperious_surface"), "components/0/type")
        self.broken(put("components", 0, "size", value="3 L"), "components/0/size")
        self.broken(put("components", 0, "name", value="a:b"), "components/0/name")
        self.broken(put("components", 0, "splits", value=[]), "components/0")
        self.broken(put("components", 0, "id", value=0), "components/0/id")
        self.broken(remove("components", 0, "group"), "components/0")
        self.broken(remove("components", 0, "brand"), "components/0")
        self.broken(remove("components", 1, "size"), "components/1")
        self.broken(put("components", 1, "initial_storge", value=1), "components/1")
        self.broken(put("components", 2, "kind", value=1), "components/2")
        self.broken(remove("components", 3, "kind"), "components/3")
        self.broken(remove("components", 4, "splits", 0, "beta"), "components/4/splits/0")
        self.broken(remove("connections", 0, "to"), "connections/0")

    def test_names_each_type(self):
        names = [line.split()[0] for line in kesto("types").stdout.splitlines()]
        self.assertGreater(len(names), 40)
        offered = SCHEMA["$defs"]["component"]["properties"]["type"]["enum"]
        for name in names:
            self.assertIn(name, offered)
            self.assertIn(name, SCHEMA["$defs"])
        for reference in re.findall(r'"#/\$defs/([^"]+)"', json.dumps(SCHEMA)):
            self.assertIn(reference, SCHEMA["$defs"])


unittest.main()
