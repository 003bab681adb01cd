#!/usr/bin/env python3
"""Computes how far the engine's formulas are from the publications, by calling the engine.

  docs/tools/publications.py build/release/libKESTO.so             compares with the figures in publications.md
  docs/tools/publications.py build/release/libKESTO.so --update    rewrites them; read the difference
"""

import argparse
import calendar
import csv
import ctypes
import datetime
import math
import multiprocessing
import os
import pathlib
import re
import sys

DOCS = pathlib.Path(__file__).resolve().parents[1]
PAGE = DOCS / "publications.md"
WEATHER = DOCS.parent / "examples/rainwater-house/weather.csv"
DAYS_BEFORE = [0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334]

# Allen, Pereira, Raes and Smith (1998), FAO Irrigation and Drainage Paper 56, Table 2.6: extraterrestrial radiation on
# the 15th of each month [MJ/m2/d], by latitude.
FAO_TABLE = {
    60: [3.3, 8.3, 16.6, 27.5, 36.5, 41.2, 39.2, 31.3, 20.6, 10.9, 4.4, 2.2],
    40: [15.0, 20.4, 27.2, 34.7, 39.7, 41.9, 40.8, 36.7, 30.0, 22.5, 16.3, 13.6],
    20: [26.8, 30.6, 34.7, 37.9, 39.3, 39.5, 39.3, 38.3, 35.8, 31.8, 27.7, 25.6],
    0: [36.2, 37.5, 37.9, 36.8, 34.8, 33.4, 33.9, 35.7, 37.2, 37.4, 36.3, 35.6],
    -16: [41.1, 39.9, 37.2, 32.8, 28.5, 26.2, 27.0, 30.6, 35.2, 38.7, 40.6, 41.2],
}


# The record, field by field.

class Signal(ctypes.Structure):
    _fields_ = [("quantity", ctypes.c_float), ("quality", ctypes.c_float)]


class SeriesEntry(ctypes.Structure):
    _fields_ = [("id", ctypes.c_int32), ("Value", ctypes.POINTER(ctypes.c_float))]


class SignalSeriesEntry(ctypes.Structure):
    _fields_ = [("id", ctypes.c_int32), ("Signal", ctypes.POINTER(Signal))]


INPUT_SERIES = ["FreqSer", "Rainfall", "Temp", "Tmin", "Tmax", "Wind", "Multpls", "Threshold", "Occup", "Dmdflct",
                "InsDmd", "WatQuant", "WatQual"]
POTENTIALS = ["NrgPot", "InfPot", "LosPot", "EvaPot", "CapPot", "OprPot"]


def record_fields():
    fields = [("StartTime", ctypes.c_int32), ("nSteps", ctypes.c_int32), ("TimeStep", ctypes.c_float),
              ("Latitude", ctypes.c_float), ("StopOnInfeas", ctypes.c_int32), ("BuildTree", ctypes.c_int32),
              ("CurStep", ctypes.c_int32), ("PotCompIds", ctypes.POINTER(ctypes.c_int32)),
              ("nPotComps", ctypes.c_int32)]
    for name, kind in (("TechSpecs", ctypes.c_float), ("Net_Compnt", ctypes.c_float), ("Net_Conn", ctypes.c_int32)):
        count = {"TechSpecs": "nTechSpecs", "Net_Compnt": "nComps", "Net_Conn": "nConns"}[name]
        fields += [(name, ctypes.POINTER(kind)), (count, ctypes.c_int32)]
    for name in INPUT_SERIES:
        fields += [(name, ctypes.POINTER(SeriesEntry)), ("n" + name, ctypes.c_int32)]
    fields += [("nSplits", ctypes.c_int32), ("Splits", ctypes.c_void_p)]
    for name in ("Logs", "WatBod"):
        fields += [(name, ctypes.POINTER(SignalSeriesEntry)), ("n" + name, ctypes.c_int32)]
    fields += [(name, ctypes.POINTER(SeriesEntry)) for name in POTENTIALS]
    return fields + [("ErrMsg", ctypes.c_char * 256), ("ErrFlag", ctypes.c_int32)]


class Record(ctypes.Structure):
    _fields_ = record_fields()


def run(library, rows, specifications, series, steps, latitude=0.0, start=0, connections=()):
    """One run in this process: potentials of key 7 and the first log. Rows are (id, type, size), all of brand 1."""
    assert ctypes.sizeof(Record) == 656
    engine = ctypes.CDLL(str(library))
    record = Record(StartTime=start, nSteps=steps, TimeStep=1.0, Latitude=latitude, nPotComps=1)
    record.PotCompIds = (ctypes.c_int32 * 1)(7)

    def table(kind, rows):
        flat = [value for row in rows for value in row]
        return (kind * max(len(flat), 1))(*flat)

    record.Net_Compnt = table(ctypes.c_float, [(i, code, 7, 1, size) for i, code, size in rows])
    record.nComps = len(rows)
    record.TechSpecs = table(ctypes.c_float, [(0, 0, 1, 0, 1, 1, number, value, 0)
                                              for number, value in sorted(specifications.items())])
    record.nTechSpecs = len(specifications)
    record.Net_Conn = table(ctypes.c_int32, [(0,) + connection for connection in connections])
    record.nConns = len(connections)
    for name, (key, values) in series.items():
        values = list(values) if hasattr(values, "__iter__") else [values] * steps
        setattr(record, name, (SeriesEntry * 1)(SeriesEntry(key, (ctypes.c_float * steps)(*values))))
        setattr(record, "n" + name, 1)
    status = engine.KESTO_simul(ctypes.byref(record), 1, steps)
    if status != 123456789:
        raise RuntimeError(f"status {status}: {record.ErrMsg.decode()}")
    potentials = {name: getattr(record, name)[0].Value[:steps] for name in POTENTIALS}
    log = [(s.quantity, s.quality) for s in record.Logs[0].Signal[:steps]] if record.nLogs else []
    engine.FreeAUEglobals(ctypes.byref(record))
    return potentials, log


# What the engine gives.

def radiation(library, latitude):
    """Extraterrestrial radiation [kJ/m2/d] of each day of 1970, out of the evaporation of type 46."""
    series = {"Tmin": (7, 0.0), "Tmax": (7, 1.0), "Rainfall": (7, 0.0), "WatQuant": (1, 0.0)}
    specifications = {1: 0, 12: 0, 13: 0, 25: 0, 27: 0, 28: 0}
    potentials, _ = run(library, [(1, 46, 1)], specifications, series, 365, latitude)
    return [e * 2450 / (0.0023 * 18.3) for e in potentials["EvaPot"]]


def hargreaves(library, latitude, low, high, start, days):
    series = {"Tmin": (7, low), "Tmax": (7, high), "Rainfall": (7, 0.0), "WatQuant": (1, 0.0)}
    potentials, _ = run(library, [(1, 46, 1)], {1: 0, 12: 0, 13: 0, 25: 0, 27: 0, 28: 0}, series, days, latitude, start)
    return potentials["EvaPot"]


def thornthwaite(library, temperatures):
    """Evaporation [mm/d] of type 62: a negative factor turns it into rain, all of which drains."""
    series = {"Temp": (7, temperatures), "Rainfall": (7, 0.0), "WatQuant": (1, 0.0)}
    specifications = {1: 1000, 25: 0, 28: 1, 57: 0, 58: 1, 59: -1, 60: 1}
    potentials, _ = run(library, [(1, 62, 0)], specifications, series, len(temperatures))
    return potentials["InfPot"]


def short_wave(library, low, high, days, latitude, start=0):
    series = {"Tmin": (7, low), "Tmax": (7, high)}
    potentials, _ = run(library, [(1, 59, 1)], {12: 0, 13: 0, 55: 1}, series, days, latitude, start)
    return [-e / 0.000278 for e in potentials["NrgPot"]]


def net_radiation(library, low, high, days, latitude):
    series = {"Tmin": (7, low), "Tmax": (7, high)}
    potentials, _ = run(library, [(1, 60, 1)], {}, series, days, latitude)
    return [e / 0.000278 for e in potentials["NrgPot"]]


def pollutant_factor(library):
    """Quality that a membrane lets pass of 1."""
    specifications = {1: 10, 3: 0, 12: 0, 13: 0, 25: 1, 27: 0}
    _, log = run(library, [(1, 28, 1), (2, 58, 0), (3, 26, 0)], specifications, {"Rainfall": (7, 5.0)}, 1,
                 connections=[(1, 1, 2, 1), (2, 1, 3, 1)])
    return log[0][1]


def passed(library, demand, monthly, start, days):
    """What a quota limiter lets pass each day."""
    specifications = {61: 1e6, 62: monthly, 63: 1e6}
    _, log = run(library, [(1, 45, 100), (2, 64, 0)], specifications, {"InsDmd": (1, demand)}, days, start=start,
                 connections=[(1, 1, 2, 1)])
    return [quantity for quantity, _ in log]


# What the publications give.

def fao_radiation(latitude, day):
    """FAO-56, equations 21 to 25 [kJ/m2/d]; day of the year from 1."""
    phi = math.radians(latitude)
    delta = 0.409 * math.sin(2 * math.pi / 365 * day - 1.39)
    distance = 1 + 0.033 * math.cos(2 * math.pi / 365 * day)
    sunset = math.acos(-math.tan(phi) * math.tan(delta))
    return 1000 * 24 * 60 / math.pi * 0.0820 * distance * (
        sunset * math.sin(phi) * math.sin(delta) + math.cos(phi) * math.cos(delta) * math.sin(sunset))


def thornthwaite_exponent(index):
    return 6.75e-7 * index**3 - 7.71e-5 * index**2 + 1.792e-2 * index + 0.49239


def day_length(latitude, day):
    """FAO-56, equation 34 [h]."""
    delta = 0.409 * math.sin(2 * math.pi / 365 * day - 1.39)
    return 24 / math.pi * math.acos(-math.tan(math.radians(latitude)) * math.tan(delta))


def transmissivity(ranges, means):
    """Bristow and Campbell: the share of extraterrestrial radiation that arrives, by daily and mean range [degC]."""
    return [0.7 * (1 - math.exp(-0.036 * math.exp(-0.154 * mean) * day ** 2.4)) for day, mean in zip(ranges, means)]


def fao_long_wave(short, extraterrestrial, low, high, dew_point):
    """FAO-56, equations 14 and 39, with a clear-sky radiation of 0.75 Ra [kJ/m2/d]."""
    vapour = 0.6108 * math.exp(17.27 * dew_point / (dew_point + 237.3))
    black_body = 4.903e-6 * ((low + 273.16) ** 4 + (high + 273.16) ** 4) / 2
    return black_body * (0.34 - 0.14 * math.sqrt(vapour)) * (1.35 * short / (0.75 * extraterrestrial) - 0.35)


# The tables of the page.

def fresh(function, *arguments):
    """Calls a function in a process of its own: the engine's tables live as long as the process."""
    with multiprocessing.get_context("fork").Pool(1) as pool:
        return pool.apply(function, arguments)


def radiation_table(library):
    lines = ["latitude,largest difference to table 2.6 [MJ/m2/d],month,largest difference to the formula [MJ/m2/d],"
             "mean difference of the year [MJ/m2/d]"]
    for latitude, row in FAO_TABLE.items():
        ours = [value / 1000 for value in fresh(radiation, library, latitude)]
        table = [ours[before + 14] - row[month] for month, before in enumerate(DAYS_BEFORE)]
        formula = [ours[j] - fao_radiation(latitude, j + 1) / 1000 for j in range(365)]
        month = max(range(12), key=lambda i: abs(table[i]))
        lines.append(f"{latitude},{table[month]:+.2f},{calendar.month_abbr[month + 1]},"
                     f"{max(formula, key=abs):+.2f},{sum(formula) / 365:+.3f}")
    return lines


def declination_table(_library):
    w = 2 * math.pi / 365
    days = range(365)
    difference = [math.degrees(-0.409 * math.cos(w * j + 0.16) - 0.409 * math.sin(w * (j + 1) - 1.39)) for j in days]
    return ["quantity,value", f"days that the declination is late,{(w + math.pi / 2 - 1.39 - 0.16) / w:.2f}",
            f"largest difference of the declination [degrees],{max(map(abs, difference)):.2f}",
            f"solar constant [kJ/m2/min],{118108.8 / 1440:.2f}"]


def hargreaves_table(library):
    july = fresh(hargreaves, library, 45.72, 14.8, 26.6, 181 * 86400, 31)
    publication = [0.0023 * (20.7 + 17.8) * math.sqrt(11.8) * 0.408 * fao_radiation(45.72, 182 + d) / 1000
                   for d in range(31)]
    return ["Lyon July,mm/d", f"engine mean of the month,{sum(july) / 31:.3f}", f"engine on the 15th,{july[14]:.3f}",
            f"publication's formula mean of the month,{sum(publication) / 31:.3f}", "FAO-56 example 20,5.0"]


def thornthwaite_table(library):
    temperatures = [1.0, 6.0, 10.0, 15.0, 20.0, 25.0]
    exponent = thornthwaite_exponent(60)
    lines = [f"temperature [degC],engine [mm/d],with exponent {exponent:.3f} [mm/d],difference [%]"]
    for t, ours in zip(temperatures, fresh(thornthwaite, library, temperatures)):
        publication = 16 * (t / 6) ** exponent / 30
        difference = 100 * (ours / publication - 1)
        lines.append(f"{t:g},{ours:.3f},{publication:.3f},{0.0 if abs(difference) < 0.05 else difference:+.1f}")
    return lines


def day_length_table(_library):
    lines = ["latitude,shortest day [h],longest day [h],factor in winter,factor in summer"]
    for latitude in (20, 40, 47.6, 60):
        hours = [day_length(latitude, day) for day in range(1, 366)]
        lines.append(f"{latitude:g},{min(hours):.1f},{max(hours):.1f},{min(hours) / 12:.2f},{max(hours) / 12:.2f}")
    return lines


def transmission_table(library):
    short = fresh(short_wave, library, 6.0, 18.0, 40, 47.6)
    extraterrestrial = fresh(radiation, library, 47.6)
    lines = ["evaluation of the process,share of Ra that arrives"]
    for count in (1, 10, 20, 25, 30, 40):
        lines.append(f"{count},{short[count - 1] / extraterrestrial[count - 1]:.4f}")
    return lines


def range_table(library):
    """The engine's radiation on real weather against the publication's mean of the month, and with its two other rules."""
    with open(WEATHER, newline="") as file:
        rows = list(csv.DictReader(file))
    days = [datetime.date.fromisoformat(row["date"]) for row in rows]
    lows = [float(row["temperature_min_degC"]) for row in rows]
    highs = [float(row["temperature_max_degC"]) for row in rows]
    wet = [float(row["rain_mm"]) > 0 for row in rows]
    start = (days[0] - datetime.date(1970, 1, 1)).days * 86400
    ours = fresh(short_wave, library, lows, highs, len(days), 47.6, start)
    by_day = fresh(radiation, library, 47.6)
    outside = [by_day[min(day.timetuple().tm_yday, 365) - 1] for day in days]

    def published(ranges):
        months = {}
        for day, value in zip(days, ranges):
            months.setdefault((day.year, day.month), []).append(value)
        means = [sum(month) / len(month) for month in (months[day.year, day.month] for day in days)]
        return [share * radiation for share, radiation in zip(transmissivity(ranges, means), outside)]

    daily = [high - low for low, high in zip(lows, highs)]
    two_minima = [max(high - (low + after) / 2, 0) for low, after, high in zip(lows, lows[1:] + lows[-1:], highs)]
    by_rules = published([value * (0.75 if rains else 1) for value, rains in zip(two_minima, wet)])
    by_month = published(daily)
    january = 100 * (sum(ours[:31]) / sum(by_month[:31]) - 1)
    rules = 100 * (sum(by_rules) / sum(ours) - 1)
    return ["comparison,difference [%]",
            f"engine's first January against the mean range of the month,{january:+.1f}",
            f"all four years by the publication with both rules against the engine,{rules:+.1f}"]


def long_wave_table(library):
    low, high, days = 5.0, 17.0, 60
    short = fresh(short_wave, library, low, high, days, 40.0)[-1]
    extraterrestrial = fresh(radiation, library, 40.0)[days - 1]
    ours = 0.8 * short - fresh(net_radiation, library, low, high, days, 40.0)[-1]
    lines = ["dew point [degC],long-wave: engine [MJ/m2/d],FAO-56 [MJ/m2/d],difference [%],"
             "net: engine [MJ/m2/d],FAO-56 [MJ/m2/d],difference [%]"]
    for dew_point in (-5, 0, 5):
        publication = fao_long_wave(short, extraterrestrial, low, high, dew_point)
        net, published_net = 0.8 * short - ours, 0.77 * short - publication
        lines.append(f"{dew_point},{ours / 1000:.2f},{publication / 1000:.2f},{100 * (ours / publication - 1):+.0f},"
                     f"{net / 1000:.2f},{published_net / 1000:.2f},{100 * (net / published_net - 1):+.0f}")
    return lines


def quota_table(library):
    year = fresh(passed, library, 10.0, 300.0, 0, 365)
    lines = ["month,asked [L],passes [L],allowance [L]"]
    for month in range(12):
        begin, end = DAYS_BEFORE[month], (DAYS_BEFORE + [365])[month + 1]
        lines.append(f"{calendar.month_abbr[month + 1]},{10 * (end - begin)},{sum(year[begin:end]):g},300")
    return lines


def constants_table(library):
    factor = fresh(pollutant_factor, library)
    return ["constant,stands for,deviation [%]",
            f"share of the pollutants {factor:.10f},0.01,{100 * (factor / 0.01 - 1):+.6f}",
            f"0.000278 kWh,1 kJ,{100 * (0.000278 * 3600 - 1):+.2f}",
            f"0.683 kWh,2450 kJ,{100 * (0.683 * 3600 / 2450 - 1):+.2f}",
            f"1/2450 (m2 mm)/kJ,0.408 (m2 mm)/MJ,{100 * (1000 / 2450 / 0.408 - 1):+.2f}",
            f"0.28 m/s,1 km/h,{100 * (0.28 * 3.6 - 1):+.2f}",
            f"1.15740741e-8 m3/s,1 L/d,{100 * (1.15740741e-8 * 86.4e6 - 1):+.7f}",
            f"10000 N,weight of 1 m3,{100 * (10000 / 9806.65 - 1):+.2f}",
            f"yearly cost / 365,a leap year,{100 * (366 / 365 - 1):+.2f}"]


TABLES = {"radiation": radiation_table, "declination": declination_table, "hargreaves": hargreaves_table,
          "thornthwaite": thornthwaite_table, "day length": day_length_table, "transmission": transmission_table,
          "range": range_table, "long wave": long_wave_table, "constants": constants_table, "quota": quota_table}


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("engine", type=pathlib.Path, help="libKESTO.so")
    parser.add_argument("--update", action="store_true", help="rewrite the figures")
    options = parser.parse_args()
    os.environ["TZ"] = "UTC"
    text = PAGE.read_text()
    problems = 0
    for name, table in TABLES.items():
        block = re.search(rf"(<!-- {name} -->\n```csv\n)(.*?)(```\n)", text, re.DOTALL)
        if not block:
            print(f"publications.md has no block \"{name}\"")
            problems += 1
            continue
        figures = "\n".join(table(options.engine.resolve())) + "\n"
        if options.update:
            text = text[:block.start(2)] + figures + text[block.end(2):]
        elif figures != block[2]:
            print(f"{name}: the page says\n{block[2]}and the engine gives\n{figures}")
            problems += 1
    if options.update:
        PAGE.write_text(text)
    print(f"{len(TABLES)} tables, {problems} problems")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
