"""The tables of the component pages that come from the command's catalogue: types, ports, series and size, specifications, water.

A page marks their places: <!-- types: NAME, NAME --> names the types that it is about, <!-- ports -->, <!-- series --> and
<!-- specifications --> and <!-- water --> follow it, each up to <!-- end -->. check.py writes the tables and compares them."""

import re

PLACE = re.compile(r"(<!-- (?P<kind>types|ports|series|specifications|water)(?:: (?P<names>[\w, ]+))? -->\n).*?(<!-- end -->)",
                   re.DOTALL)
KINDS = {"types", "ports", "series", "specifications", "water"}


def unit_text(unit):
    """As people write it: m², °C."""
    return re.sub(r"(?<=[m)])([23])\b", lambda match: "²" if match[1] == "2" else "³", unit).replace("degC", "°C")


def range_text(one):
    return one["range"]["text"] if one["range"] else ""


def number(value):
    return f"{value:g}"


def table(columns, rows):
    """Columns that are empty in all rows are left out, but for the last, which has no name."""
    kept = [i for i, _ in enumerate(columns) if i == len(columns) - 1 or any(row[i] for row in rows)]
    lines = [[columns[i] for i in kept], ["---"] * len(kept)] + [[row[i] for i in kept] for row in rows]
    return "".join("|" + "|".join(f" {cell} " if cell else " " for cell in line).replace(" --- ", "---") + "|\n"
                   for line in lines)


def shared(types, rows_of):
    """Rows of all types; those that are the same for several types are one row with their names. Each row ends with its text."""
    users = {}
    for one in types:
        for row in rows_of(one):
            users.setdefault(row, []).append(one["name"])
    several = len(types) > 1
    return [(*row[:-1], ", ".join(names) if several and len(names) < len(types) else "all" if several else "", row[-1])
            for row, names in users.items()]


def types_table(types):
    rows = []
    for one in types:
        name = f"`{one['name']}`" + (", with `kind` = the type code" if len(one["codes"]) > 1 else "")
        rows.append((", ".join(map(str, one["codes"])), one["tag"] or "none", name))
    return table(("type", "tag", "name in model files"), rows)


def ports_table(types):
    def rows_of(one):
        rows = []
        for side, ports in (("input", one["inputs"]), ("output", one["outputs"])):
            for i, port in enumerate(ports, 1):
                place = "any input" if side == "input" and one["any_number_of_inputs"] else f"{side} {i}"
                rows.append((place, f"`{port['name']}`", port["carries"], unit_text(port["unit"]), port.get("quality", ""),
                             port["meaning"]))
        return rows
    rows = sorted(shared(types, rows_of), key=lambda row: row[0].replace("any ", ""))
    return table(("port", "name", "carries", "unit", "quality", "of", ""), rows) if rows else "None.\n"


def series_table(types):
    def rows_of(one):
        rows = []
        for series in one["series"]:
            name = f"{'state ' if series['is_state'] else ''}`{series['name']}`"
            text = series["meaning"] + (", only with `trace_sources`" if series["only_with_trace_sources"] else "")
            rows.append((name, series["filed_under"], unit_text(series["unit"]), range_text(series), text))
        if one["size"]:
            size = one["size"]
            standard = "" if size["standard"] is None else f"; default {number(size['standard'])}"
            rows.append(("`size`", "component", unit_text(size["unit"]), range_text(size), size["meaning"] + standard))
        return rows
    rows = shared(types, rows_of)
    return table(("series or size", "filed under", "unit", "range", "of", ""), rows) if rows else "None; size is not read.\n"


def specifications_table(types):
    def rows_of(one):
        return [(str(p["number"]), f"`{p['name']}`", unit_text(p["unit"]),
                 "must be given" if p["standard"] is None else number(p["standard"]), range_text(p), p["meaning"])
                for p in one["parameters"]]
    rows = sorted(shared(types, rows_of), key=lambda row: int(row[0]))
    return table(("number", "name", "unit", "default", "range", "of", ""), rows) if rows else "None.\n"


def water_table(types):
    """What a type adds to its water and takes from it; the columns of a balance have these names."""
    def rows_of(one):
        return [(f"`{term['name']}`", term["meaning"]) for term in one["balance"]["terms"]]
    rows = shared(types, rows_of)
    return table(("term", "of", ""), rows) if rows else "No terms of its own.\n"


TABLES = {"types": types_table, "ports": ports_table, "series": series_table, "specifications": specifications_table,
          "water": water_table}


def with_tables(text, catalogue, problems):
    """The page with its tables as the catalogue, a dict of types by name, has them."""
    types = []
    found = []

    def fresh(match):
        if match["names"]:
            unknown = [name for name in match["names"].split(", ") if name not in catalogue]
            if unknown:
                problems.append(f"the command knows no type {', '.join(unknown)}")
                return match[0]
            types[:] = [catalogue[name] for name in match["names"].split(", ")]
        found.append(match["kind"])
        return match[1] + TABLES[match["kind"]](types) + match[4]

    result = PLACE.sub(fresh, text)
    if set(found) != KINDS or found[0] != "types" or len(found) != len(KINDS):
        problems.append(f"expected places for the tables of {', '.join(sorted(KINDS))}, found {', '.join(found)}")
    return result
