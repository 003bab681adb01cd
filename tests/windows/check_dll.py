"""Looks into KESTO.dll: what it exports, what it needs, which version it shows.

    check_dll.py KESTO.dll IMPORT_LIBRARY OBJDUMP NM VERSION
"""
import re
import struct
import subprocess
import sys

EXPORTS = {"KESTO_simul", "FreeAUEglobals"}
# Libraries that every Windows brings.
SYSTEM = {"advapi32.dll", "kernel32.dll", "msvcrt.dll"}
HARDENING = {"HIGH_ENTROPY_VA", "DYNAMIC_BASE", "NX_COMPAT"}


def output(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def exports(headers):
    table = headers.split("[Ordinal/Name Pointer] Table", 1)[1].split("\n\n", 1)[0]
    # Since binutils 2.44 ordinal and hint stand between the number and the name.
    return re.findall(r"\[\s*\d+\](?: \+base\[\s*\d+\]\s+[0-9a-f]+)? (\S+)", table)


def file_version(dll):
    """The four numbers of the version resource: they follow its signature and structure version."""
    with open(dll, "rb") as file:
        content = file.read()
    at = content.index(struct.pack("<II", 0xFEEF04BD, 0x00010000))
    high, low = struct.unpack_from("<II", content, at + 8)
    return f"{high >> 16}.{high & 0xFFFF}.{low >> 16}.{low & 0xFFFF}"


def main(dll, import_library, objdump, nm, version):
    headers = output(objdump, "-p", dll)
    wrong = []

    def expect(what, expected, got):
        print(f"{what}: {got}")
        if got != expected:
            wrong.append(f"{what}: expected {expected}, got {got}")

    expect("format", True, "file format pei-x86-64" in headers)
    expect("exports", sorted(EXPORTS), sorted(exports(headers)))
    needed = {name.lower() for name in re.findall(r"DLL Name: (\S+)", headers)}
    expect("needs beyond Windows itself", set(), needed - SYSTEM)
    expect("needs", True, bool(needed))
    expect("lacks of its hardening", set(), HARDENING - set(headers.split()))
    expect("stack protector", True, " T __stack_chk_fail\n" in output(nm, dll))
    linked = set(re.findall(r" T (\S+)", output(nm, import_library)))
    expect("import library", EXPORTS, linked)
    expect("version", f"{version}.0", file_version(dll))
    sys.exit("\n".join(wrong) or 0)


if __name__ == "__main__":
    main(*sys.argv[1:])
