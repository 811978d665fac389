"""Electrical parameters, signals, spectra and harmonics of sampled three-phase voltages and currents.

open() reads recordings, and measure() and measure_files() measure arrays and files at any rate, all with the tool rt305.
parameters(), signals(), spectrum() and distortion() are the four operations of the library, inside this process: they take
an array of samples in V or A for each channel and return frozen records; NaN marks values that could not be measured.
All functions can be called from any thread.
"""

from ._interface import PROJECT_VERSION as __version__
from ._library import Error, load, version
from ._measurement import Measurement, measure, measure_files, to_pandas
from ._operations import Channel, RateWarning, distortion, parameters, signals, spectrum
from ._recording import Recording, Segment, open
from ._results import Channels, Harmonics, Parameters, Signal, Spectrum

__all__ = [
    "Channel",
    "Channels",
    "Error",
    "Harmonics",
    "Measurement",
    "Parameters",
    "RateWarning",
    "Recording",
    "Segment",
    "Signal",
    "Spectrum",
    "__version__",
    "distortion",
    "load",
    "measure",
    "measure_files",
    "open",
    "parameters",
    "signals",
    "spectrum",
    "to_pandas",
    "version",
]
