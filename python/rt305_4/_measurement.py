"""What `rt305 measure` measures, of arrays and of files: every rate and nominal frequency, and the derived figures."""

from __future__ import annotations

import contextlib
import json
import os
import struct
from collections.abc import Iterable, Iterator, Mapping
from dataclasses import dataclass
from datetime import datetime, timedelta
from typing import TYPE_CHECKING, Any, Literal, overload
from urllib.parse import unquote_to_bytes

import numpy as np
from numpy.typing import ArrayLike

from . import _tool
from ._library import Error
from ._operations import row_of
from ._tables import Columns, Table
from ._times import time_of
from ._tool import Option, PathLike

if TYPE_CHECKING:
    import pandas

UNITS = {"Ua": "V", "Ub": "V", "Uc": "V", "Ia": "A", "Ib": "A", "Ic": "A"}


@dataclass(frozen=True, eq=False, repr=False)
class Measurement(Table, Mapping[str, Any]):
    """The figures of a recording or of a window of it: the JSON document of `rt305 measure`, by its keys.

    result["derived"]["PF"]["total"] is a number; docs/schema/rt305.schema.json describes all keys. What could not be
    measured is None or has no key.
    """

    document: dict[str, Any]

    def __getitem__(self, key: str) -> Any:
        return self.document[key]

    def __iter__(self) -> Iterator[str]:
        return iter(self.document)

    def __len__(self) -> int:
        return len(self.document)

    @property
    def file(self) -> str:
        """The file as it was given."""
        return _name_in(self["recording"])

    @property
    def start(self) -> float:
        """Seconds from the first sample of the segment to the first that was measured."""
        return float(self["measured"]["start"])

    @property
    def time(self) -> datetime | None:
        """Date and time of the first measured sample; None when the file has none, or of later segments."""
        start = time_of(self["recording"]["start"]) if self["recording"]["segment"] == 1 else None
        return start and start + timedelta(seconds=self.start)

    def to_dict(self) -> Columns:
        """Every figure in columns table, quantity, column, value and unit, as `rt305 measure --csv` has them."""
        rows = [
            (table, quantity, column, float("nan") if value is None else value, figures["unit"])
            for table, quantities in self.document.items()
            if isinstance(quantities, dict)
            for quantity, figures in quantities.items()
            if isinstance(figures, dict) and "unit" in figures
            for column, value in figures.items()
            if column != "unit"
        ]
        return dict(zip(("table", "quantity", "column", "value", "unit"), map(list, zip(*rows)))) if rows else {}

    def to_row(self) -> dict[str, Any]:
        """All figures in one row, under the names that `rt305 measure --csv-wide` has: derived_PF_total."""
        facts = {"file": self.file, "station": self["recording"]["station"], "time": self.time, "start": self.start}
        return facts | {"_".join((r["table"], r["quantity"], r["column"])): r["value"] for r in self.to_records()}

    @property
    def _caption(self) -> str:
        measured = self["measured"]
        duration = measured["samples"] / measured["rate"]
        return f"{self.file}: {measured['content']}, {duration:g} s from {self.start:g} s"

    def __repr__(self) -> str:
        return f"<Measurement of {self._caption}>"


def _name_in(recording: Mapping[str, Any]) -> str:
    """The name as os.listdir() gives it, which is not UTF-8 everywhere."""
    escaped = recording.get("file_escaped")
    return os.fsdecode(unquote_to_bytes(escaped) if escaped else recording["file"].encode())


def _sound(channels: Mapping[str, ArrayLike]) -> memoryview:
    """The channels as a WAV file of 64-bit floats, which the tool reads to the last bit. Its rate is unused."""
    rows = [row_of(name, samples) for name, samples in channels.items()]
    if len({len(row) for row in rows}) != 1:
        raise ValueError("give channels with equally many samples")
    frame, size = 8 * len(rows), 8 * len(rows) * len(rows[0])
    most = 2**32 - 1
    form = struct.pack("<HHIIHHH", 3, len(rows), 1, frame, frame, 64, 0)
    header = b"RIFF" + struct.pack("<I", min(size + 50, most)) + b"WAVEfmt " + struct.pack("<I", len(form)) + form
    header += b"fact" + struct.pack("<II", 4, min(len(rows[0]), most)) + b"data" + struct.pack("<I", min(size, most))
    content = np.empty(len(header) + size, dtype=np.uint8)
    content[: len(header)] = np.frombuffer(header, dtype=np.uint8)
    frames = content[len(header) :].view("<f8").reshape(-1, len(rows))
    for place, row in enumerate(rows):
        frames[:, place] = row
    return content.data


def measure(
    ua: ArrayLike | None = None,
    ub: ArrayLike | None = None,
    uc: ArrayLike | None = None,
    ia: ArrayLike | None = None,
    ib: ArrayLike | None = None,
    ic: ArrayLike | None = None,
    *,
    rate: float,
    nominal: float | None = None,
    **options: Option,
) -> Measurement:
    """Everything that `rt305 measure` measures of samples in V and A, of any channels at any rate.

    rate     samples per second; they are resampled to what the library needs
    nominal  nominal frequency of the grid in Hz (default: by the fundamental)
    options  those of the tool: wiring="three", two_currents="b", coefficients={"Ua": 100}, part="longest-steady"
    """
    given = {name: samples for name, samples in zip(UNITS, (ua, ub, uc, ia, ib, ic)) if samples is not None}
    if not given:
        raise TypeError("give the samples of at least one channel")
    columns = ",".join(f"{name}({UNITS[name]})" for name in given)
    fixed: dict[str, Option] = {"rate": rate, "nominal": nominal, "columns": columns, "gain": f"{next(iter(given))}=1"}
    command = ["measure", "--json", *_tool.library_arguments(), *_tool.arguments(fixed | options), "-"]
    with _tool.content(_sound(given)) as stdin:
        return Measurement(json.loads(_tool.run(command, stdin)))


@overload
def measure_files(
    paths: PathLike | Iterable[PathLike],
    *,
    window: float | str | None = None,
    step: float | str | None = None,
    jobs: int = 1,
    errors: Literal["raise"] = "raise",
    **options: Option,
) -> Iterator[Measurement]: ...


@overload
def measure_files(
    paths: PathLike | Iterable[PathLike],
    *,
    window: float | str | None = None,
    step: float | str | None = None,
    jobs: int = 1,
    errors: Literal["yield"],
    **options: Option,
) -> Iterator[Measurement | Error]: ...


def measure_files(
    paths: PathLike | Iterable[PathLike],
    *,
    window: float | str | None = None,
    step: float | str | None = None,
    jobs: int = 1,
    errors: Literal["raise", "yield"] = "raise",
    **options: Option,
) -> Iterator[Measurement | Error]:
    """Measures recordings and yields the results one by one, in the order of the paths.

    window   length of the windows to measure, in s or as text such as "200ms" (default: all of a recording)
    step     from the start of one window to that of the next (default: their length)
    jobs     processes that measure at the same time
    errors   "raise" ends with the first recording that fails; "yield" gives its Error in its place and goes on. What
             ends the whole run, such as a signal, is raised in any case
    options  those of `rt305 measure`: nominal=60, map={"Ua": "VA"}, primary=True, settings="auto"
    """
    if errors not in ("raise", "yield"):
        raise ValueError(f"errors is {errors!r}, not 'raise' or 'yield'")
    names = _tool.names(paths)
    own: dict[str, Option] = {"window": window, "step": step, "jobs": jobs}
    command = ["measure", "--json-lines", "--files-from=-", *_tool.library_arguments(), *_tool.arguments(own | options)]
    return _results(command, names, errors == "yield")


def _results(command: list[str], names: list[str], yields_errors: bool) -> Iterator[Measurement | Error]:
    lines = 0
    told = None  # the exit code that stands for the failures that were yielded
    with contextlib.ExitStack() as stack:
        stdin = stack.enter_context(_tool.content(os.fsencode("".join(name + "\n" for name in names))))
        try:
            with _tool.running(command, stdin) as output:
                for line in output:
                    if not line.endswith(b"\n"):
                        break  # the tool has died
                    lines += 1
                    document = json.loads(line)
                    if "error" not in document:
                        yield Measurement(document)
                        continue
                    error = _tool.failure(document["error"], document["exit_code"])
                    if not yields_errors or not isinstance(error, Error):
                        raise error
                    told = error.exit_code if len(names) == 1 else _tool.PARTIAL
                    error.file = _name_in(document["recording"])
                    yield error
        except Error as error:
            if told is None or error.exit_code not in (told, _tool.PARTIAL):
                raise
    if lines < len(names):
        raise _tool.failure(f"the tool rt305 gave results for {lines} of {len(names)} names", _tool.ENVIRONMENT)


def to_pandas(results: Iterable[Measurement]) -> pandas.DataFrame:
    """A table of one row for each result: file, station, time, start, then every figure (see Measurement.to_row).

    An Error among the results, as measure_files(errors="yield") gives, has no figures and is a ValueError.
    """
    rows = []
    for result in results:
        if isinstance(result, Error):
            raise ValueError(f"leave the errors out of the table, such as {result!r}")
        rows.append(result.to_row())
    import pandas

    return pandas.DataFrame(rows)
