"""Recordings in files: what they hold, as numpy arrays."""

from __future__ import annotations

import io
import json
import os
from collections.abc import Iterator, Mapping
from dataclasses import dataclass
from datetime import datetime, timedelta
from functools import cached_property
from typing import TYPE_CHECKING, Any

import numpy as np

from . import _tool
from ._library import Error, Values
from ._measurement import Measurement, measure_files
from ._tables import Columns, Table
from ._times import time_of
from ._tool import Option, PathLike

if TYPE_CHECKING:
    import pandas


@dataclass(frozen=True)
class Segment:
    """A run of evenly spaced samples."""

    number: int  #: from 1
    first: int  #: its first sample, from 0
    samples: int
    rate: float  #: samples per second
    start: float  #: seconds after the first sample of the recording


class Recording(Table, Mapping[str, Values]):
    """One segment of a recording: its columns by name, as read-only arrays in the units of the file.

    NaN marks missing samples. recording["Ua"] is also the column that is taken for channel Ua. The samples are read from
    the file when they are first asked for.
    """

    file: str
    info: dict[str, Any]  #: the JSON document of `rt305 info`
    segment: Segment  #: whose samples these are

    def __init__(self, file: str, segment: int | None, reading: Mapping[str, Option]) -> None:
        self.file = file
        self._reading = dict(reading)
        self.info = json.loads(_tool.run(["info", "--json", *_tool.arguments(reading), "--", file]))
        if not self.info["segments"]:
            raise Error(f"{file}: there is no time column; give rate=")
        number = self.info["recording"]["segment"] if segment is None else segment
        if not 1 <= number <= len(self.segments):
            raise Error(f"{file}: there is no segment {segment} in {len(self.segments)}")
        self.segment = self.segments[number - 1]
        self._columns = [column for column in self.info["columns"] if column["fault"] is None]

    @property
    def segments(self) -> tuple[Segment, ...]:
        """All evenly spaced runs of samples; open(path, segment=2) gives the samples of the second."""
        return tuple(
            Segment(run["segment"], run["first"] - 1, run["samples"], run["rate"], run["start"])
            for run in self.info["segments"]
        )

    @property
    def rate(self) -> float:
        """Samples per second."""
        return self.segment.rate

    @property
    def station(self) -> str | None:
        """The station that the file names."""
        return self.info["recording"]["station"]  # type: ignore[no-any-return]

    @property
    def recorder(self) -> str | None:
        """The recorder that the file names."""
        return self.info["recording"]["recorder"]  # type: ignore[no-any-return]

    @property
    def start(self) -> datetime | None:
        """Date and time of the first sample of the file."""
        return time_of(self.info["recording"]["start"])

    @property
    def trigger(self) -> datetime | None:
        """Date and time of the trigger."""
        return time_of(self.info["recording"]["trigger"])

    @property
    def nominal(self) -> float | None:
        """Nominal frequency of the grid in Hz, if the file says it."""
        return self.info["recording"]["nominal"]  # type: ignore[no-any-return]

    @property
    def warnings(self) -> tuple[str, ...]:
        """What was odd about the file."""
        return tuple(self.info["warnings"])

    @property
    def units(self) -> dict[str, str]:
        """The unit of each column, as written in the file."""
        return {name: column["unit"] or "" for name, column in zip(self, self._columns)}

    @property
    def skews(self) -> dict[str, float]:
        """Delay of the samples of each column after the times of the recording, in s; measure() corrects it, the arrays
        have the samples as they were taken."""
        return {name: column["skew"] for name, column in zip(self, self._columns)}

    @property
    def channels(self) -> dict[str, str]:
        """The column that is taken for each of the channels Ua to Ic; measure(map={"Ua": "VA"}) chooses another."""
        return {column["channel"]: name for name, column in zip(self, self._columns) if column["channel"]}

    @cached_property
    def time(self) -> Values:
        """Seconds of each sample after the first one of the file."""
        return _fixed(self.segment.start + np.arange(self.segment.samples) / self.rate)

    @cached_property
    def _names(self) -> list[str]:
        names: list[str] = []
        for column in self._columns:
            name, number = column["name"], 2
            while name in names:
                name, number = f"{column['name']} {number}", number + 1
            names.append(name)
        return names

    @cached_property
    def _samples(self) -> dict[str, Values]:
        reading = {name: value for name, value in self._reading.items() if name != "map"}
        options = _tool.arguments(reading | {"segment": self.segment.number})
        content = _tool.run(["convert", "--to=npy", *options, "--", self.file])
        records = np.load(io.BytesIO(content))
        assert records.dtype.names is not None
        if (len(records.dtype.names) - 1, len(records)) != (len(self._columns), self.segment.samples):
            raise Error(f"{self.file}: has changed since it was opened")
        return {
            name: _fixed(np.ascontiguousarray(records[field])) for name, field in zip(self, records.dtype.names[1:])
        }

    def __getitem__(self, name: str) -> Values:
        return self._samples[name if name in self._names else self.channels[name]]

    def __iter__(self) -> Iterator[str]:
        return iter(self._names)

    def __len__(self) -> int:
        return len(self._columns)

    def measure(self, **options: Option) -> Measurement:
        """The figures of the segment: measure_files() of this one file, with the same options except for windows."""
        if several := options.keys() & {"window", "step", "errors"}:
            raise ValueError(f"{min(several)}= is for measure_files(), which measures windows and several files")
        given: dict[str, Any] = self._reading | {"segment": self.segment.number} | options
        (result,) = measure_files(self.file, errors="raise", **given)
        return result

    def to_pandas(self) -> pandas.DataFrame:
        """The samples, one row for each time: dates if the file has one, else seconds."""
        import pandas

        index = pandas.Index(self.time, name="time")
        if self.start:
            index = pandas.DatetimeIndex(self.start + pandas.to_timedelta(self.time, unit="s"), name="time")
        return pandas.DataFrame(dict(self), index=index)

    def to_dict(self) -> Columns:
        """What the columns are, in columns name, unit, channel, minimum, maximum and mean."""
        keys = ("unit", "channel", "minimum", "maximum", "mean")
        return {"name": list(self)} | {key: [column[key] for column in self._columns] for key in keys}

    @property
    def _caption(self) -> str:
        facts = [str(fact) for fact in (self.station, self.start) if fact]
        return f"{self.file}: {', '.join([*facts, f'{self.segment.samples} samples at {self.rate:g} Hz'])}"

    def __repr__(self) -> str:
        return f"<Recording {self._caption}; {len(self)} columns>"


def _fixed(values: Values) -> Values:
    values.flags.writeable = False
    return values


def open(path: PathLike, *, segment: int | None = None, **reading: Option) -> Recording:
    """Opens a recording: CSV, COMTRADE, WAV or FLAC, or one of them with .gz.

    segment  which of several segments (default: the longest at the highest rate)
    reading  options of the tool on reading: rate=4800, columns="time,Ua(V)", primary=True, encoding="windows-1251"
    """
    return Recording(os.fspath(path), segment, reading)
