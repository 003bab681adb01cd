#!/usr/bin/env python3
"""Runs the commands of docs/guide/first-model.md, wiring.md and many-runs.md and compares what they print, the tables of model-file.md with the
command's catalogue, and those of warnings.md with its codes.

  docs/tools/check_guide.py --kesto build/release/kesto              checks
  docs/tools/check_guide.py --kesto build/release/kesto --update     rewrites outputs and tables; read the difference
"""

import argparse
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile

GUIDE = pathlib.Path(__file__).resolve().parents[1] / "guide"
CONSOLE = re.compile(r"(```console\n)(.*?)(```\n)", re.DOTALL)


def run_console(block, folder, environment):
    """The block with what its commands print now: "$ " begins a command, "> " goes on with it."""
    lines = block.splitlines()
    text = ""
    while lines:
        command = [lines.pop(0)]
        while lines and lines[0].startswith(">"):
            command.append(lines.pop(0))
        script = "\n".join(line[2:] for line in command)
        done = subprocess.run(["bash", "-c", script], cwd=folder, env=environment, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, text=True, timeout=60)
        text += "\n".join(command) + "\n" + done.stdout
        while lines and not lines[0].startswith("$ "):
            lines.pop(0)
    return text


def console(kesto, text):
    with tempfile.TemporaryDirectory() as folder:
        environment = dict(os.environ, PATH=f"{kesto.parent}:{os.environ['PATH']}", TZ="UTC", LC_ALL="C")
        return CONSOLE.sub(lambda match: match[1] + run_console(match[2], folder, environment) + match[3], text)


def said(kesto, *arguments):
    return subprocess.run([kesto, *arguments], capture_output=True, text=True, timeout=60, check=True).stdout


def units_table(schema):
    lists = set(re.findall(r"\? \(([^()]+)\)\$\"", json.dumps(schema)))
    rows = [units for units in (text.split("|") for text in lists) if len(units) > 1]
    return "| unit | can be given in |\n|---|---|\n" + "".join(
        f"| {units[0]} | {', '.join(units[1:])} |\n" for units in sorted(rows))


def kinds_table(schema):
    keys = {name: definition for name, definition in schema["$defs"]["series"]["properties"].items()
            if name not in ("file", "time")}
    text = "| kind | |\n|---|---|\n"
    for name, definition in keys.items():
        text += f"| `{name}` | {definition['else']['description']} |\n"
    return text


def types_table(kesto):
    text = "| type | tag | inputs | outputs | size |\n|---|---|---|---|---|\n"
    for line in said(kesto, "types").splitlines():
        name = line.split()[0]
        page = said(kesto, "types", name)
        tag = re.search(r", tag (\w+)", page)
        ports = {side: ", ".join(f"`{port}`" for port in re.findall(rf"^{side} +(?:\d+|any number on) +(\w+)", page,
                                                                   re.MULTILINE)) for side in ("input", "output")}
        if "any number on" in page:
            ports["input"] += ", any number"
        size = re.search(r"^size +(.*)$", page, re.MULTILINE)
        text += (f"| `{name}` | {tag[1] if tag else ''} | {ports['input']} | {ports['output']} | "
                 f"{size[1] if size else ''} |\n")
    return text


def codes_table(kesto, about):
    """Of warnings what they are about, of notes and errors their severity."""
    rows = [row for row in json.loads(said(kesto, "codes", "--json")) if (row["about"] or row["severity"]) == about]
    return "| code | |\n|---|---|\n" + "".join(f"| `{row['code']}` | {row['meaning']} |\n" for row in rows)


def with_tables(name, text, tables):
    for marker, table in tables:
        text, found = re.subn(rf"(<!-- {marker} -->\n).*?(<!-- end -->)", lambda match: match[1] + table + match[2], text,
                              flags=re.DOTALL)
        if found != 1:
            sys.exit(f"{name} has {found} places for {marker}")
    return text


def model_file(kesto, text):
    schema = json.loads(said(kesto, "schema"))
    return with_tables("model-file.md", text, (("units: from kesto schema", units_table(schema)),
                                               ("kinds: from kesto schema", kinds_table(schema)),
                                               ("types: from kesto types", types_table(kesto))))


def warnings(kesto, text):
    return with_tables("warnings.md", text, [(f"{about}: from kesto codes", codes_table(kesto, about))
                                             for about in ("wiring", "values", "results", "note", "error")])


def figures_table(kesto):
    rows = json.loads(said(kesto, "figures", "--json"))
    return "| figure | unit | of | |\n|---|---|---|---|\n" + "".join(
        f"| `{row['name']}` | {row['unit']} | {row['of']} | {row['meaning']}{', with its dates' if row['dated'] else ''} |\n"
        for row in rows)


def results(kesto, text):
    return with_tables("results.md", text, [("figures: from kesto figures", figures_table(kesto))])


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--kesto", required=True, type=pathlib.Path, help="the command to run")
    parser.add_argument("--update", action="store_true", help="rewrite outputs and tables")
    arguments = parser.parse_args()
    kesto = arguments.kesto.resolve()
    wrong = 0
    for name, fresh_of in (("first-model.md", console), ("wiring.md", console), ("many-runs.md", console),
                           ("model-file.md", model_file), ("warnings.md", warnings),
                           ("results.md", results)):
        page = GUIDE / name
        old = page.read_text()
        fresh = fresh_of(kesto, old)
        if arguments.update:
            page.write_text(fresh)
            continue
        if old.count("\n$ ") + old.count("\n| ") < 10:
            sys.exit(f"{name}: no commands or tables found")
        for number, (a, b) in enumerate(zip(old.split("\n"), fresh.split("\n")), 1):
            if a != b:
                wrong += 1
                print(f"{name}:{number}: the page says\n  {a}\nand the command\n  {b}")
                break
        else:
            if old != fresh:
                wrong += 1
                print(f"{name}: the page has {len(old)} characters, what the command gives {len(fresh)}")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
