#!/usr/bin/env python3
"""Writes the tables of the town that nobody would want to type: the streets, and the weather with its soil temperature.

    ./prepare.py           writes streets_components.csv, streets_connections.csv and weather.csv
    ./prepare.py --check   exits with 1 when they differ from what it would write

A street is one house that stands for all of its houses: two multipliers scale what the house draws and what it
releases, and with it the energy that is booked for them.
"""
import csv
import io
import pathlib
import sys

HERE = pathlib.Path(__file__).resolve().parent

ROOF = 60  # m2 of each house
ROAD = 40  # m2 of street and drive for each house
SOAKAWAY = 1500  # L for each house

# name, houses, toilet, reuse of greywater, where the rain of roofs and roads goes
STREETS = [
    ("mill", 400, "old_toilet", False, "combined"),
    ("church", 600, "toilet", False, "combined"),
    ("park", 500, "dual_flush_toilet", True, "soakaway"),
    ("hill", 450, "dual_flush_toilet", True, "soakaway"),
    ("new", 550, "dual_flush_toilet", True, "swale"),
    ("lake", 500, "toilet", False, "drains"),
]

COMPONENTS = ["name", "type", "kind", "group", "brand", "size", "initial_storage", "multiplier", "demand"]


def appliances(toilet):
    return [
        ("toilet", 1, toilet),
        ("shower", 2, "shower"),
        ("bath", 4, "bath"),
        ("taps", 5, "tap"),
        ("dishwasher", 6, "dishwasher"),
        ("garden", 9, "tap"),
        ("washer", 10, "washing_machine"),
    ]


def street_components(street, houses, toilet, reuse, rain):
    for name, kind, brand in appliances(toilet):
        yield dict(name=name, type="appliance", kind=kind, group=street, brand=brand)
    if reuse:
        yield dict(name="greywater", type="mixer")
        yield dict(name="greyplant", type="greywater_treatment", group=street, brand="greywater_plant", size=200,
                   initial_storage=0)
        yield dict(name="greyspill", type="quality_setter", demand=100)
        yield dict(name="greytank", type="tank", group=street, brand="vessel", size=150, initial_storage=0)
    yield dict(name="use", type="junction")
    yield dict(name="foul", type="mixer")
    yield dict(name="houses_in", type="multiplier", multiplier=houses)
    yield dict(name="houses_out", type="multiplier", multiplier=houses)
    yield dict(name="main", type="supply_link", group=street, brand="water_main")
    yield dict(name="sewer", type="sewer_link", group=street, brand="sewer")
    yield dict(name="roofs", type="impervious_surface", group=street, brand="roof", size=ROOF * houses)
    yield dict(name="roads", type="impervious_surface", group=street, brand="road", size=ROAD * houses)
    if rain == "soakaway":
        yield dict(name="surfaces", type="mixer")
        yield dict(name="soakaway", type="soakaway", group=street, brand="soakaway", size=SOAKAWAY * houses,
                   initial_storage=0)


def street_connections(reuse, rain):
    """Ends without a dot belong to the street, those with one to the town."""
    if reuse:
        yield "shower:wastewater", "greywater"
        yield "bath:wastewater", "greywater"
        yield "greywater", "greyplant"
        yield "greyplant:supplied", "greytank:inflow"
        yield "greyplant:overflow", "greyspill"
        yield "greyspill", "foul"
        yield "greytank:overflow", "foul"
        yield "greytank:deficit", "use"
        yield "toilet:wastewater", "foul"
        yield "toilet:demand", "greytank:demand"
        direct = ["taps", "dishwasher", "washer"]
    else:
        direct = ["toilet", "shower", "bath", "taps", "dishwasher", "washer"]
    for name in direct:
        yield name + ":wastewater", "foul"
    for name, _, _ in appliances(""):
        if name != "toilet" or not reuse:
            yield name + ":demand", "use"
    yield "use", "houses_in"
    yield "houses_in", "main"
    yield "main", ".town_demand"
    yield "foul", "houses_out"
    yield "houses_out", "sewer"
    yield "sewer", ".foul_trunk"
    if rain == "combined":
        yield "roofs", ".combined_runoff"
        yield "roads", ".combined_runoff"
    elif rain == "soakaway":
        yield "roofs", "surfaces"
        yield "roads", "surfaces"
        yield "surfaces", "soakaway"
        yield "soakaway", ".storm_drains"
    elif rain == "swale":
        yield "roofs", ".storm_drains"
        yield "roads", ".salt_gate"
    else:
        yield "roofs", ".storm_drains"
        yield "roads", ".storm_drains"


def end_of(text, street):
    if text.startswith("."):
        return text[1:]
    name, colon, port = text.partition(":")
    return f"{name}_{street}{colon}{port}"


def table(columns, rows):
    out = io.StringIO()
    writer = csv.DictWriter(out, columns, lineterminator="\n")
    writer.writeheader()
    writer.writerows(rows)
    return out.getvalue()


def streets():
    components, connections = [], []
    for street, houses, toilet, reuse, rain in STREETS:
        for row in street_components(street, houses, toilet, reuse, rain):
            components.append(dict(row, name=f"{row['name']}_{street}"))
        for sender, receiver in street_connections(reuse, rain):
            connections.append({"from": end_of(sender, street), "to": end_of(receiver, street)})
    return table(COMPONENTS, components), table(["from", "to"], connections)


def weather():
    rows = []
    with open(HERE.parent / "rainwater-house" / "weather.csv", newline="") as source:
        for row in csv.DictReader(source):
            mean = (float(row["temperature_max_degC"]) + float(row["temperature_min_degC"])) / 2
            # The soil store raises the temperature to the power 1.7, which is not a number below 0 degC: one frost day
            # and its level is lost for the rest of the run. At 0 degC it evaporates nothing, as frozen ground should.
            rows.append(dict(row, soil_temperature_degC=f"{max(mean, 0):.2f}"))
    return table(list(rows[0]), rows)


def main():
    components, connections = streets()
    files = {
        "streets_components.csv": components,
        "streets_connections.csv": connections,
        "weather.csv": weather(),
    }
    differing = []
    for name, text in files.items():
        path = HERE / name
        if "--check" not in sys.argv[1:]:
            path.write_text(text, newline="\n")
        elif not path.exists() or path.read_text() != text:
            differing.append(name)
    if differing:
        sys.exit("not what prepare.py writes: " + ", ".join(differing))


if __name__ == "__main__":
    main()
