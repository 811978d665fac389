"""rt305_4.fleet on workers of this machine, against rt305_4.measure_files."""

import os
import signal
import tempfile
import threading
import unittest
from pathlib import Path

try:
    from distributed import Client, LocalCluster
except ImportError as error:
    raise unittest.SkipTest("Dask is not installed") from error

import rt305_4
from rt305_4 import _tool, fleet


def generate(file, seconds):
    _tool.run(["generate", f"--duration={seconds}", f"--voltage={200 + len(str(file))}", "-o", str(file)])
    return str(file)


def contents(folder):
    return {file.name: file.read_bytes() for file in Path(folder).glob("*-*.jsonl")}


class Fleet(unittest.TestCase):
    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory()))
        cluster = LocalCluster(n_workers=2, threads_per_worker=1, dashboard_address=None, silence_logs=50,
                               local_directory=str(self.folder))
        self.client = self.enterContext(Client(self.enterContext(cluster)))

    def test_gives_what_one_process_gives(self):
        files = [generate(self.folder / f"{'x' * i}.csv", 0.5) for i in range(1, 4)]
        files.insert(1, str(self.folder / "missing.csv"))
        for given in ({}, {"window": 0.1, "batch": 1}, {"window": 0.2, "step": 0.1, "nominal": 50}):
            options = {key: value for key, value in given.items() if key != "batch"}
            expected = list(rt305_4.measure_files(files, errors="yield", **options))
            found = list(fleet.measure(self.client, files, **given))
            self.assertEqual([getattr(one, "document", str(one)) for one in found],
                             [getattr(one, "document", str(one)) for one in expected])
        long = generate(self.folder / "long.csv", 2)
        for window, step in ((0.2, None), (0.3, 0.1)):
            whole = list(rt305_4.measure_files(long, window=window, step=step))
            parts = list(fleet.measure(self.client, long, window=window, step=step, span=0.6))
            self.assertEqual(len(whole), len(parts))
            for one, other in zip(whole, parts):
                self.assertAlmostEqual(one.start, other.start, delta=1e-9)
                self.assertAlmostEqual(one["derived"]["P"]["total"], other["derived"]["P"]["total"], delta=1e-2)
        for window in (0.2, "200ms", 0):
            with self.assertRaises(ValueError):
                list(fleet.measure(self.client, files, window=window, span=0.5))

    def test_survives_a_worker_that_dies(self):
        files = [generate(self.folder / f"{'x' * i}.csv", 0.3) for i in range(1, 30)]
        victim = next(iter(self.client.run(os.getpid).values()))
        threading.Timer(0.3, os.kill, (victim, signal.SIGKILL)).start()
        self.assertEqual(fleet.measure_into(self.client, self.folder / "results", files, batch=2, window=0.02), [])
        _tool.run(["measure", "--window=0.02", f"--output-folder={self.folder / 'alone'}", *files])
        self.assertEqual(contents(self.folder / "results"), contents(self.folder / "alone"))
