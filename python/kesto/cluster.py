"""A sweep on a dask cluster: chunks of members, each one `kesto sweep --members` on a worker.

dask schedules, moves results and runs what a lost worker has left undone again. A worker needs this package and the
`kesto` command; the model and what it reads are sent to it, once, as bytes.
"""
from __future__ import annotations

import json
import os
import time
from collections.abc import Iterator
from dataclasses import dataclass, replace
from pathlib import Path
from typing import TYPE_CHECKING, Any

from . import command
from .errors import CommandError
from .interrupts import passing_folder
from .sweep import Plan, expect_swept, write_design
from .sweep_files import Pieces, read_pieces

if TYPE_CHECKING:
    import pandas

CHUNK_SECONDS = 2.0  # of work: shorter chunks cost the scheduler more, longer ones leave workers idle at the end
_FIRST = 16  # members of the chunk that is timed
_ATTEMPTS = 3  # to run chunks whose package is lost


@dataclass(frozen=True, repr=False)
class Package:
    """A model with all files that it reads, and the design, by content.

    Attributes
    ----------
    files : dict of str to bytes
        By path relative to the folder that holds them all.
    model, table : str
        Two of these paths.
    root : str
        The folder where the client has them; messages name it.
    """

    files: dict[str, bytes]
    model: str
    table: str
    root: str

    def __repr__(self) -> str:
        return f"<kesto.cluster.Package: {len(self.files)} files, {sum(map(len, self.files.values()))} bytes>"

    def unpack(self, place: Path) -> None:
        """Writes the files into a folder."""
        for name, data in self.files.items():
            (place / name).parent.mkdir(parents=True, exist_ok=True)
            (place / name).write_bytes(data)


@dataclass(frozen=True)
class Chunk:
    """What a chunk left: the files of `kesto sweep`, and how long it took [s]."""

    files: dict[str, bytes]
    seconds: float


def run_chunk(package: Package, plan: Plan, first: int, last: int) -> Chunk:
    """Runs members `first` to `last` of the design; on a worker.

    Raises
    ------
    ModelError
        A member cannot be read.
    CommandError
        The worker has no `kesto` command of this version.
    """
    begin = time.perf_counter()
    with passing_folder() as folder:
        place = Path(folder, "model")
        package.unpack(place)
        words = plan.arguments(str(place / package.model), str(place / package.table), str(Path(folder, "out")))
        expect_swept(plan, command.call(*words, "--members", f"{first}-{last}", "--jobs", "1"))
        left = {path.name: path.read_bytes() for path in Path(folder, "out").iterdir() if path.is_file()}
        for name in left.keys() & {"members.csv", "members.json"}:
            left[name] = left[name].replace(str(place).encode(), package.root.encode())
    return Chunk(left, time.perf_counter() - begin)


def run_chunks(plan: Plan, design: pandas.DataFrame, client: Any, keep: str | os.PathLike[str] | None) -> Pieces:
    """The whole design on the cluster of `client`; with `keep`, joined into that folder."""
    package = pack(plan, design)
    light = replace(plan, model=_Named(str(plan.model.path)))
    workers = _Workers(client, package, light)
    count = min(_FIRST, len(design))
    chunks = workers.run([(1, count)])
    size = chunk_size(count, max(chunks[0].seconds, 1e-3), len(design), workers.count())
    chunks += workers.run(list(slices(count + 1, len(design), size)))
    return _gathered(chunks, keep)


class _Workers:
    """Those of a client. One copy of the package is sent to each, whatever the number of chunks."""

    def __init__(self, client: Any, package: Package, plan: Plan) -> None:
        self.client, self.package, self.plan = client, package, plan
        self.sent = client.scatter(package, broadcast=True, hash=True)

    def count(self) -> int:
        return max(1, sum(int(threads) for threads in self.client.nthreads().values()))

    def run(self, members: list[tuple[int, int]]) -> list[Chunk]:
        """The chunks of these members, in order. dask runs a lost chunk again, but not what it was sent: where all workers
        that had it are lost, it is sent again, under another name, since dask may not yet have forgotten the first."""
        from concurrent.futures import CancelledError

        attempts = 0
        while True:
            futures = [self.client.submit(run_chunk, self.sent, self.plan, first, last, pure=False) for first, last in members]
            try:
                return list(self.client.gather(futures))
            except CancelledError:
                attempts += 1
                if attempts == _ATTEMPTS:
                    raise
                self.sent = self.client.scatter(self.package, broadcast=True, hash=False)
            except BaseException:
                self.client.cancel(futures, force=True)
                raise


class _Named:
    """Of a model only its path, which messages name: workers have it elsewhere."""

    def __init__(self, path: str) -> None:
        self.path = path


def chunk_size(members: int, seconds: float, design: int, workers: int) -> int:
    """Members of a chunk of about two seconds, given how long `members` took; no more than gives each worker some.

    >>> chunk_size(16, 0.1, 100_000, 2), chunk_size(16, 0.1, 100, 2), chunk_size(16, 160, 100, 2)
    (320, 42, 1)
    """
    timed = max(1, round(CHUNK_SECONDS * members / seconds))
    return max(1, min(timed, -(-(design - members) // workers)))


def slices(first: int, last: int, size: int) -> Iterator[tuple[int, int]]:
    """First and last member of each chunk.

    >>> list(slices(17, 40, 10))
    [(17, 26), (27, 36), (37, 40)]
    """
    for begin in range(first, last + 1, size):
        yield begin, min(begin + size - 1, last)


def pack(plan: Plan, design: pandas.DataFrame) -> Package:
    """The model, the tables and series that it and its members read, and the design."""
    model = plan.model.path
    with passing_folder() as folder:
        table = Path(folder, "kesto-design.csv")
        write_design(design, table)
        # A sweep of one member tells which files the model reads.
        expect_swept(plan, command.call(*plan.arguments(str(model), str(table), str(Path(folder, "out"))),
                                        "--members", "1-1", "--jobs", "1"))
        summary = json.loads(Path(folder, "out", "members.json").read_text(encoding="utf-8"))
        text = table.read_bytes()
    read = {model, *(model.parent / entry["file"] for entry in summary["made_of"]["inputs"]), *_varied(model, design)}
    paths = {Path(os.path.abspath(path)) for path in read if path.name != "kesto-design.csv"}
    root = Path(os.path.commonpath([path.parent for path in paths]))
    files = {str(path.relative_to(root)): path.read_bytes() for path in sorted(paths)}
    return Package({**files, "kesto-design.csv": text}, str(model.relative_to(root)), "kesto-design.csv",
                   str(root))


def _varied(model: Path, design: pandas.DataFrame) -> set[Path]:
    """Files that members name."""
    keys = [key for key in design.columns if str(key).rsplit(".", 1)[-1] == "file"]
    return {model.parent / str(value) for key in keys for value in design[key].dropna().unique()}


def _gathered(chunks: list[Chunk], keep: str | os.PathLike[str] | None) -> Pieces:
    """The slices as one sweep; with `keep`, joined into that folder."""
    with passing_folder() as passing:
        places = [Path(passing, f"chunk-{number:05}") for number in range(len(chunks))]
        for place, chunk in zip(places, chunks):
            place.mkdir()
            for name, data in chunk.files.items():
                (place / name).write_bytes(data)
        if keep is None:
            return read_pieces(places)
        whole = Path(keep).absolute()
        joined = command.call("sweep", "--join", *map(str, places), "-q", "-o", str(whole))
        if joined.status not in (0, 1) or not (whole / "members.json").exists():
            raise CommandError(joined.errors.strip() or f"kesto sweep --join ended with status {joined.status}")
        return read_pieces([whole])
