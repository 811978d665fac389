"""The four operations of the library, from numpy arrays to results."""

from __future__ import annotations

import warnings
from collections.abc import Callable, Sequence
from dataclasses import dataclass
from typing import Literal, TypeVar

import numpy as np
from numpy.typing import ArrayLike

from . import _interface as c
from ._library import Row, Values, process
from ._results import (
    Channels,
    Harmonics,
    Parameters,
    Signal,
    Spectrum,
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
    "none": c.POWER_NONE,
    "three-wattmeter": c.POWER_THREE_WATTMETER,
    "two-wattmeter": c.POWER_TWO_WATTMETER,
    "two-wattmeter-phase": c.POWER_TWO_WATTMETER_PHASE,
    "three-wattmeter-complex": c.POWER_THREE_WATTMETER_COMPLEX,
}
_WIRING = {"three": 0, "four": c.FOUR_WIRE}
_FREQUENCY = {"fixed": 0, "control": c.FREQUENCY_CONTROL}
_WINDOW = {
    "rect": c.SPECTRUM_WINDOW_RECT,
    "hann": c.SPECTRUM_WINDOW_HANN,
    "hamming": c.SPECTRUM_WINDOW_HAMMING,
    "kaiser": c.SPECTRUM_WINDOW_KAISER,
}
_MODE = {1: c.SPECTRUM_MODE_1, 2: c.SPECTRUM_MODE_2}
_TWO_CURRENTS: dict[Phase | None, int] = {
    None: 0,
    "a": c.TWO_CURRENTS | c.REBUILT_PHASE_A,
    "b": c.TWO_CURRENTS | c.REBUILT_PHASE_B,
    "c": c.TWO_CURRENTS | c.REBUILT_PHASE_C,
}
_INPUT_TYPES = {"U": c.INPUT_VOLTAGES, "I": c.INPUT_CURRENTS, "UI": c.INPUT_VOLTAGES_AND_CURRENTS}
_ASSUMED_RATES = {"U": 500.0, "I": 500.0, "UI": 10000.0}

Word = TypeVar("Word")
Kind = TypeVar("Kind", Signal, Spectrum, Harmonics)


@dataclass(frozen=True)
class Channel:
    """Samples together with the settings of their acquisition channel."""

    samples: ArrayLike
    coefficient: float = 1.0  #: factor on the samples, for example the ratio of a transformer
    gain: float = 1.0  #: gain setting of the channel, used with hardware=True
    resistance: float = 0.0  #: input resistance in ohm, used with hardware=True


Samples = ArrayLike | Channel


def _flag(option: str, word: Word, flags: dict[Word, int]) -> int:
    try:
        return flags[word]
    except KeyError:
        raise ValueError(f"{option} is {word!r}, not one of {', '.join(map(repr, flags))}") from None


def row_of(name: str, samples: ArrayLike) -> Values:
    """The samples as contiguous doubles, copied only if they are not already. Masked samples become NaN."""
    if isinstance(samples, np.ma.MaskedArray):
        samples = np.where(samples.mask, np.nan, samples.data)
    array = np.asarray(samples)
    if array.ndim != 1:
        raise ValueError(f"{name} has {array.ndim} dimensions instead of one")
    if array.dtype.kind not in "fiub":
        raise TypeError(f"{name} holds {array.dtype}, not real numbers")
    return np.require(array, dtype=np.float64, requirements=["C", "A"])


class RateWarning(UserWarning):
    """The library takes the samples for those of another rate: its frequencies are wrong. measure() takes any rate."""

    __module__ = "rt305_4"


@dataclass(frozen=True)
class _Record:
    """The channels of one call: all voltages or none, then all currents or none."""

    channels: list[Channel | None]

    @staticmethod
    def of(given: Sequence[Samples | None], two_currents: Phase | None) -> _Record:
        channels = [c if c is None or isinstance(c, Channel) else Channel(c) for c in given]
        if two_currents is not None:
            # The library requires samples for the rebuilt current too, but ignores them.
            rebuilt = 3 + "abc".index(two_currents)
            channels[rebuilt] = channels[rebuilt] or channels[3 + (rebuilt + 1) % 3]
        voltages, currents = (sum(channel is not None for channel in kind) for kind in (channels[:3], channels[3:]))
        if (voltages, currents) not in ((3, 0), (0, 3), (3, 3)):
            raise TypeError("give three voltages, three currents or all six channels")
        return _Record(channels)

    def kinds(self) -> str:
        return ("U" if self.channels[0] else "") + ("I" if self.channels[3] else "")

    def check_rate(self, rate: float) -> None:
        assumed = _ASSUMED_RATES[self.kinds()]
        if not abs(rate - assumed) <= 1e-3 * assumed:
            warnings.warn(
                f"the library assumes {assumed:g} samples a second, not {rate:g}: frequencies, and all that depends on "
                "them, are wrong by that factor; measure() resamples the channels",
                RateWarning,
                stacklevel=3,
            )

    def process(
        self, operation: int, hardware: bool, measurement_flags: int, spectrum_flags: int = 0, **fields: float
    ) -> dict[str, str]:
        """Runs one request and returns its texts."""
        names = ("ua", "ub", "uc", "ia", "ib", "ic")
        rows = [
            Row(place, row_of(names[place], channel.samples), channel.coefficient, channel.resistance, channel.gain)
            for place, channel in enumerate(self.channels)
            if channel is not None
        ]
        measurement_flags |= 0 if hardware else c.SIMULATED_SOURCE_MASK
        return process(rows, operation, _INPUT_TYPES[self.kinds()], spectrum_flags, measurement_flags, **fields)

    def read(
        self, read: Callable[[str, str], dict[str, Kind]], texts: dict[str, str], text: str, table: str
    ) -> Channels[Kind]:
        """The results of the measured kinds; the texts of the others are from earlier calls."""
        results: dict[str, Kind] = {}
        for kind in self.kinds():
            results |= read(texts[text + kind], table + kind)
        return Channels(results)


def parameters(
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

    rate              samples per second; the library assumes 10000, any other rate gives a warning
    power             power method
    wiring            "four": ua, ub, uc are phase voltages; "three": they are the line voltages ab, bc, ca
    frequency         range of the fundamental: "fixed" 49.6-50.4 Hz, "control" 10-60 Hz
    two_currents      compute the current of this phase from the other two; its argument may be None
    keep_rebuilt_rms  RMS of the computed current from its samples instead of the mean of the other two
    invert_p          change the sign of the total active power; invert_q: of the total reactive power
    hardware          samples are counts, which gain and resistance of each Channel scale, instead of V and A
    """
    flags = _flag("power", power, _POWER) | _flag("wiring", wiring, _WIRING)
    flags |= _flag("frequency", frequency, _FREQUENCY) | _flag("two_currents", two_currents, _TWO_CURRENTS)
    flags |= keep_rebuilt_rms * c.KEEP_REBUILT_RMS
    flags |= invert_p * c.NEGATE_ACTIVE_POWER | invert_q * c.NEGATE_REACTIVE_POWER
    record = _Record.of((ua, ub, uc, ia, ib, ic), two_currents)
    record.check_rate(rate)
    texts = record.process(c.OPERATION_PARAMETERS, hardware, flags, sampleRate=rate)
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
    """The conditioned samples of each channel, with mean, RMS, crest factor and peak-to-peak value."""
    flags = _flag("two_currents", two_currents, _TWO_CURRENTS)
    record = _Record.of((ua, ub, uc, ia, ib, ic), two_currents)
    texts = record.process(c.OPERATION_SIGNALS, hardware, flags, sampleRate=1.0)
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

    rate       samples per second; the library assumes 10000 for six channels and 500 for voltages or currents alone,
               any other rate gives a warning
    mode       1: fine lines up to 1000 Hz (250 Hz for voltages or currents alone); 2: coarser lines up to rate / 2
    db         levels in dB relative to the largest line instead of V and A
    peaks      number of peaks wanted; without criterion at most 20
    criterion  only peaks above this height in V, A or dB, sorted by frequency
    """
    if not 0 <= peaks <= 32767:
        raise ValueError(f"peaks is {peaks}, not between 0 and 32767")
    flags = _flag("window", window, _WINDOW) | _flag("mode", mode, _MODE) | db * c.SPECTRUM_LEVEL_DB
    flags |= 0 if criterion is None else c.SPECTRUM_CRITERION
    rebuilt = _flag("two_currents", two_currents, _TWO_CURRENTS)
    record = _Record.of((ua, ub, uc, ia, ib, ic), two_currents)
    record.check_rate(rate)
    texts = record.process(
        c.OPERATION_SPECTRUM,
        hardware,
        rebuilt,
        sampleRate=rate,
        spectrum_flags=flags,
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

    rate  as for spectrum()
    """
    flags = _flag("two_currents", two_currents, _TWO_CURRENTS)
    record = _Record.of((ua, ub, uc, ia, ib, ic), two_currents)
    record.check_rate(rate)
    texts = record.process(c.OPERATION_DISTORTION, hardware, flags, sampleRate=rate)
    return record.read(read_harmonics, texts, "paramDataThd", "thdData")
