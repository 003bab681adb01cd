"""Looks at the programs and libraries of a folder: where each one's libraries are looked for, and how the command and the
library are hardened.

    check_binaries.py FOLDER [--fortified]    --fortified: built with optimization, which _FORTIFY_SOURCE needs
"""
import argparse
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

TABLE = "kesto_netcdf.so"  # a table of addresses, without functions
# What users run: the command, the library, and what the command loads.
SHIPPED = re.compile(rf"^(kesto|libKESTO\.so.*|{re.escape(TABLE)})$")


def readelf(option, path):
    return subprocess.run(["readelf", "--wide", option, path], check=True, capture_output=True, text=True).stdout


def is_elf(path):
    if path.is_symlink() or not path.is_file():
        return False
    with open(path, "rb") as file:
        header = file.read(18)
    return header[:4] == b"\x7fELF" and header[16] in (2, 3)  # programs and shared objects


def check_search_paths(dynamic):
    """An empty element is the current folder, and so is one that is relative: whoever puts a library there has it run."""
    for paths in re.findall(r"\((?:RUNPATH|RPATH)\)\s+Library (?:runpath|rpath): \[(.*)\]", dynamic):
        for path in paths.split(":"):
            if not re.match(r"/|\$ORIGIN(/|$)", path):
                yield f'looks for libraries in "{path}" of "{paths}"'


def check_hardening(path, dynamic, fortified):
    segments = readelf("--program-headers", path)
    symbols = readelf("--dyn-syms", path)
    stack = re.search(r"^\s+GNU_STACK\s.*\s(\S+)\s+0x\w+$", segments, re.MULTILINE)
    wanted = {"read-only relocations": "GNU_RELRO" in segments,
              "functions bound at the start": re.search(r"\(FLAGS_1\).*\bNOW\b", dynamic),
              "non-executable stack": stack and "E" not in stack[1],
              "position-independent code": re.search(r"type is DYN", segments)}
    has_code = path.name != TABLE
    if has_code:
        wanted["stack protector"] = re.search(r"\bUND __stack_chk_fail\b", symbols)
    if has_code and fortified:
        wanted["calls checked by _FORTIFY_SOURCE"] = re.search(r"\bUND __\w+_chk\b(?<!__stack_chk)", symbols)
    if not re.search(r"\.so", path.name):
        wanted["position-independent executable"] = re.search(r"\(FLAGS_1\).*\bPIE\b", dynamic)
    return [f"lacks: {what}" for what, found in wanted.items() if not found]


def check_folder(folder, fortified):
    wrong, programs, shipped = [], 0, set()
    for path in sorted(pathlib.Path(folder).rglob("*")):
        if not is_elf(path):
            continue
        programs += 1
        dynamic = readelf("--dynamic", path)
        faults = list(check_search_paths(dynamic))
        if SHIPPED.match(path.name):
            shipped.add(path.name)
            faults += check_hardening(path, dynamic, fortified)
        wrong += [f"{path}: {fault}" for fault in faults]
    if "kesto" not in shipped or not any(name.startswith("libKESTO") for name in shipped):
        wrong.append(f"{folder}: neither command nor library, but {sorted(shipped)}")
    print(f"{programs} programs and libraries; hardened: {', '.join(sorted(shipped))}")
    return wrong


def check_planted(command):
    """Libraries in the current folder, under the names of those that the command needs, are left alone."""
    needed = re.findall(r"\(NEEDED\)\s+Shared library: \[(.*)\]", readelf("--dynamic", command))
    with tempfile.TemporaryDirectory() as scratch:
        for name in needed:
            (pathlib.Path(scratch) / name).write_text("planted")
        environment = {name: value for name, value in os.environ.items() if name != "LD_LIBRARY_PATH"}
        done = subprocess.run([command, "--version"], cwd=scratch, env=environment, capture_output=True, text=True)
    print(f"{len(needed)} planted libraries: exit status {done.returncode}")
    return [] if done.returncode == 0 else [f"{command} loads libraries of the current folder: {done.stderr}"]


def check_needed(command):
    """What takes long to load is loaded when it is asked for."""
    needed = re.findall(r"\(NEEDED\)\s+Shared library: \[(.*)\]", readelf("--dynamic", command))
    loaded = re.findall(r"^\s*(\S+) =>", subprocess.run(["ldd", command], check=True, capture_output=True, text=True).stdout,
                        re.MULTILINE)
    slow = [name for name in loaded if re.match(r"lib(netcdf|hdf5|curl|crypto|ssl)", name)]
    print(f"{len(needed)} libraries needed, {len(loaded)} loaded at the start")
    return [f"{command} loads {name} at its start" for name in slow]


def check_missing(command):
    """The command alone, in another folder: without the library for NetCDF it says so before it runs anything."""
    with tempfile.TemporaryDirectory() as scratch:
        scratch = pathlib.Path(scratch)
        copy = shutil.copy(command, scratch)
        environment = {**os.environ, "LD_LIBRARY_PATH": f"{command.parent}:{command.parent.parent / 'lib'}"}
        subprocess.run([copy, "new", scratch / "model"], env=environment, check=True, capture_output=True)
        done = subprocess.run([copy, "run", scratch / "model/model.toml", "--format", "netcdf", "-o", scratch / "results"],
                              env=environment, capture_output=True, text=True)
    if done.returncode == 1 and "cannot load a library of this command" in done.stderr and not done.stdout:
        return []
    return [f"{command} without kesto_netcdf.so: exit status {done.returncode}\n{done.stdout}{done.stderr}"]


def check(folder, fortified):
    folder = pathlib.Path(folder).resolve()
    command = folder / "bin/kesto" if (folder / "bin/kesto").exists() else folder / "kesto"
    return check_folder(folder, fortified) + check_planted(command) + check_needed(command) + check_missing(command)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("folder")
    parser.add_argument("--fortified", action="store_true")
    arguments = parser.parse_args()
    sys.exit("\n".join(check(arguments.folder, arguments.fortified)) or 0)


if __name__ == "__main__":
    main()
