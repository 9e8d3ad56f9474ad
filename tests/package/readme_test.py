"""The README shows what the tests compile and what the command takes."""

import os
import pathlib
import re
import shlex
import subprocess
import tempfile
import unittest

SOURCE = pathlib.Path(__file__).resolve().parents[2]
COMMAND = os.environ["ORVANE_TOOL"]


class ReadmeTest(unittest.TestCase):
    text = (SOURCE / "README.md").read_text()
    median = (SOURCE / "docs/median.md").read_text()

    def test_programs_are_the_examples(self):
        names = ("filters.md", "median.md", "template-matching.md", "vendor-filters.md", "coming-from.md", "host.md")
        guides = "".join((SOURCE / "docs" / name).read_text() for name in names)
        shown = re.findall(r"<!-- (examples/\S+) -->\n```cpp\n(.*?)```", self.text + guides, re.S)
        self.assertTrue(shown)
        for name, code in shown:
            self.assertEqual(code, (SOURCE / name).read_text(), name)

    def test_commands_run(self):
        blocks = [re.search(r"```sh\n(orvane .*?)```", page, re.S).group(1) for page in (self.text, self.median)]
        with tempfile.TemporaryDirectory() as folder:
            for line in "".join(blocks).splitlines():
                words = [COMMAND, *shlex.split(line)[1:]]
                done = subprocess.run(words, cwd=folder, capture_output=True, text=True)
                self.assertEqual(done.returncode, 0, f"{line}\n{done.stderr}")

    def test_links_lead_somewhere(self):
        for name in re.findall(r"\]\(([^)#]+)(?:#[^)]*)?\)", self.text):
            self.assertTrue((SOURCE / name).exists(), name)


if __name__ == "__main__":
    unittest.main()
