"""Runs the same networks through the library of this system and through KESTO.dll, each in a fresh process, and compares
all that they leave, bit for bit: random networks, and the calls that the kesto command makes for the examples.

KESTO_TEST_LONG=1 in the environment: 1000 random networks instead of 300.
"""
import argparse
import collections
import concurrent.futures
import os
import pathlib
import subprocess
import sys
import tempfile

FIRST_SEED = 1
ENVIRONMENT = {**os.environ, "TZ": "UTC"}


def run(command):
    """What the program printed and, where an invariant ended it, which one."""
    done = subprocess.run(command, capture_output=True, text=True, env=ENVIRONMENT, timeout=120)
    text = done.stdout
    if done.returncode in (-6, 3):  # abort() here and on Windows
        return "aborted: " + done.stderr
    if done.returncode:
        raise RuntimeError(f"{command}: exit status {done.returncode}: {done.stderr}")
    return text


def outcome(text):
    if text.startswith("aborted"):
        return "ended by an invariant"
    failed = any(" error: " in line and not line.endswith("error: 0 ") for line in text.splitlines())
    return "stopped by an error" if failed else "ran to the end"


def first_difference(here, there):
    for number, (a, b) in enumerate(zip(here.splitlines(), there.splitlines()), 1):
        if a != b:
            words = list(zip(a.split(), b.split()))
            at = next((i for i, (x, y) in enumerate(words) if x != y), len(words))
            return f"line {number}, word {at}: {a.split()[:3]} {words[at:at + 1]}"
    return "one is longer"


def record_example(native, model, folder):
    """The network files of the calls that the kesto command makes for a model."""
    environment = {**ENVIRONMENT, "KESTO_RECORD_FOLDER": str(folder),
                   "LD_PRELOAD": str(native / "record_networks.so")}
    command = [native / "kesto", "run", model, "-o", folder / "results"]
    done = subprocess.run(command, capture_output=True, text=True, env=environment)
    if done.returncode:
        raise RuntimeError(f"{model}: exit status {done.returncode}: {done.stderr}")
    recorded = sorted(folder.glob("*.network"))
    if not recorded:
        raise RuntimeError(f"{model}: the kesto command called nothing")
    return recorded


def networks(arguments, folder):
    count = 1000 if os.environ.get("KESTO_TEST_LONG") else 300
    made = folder / "random"
    made.mkdir()
    subprocess.run([arguments.native / "make_networks", made, str(FIRST_SEED), str(count)], check=True)
    yield from sorted(made.iterdir())
    models = sorted(arguments.examples.glob("*/model.toml"))
    if not models:
        raise RuntimeError(f"{arguments.examples}: no models")
    for model in models:
        own = folder / model.parent.name
        own.mkdir()
        yield from record_example(arguments.native, model, own)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--native", type=pathlib.Path, required=True, help="build folder for this system")
    parser.add_argument("--wine", required=True, help="what runs a Windows program")
    parser.add_argument("--program", required=True, help="run_network.exe")
    parser.add_argument("--examples", type=pathlib.Path, required=True)
    arguments = parser.parse_args()
    if not (arguments.native / "make_networks").exists():
        sys.exit(f"{arguments.native} has no make_networks: build for this system first, with tests")

    def compare(network):
        here = run([arguments.native / "run_network", network])
        there = run([arguments.wine, arguments.program, network])
        return network, here, there

    outcomes = collections.Counter()
    values = different = 0
    with tempfile.TemporaryDirectory() as folder, concurrent.futures.ThreadPoolExecutor(2) as pool:
        for network, here, there in pool.map(compare, networks(arguments, pathlib.Path(folder))):
            outcomes[outcome(here)] += 1
            values += len(here.split())
            if here != there:
                different += 1
                print(f"{network.parent.name}/{network.name}: {first_difference(here, there)}")
    print(f"{outcomes.total()} networks, {values} values, {different} networks differ")
    for name, count in outcomes.most_common():
        print(f"  {count} {name}")
    if outcomes["ran to the end"] < 0.9 * outcomes.total():
        sys.exit("fewer than nine in ten ran to the end: the networks are no good")
    sys.exit(different != 0)


main()
