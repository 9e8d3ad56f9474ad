"""What documents and docstrings say is run."""

import doctest
import importlib
import re
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]


class DocumentsTest(unittest.TestCase):
    def test_docstrings(self):
        for name in ("orvane", "orvane._filters", "orvane._fixed", "orvane._matching", "orvane._plan",
                     "orvane.dask", "orvane._dask_matching", "orvane._dask_peaks"):
            result = doctest.testmod(importlib.import_module(name))
            self.assertGreater(result.attempted, 0)
            self.assertEqual(result.failed, 0)

    def test_scripts(self):
        for name in ("README.md", "docs/python.md", "docs/cluster.md"):
            scripts = re.findall(r"```python\n(.*?)```", (ROOT / name).read_text(), re.S)
            self.assertEqual(len(scripts), 1)
            exec(compile(scripts[0], name, "exec"), {})


if __name__ == "__main__":
    unittest.main()
