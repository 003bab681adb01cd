#!/usr/bin/env python3
"""compare.py KESTO LENGTH MODEL...: models give the same results with blocks of a length as with every step by turns."""

import os
import subprocess
import sys
import tempfile
from pathlib import Path

BY_TURNS = "-1"


def run(kesto, model, length, folder):
    command = [kesto, "run", model, "--quiet", "--format", "csv", "--record", "all", "-o", folder]
    subprocess.run(command, env={**os.environ, "KESTO_TEST_BLOCK_LENGTH": length, "TZ": "UTC"}, check=True)
    return {table.name: table.read_bytes() for table in Path(folder).glob("*.csv")}


def main():
    kesto, length, *models = sys.argv[1:]
    for model in models:
        with tempfile.TemporaryDirectory() as scratch:
            expected = run(kesto, model, BY_TURNS, f"{scratch}/turns")
            found = run(kesto, model, length, f"{scratch}/blocks")
        if not expected:
            sys.exit(f"{model}: no results")
        different = sorted(name for name in expected.keys() | found.keys() if expected.get(name) != found.get(name))
        if different:
            sys.exit(f"{model}: {', '.join(different)} differ")
        print(f"{model}: {len(expected)} tables are the same")


main()
