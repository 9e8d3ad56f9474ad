"""What all tests of bad input share."""

import os
import shlex

from command_case import CommandCase


class RefusalCase(CommandCase):
    """Has a small picture `in.png` and, to be overwritten, `old.png`; neither may change."""

    def setUp(self):
        super().setUp()
        for name in ("in.png", "old.png"):
            self.write(name, self.random_image(6, 5, 3))

    def state(self):
        """Names and contents of all files in the folder."""
        return {name: path.read_bytes() if path.is_file() and os.access(path, os.R_OK) else None
                for name in os.listdir(self.folder) for path in [self.folder / name]}

    def refused(self, arguments, *words, printed=False, **settings):
        """The command must refuse with one line that has all `words`, and leave the folder as it was."""
        before = self.state()
        done = self.run_tool(*(shlex.split(arguments) if isinstance(arguments, str) else arguments), **settings)
        with self.subTest(arguments=arguments):
            self.assertEqual((done.returncode, done.stdout != ""), (2, printed), done.stderr)
            self.assertRegex(done.stderr, r"\Aorvane: [^\n]+\n\Z")
            for word in words:
                self.assertIn(word, done.stderr)
            self.assertEqual(self.state(), before)

    def all_refused(self, start, *cases):
        """Each case has arguments that follow `start`, and the words of its refusal."""
        for arguments, *words in cases:
            self.refused(f"{start} {arguments}", *words)
