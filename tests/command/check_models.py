#!/usr/bin/env python3
"""Runs a command of kesto on each model of a folder and compares all it says, and its exit status, with what is
expected.

usage: check_models.py KESTO COMMAND FOLDER [--update]

For model.toml the expected text stands in model.expected: the exit status, stderr and stdout, with paths relative to
the folder. --update writes these files instead of comparing them; look at what it changes."""

import pathlib
import subprocess
import sys


def says(kesto, command, folder, model):
    done = subprocess.run([kesto, command, model.name], cwd=folder, capture_output=True, text=True, timeout=60)
    return f"exit status {done.returncode}\n{done.stderr}{done.stdout}"


def main():
    kesto = str(pathlib.Path(sys.argv[1]).resolve())
    command = sys.argv[2]
    folder = pathlib.Path(sys.argv[3])
    models = sorted(folder.glob("*.toml"))
    if not models:
        sys.exit(f"no models in {folder}")
    wrong = 0
    for model in models:
        found = says(kesto, command, folder, model)
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
