#!/usr/bin/env python3
"""Runs the examples of a page, indented lines that begin with "$", and compares what they print.

    docs_test.py ORUCTL PAGE
"""

import os
import re
import subprocess
import sys
import tempfile
import unittest

ORUCTL, PAGE = map(os.path.abspath, sys.argv[1:3])


def examples():
    with open(PAGE, encoding="utf-8") as page:
        text = page.read()
    for block in re.finditer(r"^    \$ (.*)\n((?:    (?!\$).*\n|\n(?=    [^$\n]))*)", text, re.M):
        yield block[1], re.sub(r"^    ", "", block[2], flags=re.M)


class Examples(unittest.TestCase):
    def test_examples_print_what_the_page_shows(self):
        with tempfile.TemporaryDirectory() as folder:
            self.run_examples(folder)

    def run_examples(self, folder):
        """One after the other: what one writes into the database the next ones read."""
        found = 0
        for command, shown in examples():
            with self.subTest(command=command):
                result = subprocess.run(
                    ["bash", "-c", command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                    cwd=os.path.dirname(os.path.dirname(PAGE)), text=True, timeout=60, check=False,
                    env={**os.environ, "PATH": os.path.dirname(ORUCTL) + ":" + os.environ["PATH"],
                         "ORUCTL_DB": os.path.join(folder, "network.db"),
                         "ORUCTL_MODEL": "examples/network/packages"})
                self.assertEqual(result.stdout, shown)
            found += 1
        self.assertGreater(found, 0)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
