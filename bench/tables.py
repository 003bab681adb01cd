#!/usr/bin/env python3
"""tables.py KESTO_BENCH: runs the benchmarks twice and prints the tables of docs/performance.md.

Where two numbers stand in a cell, they are those of the two runs.
"""

import json
import re
import subprocess
import sys
from pathlib import Path

CODES = Path(__file__).parent.parent / "src/components/type_codes.h"


def run(program):
    """The counters of each benchmark, by its name without what the library adds to it."""
    command = [program, "--benchmark_min_time=0.3", "--benchmark_format=json"]
    out = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True, check=True).stdout
    names = {row["name"]: row for row in json.loads(out)["benchmarks"]}
    return {re.sub("/(iterations|manual_time).*", "", name): row for name, row in names.items()}


def cell(runs, name, column, digits, scale=1.0):
    return " ".join(f"{float(rows[name][column]) * scale:.{digits}f}" for rows in runs)


def table(head, rows):
    print("\n| " + " | ".join(head) + " |\n|---|" + "---:|" * (len(head) - 1))
    for row in rows:
        print("| " + " | ".join(row) + " |")
    print()


def sizes(runs, kind):
    """Network and size of each benchmark of a kind."""
    return [tuple(name.split("/")[1:]) for name in runs[0] if name.startswith(kind + "/")]


def type_names():
    """Names of the types by code, as in a model file."""
    names = {kind: f"appliance {kind}" for kind in range(1, 11)}
    for name, code in re.findall(r"k(\w+) = (\d+);", CODES.read_text()):
        if not name.endswith("Use"):
            names[int(code)] = re.sub("(?<!^)([A-Z])", r"_\1", name).lower()
    return names


def print_tables(runs):
    table(["tanks", "ns per tank and step"],
          [[n[0], cell(runs, f"tankLoop/{n[0]}", "ns", 2)] for n in sizes(runs, "tankLoop")])
    table(["network", "components", "ns per component and step", "tank loops", "with set-up",
           "µs per component before the blocks"],
          [[net, n, cell(runs, f"solve/{net}/{n}", "ns", 1), cell(runs, f"solve/{net}/{n}", "tank_loops", 2),
            cell(runs, f"solve/{net}/{n}", "whole_loops", 2), cell(runs, f"solve/{net}/{n}", "start_ns", 2, 1e-3)]
           for net, n in sizes(runs, "solve")])
    table(["network", "components", "set-up, ms", "ns per component or connection"],
          [[net, n, cell(runs, f"setUp/{net}/{n}", "real_time", 2, 1e-3),
            cell(runs, f"setUp/{net}/{n}", "per_component_or_connection", 0, 1e9)] for net, n in sizes(runs, "setUp")])
    table(["network", "one step of 100 components, µs"],
          [[net, cell(runs, f"oneStep/{net}/{n}", "real_time", 1)] for net, n in sizes(runs, "oneStep")])
    table(["network", "components", "engine's own", "output tables", "host's series and tables"],
          [[net, n] + [cell(runs[:1], f"solve/{net}/{n}", column, 0) for column in ("own_B", "tables_B", "host_B")]
           for net, n in sizes(runs, "solve") if int(n) >= 10000])
    names = type_names()
    costs = sorted((-float(runs[0][f"type/{code[0]}"]["ns"]), code[0]) for code in sizes(runs, "type"))
    table(["type", "component", "ns per component and step", "tank loops"],
          [[code, names[int(code)], cell(runs, f"type/{code}", "ns", 1), cell(runs, f"type/{code}", "tank_loops", 1)]
           for _, code in costs])


if __name__ == "__main__":
    print_tables([run(sys.argv[1]) for _ in range(2)])
