"""A host in Python: a roof fills a tank that a garden draws from, for eight days.

    PYTHONPATH=python KESTO_LIBRARY=build/release/libKESTO.so python3 hosts/python/host.py
"""
import sys

from kesto import engine

DAYS = 8
GROUP, ROOF, TANK, GARDEN, MAINS, SPILL = 1, 11, 12, 13, 14, 15
ROOFING, NO_COST, NO_SUCH_BRAND = 1, 2, 9
RAIN = [10, 0, 0, 2.5, 20, 0, 0, 0]  # mm


def network(broken):
    record = engine.AUEglobals(nSteps=DAYS, TimeStep=1)
    # id, type, group, brand, size
    record.Net_Compnt, record.nComps = engine.rows(engine.ComponentRow, [
        (ROOF, 28, GROUP, NO_SUCH_BRAND if broken else ROOFING, 80),  # m²
        (GARDEN, 45, GROUP, 0, 100),                                  # percent of its demand
        (TANK, 32, GROUP, NO_COST, 500),                              # L
        (MAINS, 26, 0, 0, 0),                                         # loggers
        (SPILL, 26, 0, 0, 0),
    ])
    # number, from, output, to, input
    record.Net_Conn, record.nConns = engine.rows(engine.ConnectionRow, [
        (1, ROOF, 1, TANK, 1),
        (2, GARDEN, 1, TANK, 2),
        (3, TANK, 1, MAINS, 1),  # what the tank could not give
        (4, TANK, 2, SPILL, 1),
    ])
    # brand, number and value; the two selectors before the number are 1
    record.TechSpecs, record.nTechSpecs = engine.rows(engine.SpecificationRow, [
        (0, 0, ROOFING, 0, 1, 1, 25, 5, 0),    # quality of the runoff
        (0, 0, ROOFING, 0, 1, 1, 27, 0.1, 0),  # share that wets the roof and evaporates
        (0, 0, NO_COST, 0, 1, 1, 12, 0, 0),
        (0, 0, NO_COST, 0, 1, 1, 13, 0, 0),
    ])
    record.PotCompIds, record.nPotComps = engine.rows(engine.ctypes.c_int32, [GROUP])
    record.Rainfall, record.nRainfall = engine.series({GROUP: RAIN})
    record.InsDmd, record.nInsDmd = engine.series({GARDEN: [200] * DAYS})
    record.WatQuant, record.nWatQuant = engine.series({TANK: [100] + [0] * (DAYS - 1)})  # 100 L to begin with
    return record


def print_results(record):
    print("day  rain mm  stored L   mains L  spilt L  evaporated L")
    for k in range(DAYS):
        print(f"{k + 1:3d} {RAIN[k]:8.1f} {record.WatQuant[0].Value[k]:9.1f}"
              f" {record.Logs[0].Signal[k].quantity:9.1f} {record.Logs[1].Signal[k].quantity + 0:8.1f}"  # + 0 turns the -0 of a dry day into 0
              f" {record.EvaPot[0].Value[k]:13.1f}")


def main():
    library = engine.load()
    record = network(broken="broken" in sys.argv[1:])
    try:
        engine.simulate(library, record, 1, DAYS)
        print_results(record)
    except engine.Error as error:
        print(f"KESTO: {error}", file=sys.stderr)
        return 1
    finally:
        library.FreeAUEglobals(record)
    return 0


sys.exit(main())
