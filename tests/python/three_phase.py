"""Sampled three-phase systems of known content."""

import numpy as np


def sine(samples, rms, frequency=50.0, rate=10000.0, degrees=0.0):
    time = np.arange(samples) / rate
    # Half a sample off, so that no sample is exactly zero: the library takes zeros for gaps.
    return np.sqrt(2.0) * rms * np.sin(2.0 * np.pi * frequency * (time + 0.5 / rate) + np.radians(degrees))


def system(samples=3000, voltage=230.0, current=5.0, lag=30.0, rate=10000.0, frequency=50.0):
    """Ua, Ub, Uc, Ia, Ib, Ic of a balanced system whose currents lag by some degrees."""
    kinds = ((voltage, 0.0), (current, lag))
    return [
        sine(samples, rms, frequency, rate, -120.0 * phase - behind) for rms, behind in kinds for phase in range(3)
    ]
