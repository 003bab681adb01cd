"""Looks into kesto.exe: what it needs, how it is hardened, which version it shows, what it asks of Windows.

    check_exe.py KESTO_EXE OBJDUMP VERSION
"""
import re
import sys

from check_dll import HARDENING, file_version, output

# Libraries that every Windows brings, and the engine's.
ALLOWED = {"advapi32.dll", "bcrypt.dll", "crypt32.dll", "kernel32.dll", "kesto.dll", "msvcrt.dll", "shell32.dll"}
ASKED = (b"<longPathAware", b">UTF-8</activeCodePage>", b'level="asInvoker"')


def main(exe, objdump, version):
    headers = output(objdump, "-p", exe)
    with open(exe, "rb") as file:
        content = file.read()
    needed = {name.lower() for name in re.findall(r"DLL Name: (\S+)", headers)}
    print(f"needs {', '.join(sorted(needed))}")
    wrong = [f"needs {name}, which Windows does not bring" for name in sorted(needed - ALLOWED)]
    if "kesto.dll" not in needed:
        wrong.append("does not need the engine")
    wrong += [f"lacks {flag}" for flag in sorted(HARDENING - set(headers.split()))]
    wrong += [f"its manifest lacks {text.decode()}" for text in ASKED if text not in content]
    if file_version(exe) != f"{version}.0":
        wrong.append(f"shows version {file_version(exe)}, not {version}.0")
    sys.exit("\n".join(wrong) or 0)


if __name__ == "__main__":
    main(*sys.argv[1:])
