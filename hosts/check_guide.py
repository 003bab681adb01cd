"""check_guide.py GUIDE HOST: each piece of C that the guide shows stands in the host, line by line."""
import pathlib
import re
import sys

guide, host = (pathlib.Path(path).read_text() for path in sys.argv[1:])
lines = [line.strip() for line in host.splitlines()]
blocks = re.findall(r"^```c\n(.*?)^```", guide, re.MULTILINE | re.DOTALL)
if not blocks:
    sys.exit("the guide shows no C")
pieces = [piece for block in blocks for piece in re.split(r"^ *…\n", block, flags=re.MULTILINE) if piece]
for piece in pieces:
    shown = [line.strip() for line in piece.splitlines()]
    if not any(lines[at : at + len(shown)] == shown for at in range(len(lines))):
        sys.exit(f"the guide shows what the host does not have:\n{piece}")
print(f"{len(pieces)} pieces of C, as in the host")
