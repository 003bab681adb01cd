"""exports.py NM LIBRARY LIST: the library's exported names are those of the list, and no more."""
import subprocess
import sys

nm, library, expected_path = sys.argv[1:]
symbols = subprocess.run([nm, "-D", "--defined-only", library], check=True, capture_output=True, text=True).stdout
exported = sorted(line.split()[-1] for line in symbols.splitlines())
with open(expected_path) as file:
    expected = file.read().split()
if exported != expected:
    sys.exit(f"exported: {exported}\nexpected: {expected}")
print(f"{len(exported)} exported names, as listed")
