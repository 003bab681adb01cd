"""The `kesto` command: where it is, and how it is called."""
from __future__ import annotations

import functools
import json
import os
import shutil
import subprocess
from collections.abc import Iterator, Sequence
from contextlib import contextmanager
from dataclasses import dataclass
from pathlib import Path
from typing import IO, Any

from . import __version__
from .errors import CommandError
from .interrupts import uninterrupted

_SECONDS_TO_END = 10.0  # for a command that was asked to end; it puts its results in place


@dataclass(frozen=True)
class Completed:
    """A call that has ended: its exit status and what it printed."""

    status: int
    output: str
    errors: str

    def json(self) -> Any:
        """What it printed, as JSON. Raises CommandError when it is none: the command said in words what is wrong."""
        try:
            return json.loads(self.output)
        except json.JSONDecodeError:
            text = self.errors.strip() or self.output.strip() or "it printed nothing"
            raise CommandError(f"kesto ended with status {self.status}: {text}") from None


def _beside_package() -> Iterator[Path]:
    """In a clone python/kesto is beside build/release/kesto; installed, both share a prefix."""
    package = Path(__file__).resolve().parent
    yield package.parents[1] / "build" / "release" / "kesto"
    for folder in package.parents:
        if folder.name == "lib":
            yield folder.parent / "bin" / "kesto"


def find() -> str:
    """The path of the command: what KESTO in the environment names, else the one beside the package, else on PATH.

    Raises
    ------
    CommandError
        It is nowhere, or of another version than this package.
    """
    named = os.environ.get("KESTO")
    if named:
        path = shutil.which(named)
        if path is None:
            raise CommandError(f"KESTO={named} in the environment is no program; expected the path of the kesto command")
    else:
        beside = [str(place) for place in _beside_package() if os.access(place, os.X_OK) and place.is_file()]
        path = beside[0] if beside else shutil.which("kesto")
        if path is None:
            raise CommandError("there is no kesto command beside this package or on PATH; install the package kesto, or"
                               " set KESTO in the environment to the path of the command")
    _expect_version(path, os.stat(path).st_mtime_ns)
    return path


@functools.cache
def _expect_version(path: str, changed: int) -> None:
    """Raises CommandError unless the command, as it was last changed, has the version of this package."""
    try:
        printed = subprocess.run([path, "--version"], capture_output=True, text=True, errors="replace", check=False,
                                 stdin=subprocess.DEVNULL).stdout.strip()
    except OSError as error:
        raise CommandError(f"{path} does not start: {error.strerror}") from error
    if printed != f"kesto {__version__}":
        raise CommandError(f"{path} is of another version: it prints \"{printed}\", this package is {__version__}")


@contextmanager
def started(arguments: Sequence[str], *, output: int | IO[Any] = subprocess.PIPE) -> Iterator[subprocess.Popen[str]]:
    """The running command. It is ended, with its children, when the block is left by an exception (an interrupt)."""
    path = find()
    process: subprocess.Popen[str] | None = None
    try:
        with uninterrupted():  # a command that has started, but is not known, would go on
            process = subprocess.Popen([path, *arguments], stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.PIPE,
                                       text=True, encoding="utf-8", errors="replace")
        yield process
    except BaseException:
        if process is not None:
            _end(process)
        raise
    finally:
        for pipe in (process.stdout, process.stderr) if process is not None else ():
            if pipe:
                pipe.close()


def _end(process: subprocess.Popen[str]) -> None:
    if process.poll() is not None:
        return
    process.terminate()
    try:
        # What it still prints is read: a full pipe would keep it from ending.
        process.communicate(timeout=_SECONDS_TO_END)
    except subprocess.TimeoutExpired:
        process.kill()
        process.wait()


def call(*arguments: str) -> Completed:
    """Runs the command to its end.

    Parameters
    ----------
    *arguments : str
        As on the command line.

    Raises
    ------
    CommandError
        The command is missing or of another version.
    """
    with started(arguments) as process:
        output, errors = process.communicate()
    return Completed(process.returncode, output, errors)
