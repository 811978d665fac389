"""The Python package: what it passes to the library and what it makes of the results."""

import os
import signal
import threading
import unittest

import numpy as np

import rt305_4
from rt305_4 import _interface, _operations
from three_phase import sine, system


def measure(channels, **options):
    return rt305_4.parameters(*channels, rate=10000, **options)


class Parameters(unittest.TestCase):
    def test_options(self):
        p, q = 3450 * np.cos(np.pi / 6), 3450 * np.sin(np.pi / 6)
        six, slow, uneven = system(), system(4000, frequency=45.0), system()
        uneven[3], uneven[4] = 3 * uneven[3], None
        for channels, options, expected in (
            (six, {}, {"Uda": 230, "Udab": 230 * np.sqrt(3), "Idc": 5, "Fb": 50, "P": np.nan, "Pf": np.nan}),
            (six, {"power": "three-wattmeter"}, {"P": p, "Q": q, "S": 3450, "Pc": p / 3}),
            (six, {"power": "three-wattmeter-complex", "invert_p": True}, {"P": -p, "Q": q, "Qa": q / 3}),
            (six, {"power": "three-wattmeter-complex", "invert_q": True}, {"P": p, "Q": -q}),
            (six, {"power": "two-wattmeter-phase"}, {"P": p, "Pa": np.nan}),
            (six, {"wiring": "three"}, {"Udab": 230, "Uda": 230 / np.sqrt(3)}),
            (slow, {}, {"Fa": np.nan, "Uda": 230}),
            (slow, {"frequency": "control", "power": "three-wattmeter"}, {"Fa": 45, "S": 3450}),
            (uneven, {"two_currents": "b"}, {"Idb": 10}),  # the mean of 15 and 5
            (uneven, {"two_currents": "b", "keep_rebuilt_rms": True}, {"Idb": 5 * np.sqrt(7)}),
            ([rt305_4.Channel(six[0], coefficient=100), *six[1:]], {}, {"Uda": 23000, "Udb": 230}),
            ([rt305_4.Channel(six[0], gain=8), *six[1:]], {"hardware": True},
             {"Uda": 230 * 0.0049417429956896556 / (1 + (19.53125 * 8 + 35) / 1000)}),
        ):
            result = measure(channels, **options)
            for name, value in expected.items():
                np.testing.assert_allclose(getattr(result, name), value, rtol=1e-9, err_msg=f"{name}, {options}")

    def test_tables(self):
        result = measure(system())
        self.assertEqual([len(column) for column in result.to_dict().values()], [35] * 3)
        self.assertEqual(result.to_records()[12], {"name": "Uda", "value": result.Uda, "unit": "V"})


class ByChannel(unittest.TestCase):
    def test_names(self):
        names = ["Va", "Vb", "Vc", "Ia", "Ib", "Ic"]
        places = ["ua", "ub", "uc", "ia", "ib", "ic"]
        for chosen, rate in ((slice(3), 500), (slice(3, 6), 500), (slice(6), 10000)):
            channels = dict(zip(places[chosen], system()[chosen]))
            self.assertEqual(list(rt305_4.signals(**channels)), names[chosen])
            self.assertEqual(list(rt305_4.spectrum(**channels, rate=rate)), names[chosen])
            self.assertEqual(list(rt305_4.distortion(**channels, rate=rate)), names[chosen])

    def test_signals(self):
        ua, *others = system()
        result = rt305_4.signals(ua + 7, *others)
        np.testing.assert_allclose(result["Va"].samples, ua, atol=1e-9)
        self.assertAlmostEqual(result["Ib"].peak2rms, np.sqrt(2), places=3)
        record = {"channel": "Va", "name": "rms", "value": result["Va"].rms, "unit": "V"}
        self.assertEqual((len(result.to_records()), result.to_records()[1]), (6 * 4, record))
        with self.assertRaises(ValueError):
            result["Va"].samples[0] = 1

    def test_spectrum(self):
        six = system(10000)
        six[0] = six[0] + sine(10000, 23.0, 250.0)
        va = rt305_4.spectrum(*six, rate=10000, window="hann", db=True, peaks=2)["Va"]
        np.testing.assert_allclose(va.peak_frequency, [50, 250])
        np.testing.assert_allclose(va.peak_value, [0, -20], atol=1e-3)
        self.assertEqual((va.unit, va.frequency[-1], len(va.value)), ("dB", 1000.0, len(va.frequency)))
        high = rt305_4.spectrum(*six, rate=10000, window="hann", mode=2, criterion=15.0)
        np.testing.assert_allclose(high["Va"].peak_frequency, [50, 250])
        self.assertEqual((high["Ia"].unit, len(high["Ia"].peak_value), high["Va"].frequency[-1]), ("A", 0, 5000.0))


class Arguments(unittest.TestCase):
    def test_contiguous_doubles_are_not_copied(self):
        samples = sine(100, 1.0)
        self.assertTrue(np.shares_memory(_operations.row_of("ua", samples[10:]), samples))

    def test_others_are_converted(self):
        six = [np.round(1000 * channel) for channel in system()]
        for convert in (
            lambda x: x.astype(np.int32),
            lambda x: x.astype(">f8"),
            lambda x: x.tolist(),
            lambda x: np.repeat(x, 3)[::3],
            lambda x: np.ma.masked_array(x, mask=False),
            lambda x: np.frombuffer(b"!" + x.tobytes(), dtype=np.uint8)[1:].view(np.float64),
        ):
            np.testing.assert_equal(measure(map(convert, six)).to_dict(), measure(six).to_dict())
        masked = np.ma.masked_greater(six[0], 300000.0)
        self.assertTrue(np.isnan(measure([masked, *six[1:]]).Uda))

    def test_refusals(self):
        six = system()
        for error, message, call in (
            (rt305_4.Error, "The number of samples is  not correct", lambda: rt305_4.signals(*six[:2], six[2][:-1])),
            (TypeError, "three voltages, three currents or all six", lambda: measure([*six[:5], None])),
            (ValueError, "'three-wattmeter-complex'", lambda: measure(six, power="best")),
            (ValueError, "peaks is 40000", lambda: rt305_4.spectrum(*six, rate=10000, peaks=40000)),
        ):
            with self.subTest(message), self.assertRaisesRegex(error, message):
                call()

    def test_other_rates_give_a_warning(self):
        with self.assertWarnsRegex(rt305_4.RateWarning, "500 samples a second, not 10000") as caught:
            rt305_4.distortion(*system()[:3], rate=10000)
        self.assertEqual(caught.filename, __file__)


class Library(unittest.TestCase):
    def test_threads_do_not_mix_results(self):
        found = {}

        def work(voltage):
            found[voltage] = [rt305_4.signals(*system(600, voltage)[:3])["Vb"].rms for _ in range(20)]

        threads = [threading.Thread(target=work, args=(voltage,)) for voltage in (100.0, 200.0, 300.0, 400.0)]
        for start_or_join in (threading.Thread.start, threading.Thread.join):
            for thread in threads:
                start_or_join(thread)
        self.assertEqual({v: np.round(rms, 6).tolist() for v, rms in found.items()}, {v: [v] * 20 for v in found})

    def test_a_child_forked_during_a_call_measures(self):
        with rt305_4._library._lock:  # as another thread's call holds it
            child = os.fork()
            if child == 0:
                signal.alarm(10)
                os._exit(round(rt305_4.signals(*system(600)[:3])["Vb"].rms))
        self.assertEqual(os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]), 230)

    def test_unusable_libraries(self):
        for file, message in (("/nonexistent.so", "RT305_4_LIBRARY"), ("libm.so.6", "not the measurement library")):
            with self.assertRaisesRegex(OSError, message):
                rt305_4.load(file)
        self.assertEqual(rt305_4.version(), _interface.VERSION)  # the library loaded before is still in use
