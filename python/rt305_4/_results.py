"""Results: frozen records of numbers and numpy arrays. NaN: not measured."""

from __future__ import annotations

import json
from collections.abc import Iterator, Mapping
from dataclasses import dataclass
from typing import Any, TypeVar

import numpy as np

from ._interface import PARAMETER_UNITS, ParameterFields
from ._library import Values
from ._tables import Columns, Table

Result = TypeVar("Result", bound=Table)


def _values(numbers: list[float | None]) -> Values:
    """A read-only array of the numbers of a text, with NaN for null."""
    values = np.array(numbers, dtype=np.float64)
    values.flags.writeable = False
    return values


def _number(value: float | None) -> float:
    return float("nan") if value is None else float(value)


def _rows(text: str, table: str) -> list[dict[str, Any]]:
    rows: list[dict[str, Any]] = json.loads(text)[table]
    return rows


@dataclass(frozen=True)
class Parameters(Table, ParameterFields):
    """The 35 electrical parameters of six channels, by the names of the library: docs/results.md explains them."""

    @staticmethod
    def unit(name: str) -> str:
        """The unit of a parameter: unit("Pa") is "W"."""
        return PARAMETER_UNITS[name]

    def to_dict(self) -> Columns:
        """Columns name, value and unit, ready for pandas.DataFrame."""
        names = list(PARAMETER_UNITS)
        values = [getattr(self, name) for name in names]
        return {"name": names, "value": values, "unit": list(PARAMETER_UNITS.values())}


@dataclass(frozen=True, eq=False)
class Signal(Table):
    """The conditioned samples of one channel, without their mean, in V or A."""

    channel: str
    unit: str
    samples: Values
    mean: float
    rms: float
    peak2rms: float  #: largest magnitude / rms, without a unit
    peak2peak: float

    def to_dict(self) -> Columns:
        """The statistics in columns channel, name, value and unit."""
        names = ["mean", "rms", "peak2rms", "peak2peak"]
        return {
            "channel": [self.channel] * len(names),
            "name": names,
            "value": [getattr(self, name) for name in names],
            "unit": ["-" if name == "peak2rms" else self.unit for name in names],
        }


@dataclass(frozen=True, eq=False)
class Spectrum(Table):
    """The amplitude spectrum of one channel: value[k] at frequency[k], and its largest lines."""

    channel: str
    unit: str  #: "V", "A" or "dB" (relative to the largest line)
    frequency: Values  #: Hz
    value: Values
    peak_frequency: Values  #: Hz
    peak_value: Values

    def to_dict(self) -> Columns:
        """The lines in columns channel, frequency, value and unit."""
        lines = len(self.frequency)
        return {
            "channel": [self.channel] * lines,
            "frequency": self.frequency.tolist(),
            "value": self.value.tolist(),
            "unit": [self.unit] * lines,
        }


@dataclass(frozen=True, eq=False)
class Harmonics(Table):
    """The harmonics of one channel, the fundamental first. NaN: not measured."""

    channel: str
    frequency: Values  #: Hz
    level: Values  #: dB; 0 dB is 1 V or 1 A RMS

    def to_dict(self) -> Columns:
        """The harmonics in columns channel, order, frequency and level."""
        orders = len(self.frequency)
        return {
            "channel": [self.channel] * orders,
            "order": list(range(1, orders + 1)),
            "frequency": self.frequency.tolist(),
            "level": self.level.tolist(),
        }


class Channels(Table, Mapping[str, Result]):
    """Results of the measured channels: "Va", "Vb", "Vc", then "Ia", "Ib", "Ic"."""

    def __init__(self, results: dict[str, Result]) -> None:
        self._results = results

    def __getitem__(self, channel: str) -> Result:
        return self._results[channel]

    def __iter__(self) -> Iterator[str]:
        return iter(self._results)

    def __len__(self) -> int:
        return len(self._results)

    def __repr__(self) -> str:
        return f"Channels({self._results!r})"

    def to_dict(self) -> Columns:
        """The columns of all channels, concatenated, ready for pandas.DataFrame."""
        columns: Columns = {}
        for result in self._results.values():
            for name, values in result.to_dict().items():
                columns.setdefault(name, []).extend(values)
        return columns


def read_parameters(text: str) -> Parameters:
    return Parameters(**{row["LastName"]: _number(row["dataName"]) for row in _rows(text, "paramData")})


def read_signals(text: str, table: str) -> dict[str, Signal]:
    signals = {}
    for row in _rows(text, table):
        statistics = {entry["LastName"]: _number(entry["dataName"]) for entry in row["paramData"]}
        name, unit = row["LastName"], row["LastNameY"].rpartition(" ")[2]
        signals[name] = Signal(channel=name, unit=unit, samples=_values(row["dataName"]), **statistics)
    return signals


def read_spectra(text: str, table: str) -> dict[str, Spectrum]:
    spectra = {}
    for row in _rows(text, table):
        peaks = row["paramData"] or []  # null when there are none
        name, unit = row["name"], row["LastNameY"].rpartition(",")[2].strip()
        spectra[name] = Spectrum(
            channel=name,
            unit=unit,
            frequency=_values(row["dataTnvf"]),
            value=_values(row["dataTnv"]),
            peak_frequency=_values([peak["fi"] for peak in peaks]),
            peak_value=_values([peak["mag"] for peak in peaks]),
        )
    return spectra


def read_harmonics(text: str, table: str) -> dict[str, Harmonics]:
    return {
        row["name"]: Harmonics(channel=row["name"], frequency=_values(row["dataX"]), level=_values(row["dataY"]))
        for row in _rows(text, table)
    }
