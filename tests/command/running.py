"""What tests of the command share: a folder for each test, `kesto` run in it, and what it has left there.

The first argument of a script that imports this is the command."""

import csv
import json
import pathlib
import subprocess
import sys
import tempfile
import unittest

KESTO = str(pathlib.Path(sys.argv.pop(1)).resolve())

# A tank into which 4 L flow each day, and of which 10 L are asked for.
TANK = """kesto_model = 1
title = "Tank"
[simulation]
start = 2012-01-02
end = 2012-01-05
[groups.house]
[[components]]
name = "rain"
type = "demand_source"
demand = 4
[[components]]
name = "asked"
type = "demand_source"
demand = 10
[[components]]
name = "tank"
type = "tank"
group = "house"
size = 20
initial_storage = 8
[[connections]]
from = "rain"
to = "tank:inflow"
[[connections]]
from = "asked"
to = "tank:demand"
[scenarios.small]
title = "Half the demand"
asked.demand = 5
[scenarios.full]
tank.initial_storage = 20
"""

# More may be asked for than the intake can deliver, and then the run stops.
SCARCE = """kesto_model = 1
[simulation]
start = 2012-01-01
end = 2012-01-05
stop_on_infeasible = true
[brands.intake]
daily_capacity = 10
loss_fraction = 0.1
[[components]]
name = "asked"
type = "demand_source"
demand = 3
[[components]]
name = "intake"
type = "abstraction"
brand = "intake"
[[connections]]
from = "asked"
to = "intake"
"""


class InFolder(unittest.TestCase):
    """`self.folder` is empty at the beginning of each test, and is gone after it."""

    where = None  # a folder of the system's for temporary files

    def setUp(self):
        temporary = tempfile.TemporaryDirectory(dir=self.where)
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name)

    def write(self, text, name="model.toml"):
        (self.folder / name).write_text(text)

    def kesto(self, *arguments, before=(), **options):
        """`before` stands before the command, as strace does."""
        options = {"cwd": self.folder, "capture_output": True, "text": True, "timeout": 300, **options}
        return subprocess.run([*before, KESTO, *map(str, arguments)], **options)

    def csv_rows(self, path):
        """Of a CSV file, by the names of its columns."""
        with open(self.folder / path, newline="") as file:
            return list(csv.DictReader(file))

    def json_in(self, path):
        return json.loads((self.folder / path).read_text())
