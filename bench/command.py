#!/usr/bin/env python3
"""command.py KESTO [--large | --sweeps]: what whole runs of the command cost, as the tables of docs/performance.md.

Times are of the processors, over all processes of a run, and the least of several in turns. The engine's time is what the
run itself says of it (`costs` of --json). The model of houses is written here; --large adds ten times as many. --sweeps times
sweeps instead, by processor and by clock.
"""

import json
import os
import random
import shutil
import subprocess
import sys
import tempfile
import time
from datetime import date, timedelta
from pathlib import Path

EXAMPLES = (Path(__file__).parent.parent / "examples").resolve()
HOUSE_MODEL, TOWN_MODEL = EXAMPLES / "rainwater-house/model.toml", EXAMPLES / "town/model.toml"
START, DAYS = date(2000, 1, 1), 3650
REPETITIONS = 5

HOUSE = """
[[components]]\nname = "wc{i}"\ntype = "appliance"\nkind = 1\nbrand = "toilet"\ngroup = "h{i}"
[[components]]\nname = "shower{i}"\ntype = "appliance"\nkind = 2\nbrand = "shower"\ngroup = "h{i}"
[[components]]\nname = "roof{i}"\ntype = "impervious_surface"\nbrand = "roof"\nsize = {roof}\ngroup = "h{i}"
[[components]]\nname = "tank{i}"\ntype = "tank"\nsize = {tank}\ninitial_storage = 100\ngroup = "h{i}"
[[components]]\nname = "mains{i}"\ntype = "junction"
[[components]]\nname = "drain{i}"\ntype = "mixer"
[[components]]\nname = "sewer{i}"\ntype = "sewer_link"\nbrand = "sewer"\ngroup = "h{i}"
[[components]]\nname = "end{i}"\ntype = "water_body"
[[components]]\nname = "meter{i}"\ntype = "junction"
[[components]]\nname = "log{i}"\ntype = "logger"
"""
GROUP = """
[groups.h{i}]\noccupancy = {people}\nuses = [5, 0.6, 0, 0, 0, 0, 0, 0, 0, 0, 0]
demand_fluctuation = {{ weekly = [1, 1.05, 0.9, 1, 1.1, 0.95, {sunday}] }}
"""
BRANDS = """
[brands.toilet]\nvolume_per_use = 6
[brands.shower]\nvolume_per_use = 50
[brands.roof]\nevaporation_fraction = 0.1
[brands.sewer]\nloss_fraction = 0.05
"""
PIPES = [("wc{i}:demand", "tank{i}:demand"), ("roof{i}", "tank{i}:inflow"), ("tank{i}:deficit", "mains{i}"),
         ("shower{i}:demand", "mains{i}"), ("mains{i}", "meter{i}"), ("meter{i}", "log{i}"),
         ("tank{i}:overflow", "drain{i}"), ("wc{i}:wastewater", "drain{i}"), ("shower{i}:wastewater", "drain{i}"),
         ("drain{i}", "sewer{i}"), ("sewer{i}", "end{i}")]


def write_houses(folder, houses):
    """A model of so many houses of ten components, with made-up rain on a fifth of the days."""
    dice = random.Random(1)
    days = [START + timedelta(days=day) for day in range(DAYS)]
    rain = (f"{day},{dice.uniform(0.1, 40) if dice.random() < 0.2 else 0:.1f}\n" for day in days)
    (folder / "weather.csv").write_text("date,rain_mm\n" + "".join(rain))
    text = [f'kesto_model = 1\n[simulation]\nstart = {days[0]}\nend = {days[-1]}\n',
            '[series]\nfile = "weather.csv"\nrainfall = "rain_mm"\n', BRANDS]
    text += [GROUP.format(i=i, people=1 + i % 5, sunday=1 + i % 97 / 1000) for i in range(houses)]
    text += [HOUSE.format(i=i, roof=40 + i % 80, tank=500 + 50 * (i % 60)) for i in range(houses)]
    text += [f'[[connections]]\nfrom = "{sender}"\nto = "{receiver}"\n'.format(i=i)
             for i in range(houses) for sender, receiver in PIPES]
    path = folder / f"houses{houses}.toml"
    path.write_text("".join(text))
    return path


class Row:
    """A command line, and the least that it has taken."""

    def __init__(self, title, *arguments, times=1):
        self.title, self.arguments, self.times = title, [str(argument) for argument in arguments], times
        self.seconds = self.engine = self.peak = float("inf")

    def measure(self, kesto, folder):
        with open(folder / "told", "w+") as told:
            before = os.times()
            for _ in range(self.times):
                run = subprocess.Popen([kesto, *self.arguments], stdout=told, cwd=folder)
                _, status, used = os.wait4(run.pid, 0)
                run.returncode = os.waitstatus_to_exitcode(status)
                if run.returncode != 0:
                    raise subprocess.CalledProcessError(run.returncode, run.args)
            after = os.times()
            seconds = after.children_user + after.children_system - before.children_user - before.children_system
            self.seconds = min(self.seconds, seconds / self.times)
            if "report" in self.arguments:
                self.peak = min(self.peak, 1024 * used.ru_maxrss)
            if "--json" not in self.arguments:
                return
            told.seek(0)
            costs = json.JSONDecoder().raw_decode(told.read())[0]["costs"]
        self.engine = min(self.engine, costs["engine_seconds"])
        self.peak = min(self.peak, costs["peak_bytes"])

    def text(self):
        cells = [self.title, f"{self.seconds:.2f} s" if self.seconds > 0.1 else f"{1000 * self.seconds:.1f} ms"]
        if self.engine < float("inf"):
            cells += [f"{self.seconds / self.engine:.1f}", f"{self.peak / 1e6:.0f} MB"]
        else:
            cells += ["", f"{self.peak / 1e6:.0f} MB" if self.peak < float("inf") else ""]
        return "| " + " | ".join(cells) + " |"


def rows_of(model, what):
    run = ("run", "--json", model)
    return [Row(f"{what}, nothing recorded", *run, "--record", "none"),
            Row(f"{what}, all recorded", *run),
            Row(f"{what}, CSV", *run, "-o", "csv"),
            Row(f"{what}, NetCDF", *run, "-o", "netcdf", "--format", "netcdf"),
            Row(f"{what}, NetCDF, not compressed", *run, "-o", "plain", "--format", "netcdf", "--compress", "0"),
            Row(f"{what}, page of CSV", "report", "csv", "-o", "csv.html"),
            Row(f"{what}, page of NetCDF", "report", "netcdf", "-o", "netcdf.html")]


class Sweep:
    """A sweep over the size of a tank, and the least that it has taken."""

    def __init__(self, title, model, tank, members, jobs, *options):
        self.title, self.members, self.jobs = title, members, jobs
        self.arguments = ["sweep", str(model), "--vary", f"{tank}.size=500:8000:{members}", "--jobs", str(jobs), *options]
        self.seconds = self.passed = float("inf")

    def measure(self, kesto, folder):
        output = folder / "members"
        shutil.rmtree(output, ignore_errors=True)
        before, begin = os.times(), time.monotonic()
        subprocess.run([kesto, *self.arguments, "-o", output], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                       check=True)
        after, self.passed = os.times(), min(self.passed, time.monotonic() - begin)
        seconds = after.children_user + after.children_system - before.children_user - before.children_system
        self.seconds = min(self.seconds, seconds)

    def text(self):
        return (f"| {self.title} | {self.members} | {self.jobs} | {1000 * self.seconds / self.members:.2f} | "
                f"{self.passed:.1f} | {self.members / self.passed:.0f} |")


def sweeps():
    with tempfile.TemporaryDirectory() as name:
        rows = [Sweep("house, nothing recorded", HOUSE_MODEL, "tank", 2000, 1),
                Sweep("house, nothing recorded", HOUSE_MODEL, "tank", 2000, 2),
                Sweep("house, one flow recorded", HOUSE_MODEL, "tank", 10000, 2, "--record", "tank:overflow"),
                Sweep("town, nothing recorded", TOWN_MODEL, "greytank_park", 200, 1),
                Sweep("town, nothing recorded", TOWN_MODEL, "greytank_park", 200, 2)]
        for _ in range(3):
            for row in rows:
                row.measure(str(Path(sys.argv[1]).resolve()), Path(name))
        print("| sweep | members | jobs | CPU, ms a member | s | members a second |\n|---|---:|---:|---:|---:|---:|")
        for row in rows:
            print(row.text())


def main():
    if "--sweeps" in sys.argv:
        return sweeps()
    kesto = str(Path(sys.argv[1]).resolve())
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        rows = [Row("`--version`", "--version", times=20),
                Row("rainwater house, nothing recorded", "run", "--json", HOUSE_MODEL, "--record", "none", times=20),
                *rows_of(write_houses(folder, 1000), "10,000 components")]
        repeated = [(row, REPETITIONS) for row in rows]
        if "--large" in sys.argv:
            repeated += [(row, 1) for row in rows_of(write_houses(folder, 10000), "100,000 components")]
        for turn in range(REPETITIONS):
            for row, times in repeated:
                if turn < times:
                    row.measure(kesto, folder)
        print("| run | processor time | of the engine's | peak memory |\n|---|---:|---:|---:|")
        for row, _ in repeated:
            print(row.text())


if __name__ == "__main__":
    main()
