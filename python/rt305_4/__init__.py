"""Electrical parameters, signals, spectra and harmonics of sampled three-phase voltages and currents.

measure(), signals(), spectrum() and distortion() take an array of samples in V or A for each channel and return frozen
records; NaN marks values that could not be measured. Contiguous arrays of doubles are read in place, all others are
copied once. All functions can be called from any thread; a lock lets one of them compute at a time.
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
