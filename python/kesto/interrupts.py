"""What an interrupt (Ctrl-C, or that of a notebook cell) must not cut in two."""
from __future__ import annotations

import signal
import tempfile
import threading
from collections.abc import Iterator
from contextlib import contextmanager
from pathlib import Path
from typing import Any


@contextmanager
def uninterrupted() -> Iterator[None]:
    """Holds an interrupt back until the block has ended. Threads other than the main one are not interrupted."""
    before = signal.getsignal(signal.SIGINT)
    if threading.current_thread() is not threading.main_thread() or not callable(before):
        yield
        return
    came: list[tuple[int, Any]] = []
    signal.signal(signal.SIGINT, lambda number, frame: came.append((number, frame)))
    try:
        yield
    finally:
        signal.signal(signal.SIGINT, before)
        if came:
            before(*came[0])


@contextmanager
def passing_folder() -> Iterator[Path]:
    """A folder that goes when the block is left, in the middle of its removal interrupted or not."""
    made: tempfile.TemporaryDirectory[str] | None = None
    try:
        with uninterrupted():
            made = tempfile.TemporaryDirectory(prefix="kesto-")
        yield Path(made.name)
    finally:
        with uninterrupted():
            if made is not None:
                made.cleanup()
