"""The four measurements, from numpy arrays to results."""

from __future__ import annotations

import ctypes
import warnings
from collections.abc import Callable, Sequence
from dataclasses import dataclass
from typing import Literal, TypeVar

import numpy as np
from numpy.typing import ArrayLike

from . import _library
from ._results import (
    Channels,
    Harmonics,
    Parameters,
    Signal,
    Spectrum,
    Values,
    read_harmonics,
    read_parameters,
    read_signals,
    read_spectra,
)

Power = Literal["none", "two-wattmeter", "two-wattmeter-phase", "three-wattmeter", "three-wattmeter-complex"]
Wiring = Literal["three", "four"]
Frequency = Literal["fixed", "control"]
Window = Literal["rect", "hann", "hamming", "kaiser"]
Phase = Literal["a", "b", "c"]

_POWER = {
    "none": 0,
    "three-wattmeter": 0x10000,
    "two-wattmeter": 0x20000,
    "two-wattmeter-phase": 0x30000,
    "three-wattmeter-complex": 0x40000,
}
_WIRING = {"three": 0, "four": 0x1}
_FREQUENCY = {"fixed": 0, "control": 0x100}
_WINDOW = {"rect": 0, "hann": 0x1000000, "hamming": 0x2000000, "kaiser": 0x3000000}
_MODE = {1: 0, 2: 0x10000000}
_TWO_CURRENTS: dict[Phase | None, int] = {None: 0, "a": 0x60, "b": 0xA0, "c": 0xE0}
_DB = 0x2
_CRITERION = 0x10000
_KEEP_REBUILT_RMS = 0x200
_INVERT_P = 0x400
_INVERT_Q = 0x800
_SAMPLES_IN_VOLT_AND_AMPERE = 0x70000000

Word = TypeVar("Word")
Kind = TypeVar("Kind", Signal, Spectrum, Harmonics)


@dataclass(frozen=True)
class Channel:
    """Samples with the settings of their acquisition channel, where a plain array has none."""

    samples: ArrayLike
    coefficient: float = 1.0  #: factor on the samples, for example a transformer ratio
    gain: float = 1.0  #: gain setting of the channel; read with hardware=True only
    resistance: float = 0.0  #: input resistance in ohm; read with hardware=True only


Samples = ArrayLike | Channel


def _flag(option: str, word: Word, flags: dict[Word, int]) -> int:
    try:
        return flags[word]
    except KeyError:
        raise ValueError(f"{option} is {word!r}, not one of {', '.join(map(repr, flags))}") from None


def _row(name: str, samples: ArrayLike) -> Values:
    """The samples as contiguous doubles: the very array when it holds such, else a copy. Masked samples become NaN."""
    if isinstance(samples, np.ma.MaskedArray):
        samples = np.where(samples.mask, np.nan, samples.data)
    array = np.asarray(samples)
    if array.ndim != 1:
        raise ValueError(f"{name} has {array.ndim} dimensions, a channel has one")
    if array.dtype.kind not in "fiub":
        raise TypeError(f"{name} holds {array.dtype}, not real numbers")
    return np.require(array, dtype=np.float64, requirements=["C", "A"])


@dataclass(frozen=True)
class _Record:
    """The channels of one call: all voltages or none, then all currents or none."""

    channels: list[Channel | None]

    @staticmethod
    def of(given: Sequence[Samples | None], two_currents: Phase | None) -> _Record:
        channels = [c if c is None or isinstance(c, Channel) else Channel(c) for c in given]
        if two_currents is not None:
            # The library wants samples of the current that it rebuilds, and reads others: any will do.
            rebuilt = 3 + "abc".index(two_currents)
            channels[rebuilt] = channels[rebuilt] or channels[3 + (rebuilt + 1) % 3]
        voltages, currents = (sum(channel is not None for channel in kind) for kind in (channels[:3], channels[3:]))
        if (voltages, currents) not in ((3, 0), (0, 3), (3, 3)):
            raise TypeError("give three voltages, three currents or all six channels")
        return _Record(channels)

    def kinds(self) -> str:
        return ("U" if self.channels[0] else "") + ("I" if self.channels[3] else "")

    def input_type(self) -> int:
        types = {"U": _library.VOLTAGES, "I": _library.CURRENTS, "UI": _library.VOLTAGES_AND_CURRENTS}
        return types[self.kinds()]

    def check_rate(self, rate: float) -> None:
        assumed = 10000.0 if self.kinds() == "UI" else 500.0
        if not abs(rate - assumed) <= 1e-3 * assumed:
            warnings.warn(
                f"the samples are taken as {assumed:g} a second, not {rate:g}: every frequency is wrong by that "
                "factor, and so is what depends on it; resample the channels",
                stacklevel=3,
            )

    def process(self, operation: int, hardware: bool, **fields: float) -> dict[str, str]:
        """Runs one request with these fields beside the channels, and returns its texts."""
        names = ("ua", "ub", "uc", "ia", "ib", "ic")
        given = [(place, channel) for place, channel in enumerate(self.channels) if channel is not None]
        rows = [_row(names[place], channel.samples) for place, channel in given]  # alive until the call is over
        descriptors = (_library.ChannelData * len(given))()
        for descriptor, (place, channel), row in zip(descriptors, given, rows):
            descriptor.signalKind, descriptor.phase = divmod(place, 3)
            descriptor.samples = row.ctypes.data_as(ctypes.POINTER(ctypes.c_double))
            descriptor.count = len(row)
            descriptor.coefficient = channel.coefficient
            descriptor.inputResistance = channel.resistance
            descriptor.gain = channel.gain
        request = _library.Request(
            channels=descriptors,
            channelCount=len(given),
            samplesNumber=len(rows[0]),
            inputType=self.input_type(),
            operation=operation,
            **fields,
        )
        request.measurementFlags |= 0 if hardware else _SAMPLES_IN_VOLT_AND_AMPERE
        return _library.process(request)

    def read(
        self, read: Callable[[str, str], dict[str, Kind]], texts: dict[str, str], text: str, table: str
    ) -> Channels[Kind]:
        """The results of the kinds that are there; the texts of others are what earlier calls left."""
        results: dict[str, Kind] = {}
        for kind in self.kinds():
            results |= read(texts[text + kind], table + kind)
        return Channels(results)


def measure(
    ua: Samples,
    ub: Samples,
    uc: Samples,
    ia: Samples | None,
    ib: Samples | None,
    ic: Samples | None,
    *,
    rate: float,
    power: Power = "none",
    wiring: Wiring = "four",
    frequency: Frequency = "fixed",
    two_currents: Phase | None = None,
    keep_rebuilt_rms: bool = False,
    invert_p: bool = False,
    invert_q: bool = False,
    hardware: bool = False,
) -> Parameters:
    """Electrical parameters: voltages, currents, frequency, distortion and power.

    rate              samples per second; the computation is made for 10000, another rate gives a warning
    power             how power is measured
    wiring            "four": ua, ub, uc are phase voltages; "three": they are the line voltages ab, bc, ca
    frequency         where the fundamental must lie: "fixed" inside 49.6-50.4 Hz, "control" inside 10-60 Hz
    two_currents      rebuild the current of this phase from the other two; None may stand in its place
    keep_rebuilt_rms  RMS of the rebuilt current from its samples, not the mean of the other two
    invert_p          turn the sign of the total active power, invert_q that of the total reactive power
    hardware          samples are counts that gain and resistance of each Channel scale, not V and A
    """
    flags = _flag("power", power, _POWER) | _flag("wiring", wiring, _WIRING)
    flags |= _flag("frequency", frequency, _FREQUENCY) | _flag("two_currents", two_currents, _TWO_CURRENTS)
    flags |= keep_rebuilt_rms * _KEEP_REBUILT_RMS | invert_p * _INVERT_P | invert_q * _INVERT_Q
    record = _Record.of((ua, ub, uc, ia, ib, ic), two_currents)
    record.check_rate(rate)
    texts = record.process(_library.PARAMETERS, hardware, sampleRate=rate, measurementFlags=flags)
    return read_parameters(texts["paramData"])


def signals(
    ua: Samples | None = None,
    ub: Samples | None = None,
    uc: Samples | None = None,
    ia: Samples | None = None,
    ib: Samples | None = None,
    ic: Samples | None = None,
    *,
    two_currents: Phase | None = None,
    hardware: bool = False,
) -> Channels[Signal]:
    """The samples of each channel as the library measures them, with mean, RMS, crest factor and peak to peak."""
    flags = _flag("two_currents", two_currents, _TWO_CURRENTS)
    record = _Record.of((ua, ub, uc, ia, ib, ic), two_currents)
    texts = record.process(_library.SIGNALS, hardware, sampleRate=1.0, measurementFlags=flags)
    return record.read(read_signals, texts, "timeSignalData", "signalData")


def spectrum(
    ua: Samples | None = None,
    ub: Samples | None = None,
    uc: Samples | None = None,
    ia: Samples | None = None,
    ib: Samples | None = None,
    ic: Samples | None = None,
    *,
    rate: float,
    window: Window = "rect",
    mode: Literal[1, 2] = 1,
    db: bool = False,
    peaks: int = 10,
    criterion: float | None = None,
    two_currents: Phase | None = None,
    hardware: bool = False,
) -> Channels[Spectrum]:
    """The amplitude spectrum of each channel with its largest lines.

    rate       samples per second; the computation is made for 10000 with six channels and for 500 with voltages or
               currents alone, another rate gives a warning
    mode       1: fine lines up to 1000 Hz (250 Hz for voltages or currents alone); 2: coarser lines up to rate / 2
    db         levels in dB below the largest line instead of V and A
    peaks      how many of the largest lines to give, at most 20 without criterion
    criterion  only lines above this height in V, A or dB, by frequency
    """
    if not 0 <= peaks <= 32767:
        raise ValueError(f"peaks is {peaks}, not between 0 and 32767")
    flags = _flag("window", window, _WINDOW) | _flag("mode", mode, _MODE) | db * _DB
    flags |= 0 if criterion is None else _CRITERION
    rebuilt = _flag("two_currents", two_currents, _TWO_CURRENTS)
    record = _Record.of((ua, ub, uc, ia, ib, ic), two_currents)
    record.check_rate(rate)
    texts = record.process(
        _library.SPECTRUM,
        hardware,
        sampleRate=rate,
        measurementFlags=rebuilt,
        spectrumFlags=flags,
        auxMode=peaks,
        auxValue=criterion or 0.0,
    )
    return record.read(read_spectra, texts, "spectrumParam", "spectrumData")


def distortion(
    ua: Samples | None = None,
    ub: Samples | None = None,
    uc: Samples | None = None,
    ia: Samples | None = None,
    ib: Samples | None = None,
    ic: Samples | None = None,
    *,
    rate: float,
    two_currents: Phase | None = None,
    hardware: bool = False,
) -> Channels[Harmonics]:
    """The harmonics of each channel: 40 of them with six channels, 5 with voltages or currents alone.

    rate is as for spectrum().
    """
    flags = _flag("two_currents", two_currents, _TWO_CURRENTS)
    record = _Record.of((ua, ub, uc, ia, ib, ic), two_currents)
    record.check_rate(rate)
    texts = record.process(_library.DISTORTION, hardware, sampleRate=rate, measurementFlags=flags)
    return record.read(read_harmonics, texts, "paramDataThd", "thdData")
