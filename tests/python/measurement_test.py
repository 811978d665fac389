"""The Python package: what it hands to the library and what it makes of the answers."""

import os
import re
import subprocess
import sys
import threading
import unittest
from dataclasses import FrozenInstanceError
from pathlib import Path

import numpy as np

import rt305_4
from rt305_4 import _library, _measurement
from three_phase import sine, system

HEADER = Path(os.environ["RT305_4_SOURCE"], "include/rt305_4/rt305_4.h").read_text()


class Interface(unittest.TestCase):
    """ctypes cannot see the header, so what is written twice is compared."""

    def test_offsets(self):
        places = {"ChannelData": _library.ChannelData, "DataProcessRequest": _library.Request}
        found = re.findall(r"RT305_4_ASSERT_OFFSET\((\w+), (\w+), (\d+)\);", HEADER)
        checked = 0
        for record, field, offset in found:
            if record in places:
                field = "spectrumFlags" if field == "options" else field
                self.assertEqual(getattr(places[record], field).offset, int(offset), field)
                checked += 1
        self.assertEqual(checked, 7 + 17)
        self.assertEqual(_library.Request.measurementFlags.offset, 52)

    def test_flags(self):
        defined = dict(re.findall(r"#define RT305_4_(\w+) (\w+)U\b", HEADER))
        flag = {name: int(value, 0) for name, value in defined.items()}
        for words, prefix in ((_measurement._POWER, "POWER_"), (_measurement._WINDOW, "SPECTRUM_WINDOW_")):
            for word, value in words.items():
                self.assertEqual(value, flag[prefix + word.upper().replace("-", "_")], word)
        for phase in "abc":
            expected = flag["TWO_CURRENTS"] | flag["REBUILT_PHASE_" + phase.upper()]
            self.assertEqual(_measurement._TWO_CURRENTS[phase], expected)
        for value, name in (
            (_measurement._WIRING["four"], "FOUR_WIRE"),
            (_measurement._FREQUENCY["control"], "FREQUENCY_CONTROL"),
            (_measurement._MODE[2], "SPECTRUM_MODE_2"),
            (_measurement._DB, "SPECTRUM_LEVEL_DB"),
            (_measurement._CRITERION, "SPECTRUM_CRITERION"),
            (_measurement._KEEP_REBUILT_RMS, "KEEP_REBUILT_RMS"),
            (_measurement._INVERT_P, "NEGATE_ACTIVE_POWER"),
            (_measurement._INVERT_Q, "NEGATE_REACTIVE_POWER"),
            (_measurement._SAMPLES_IN_VOLT_AND_AMPERE, "SIMULATED_SOURCE_MASK"),
        ):
            self.assertEqual(value, flag[name], name)

    def test_version(self):
        self.assertEqual(rt305_4.version(), re.search(r'RT305_4_VERSION "(.*)"', HEADER)[1])


class Parameters(unittest.TestCase):
    def check(self, result, **expected):
        for name, value in expected.items():
            np.testing.assert_allclose(getattr(result, name), value, rtol=1e-9, err_msg=name)

    def test_balanced_system(self):
        p, q = 3 * 1150 * np.cos(np.pi / 6), 3 * 1150 * np.sin(np.pi / 6)
        for options, expected in (
            ({}, {"Uda": 230, "Udab": 230 * np.sqrt(3), "Idc": 5, "Fb": 50, "P": np.nan, "Pf": np.nan}),
            ({"power": "three-wattmeter"}, {"P": p, "Q": q, "S": 3450, "Pc": p / 3}),
            ({"power": "three-wattmeter-complex", "invert_p": True}, {"P": -p, "Q": q, "S": 3450, "Qa": q / 3}),
            ({"power": "three-wattmeter-complex", "invert_q": True}, {"P": p, "Q": -q}),
            ({"power": "two-wattmeter-phase"}, {"P": p, "Pa": np.nan}),
            ({"wiring": "three"}, {"Udab": 230, "Uda": 230 / np.sqrt(3)}),
        ):
            with self.subTest(options):
                self.check(rt305_4.measure(*system(), rate=10000, **options), **expected)

    def test_frequency_windows(self):
        slow = system(4000, frequency=45.0)
        self.check(rt305_4.measure(*slow, rate=10000, power="three-wattmeter"), Fa=np.nan, P=np.nan, Uda=230)
        controlled = rt305_4.measure(*slow, rate=10000, power="three-wattmeter", frequency="control")
        self.check(controlled, Fa=45, S=3450)

    def test_rebuilt_current(self):
        ua, ub, uc, ia, ib, ic = system()
        for phase, currents in {"a": (None, ib, ic), "b": (ia, None, ic), "c": (ia, ib, None)}.items():
            result = rt305_4.measure(ua, ub, uc, *currents, rate=10000, power="three-wattmeter", two_currents=phase)
            self.check(result, S=3450, Ida=5, Idb=5, Idc=5)
            self.assertAlmostEqual(rt305_4.signals(ia=currents[0], ib=currents[1], ic=currents[2],
                                                   two_currents=phase)["I" + phase].rms, 5)
        uneven = (3 * ia, None, ic)
        rms = {keep: rt305_4.measure(ua, ub, uc, *uneven, rate=10000, two_currents="b", keep_rebuilt_rms=keep).Idb
               for keep in (False, True)}
        self.assertAlmostEqual(rms[False], 10.0)  # the mean of 15 and 5
        self.assertAlmostEqual(rms[True], 5.0 * np.sqrt(7.0))  # |3 - exp(j 60 degrees)|

    def test_channel_settings(self):
        ua, *others = system()
        scaled = rt305_4.measure(rt305_4.Channel(ua, coefficient=100), *others, rate=10000)
        self.check(scaled, Uda=23000, Udb=230)
        counts = rt305_4.measure(rt305_4.Channel(ua, gain=8), *others, rate=10000, hardware=True)
        self.check(counts, Uda=230 * 0.0049417429956896556 / (1 + (19.53125 * 8 + 35) / 1000))

    def test_tables(self):
        result = rt305_4.measure(*system(), rate=10000)
        columns = result.to_dict()
        self.assertEqual([len(column) for column in columns.values()], [35] * 3)
        self.assertEqual(result.to_records()[12], {"name": "Uda", "value": result.Uda, "unit": "V"})
        self.assertEqual(rt305_4.Parameters.unit("THD_Va"), "%")
        with self.assertRaises(FrozenInstanceError):
            result.P = 1.0


class ByChannel(unittest.TestCase):
    def test_which_channels(self):
        six = system()
        u, i = ["Va", "Vb", "Vc"], ["Ia", "Ib", "Ic"]
        for channels, rate, names in (
            (dict(zip(("ua", "ub", "uc"), six)), 500, u),
            (dict(zip(("ia", "ib", "ic"), six[3:])), 500, i),
            (dict(zip(("ua", "ub", "uc", "ia", "ib", "ic"), six)), 10000, u + i),
        ):
            self.assertEqual(list(rt305_4.signals(**channels)), names)
            self.assertEqual(list(rt305_4.spectrum(**channels, rate=rate)), names)
            self.assertEqual(list(rt305_4.distortion(**channels, rate=rate)), names)

    def test_signals(self):
        ua, ub, uc, *currents = system()
        result = rt305_4.signals(ua + 7, ub, uc, *currents)
        np.testing.assert_allclose(result["Va"].samples, ua, atol=1e-9)
        self.assertAlmostEqual(result["Ib"].peak2rms, np.sqrt(2), places=3)
        self.assertEqual((result["Va"].unit, result["Ia"].unit), ("V", "A"))
        self.assertEqual(len(result.to_records()), 6 * 4)
        self.assertEqual(result.to_records()[1], {"channel": "Va", "name": "rms", "value": result["Va"].rms, "unit": "V"})
        with self.assertRaises(ValueError):
            result["Va"].samples[0] = 1

    def test_spectrum(self):
        six = system(10000)
        six[0] = six[0] + sine(10000, 23.0, 250.0)
        va = rt305_4.spectrum(*six, rate=10000, window="hann", db=True, peaks=2)["Va"]
        np.testing.assert_allclose(va.peak_frequency, [50, 250])
        np.testing.assert_allclose(va.peak_value, [0, -20], atol=1e-3)
        self.assertEqual((va.unit, va.frequency[-1], len(va.value)), ("dB", 1000.0, len(va.frequency)))
        tall = rt305_4.spectrum(*six, rate=10000, window="hann", mode=2, criterion=15.0)
        np.testing.assert_allclose(tall["Va"].peak_frequency, [50, 250])
        self.assertEqual((tall["Ia"].unit, len(tall["Ia"].peak_value)), ("A", 0))
        self.assertEqual(tall["Va"].frequency[-1], 5000.0)
        self.assertEqual(len(tall.to_dict()["frequency"]), 6 * len(tall["Va"].frequency))

    def test_distortion(self):
        six = system(5000)
        six[3] = six[3] + sine(5000, 0.5, 150.0)
        ia = rt305_4.distortion(*six, rate=10000)["Ia"]
        self.assertEqual(len(ia.level), 40)
        np.testing.assert_allclose(ia.frequency[[0, 2]], [50, 150], atol=0.1)
        np.testing.assert_allclose(ia.level[[0, 2]], 20 * np.log10([5, 0.5]), atol=1e-3)
        self.assertEqual(rt305_4.distortion(*system(500, rate=500)[:3], rate=500).to_records()[5]["channel"], "Vb")


class Samples(unittest.TestCase):
    def test_contiguous_doubles_are_not_copied(self):
        samples = sine(100, 1.0)
        samples.flags.writeable = False
        self.assertTrue(np.shares_memory(_measurement._row("ua", samples), samples))
        self.assertTrue(np.shares_memory(_measurement._row("ua", samples[10:]), samples))

    def test_others_are_converted(self):
        six = [np.round(1000 * channel) for channel in system()]
        expected = rt305_4.measure(*six, rate=10000)
        for convert in (
            lambda x: x.astype(np.int32),
            lambda x: x.astype(">f8"),
            lambda x: x.tolist(),
            lambda x: np.repeat(x, 3)[::3],
            lambda x: np.ma.masked_array(x, mask=False),
            lambda x: np.frombuffer(b"!" + x.tobytes(), dtype=np.uint8)[1:].view(np.float64),
        ):
            np.testing.assert_equal(rt305_4.measure(*map(convert, six), rate=10000).to_dict(), expected.to_dict())

    def test_masked_samples_are_missing(self):
        six = system()
        six[0] = np.ma.masked_greater(six[0], 300.0)
        result = rt305_4.measure(*six, rate=10000)
        self.assertTrue(np.isnan(result.Uda))
        self.assertAlmostEqual(result.Udb, 230)

    def test_refusals(self):
        six = system()
        for error, message, call in (
            (rt305_4.Error, "The number of samples is  not correct",
             lambda: rt305_4.signals(six[0], six[1], six[2][:-1])),
            (rt305_4.Error, "sample rate or sample number", lambda: rt305_4.signals([], [], [])),
            (TypeError, "three voltages, three currents or all six", lambda: rt305_4.signals(six[0], six[1])),
            (TypeError, "three voltages, three currents or all six", lambda: rt305_4.measure(*six[:5], None, rate=1e4)),
            (TypeError, "complex128", lambda: rt305_4.signals(*(channel + 0j for channel in six))),
            (ValueError, "ua has 2 dimensions", lambda: rt305_4.signals(*(channel.reshape(2, -1) for channel in six))),
            (ValueError, "'three-wattmeter-complex'", lambda: rt305_4.measure(*six, rate=10000, power="best")),
            (ValueError, "two_currents is 'd'", lambda: rt305_4.signals(*six, two_currents="d")),
            (ValueError, "peaks is 40000", lambda: rt305_4.spectrum(*six, rate=10000, peaks=40000)),
        ):
            with self.subTest(message), self.assertRaisesRegex(error, message):
                call()

    def test_other_rates_are_warned_of(self):
        with self.assertWarnsRegex(UserWarning, "10000 a second, not 5000") as caught:
            rt305_4.measure(*system(), rate=5000)
        self.assertEqual(caught.filename, __file__)
        with self.assertWarnsRegex(UserWarning, "500 a second, not 10000"):
            rt305_4.distortion(*system()[:3], rate=10000)


class Process(unittest.TestCase):
    def test_threads_do_not_mix_results(self):
        found = {}

        def work(voltage):
            found[voltage] = [rt305_4.signals(*system(600, voltage)[:3])["Vb"].rms for _ in range(20)]

        threads = [threading.Thread(target=work, args=(voltage,)) for voltage in (100.0, 200.0, 300.0, 400.0)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        for voltage, values in found.items():
            np.testing.assert_allclose(values, voltage)
        self.assertEqual(len(found), 4)

    def test_a_library_that_cannot_be_used(self):
        for file, message in (("/nonexistent.so", "RT305_4_LIBRARY"), ("libm.so.6", "not the measurement library")):
            with self.assertRaisesRegex(OSError, message):
                rt305_4.load(file)
            run = subprocess.run([sys.executable, "-c", "import rt305_4; rt305_4.version()"], capture_output=True,
                                 env=os.environ | {"RT305_4_LIBRARY": file}, text=True)
            self.assertEqual(run.returncode, 1)
            self.assertIn(message, run.stderr)
        self.assertTrue(rt305_4.version())  # the one from before stays


if __name__ == "__main__":
    unittest.main()
