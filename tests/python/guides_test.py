"""Runs the Python examples of the README and the guides."""

import doctest
import os
import re
import unittest
from pathlib import Path


class Guides(unittest.TestCase):
    def test_examples(self):
        source, examples = Path(os.environ["RT305_4_SOURCE"]), 0
        for page in (source / "README.md", *sorted((source / "docs").glob("*.md"))):
            blocks = re.findall(r"^```python\n(.*?)^```$", page.read_text(), re.MULTILINE | re.DOTALL)
            test = doctest.DocTestParser().get_doctest("\n".join(blocks), {}, page.name, str(page), 0)
            result = doctest.DocTestRunner(optionflags=doctest.ELLIPSIS | doctest.REPORT_NDIFF).run(test)
            self.assertEqual(result.failed, 0, page.name)
            examples += result.attempted
        self.assertGreater(examples, 20)
