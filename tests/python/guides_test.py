"""Runs the Python examples of the README and the guides."""

import doctest
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

os.environ["MPLBACKEND"] = "Agg"  # plots without a display
FILES = {"feeder5.cff": "tests/host/data/single.cff", "sample.csv": "examples/recordings/sample.csv"}


class Guides(unittest.TestCase):
    def test_examples(self):
        source, examples = Path(os.environ["RT305_4_SOURCE"]), 0
        with tempfile.TemporaryDirectory() as folder:
            for name, original in FILES.items():
                shutil.copy(source / original, Path(folder, name))
            self.addCleanup(os.chdir, os.getcwd())
            os.chdir(folder)
            for page in (source / "README.md", *sorted((source / "docs").glob("*.md"))):
                blocks = re.findall(r"^```python\n(.*?)^```$", page.read_text(), re.MULTILINE | re.DOTALL)
                test = doctest.DocTestParser().get_doctest("\n".join(blocks), {}, page.name, str(page), 0)
                flags = doctest.ELLIPSIS | doctest.NORMALIZE_WHITESPACE | doctest.REPORT_NDIFF
                result = doctest.DocTestRunner(optionflags=flags).run(test)
                self.assertEqual(result.failed, 0, page.name)
                examples += result.attempted
        self.assertGreater(examples, 30)

    def test_accuracy(self):
        source, build = Path(os.environ["RT305_4_SOURCE"]), Path(os.environ["RT305_4_TOOL"]).parents[1]
        table = subprocess.check_output([sys.executable, source / "scripts/accuracy", build, "thd"], text=True)
        self.assertIn(table.split("\n\n")[1], (source / "docs/accuracy.md").read_text())
