"""check.py COMMAND...: runs a host twice, as it is and with a brand that does not exist, and checks what it prints."""
import difflib
import pathlib
import subprocess
import sys

ERROR = "KESTO: Specification 25 of brand 9 not found! (status -123456789)\n"


def run(command):
    return subprocess.run(command, capture_output=True, text=True, timeout=60)


def main(command):
    expected = (pathlib.Path(__file__).parent / "expected.txt").read_text()
    good = run(command)
    if good.returncode or good.stderr or good.stdout != expected:
        diff = difflib.unified_diff(expected.splitlines(), good.stdout.splitlines(), "expected", "printed", lineterm="")
        sys.exit(f"exit status {good.returncode}\n{good.stderr}\n" + "\n".join(diff))
    bad = run(command + ["broken"])
    if bad.returncode != 1 or bad.stdout or bad.stderr != ERROR:
        sys.exit(f"broken: exit status {bad.returncode}\nstdout: {bad.stdout}\nstderr: {bad.stderr}\nexpected: {ERROR}")
    print(good.stdout + bad.stderr, end="")


main(sys.argv[1:])
