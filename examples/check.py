#!/usr/bin/env python3
"""Runs an example and compares what it gives with the figures that its README quotes.

    ./check.py --kesto COMMAND --results FOLDER EXAMPLE...

EXAMPLE is a folder with a model.toml, a README.md and a figures.toml. Each figure there has a text, `expect`, and an
expression, `of`, over the results. The value is rounded to as many decimals as the text has and must then be that very
text; and the text must stand in the README, so that no figure is quoted that nobody checks against the run. Where a
figure names one of the `variants`, the run is that of the model with a `scenario` and the values `set`, or with one text, `old`,
replaced by another, `new`. `definitions` give names to expressions. The `balances` are expressions that must be zero `within` a limit,
or but for the rounding of what passed, `against`.
"""
import argparse
import csv
import datetime
import math
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tomllib


# Three units in the last place of single precision, in which the engine counts.
ROUNDING = 2e-7


def columns_of(path):
    """Columns by their names without the unit in brackets; the first column holds the dates."""
    with open(path, newline="") as file:
        rows = csv.reader(file)
        names = [name.split(" [")[0] for name in next(rows)]
        cells = list(zip(*rows))
    return dict(zip(names, cells))


def yield_of_tank(inflow, demand, capacity, before_spillage):
    """What a tank that is empty at first gives each day, before or after it spills (Fewkes and Butler 2000)."""
    stored = 0.0
    given = []
    for came, asked in zip(inflow, demand):
        given.append(min(asked, stored + came if before_spillage else stored))
        stored = min(stored + came - given[-1], capacity if before_spillage else capacity - given[-1])
    return given


class Results:
    """What the expressions may use."""

    def __init__(self, example, results):
        self.example = example
        self.results = results
        self.files = {}
        self.dates = [datetime.date.fromisoformat(day) for day in self.file(results / "flows.csv")["date"]]

    def file(self, path):
        if path not in self.files:
            self.files[path] = columns_of(path)
        return self.files[path]

    def numbers(self, path, name):
        cells = self.file(path).get(name)
        if cells is None:
            raise LookupError(f"{path.name} has no column {name!r}")
        numbers = [float(cell) for cell in cells]
        if len(numbers) != len(self.dates):
            raise LookupError(f"{path.name} has {len(numbers)} rows for {len(self.dates)} days")
        return numbers

    def names(self):
        dates = self.dates
        derived = self.file(self.results / "figures.csv")
        figures = dict(zip(derived["figure"], derived["value"]))

        def series(name):
            return lambda column: self.numbers(self.results / name, column)

        def chosen(values, year=None, months=range(1, 13)):
            return [v for v, day in zip(values, dates) if year in (None, day.year) and day.month in months]

        def on(values, weekday):
            """Values of one day of the week, 0 for Monday."""
            return [v for v, day in zip(values, dates) if day.weekday() == weekday]

        def day_of(values, value):
            return dates[values.index(value)].isoformat()

        def longest(values, limit, *when):
            """Most days in a row on which a value stays below the limit."""
            longest = run = 0
            for value in chosen(values, *when):
                run = run + 1 if value < limit else 0
                longest = max(longest, run)
            return longest

        return {
            "flow": series("flows.csv"),
            "quality": series("qualities.csv"),
            "state": series("states.csv"),
            "potential": series("potentials.csv"),
            "figure": lambda name: float(figures[name] or "nan"),  # empty: there is none
            "weather": lambda column: self.numbers(self.example / "weather.csv", column),
            "total": lambda values, *when: math.fsum(chosen(values, *when)),
            "mean": lambda values, *when: math.fsum(chosen(values, *when)) / len(chosen(values, *when)),
            "count": lambda values, *when: sum(1 for v in chosen(values, *when) if v > 0),
            "least": min,
            "greatest": max,
            "last": lambda values: values[-1],
            "day_of": day_of,
            "on": on,
            "longest_below": longest,
            "yield_before_spillage": lambda *tank: yield_of_tank(*tank, before_spillage=True),
            "yield_after_spillage": lambda *tank: yield_of_tank(*tank, before_spillage=False),
            "abs": abs,
            "min": min,
            "max": max,
            "sum": sum,
            "range": range,
            "zip": zip,
            "enumerate": enumerate,
            "days": len(dates),
        }


def text_of(value, expected):
    if isinstance(value, str):
        return value
    decimals = len(expected.partition(".")[2])
    return f"{round(value, decimals) + 0.0:.{decimals}f}"  # adding zero makes -0 a 0


def stands_in(text, readme):
    return re.search(r"(?<![\d.])" + re.escape(text) + r"(?![\d]|\.\d)", readme) is not None


def run(kesto, example, model, results, values=(), scenario=None):
    options = [option for value in values for option in ("--set", value)]
    options += ["--scenario", scenario] if scenario else []
    subprocess.run([kesto, "run", model, "-o", results, *options], check=True, stdout=subprocess.DEVNULL,
                   env=dict(os.environ, TZ="UTC"))
    return Results(example, results).names()


def run_variant(kesto, example, variant, folder):
    if "old" not in variant:
        return run(kesto, example, example / "model.toml", folder, variant.get("set", ()), variant.get("scenario"))
    shutil.rmtree(folder, ignore_errors=True)
    shutil.copytree(example, folder)
    text = (folder / "model.toml").read_text()
    if text.count(variant["old"]) != 1:
        raise LookupError(f"model.toml holds {variant['old']!r} {text.count(variant['old'])} times; expected once")
    (folder / "model.toml").write_text(text.replace(variant["old"], variant["new"]))
    return run(kesto, folder, folder / "model.toml", folder / "results")


def value_of(expression, names):
    return eval(expression, {"__builtins__": {}, **names})


def define(definitions, names):
    for name, expression in definitions.items():
        names[name] = value_of(expression, names)


def check(kesto, example, results):
    # Nothing doubtful that the model does not accept, before the run and after it.
    for command in ("check", "run"):
        subprocess.run([kesto, command, "--strict", example / "model.toml"], check=True, stdout=subprocess.DEVNULL)
    expected = tomllib.loads((example / "figures.toml").read_text())
    readme = (example / "README.md").read_text()
    runs = {None: run(kesto, example, example / "model.toml", results)}
    for number, (name, variant) in enumerate(expected.get("variants", {}).items()):
        runs[name] = run_variant(kesto, example, variant, results / f"variant-{number}")
    for names in runs.values():
        define(expected.get("definitions", {}), names)
    wrong = 0
    for figure in expected["figures"]:
        found = text_of(value_of(figure["of"], runs[figure.get("variant")]), figure["expect"])
        faults = [f"expected {figure['expect']}"] if found != figure["expect"] else []
        faults += [] if stands_in(figure["expect"], readme) else [f"{figure['expect']} does not stand in README.md"]
        print(f"  {'WRONG' if faults else 'ok   '}  {'; '.join([figure['name'] + ': ' + found, *faults])}")
        wrong += bool(faults)
    for balance in expected["balances"]:
        found = value_of(balance["of"], runs[None])
        allowed = balance.get("within") or ROUNDING * value_of(balance["against"], runs[None])
        good = abs(found) <= allowed
        print(f"  {'ok   ' if good else 'WRONG'}  {balance['name']}: {found:.4g}, may be {allowed:.4g}")
        wrong += not good
    return wrong


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--kesto", required=True, type=pathlib.Path, help="the kesto command")
    parser.add_argument("--results", required=True, type=pathlib.Path, help="folder for the results")
    parser.add_argument("examples", nargs="+", type=pathlib.Path, metavar="EXAMPLE")
    options = parser.parse_args()
    wrong = 0
    for example in options.examples:
        print(example.name)
        wrong += check(options.kesto.resolve(), example, options.results / example.name)
    if wrong:
        sys.exit(f"{wrong} figures are wrong")


if __name__ == "__main__":
    main()
