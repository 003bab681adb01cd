"""check_commands.py BUILD: the commands in the first lines of each host compile and run it, in a tree like a clone."""
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[1]
HOSTS = ("c/host.c", "cpp/host.cpp", "python/host.py", "csharp/Host.cs", "pascal/host.pas")
COMMAND = re.compile(r"^(?: \*|//|) {3,4}(\S.*?)(?: })?$", re.MULTILINE)  # indented in the comment


def clone(folder, build):
    """The names of a clone, with what the commands read. Linkers replace symbolic links, but not folders."""
    for path in ROOT.iterdir():
        if path.name in ("hosts", "python", "src"):
            shutil.copytree(path, folder / path.name)
        elif path.is_dir():
            (folder / path.name).mkdir()
    (folder / "build").mkdir(exist_ok=True)
    (folder / "build/release").symlink_to(build)


def main(build):
    expected = (ROOT / "hosts/expected.txt").read_text()
    for name in HOSTS:
        begin = "".join((ROOT / "hosts" / name).read_text().splitlines(keepends=True)[:8])
        commands = COMMAND.findall(begin)
        if not commands:
            sys.exit(f"{name} begins without a command")
        with tempfile.TemporaryDirectory() as folder:
            clone(pathlib.Path(folder), build)
            script = "\n".join(["set -e", *commands])
            done = subprocess.run(["bash", "-c", script], cwd=folder, capture_output=True, text=True, timeout=120)
        if done.returncode or not done.stdout.endswith(expected):
            sys.exit(f"{name}:\n{script}\nexit status {done.returncode}\n{done.stdout}\n{done.stderr}")
        print(f"{name}: {len(commands)} lines")


main(pathlib.Path(sys.argv[1]).resolve())
