"""layout.py C_PROGRAM CPP_PROGRAM: the record as C, C++ and ctypes lay it out is the same, and is the published layout.
layout.py call LIBRARY: runs a small network from ctypes."""
import ctypes
import subprocess
import sys

I, F, P = ctypes.c_int32, ctypes.c_float, ctypes.c_void_p


class Signal(ctypes.Structure):
    _fields_ = [("quantity", F), ("quality", F)]


class ComponentRow(ctypes.Structure):
    _fields_ = [(name, F) for name in ("id", "techid", "key", "brand", "size")]


class ConnectionRow(ctypes.Structure):
    _fields_ = [(name, I) for name in ("link", "senderId", "senderPort", "receiverId", "receiverPort")]


class SpecificationRow(ctypes.Structure):
    _fields_ = [(name, F) for name in
                ("host0", "host1", "brand", "host3", "select1", "select2", "number", "value", "host8")]


class SeriesEntry(ctypes.Structure):
    _fields_ = [("id", I), ("Value", ctypes.POINTER(F))]


class SignalSeriesEntry(ctypes.Structure):
    _fields_ = [("id", I), ("Signal", ctypes.POINTER(Signal))]


class SplitEntry(ctypes.Structure):
    _fields_ = [("id", I), ("nMembers", I), ("members", ctypes.POINTER(I)), ("beta", F)]


def table(name, entry):
    return [(name, ctypes.POINTER(entry)), ("n" + name, I)]


class AUEglobals(ctypes.Structure):
    _fields_ = ([("StartTime", I), ("nSteps", I), ("TimeStep", F), ("Latitude", F), ("StopOnInfeas", I),
                 ("BuildTree", I), ("CurStep", I), ("PotCompIds", ctypes.POINTER(I)), ("nPotComps", I)]
                + table("TechSpecs", SpecificationRow)
                + [("Net_Compnt", ctypes.POINTER(ComponentRow)), ("nComps", I),
                   ("Net_Conn", ctypes.POINTER(ConnectionRow)), ("nConns", I)]
                + sum((table(name, SeriesEntry) for name in
                       ("FreqSer", "Rainfall", "Temp", "Tmin", "Tmax", "Wind", "Multpls", "Threshold", "Occup",
                        "Dmdflct", "InsDmd", "WatQuant", "WatQual")), [])
                + [("nSplits", I), ("Splits", ctypes.POINTER(SplitEntry))]
                + table("Logs", SignalSeriesEntry) + table("WatBod", SignalSeriesEntry)
                + [(name, ctypes.POINTER(SeriesEntry)) for name in
                   ("NrgPot", "InfPot", "LosPot", "EvaPot", "CapPot", "OprPot")]
                + [("ErrMsg", ctypes.c_char * 256), ("ErrFlag", I)])


STRUCTURES = {c.__name__: c for c in (Signal, ComponentRow, ConnectionRow, SpecificationRow, SeriesEntry,
                                      SignalSeriesEntry, SplitEntry, AUEglobals)}

# Offsets by which hosts in use find their way, apart from any compiler.
PUBLISHED = {"StartTime": 0, "CurStep": 24, "PotCompIds": 32, "TechSpecs": 48, "Net_Compnt": 64, "Net_Conn": 80,
             "FreqSer": 96, "WatQual": 288, "nWatQual": 296, "nSplits": 300, "Splits": 304, "Logs": 312,
             "WatBod": 328, "NrgPot": 344, "OprPot": 384, "ErrMsg": 392, "ErrFlag": 648}


def compare(programs):
    texts = [subprocess.run([program], check=True, capture_output=True, text=True).stdout for program in programs]
    if texts[0] != texts[1]:
        sys.exit(f"C and C++ differ:\n{texts[0]}\n{texts[1]}")
    lines = texts[0].splitlines()
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
    print(f"{len(lines)} lines agree")


def call(path):
    library = ctypes.CDLL(path)
    library.KESTO_simul.restype = I
    library.KESTO_simul.argtypes = [ctypes.POINTER(AUEglobals), I, I]
    library.FreeAUEglobals.restype = None
    library.FreeAUEglobals.argtypes = [ctypes.POINTER(AUEglobals)]
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
    compare(sys.argv[1:3])
