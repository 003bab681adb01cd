#!/usr/bin/env python3
"""Holds results.nc against the CSV files of the same run: the same bits, true dates, the attributes of the run.

usage: check_netcdf.py KESTO EXAMPLES

Runs in the system's own Python, whose package python3-xarray reads the file as its users do."""

import csv
import hashlib
import pathlib
import subprocess
import sys
import unittest

import numpy
import xarray

from running import InFolder, KESTO

EXAMPLES = pathlib.Path(sys.argv.pop(1))

CLIMATE = """kesto_model = 1
title = "Far from the record's years"
[simulation]
start = 2095-02-27
end = 2095-03-02
[brands.meadow]
storage_depth = 2
evaporation_rate = 0.1
infiltration_rate = 0.1
water_quality = 7
[groups.field]
rainfall = { weekly = [3, 5, 0.1, 7.7e-3, 9, 1, 2] }
[[components]]
name = "meadow"
type = "pervious_surface"
group = "field"
brand = "meadow"
size = 3
[[components]]
name = "asked"
type = "demand_source"
demand = 0.7
"""

STOPPING = """kesto_model = 1
[simulation]
start = 2012-01-01
end = 2012-01-10
stop_on_infeasible = true
[brands.intake]
daily_capacity = 3
loss_fraction = 0
[groups.river]
[[components]]
name = "asked"
type = "demand_source"
demand = { weekly = [1, 1, 1, 9, 1, 1, 1] }
[[components]]
name = "intake"
type = "abstraction"
group = "river"
brand = "intake"
[[connections]]
from = "asked"
to = "intake"
"""

# Variable of the file, its list of names, and the end of the column's name in the CSV files.
STATES = (("storage", "store", ":storage [L]"), ("storage_depth", "depth_store", ":storage [mm]"),
          ("stored_quality", "quality_store", ":quality"))


def bits(values):
    return numpy.asarray(values, dtype=numpy.float32).view(numpy.uint32).tolist()


class Netcdf(InFolder):
    def run_model(self, model, status=0, *options):
        for form in ("csv", "netcdf"):
            done = subprocess.run([KESTO, "run", str(model), "-q", "-o", str(self.folder / form), "--format", form,
                                   *options], capture_output=True, text=True, timeout=120)
            self.assertEqual(done.returncode, status, done.stderr)
        data = xarray.open_dataset(self.folder / "netcdf" / "results.nc", mask_and_scale=False)
        self.addCleanup(data.close)
        return data

    def columns(self, name):
        path = self.folder / "csv" / name
        if not path.exists():
            return {}
        with open(path, newline="") as file:
            rows = list(csv.reader(file))
        return {head: [row[i] for row in rows[1:]] for i, head in enumerate(rows[0])}

    def check_same(self, data):
        """Every column of the CSV files is in the NetCDF file with the same bits; returns how many there were."""
        seen = 0
        names = {variable: [str(name) for name in data[variable].values] for variable in data.variables
                 if str(variable).endswith("_name")}
        for head, texts in self.columns("flows.csv").items():
            if head == "date":
                days = [str(day)[:10] for day in data["time"].values]
                self.assertEqual(days, texts)
                continue
            name, unit = head.rsplit(" ", 1)
            variable, listed = ("quantity", "flow") if unit == "[L]" else ("depth", "depth_flow")
            row = data[variable][names[listed + "_name"].index(name)]
            self.assertEqual(bits(row), bits(texts), head)
            self.assertEqual(f"[{row.attrs['units']}]", unit)
            seen += 1
        qualities = self.columns("qualities.csv")
        for variable, listed in (("quality", "flow"), ("depth_quality", "depth_flow")):
            for i, name in enumerate(names.get(listed + "_name", [])):
                texts = qualities.get(f"{name} [quality]")
                expected = bits(texts) if texts else bits([-1] * data.sizes["time"])
                self.assertEqual(bits(data[variable][i]), expected, name)
                seen += 1
        states = self.columns("states.csv")
        for variable, listed, end in STATES:
            for i, name in enumerate(names.get(listed + "_name", [])):
                self.assertEqual(bits(data[variable][i]), bits(states.pop(name + end)), name)
                seen += 1
        self.assertIn(list(states), ([], ["date"]))
        for head, texts in self.columns("potentials.csv").items():
            if head == "date":
                continue
            name, unit = head.rsplit(" ", 1)
            group, potential = name.rsplit(":", 1)
            variable = data[potential + ("_depth" if unit == "[mm]" else "")]
            self.assertEqual(bits(variable[names["group_name"].index(group)]), bits(texts), head)
            self.assertEqual(variable.attrs["units"], "1" if unit == "[cost]" else unit.strip("[]"))
            seen += 1
        return seen

    def test_the_examples(self):
        for example in ("rainwater-house", "town"):
            with self.subTest(example):
                self.folder = self.folder / example
                model = EXAMPLES / example / "model.toml"
                data = self.run_model(model)
                self.assertGreater(self.check_same(data), 40)
                self.assertEqual(data.attrs["featureType"], "timeSeries")
                self.assertEqual(data.attrs["model_sha256"], hashlib.sha256(model.read_bytes()).hexdigest())
                self.assertEqual(data.attrs["outcome"], "finished")
                self.assertEqual(data.attrs["steps_run"], data.sizes["time"])
                self.assertNotIn("stopped_at_step", data.attrs)
                roles = [name for name in data.variables if data[name].attrs.get("cf_role") == "timeseries_id"]
                self.assertEqual(len(roles), 1)

    def test_compression_changes_no_value(self):
        model = EXAMPLES / "rainwater-house" / "model.toml"
        files = []
        for level in "0", "1", "9":
            folder = self.folder / level
            subprocess.run([KESTO, "run", model, "-q", "--format", "netcdf", "--compress", level, "-o", folder], check=True)
            files.append(folder / "results.nc")
        self.assertGreater(files[0].stat().st_size, 2 * files[1].stat().st_size)
        self.assertGreater(files[1].stat().st_size, files[2].stat().st_size)
        first = xarray.open_dataset(files[0])
        for file in files[1:]:
            self.assertTrue(first.equals(xarray.open_dataset(file)))
        wrong = subprocess.run([KESTO, "run", model, "--compress", "10"], capture_output=True, text=True)
        self.assertEqual(wrong.returncode, 2)

    def test_dates_beyond_the_record_are_the_true_ones(self):
        model = self.folder / "climate.toml"
        model.write_text(CLIMATE)
        data = self.run_model(model, 0, "--set", "meadow.size=4")
        self.assertEqual(self.check_same(data), 7)
        self.assertEqual(str(data["time"].values[-1])[:10], "2095-03-02")
        self.assertIn("--set meadow.size=4", data.attrs["history"])

    def test_absent_qualities_are_masked_for_those_who_ask(self):
        model = self.folder / "climate.toml"
        model.write_text(CLIMATE)
        self.run_model(model).close()
        with xarray.open_dataset(self.folder / "netcdf" / "results.nc") as data:
            named = data.set_index(flow="flow_name")
            self.assertTrue(numpy.isnan(named["quality"].sel(flow="asked:demand")).all())
            self.assertTrue((named["quality"].sel(flow="meadow:runoff") == 7).all())

    def test_a_stopped_run_says_where(self):
        model = self.folder / "stopping.toml"
        model.write_text(STOPPING)
        data = self.run_model(model, 1)
        self.check_same(data)
        self.assertEqual((data.attrs["outcome"], data.attrs["steps_planned"]), ("failed", 10))
        self.assertEqual((data.attrs["steps_run"], data.sizes["time"]), (4, 4))
        self.assertEqual((data.attrs["stopped_at_step"], data.attrs["stopped_on"]), (5, "2012-01-05"))
        self.assertIn("intake", data.attrs["message"])
        for form in ("csv", "netcdf"):
            stopped = (self.folder / form / "STOPPED.txt").read_text()
            self.assertIn("on 2012-01-05, step 5 of 10", stopped)
            self.assertIn("the 4 of 10 steps that ran", stopped)

    def sweep(self, *options):
        model = EXAMPLES / "rainwater-house" / "model.toml"
        done = subprocess.run([KESTO, "sweep", str(model), "-q", "--vary", "tank.size=500,1000,2000",
                               "--record", "tank", *options], capture_output=True, text=True, timeout=120)
        self.assertEqual(done.returncode, 0, done.stderr)

    def parts(self):
        """All parts together: what open_mfdataset does with files that dask has opened."""
        files = [xarray.open_dataset(path) for path in sorted(self.folder.glob("s*/part-*.nc"))]
        for file in files:
            self.addCleanup(file.close)
        self.assertEqual(len(files), 2)
        return xarray.combine_by_coords(files, combine_attrs="override")

    def test_parts_of_a_sweep_are_one_without_hints(self):
        self.sweep("-o", str(self.folder / "s1"), "--members", "1-2")
        self.sweep("-o", str(self.folder / "s2"), "--members", "3-3")
        parts = self.parts()
        self.assertEqual(parts["member"].values.tolist(), [1, 2, 3])
        self.assertEqual(parts["quantity"].dims, ("member", "flow", "time"))
        self.assertLessEqual({"flow_name", "flow_carries", "store_name"}, set(parts.coords))
        self.run_model(EXAMPLES / "rainwater-house" / "model.toml", 0, "--set", "tank.size=2000")
        columns = self.columns("flows.csv")
        for name, row in zip(parts["flow_name"].values, parts["quantity"].sel(member=3)):
            self.assertEqual(bits(row), bits(columns[f"{name} [L]"]), name)
        self.assertEqual(bits(parts["storage"].sel(member=3)[0]), bits(self.columns("states.csv")["tank:storage [L]"]))

    def test_months_are_sums_of_days(self):
        self.sweep("-o", str(self.folder / "s1"), "--every", "month", "--members", "1-1", "--from", "2012-01-20")
        self.sweep("-o", str(self.folder / "s2"), "--every", "month", "--members", "2-3", "--from", "2012-01-20")
        parts = self.parts()
        self.assertEqual([str(day)[:10] for day in parts["time"].values[:2]], ["2012-01-20", "2012-02-01"])
        self.assertEqual(str(parts["last_day"].values[0])[:10], "2012-01-31")
        self.assertIn("last_day", parts.coords)
        data = self.run_model(EXAMPLES / "rainwater-house" / "model.toml", 0, "--set", "tank.size=500", "--from", "2012-01-20",
                              "--record", "tank")
        listed = [str(name) for name in data["flow_name"].values]
        rows = data["quantity"].values[[listed.index(name) for name in parts["flow_name"].values]]
        months = data["time"].values.astype("datetime64[M]")
        for number, month in enumerate(numpy.unique(months)):
            within = months == month
            total = rows[:, within].astype(float).sum(axis=1)
            numpy.testing.assert_allclose(parts["quantity"].sel(member=1)[:, number], total, rtol=1e-6)
            self.assertEqual(bits(parts["storage"].sel(member=1)[:, number]), bits(data["storage"].values[:, within][:, -1]))


unittest.main()
