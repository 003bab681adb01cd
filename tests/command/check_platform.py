#!/usr/bin/env python3
"""What only one operating system has is used in the sources that bear its name, and in no header.

usage: check_platform.py COMMAND_FOLDER"""

import pathlib
import re
import sys

LIBRARIES = ("fmt/", "hdf5.h", "libdeflate.h", "netcdf.h", "toml++/", "xxhash.h")
SYSTEM_SOURCE = re.compile(r"_(posix|windows)\.cpp$")


def main():
    folder = pathlib.Path(sys.argv[1])
    wrong, seen = [], 0
    for source in sorted([*folder.rglob("*.cpp"), *folder.rglob("*.h")]):
        for include in re.findall(r"^#include <([^>]+)>", source.read_text(encoding="utf-8"), re.M):
            # Standard C++ headers have no ending; <csignal> promises too little to be of use.
            if include != "csignal" and (not include.endswith(".h") or include.startswith(LIBRARIES)):
                continue
            seen += 1
            if not SYSTEM_SOURCE.search(source.name):
                wrong.append(f"{source}: <{include}> belongs behind platform.h or engine_process.h")
    if not seen:
        sys.exit("no system header was found: the test would hold nothing")
    print("\n".join(wrong))
    sys.exit(1 if wrong else 0)


main()
