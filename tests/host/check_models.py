#!/usr/bin/env python3
"""Runs `kesto run` on each model of a folder and compares all it says, and its exit status, with what is expected.

usage: check_models.py KESTO FOLDER [--update]

For model.toml the expected text stands in model.expected: the exit status, then stderr, with paths relative to the
folder. --update writes these files instead of comparing them; look at what it changes."""

import pathlib
import subprocess
import sys


def says(kesto, folder, model):
    done = subprocess.run([kesto, "run", model.name], cwd=folder, capture_output=True, text=True, timeout=60)
    return f"exit status {done.returncode}\n{done.stderr}"


def main():
    kesto = str(pathlib.Path(sys.argv[1]).resolve())
    folder = pathlib.Path(sys.argv[2])
    models = sorted(folder.glob("*.toml"))
    if not models:
        sys.exit(f"no models in {folder}")
    wrong = 0
    for model in models:
        found = says(kesto, folder, model)
        expected = model.with_suffix(".expected")
        if "--update" in sys.argv:
            expected.write_text(found)
        elif not expected.exists() or expected.read_text() != found:
            wrong += 1
            print(f"{model.name}: expected\n{expected.read_text() if expected.exists() else '(nothing yet)'}"
                  f"but found\n{found}")
    print(f"{len(models)} models, {wrong} with other messages than expected")
    sys.exit(1 if wrong else 0)


main()
