"""The Python examples of the guides, run as they stand."""

import doctest
import os
import re
import unittest
from pathlib import Path

SOURCE = Path(os.environ["RT305_4_SOURCE"])


class Guides(unittest.TestCase):
    def test_examples(self):
        examples = 0
        for page in (SOURCE / "README.md", *sorted((SOURCE / "docs").glob("*.md"))):
            blocks = re.findall(r"^```python\n(.*?)^```$", page.read_text(), re.MULTILINE | re.DOTALL)
            test = doctest.DocTestParser().get_doctest("\n".join(blocks), {}, page.name, str(page), 0)
            result = doctest.DocTestRunner(optionflags=doctest.ELLIPSIS | doctest.REPORT_NDIFF).run(test)
            self.assertEqual(result.failed, 0, page.name)
            examples += result.attempted
        self.assertGreater(examples, 20)


if __name__ == "__main__":
    unittest.main()
