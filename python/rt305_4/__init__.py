"""Electrical parameters, signals, spectra and harmonics of sampled three-phase voltages and currents.

measure(), signals(), spectrum() and distortion() take one array of samples per channel, in V and A, and return frozen
records; values that could not be measured are NaN. Arrays of contiguous doubles are read in place, others are copied
once. All functions may be called from any thread; one of them computes at a time.
"""

from ._library import Error, load, version
from ._measurement import Channel, distortion, measure, signals, spectrum
from ._results import Channels, Harmonics, Parameters, Signal, Spectrum

__all__ = [
    "Channel",
    "Channels",
    "Error",
    "Harmonics",
    "Parameters",
    "Signal",
    "Spectrum",
    "distortion",
    "load",
    "measure",
    "signals",
    "spectrum",
    "version",
]
