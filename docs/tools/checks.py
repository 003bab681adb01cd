#!/usr/bin/env python3
"""Repeats results of the literature by running the models of docs/checks and a house, and compares the table "checks" of
docs/publications.md with what they give.

  docs/tools/checks.py --kesto build/release/kesto              compares
  docs/tools/checks.py --kesto build/release/kesto --update     rewrites the table; read the difference
"""

import argparse
import os
import pathlib
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
PAGE = ROOT / "docs/publications.md"
TABLE = re.compile(r"(<!-- checks -->\n```csv\n)(.*?)(```\n)", re.DOTALL)

sys.path.insert(0, str(ROOT / "examples"))
from check import columns_of, yield_of_tank  # noqa: E402


def flows(kesto, model, *values):
    """The recorded flows of a run by their names."""
    with tempfile.TemporaryDirectory() as folder:
        options = [option for value in values for option in ("--set", value)]
        subprocess.run([kesto, "run", ROOT / model, "-o", folder, "--quiet", *options], check=True,
                       env=dict(os.environ, TZ="UTC"))
        columns = columns_of(pathlib.Path(folder, "flows.csv"))
    return {name: [float(cell) for cell in cells] for name, cells in columns.items() if name != "date"}


def part_g(kesto):
    total = flows(kesto, "docs/checks/part_g.toml")["total:outflow"][0]
    return [f"Part G: sum of the fittings [L/person/d],111.33,{total:.2f}",
            f"Part G: by regulation [L/person/d],106.31,{0.91 * total + 5:.2f}"]


def sequent_peak(kesto):
    model = "docs/checks/sequent_peak.toml"
    full = sum(flows(kesto, model)["reservoir:deficit"])
    smaller = ("brands.reservoir.storage_capacity=7.49", "reservoir.initial_storage=7.49")
    less = sum(flows(kesto, model, *smaller)["reservoir:deficit"])
    return [f"sequent peak: deficit at a capacity of 7.5,0.00,{full:.2f}",
            f"sequent peak: deficit at a capacity of 7.49,0.01,{less:.2f}"]


def yield_before_spillage(kesto):
    of = flows(kesto, "examples/rainwater-house/model.toml")
    asked = of["rainwater_asked:outflow"]
    by_hand = yield_of_tank(of["roof:runoff"], asked, 1500, before_spillage=True)
    difference = max(abs(a - lacks - given) for a, lacks, given in zip(asked, of["tank:deficit"], by_hand))
    return [f"YBS: largest difference on one of {len(asked)} days [L],0.000,{difference:.3f}"]


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--kesto", required=True, type=pathlib.Path, help="the kesto command")
    parser.add_argument("--update", action="store_true", help="rewrite the table")
    options = parser.parse_args()
    kesto = options.kesto.resolve()
    lines = ["check,by hand,engine", *part_g(kesto), *sequent_peak(kesto), *yield_before_spillage(kesto)]
    figures = "\n".join(lines) + "\n"
    text = PAGE.read_text()
    block = TABLE.search(text)
    if options.update:
        PAGE.write_text(text[:block.start(2)] + figures + text[block.end(2):])
    elif figures != block[2]:
        sys.exit(f"publications.md says\n{block[2]}and the engine gives\n{figures}")
    print(f"{len(lines) - 1} checks")


if __name__ == "__main__":
    main()
