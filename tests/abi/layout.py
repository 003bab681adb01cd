"""layout.py COMMAND...: the record as C, C++, ctypes and other languages lay it out is the same, and is the published
layout. Each command prints it, one line for each size and field; the first one is C's.
layout.py call LIBRARY: runs a small network from ctypes."""
import ctypes
import shlex
import subprocess
import sys

from kesto import engine
from kesto.engine import AUEglobals, ComponentRow, ConnectionRow

STRUCTURES = {name: getattr(engine, name) for name in
              ("Signal", "ComponentRow", "ConnectionRow", "SpecificationRow", "SeriesEntry", "SignalSeriesEntry",
               "SplitEntry", "AUEglobals")}

# Offsets by which hosts in use find their way, apart from any compiler.
PUBLISHED = {"StartTime": 0, "CurStep": 24, "PotCompIds": 32, "TechSpecs": 48, "Net_Compnt": 64, "Net_Conn": 80,
             "FreqSer": 96, "WatQual": 288, "nWatQual": 296, "nSplits": 300, "Splits": 304, "Logs": 312,
             "WatBod": 328, "NrgPot": 344, "OprPot": 384, "ErrMsg": 392, "ErrFlag": 648}


def printed(command):
    lines = subprocess.run(shlex.split(command), check=True, capture_output=True, text=True).stdout.splitlines()
    return dict(line.split(maxsplit=1) for line in lines)


def compare(commands):
    """Other programs may print fields that C's does not."""
    first = printed(commands[0])
    for command in commands[1:]:
        other = printed(command)
        for name, numbers in first.items():
            if other.get(name) != numbers:
                sys.exit(f"{name}: {numbers} in C, {other.get(name)} by {command}")
    lines = [f"{name} {numbers}" for name, numbers in first.items()]
    for line in lines:
        name, *numbers = line.split()
        if numbers[0] == "size":
            got = ctypes.sizeof(STRUCTURES[name])
            expected = int(numbers[1])
        else:
            structure, field = name.split(".")
            descriptor = getattr(STRUCTURES[structure], field)
            got = (descriptor.offset, descriptor.size)
            expected = tuple(map(int, numbers))
        if got != expected:
            sys.exit(f"{line}: ctypes has {got}")
    fields = [line for line in lines if line.startswith("AUEglobals.")]
    if len(fields) != len(AUEglobals._fields_):
        sys.exit(f"{len(fields)} fields printed, the record has {len(AUEglobals._fields_)}")
    for field, offset in PUBLISHED.items():
        if getattr(AUEglobals, field).offset != offset:
            sys.exit(f"{field} is at {getattr(AUEglobals, field).offset}, not at {offset}")
    if ctypes.sizeof(AUEglobals) != 656:
        sys.exit("the record does not have 656 bytes")
    print(f"{len(lines)} lines agree in ctypes and {len(commands)} programs")


def call(path):
    library = engine.load(path)
    record = AUEglobals(nSteps=2, TimeStep=1.0)
    components = (ComponentRow * 2)(ComponentRow(1, 31), ComponentRow(2, 26))
    connections = (ConnectionRow * 1)(ConnectionRow(1, 1, 1, 2, 1))
    record.Net_Compnt, record.nComps = components, 2
    record.Net_Conn, record.nConns = connections, 1
    status = library.KESTO_simul(ctypes.byref(record), 1, 2)
    signal = record.Logs[0].Signal[1]
    if status != 123456789 or record.CurStep != 2 or (signal.quantity, signal.quality) != (0.0, 0.0):
        sys.exit(f"status {status}: {record.ErrMsg}")
    library.FreeAUEglobals(ctypes.byref(record))
    if record.Logs:
        sys.exit("Logs is not null after freeing")
    print("called from ctypes:", status)


if sys.argv[1] == "call":
    call(sys.argv[2])
else:
    compare(sys.argv[1:])
