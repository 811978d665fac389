"""Recordings and measurements by the tool: what goes through the pipes, and failures."""

import os
import tempfile
import unittest
import unittest.mock
from datetime import datetime
from pathlib import Path

import numpy as np

import rt305_4
from rt305_4._times import time_of
from three_phase import system

DATA = Path(os.environ["RT305_4_SOURCE"], "tests/host/data")
SAMPLE = Path(os.environ["RT305_4_SOURCE"], "examples/recordings/sample.csv")


class Recordings(unittest.TestCase):
    def test_content(self):
        for file, options, rate, samples, rms, ua, start in (
            ("single.cff", {}, 1000, 300, 57.726, "HV VR", datetime(2023, 7, 27, 9, 19, 53, 156666)),
            ("relay.cfg", {"sqrt2": True}, 960, 96, 0.057726, "VA(kV)", datetime(2011, 2, 12, 11, 41, 11, 81315)),
            ("segments.cfg", {"segment": 1}, 3200, 128, 57.726, "U1", datetime(2020, 1, 1)),
            ("segments.cfg", {"primary": True}, 3200, 704, 57.726 * 1100, "U1", datetime(2020, 1, 1)),
            ("sound.wav", {"columns": ["Ua (V)", *"bcdef"], "gain": {"Ua": 100}}, 2000, 520, 57.726, "Ua", None),
        ):
            recording = rt305_4.open(DATA / file, **options)
            facts = recording.rate, len(recording["Ua"]), len(recording.time), recording.channels["Ua"], recording.start
            self.assertEqual(facts, (rate, samples, samples, ua, start), file)
            self.assertAlmostEqual(np.sqrt(np.mean(recording[ua] ** 2)) / rms, 1, 3, file)
        self.assertEqual(list(rt305_4.open(DATA / "swing.CFG").skews.values())[:3], [0, 13e-6, 26e-6])
        self.assertEqual(recording.units, {"Ua": "V", "b": "", "c": "", "d": "", "e": "", "f": ""})

    def test_samples_are_exact(self):
        recording = rt305_4.open(SAMPLE)
        np.testing.assert_array_equal(recording["Ic"], np.genfromtxt(SAMPLE, delimiter=",", names=True)["IcA"])
        measured, again = recording.measure(), rt305_4.measure(*recording.values(), rate=recording.rate)
        self.assertEqual(again.to_dict(), measured.to_dict())
        self.assertGreater(len(measured.to_records()), 80)

    def test_times(self):
        for text, expected in (
            ("2023-07-27T09:19:53.156666511", "2023-07-27T09:19:53.156666"),
            ("2020-01-01T00:0:0", "2020-01-01T00:00:00"),
            ("2020-01-01T00:00:00.5-03:30", "2020-01-01T00:00:00.500000-03:30"),
        ):
            self.assertEqual(time_of(text).isoformat(), expected)
        self.assertEqual([time_of(text) for text in (None, "", "12.5.", "2020-13-01T00:00:00")], [None] * 4)


class Measurements(unittest.TestCase):
    def test_rates_and_channels(self):
        six = system(3840, rate=3840.0, frequency=60.0)
        for channels, options, table, quantity, expected in (
            (six, {}, "derived", "frequency", {"total": 60}),
            (six, {"nominal": 60}, "parameters", "phase_voltage", {"a": 230}),
            (six, {"coefficients": {"Ub": 10}}, "parameters", "phase_voltage", {"b": 2300}),
            (six, {}, "derived", "PF", {"total": np.cos(np.pi / 6)}),
            (six[:1], {}, "derived", "U", {"a": 230}),
            ([None] * 3 + six[3:], {}, "derived", "I", {"c": 5}),
        ):
            result = rt305_4.measure(*channels, rate=3840, **options)
            for column, value in expected.items():
                self.assertAlmostEqual(result[table][quantity][column] / value, 1, 6, (quantity, options))

    def test_files(self):
        files = [SAMPLE, DATA / "nothing\udcff.cfg", DATA / "single.cff"]
        results = list(rt305_4.measure_files(files, window=0.1, step=0.05, jobs=2, errors="yield"))
        good = [result for result in results if isinstance(result, rt305_4.Measurement)]
        self.assertEqual([result.start for result in good[-5:]], [k * 0.05 for k in range(5)])
        self.assertEqual((len(good), results[19].file, results[19].exit_code), (24, str(files[1]), 3))
        self.assertEqual(good[-1].time, datetime(2023, 7, 27, 9, 19, 53, 356666))
        row = good[0].to_row()
        self.assertEqual((row["file"], row["parameters_phase_voltage_b"]), (str(SAMPLE), good[0]["parameters"]["phase_voltage"]["b"]))
        self.assertRegex(good[0]._repr_html_(), "<caption>.*sample.csv: .*<td>phase_voltage</td><td>a</td><td>230")
        next(iterator := rt305_4.measure_files([SAMPLE] * 1000))
        iterator.close()
        self.assertRaises(ChildProcessError, os.waitpid, -1, os.WNOHANG)

    def test_failures(self):
        six = system()
        with unittest.mock.patch.dict(os.environ, RT305_4_TOOL="/nonexistent"):
            self.assertRaisesRegex(OSError, "RT305_4_TOOL", rt305_4.open, SAMPLE)
        for error, message, call in (
            (rt305_4.Error, "nothing.cfg: No such file", lambda: list(rt305_4.measure_files(DATA / "nothing.cfg"))),
            (rt305_4.Error, "nothing.cfg: No such file", lambda: rt305_4.open(DATA / "nothing.cfg")),
            (rt305_4.Error, "no segment 4 in 3", lambda: rt305_4.open(DATA / "segments.cfg", segment=4)),
            (rt305_4.Error, "there are no samples", lambda: rt305_4.measure(np.zeros(0), rate=10000)),
            (ValueError, "no option --windows", lambda: list(rt305_4.measure_files(SAMPLE, windows=1))),
            (ValueError, "equally many samples", lambda: rt305_4.measure(six[0], six[1][1:], rate=10000)),
            *((ValueError, "cannot be given the name", lambda name=name: rt305_4.measure_files(name))
              for name in ("a\nb", "a\0b", "a\r", "-")),
            (ValueError, "output_folder= has no use here", lambda: rt305_4.measure_files(SAMPLE, output_folder="x")),
            (ValueError, "errors= is for measure_files", lambda: rt305_4.open(SAMPLE).measure(errors="yield")),
            (ValueError, "leave the errors", lambda: rt305_4.to_pandas(rt305_4.measure_files("x", errors="yield"))),
            (TypeError, "at least one channel", lambda: rt305_4.measure(rate=10000)),
        ):
            with self.subTest(message), self.assertRaisesRegex(error, message):
                call()

    def test_a_tool_that_dies(self):
        tool = Path(self.enterContext(tempfile.TemporaryDirectory()), "tool")
        line = '{"recording": {"file": "a"}, "error": "a: No such file", "exit_code": 3}'
        for ending, message in (
            ("kill -9 $$", r"^signal 9 \(Killed\) ended"),
            ("exit 5", "^no room$"),
            ("exit 4", "for 1 of 2 names"),
        ):
            tool.write_text(f"#!/bin/sh\necho '{line}'\necho 'rt305: no room\nrt305: warning: unsteady' >&2\n{ending}\n")
            tool.chmod(0o755)
            with unittest.mock.patch.dict(os.environ, RT305_4_TOOL=str(tool)):
                with self.assertRaisesRegex(rt305_4.Error, message):
                    list(rt305_4.measure_files(["a", "b"], errors="yield"))
