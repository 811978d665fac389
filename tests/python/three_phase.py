"""Samples of three-phase systems with known results."""

import numpy as np


def sine(samples, rms, frequency=50.0, rate=10000.0, degrees=0.0):
    # Offset by half a sample, so that no sample is exactly zero, which the library treats as missing.
    time = (np.arange(samples) + 0.5) / rate
    return np.sqrt(2.0) * rms * np.sin(2.0 * np.pi * frequency * time + np.radians(degrees))


def system(samples=3000, voltage=230.0, current=5.0, lag=30.0, rate=10000.0, frequency=50.0):
    """Ua, Ub, Uc, Ia, Ib, Ic of a balanced system; the currents lag by some degrees."""
    kinds = ((voltage, 0.0), (current, lag))
    return [sine(samples, rms, frequency, rate, -120.0 * phase - angle) for rms, angle in kinds for phase in range(3)]
