#!/usr/bin/env python3
"""Runs the example of every page in docs/components/ and compares the figures that the page quotes.

A page quotes its model in a toml block, after a link to the file in examples/, and figures in the csv block that
follows: a header with names of columns as they stand in the result files, then a row for each day. Numbers that are not whole have
six digits. The tables of types, ports, series and specifications are those of the command's catalogue (catalogue_tables.py).
Besides, each type of the engine's table must have a page, which gives the potentials that it books, and links between pages must
lead somewhere.

  docs/tools/check.py --kesto build/release/kesto              checks all pages
  docs/tools/check.py --kesto build/release/kesto --update     rewrites tables, quoted models and figures; read the difference
"""

import argparse
import csv
import json
import pathlib
import re
import subprocess
import sys
import tempfile

from catalogue_tables import with_tables

DOCS = pathlib.Path(__file__).resolve().parents[1]
PAGES = DOCS / "components"
BLOCK = re.compile(r"(\[examples/(?P<file>[\w-]+\.toml)\]\(examples/(?P=file)\).*?\n```toml\n)(?P<model>.*?)"
                   r"(```\n.*?```csv\n)(?P<figures>.*?)(```\n)", re.DOTALL)
TYPE = re.compile(r"^\| (\d+(?:, \d+)*) \| ([A-Z]{2}|none) \| `", re.MULTILINE)
LINK = re.compile(r"\]\(([^)#\s]+)(?:#[^)]*)?\)")


def run_example(kesto, model):
    """All columns of all result files by their header, and the dates."""
    columns = {}
    with tempfile.TemporaryDirectory() as folder:
        result = subprocess.run([kesto, "run", model, "-o", folder], capture_output=True, text=True, timeout=60)
        if result.returncode != 0:
            raise RuntimeError(f"{model}: kesto returned {result.returncode}\n{result.stdout}{result.stderr}")
        checked = subprocess.run([kesto, "check", "--strict", model], capture_output=True, text=True, timeout=60)
        if checked.returncode != 0:
            raise RuntimeError(f"{model}: doubtful and not accepted\n{checked.stderr}")
        for path in sorted(pathlib.Path(folder).glob("*.csv")):
            with open(path, newline="") as file:
                header, *rows = csv.reader(file)
            for i, name in enumerate(header):
                columns[name] = [row[i] for row in rows]
    return columns


def shown(text):
    """Whole numbers as they are, others with six digits."""
    whole = text.removeprefix("-").isdigit() or re.fullmatch(r"-?\d+e\+?\d+", text)
    return f"{float(text):.0f}" if whole else f"{float(text):.6g}"


def figures_of(columns, header):
    lines = [header]
    names = header.split(",")
    missing = [name for name in names if name not in columns]
    if missing:
        raise RuntimeError(f"no column {missing} among the results {sorted(columns)}")
    for k, date in enumerate(columns["date"]):
        lines.append(",".join([date] + [shown(columns[name][k]) for name in names[1:]]))
    return "\n".join(lines) + "\n"


def check_page(page, kesto, update, problems):
    text = page.read_text()
    match = BLOCK.search(text)
    if not match:
        problems.append(f"{page.name}: no example with a toml block and a csv block")
        return
    model = PAGES / "examples" / match["file"]
    quoted, figures = match["model"], match["figures"]
    header = figures.split("\n", 1)[0]
    names = header.split(",")
    if names[0] != "date" or len(names) < 2:
        problems.append(f"{page.name}: the figures name no columns")
        return
    try:
        fresh = figures_of(run_example(kesto, model), header)
    except RuntimeError as error:
        problems.append(f"{page.name}: {error}")
        return
    if update:
        page.write_text(text[:match.start("model")] + model.read_text() + match[4] + fresh + match[6]
                        + text[match.end():])
        return
    if quoted != model.read_text():
        problems.append(f"{page.name}: the quoted model is not examples/{match['file']}")
    for number, (old, new) in enumerate(zip(figures.split("\n"), fresh.split("\n"))):
        if old != new:
            problems.append(f"{page.name}: row {number} of the figures is\n    {old}\n  and the run gives\n    {new}")
    if figures.count("\n") != fresh.count("\n"):
        problems.append(f"{page.name}: {figures.count(chr(10)) - 1} rows, the run has {fresh.count(chr(10)) - 1}")


def check_types(catalogue, problems):
    """Each type has one page, that of its family."""
    types = {code: one["tag"] or "none" for one in catalogue.values() for code in one["codes"]}
    families = {code: one["family"] for one in catalogue.values() for code in one["codes"]}
    pages = {}
    for page in sorted(PAGES.glob("*.md")):
        for codes, tag in TYPE.findall(page.read_text()):
            for code in map(int, codes.split(", ")):
                if code in pages:
                    problems.append(f"type {code} stands in {pages[code]} and in {page.name}")
                pages[code] = page.name
                if types.get(code) != tag:
                    problems.append(f"{page.name}: type {code} has the tag {types.get(code)}, not {tag}")
    for code in sorted(types):
        if pages.get(code) != f"{families[code]}.md":
            problems.append(f"type {code} ({types[code]}) stands in {pages.get(code)}, not in {families[code]}.md")


def catalogue_of(kesto):
    result = subprocess.run([kesto, "types", "--json"], capture_output=True, text=True, timeout=60, check=True)
    return {one["name"]: one for one in json.loads(result.stdout)}


def check_tables(page, catalogue, update, problems):
    """What the command says of each type stands in the page's tables; the potentials that it books, in the equations."""
    text = page.read_text()
    found = []
    fresh = with_tables(text, catalogue, found)
    problems.extend(f"{page.name}: {problem}" for problem in found)
    if update:
        page.write_text(fresh)
    elif fresh != text:
        old, new = next((a, b) for a, b in zip(text.split("\n") + [""], fresh.split("\n") + [""]) if a != b)
        problems.append(f"{page.name}: a table says\n    {old}\n  and the command's catalogue\n    {new}")
    for name in re.findall(r"^\| [\d, ]+ \| (?:[A-Z]{2}|none) \| `(\w+)`", text, re.MULTILINE):
        for potential in catalogue[name]["potentials"]:
            if not re.search(rf"{potential['name']} +[-+]=", text):
                problems.append(f"{page.name}: {name} books {potential['name']}")


ROW = re.compile(r"^\| \[(\w+)\]\(\w+\.md\) \| .*? \| (.*) \|$", re.MULTILINE)


def check_families(catalogue, update, problems):
    """Each family has a page, and a row in the table of pages; what that says of it is written by hand."""
    families = {}
    for one in catalogue.values():
        families.setdefault(one["family"], []).append(one["name"])
    pages = {path.stem for path in PAGES.glob("*.md")} - {"README"}
    for stem in sorted(families.keys() ^ pages):
        problems.append(f"{stem}: " + ("a family without a page" if stem in families else "a page without a family"))
    readme = PAGES / "README.md"
    text = readme.read_text()
    rows = [stem for stem, _ in ROW.findall(text)]
    for stem in sorted(families.keys() ^ set(rows)):
        problems.append(f"README.md: {stem} " + ("has no row" if stem in families else "is no family"))
    if len(rows) != len(set(rows)):
        problems.append("README.md: a family has two rows")
    fresh = ROW.sub(lambda row: f"| [{row[1]}]({row[1]}.md) | {', '.join(families.get(row[1], []))} | {row[2]} |", text)
    if update:
        readme.write_text(fresh)
    elif fresh != text:
        problems.append("README.md: the types of a family are not those of the command's catalogue")


def check_links(problems):
    for page in sorted(DOCS.rglob("*.md")):
        for target in LINK.findall(page.read_text()):
            if "://" not in target and not (page.parent / target).exists():
                problems.append(f"{page.relative_to(DOCS)}: link to {target} leads nowhere")


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--kesto", required=True, type=pathlib.Path, help="the command to run the examples with")
    parser.add_argument("--update", action="store_true", help="rewrite tables, quoted models and figures")
    parser.add_argument("pages", nargs="*", help="stems of pages; all when none is named")
    arguments = parser.parse_args()
    problems = []
    stems = arguments.pages or sorted(path.stem for path in PAGES.glob("*.md") if path.stem != "README")
    arguments.kesto = arguments.kesto.resolve()
    catalogue = catalogue_of(arguments.kesto)
    for stem in stems:
        check_tables(PAGES / f"{stem}.md", catalogue, arguments.update, problems)
        check_page(PAGES / f"{stem}.md", arguments.kesto, arguments.update, problems)
    if not arguments.pages:
        check_types(catalogue, problems)
        check_families(catalogue, arguments.update, problems)
        check_links(problems)
    for problem in problems:
        print(problem)
    print(f"{len(stems)} pages, {len(problems)} problems")
    return 1 if problems or not stems else 0


if __name__ == "__main__":
    sys.exit(main())
