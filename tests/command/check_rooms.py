"""The rooms of the command, and hosts: whoever may not know a header does not find it.

    check_rooms.py COMPILE_COMMANDS REPOSITORY

A source of a room, compiled as the build compiles it, finds the headers of its own room and of the rooms that it links,
and none of a higher room. A source that links the library finds AUEglobals.h and nothing else of the engine.
"""
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys

commands_file, root = map(pathlib.Path, sys.argv[1:])
command = root / "command"
problems = []

# Lowest first, each with the rooms that it links.
links = {room: (above or "").split() for room, above in
         re.findall(r"^add_room\((\w+)(?: ABOVE ((?: ?[a-z]+)+))?", (command / "CMakeLists.txt").read_text(), re.MULTILINE)}
rooms = list(links)
headers = {room: sorted(path.name for path in (command / room).glob("*.h")) for room in rooms}
engine_headers = sorted(str(path.relative_to(root / "src")) for path in (root / "src").rglob("*.h"))


def flags(source):
    """How the build compiles that source, without what it reads and writes, and without headers compiled beforehand."""
    entry = next(e for e in entries if e["file"] == str(source))
    words = shlex.split(entry["command"])
    kept, skip = [], False
    for word in words:
        if skip or word in ("-o", "-c", "-include", entry["file"]):
            skip = word in ("-o", "-include") and not skip
            continue
        kept.append(word)
    return kept, entry["directory"]


def found(source, names):
    """Those of the headers that an #include in that source would find."""
    code = "".join(f'#if __has_include("{name}")\nfound {name}\n#endif\n' for name in names)
    words, directory = flags(source)
    language = "c" if source.suffix == ".c" else "c++"
    done = subprocess.run([*words, "-x", language, "-E", "-P", "-w", "-"], input=code, cwd=directory, capture_output=True,
                          text=True, env={**os.environ, "CCACHE_DISABLE": "1"})
    if done.returncode:
        sys.exit(f"{source}: {done.stderr}")
    return set(re.findall(r"^found (\S+)$", done.stdout, re.MULTILINE))


def known_to(room):
    return {room}.union(*(known_to(lower) for lower in links[room]))


with open(commands_file, encoding="utf-8") as file:
    entries = json.load(file)

folders = sorted(path.name for path in command.iterdir() if path.is_dir())
if folders != sorted(rooms):
    problems.append(f"the folders of command/ are {folders}, the rooms in its CMakeLists.txt {sorted(rooms)}")
owners = {}
for room in rooms:
    for name in headers[room]:
        if name in owners:
            problems.append(f"{name}: a header of both {owners[name]} and {room}")
        owners[name] = room
for path in sorted(command.rglob("*.[hc]*")):
    if re.search(r'^\s*#\s*include\s*"[^"]*\.\./', path.read_text(encoding="utf-8"), re.MULTILINE):
        problems.append(f"{path.relative_to(root)}: an #include by way of ../")

for number, room in enumerate(rooms):
    for lower in links[room]:
        if rooms.index(lower) >= number:
            problems.append(f"{room} links {lower}, which does not stand below it")
    reached = found(next((command / room).glob("*.cpp")), [*owners, *engine_headers])
    for name in sorted(reached & owners.keys()):
        if rooms.index(owners[name]) > number:
            problems.append(f"{room} finds {name} of the higher room {owners[name]}")
    for other in known_to(room):
        for name in set(headers[other]) - reached:
            problems.append(f"{room} does not find {name} of {other}")
    beyond = reached - owners.keys() - {"AUEglobals.h"}
    if beyond:
        problems.append(f"{room} finds headers of the engine: {sorted(beyond)}")
    if ("AUEglobals.h" in reached) != ("engine" in known_to(room)):
        problems.append(f"{room}: AUEglobals.h is for the room engine and those above it")

for host in ("c/host.c", "cpp/host.cpp"):
    reached = found(root / "hosts" / host, [*engine_headers, *owners])
    if reached != {"AUEglobals.h"}:
        problems.append(f"hosts/{host} finds {sorted(reached)} instead of AUEglobals.h alone")

if problems:
    sys.exit("\n".join(problems))
print(f"{len(rooms)} rooms with {len(owners)} headers, each out of reach of the rooms below it")
