#!/usr/bin/env python3
"""same_results.py FOLDER REFERENCE COUNT RANDOM_NETWORKS: random networks give the same with the library in one folder
as with the one in the other. same_results.py FOLDER REFERENCE KESTO MODEL...: models do, run by the command."""

import os
import subprocess
import sys
import tempfile
from pathlib import Path

SHOWN = 20
FEWEST_SUCCESSES = 0.4  # of all calls; else the networks would show little


def run(folder, command, **options):
    environment = {**os.environ, "LD_LIBRARY_PATH": folder, "TZ": "UTC"}
    return subprocess.run(command, env=environment, check=True, capture_output=True, text=True, **options).stdout


def networks(folder, reference, count, program):
    command = [program, "1", count]
    lines = run(folder, command).splitlines()
    expected = run(reference, command).splitlines()
    endings = [line.split(": ", 1)[1] for line in expected if "status: " in line]
    succeeded = endings.count("123456789")
    print(f"{count} networks, {len(endings)} calls, {succeeded} of them to their end, {len(expected)} results")
    if succeeded < FEWEST_SUCCESSES * len(endings):
        sys.exit("too few networks run to their end")
    different = [(ours, theirs) for ours, theirs in zip(lines, expected) if ours != theirs]
    for ours, theirs in different[:SHOWN]:
        print(f"reference {theirs}\n     here {ours}")
    if different or len(lines) != len(expected):
        sys.exit(f"{len(different)} results differ")


def models(folder, reference, kesto, paths):
    for path in paths:
        with tempfile.TemporaryDirectory() as scratch:
            for name, library in (("here", folder), ("reference", reference)):
                run(library, [kesto, "run", path, "--quiet", "--format", "csv", "--record", "all", "-o",
                              f"{scratch}/{name}"])
            tables = sorted(table.name for table in Path(scratch, "reference").glob("*.csv"))
            if not tables:
                sys.exit(f"{path}: no results")
            for table in tables:
                if Path(scratch, "here", table).read_bytes() != Path(scratch, "reference", table).read_bytes():
                    sys.exit(f"{path}: {table} differs")
            print(f"{path}: {len(tables)} tables are the same")


def main():
    folder, reference, third = sys.argv[1:4]
    if third.isdigit():
        networks(folder, reference, third, sys.argv[4])
    else:
        models(folder, reference, third, sys.argv[4:])


main()
