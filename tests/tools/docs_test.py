#!/usr/bin/env python3
"""Runs the examples of a page in a terminal, and compares what they print.

    docs_test.py ORUCTL PAGE

An example is an indented line that begins with "$", the lines behind it that begin with ">", and
what they print. All of a page have one shell, so that what one sets, the next ones see; with a
number in front of the "$" it is that of another terminal, in the same folder.
"""

import os
import re
import subprocess
import sys
import tempfile
import threading
import unittest

ORUCTL, PAGE = map(os.path.abspath, sys.argv[1:3])
PROMPT = r"(?:\d?\$|>) "
EXAMPLE = re.compile(
    rf"^    (\d?)\$ (.*)\n((?:    > .*\n)*)((?:    (?!{PROMPT}).*\n|\n(?=    (?!{PROMPT})))*)", re.M)
END = "-- the end of what this command prints --"


def examples():
    with open(PAGE, encoding="utf-8") as page:
        text = page.read()
    found = EXAMPLE.findall(text)
    assert len(found) == len(re.findall(r"^    \d?\$ ", text, re.M)) > 0
    for terminal, first, more, shown in found:
        command = first + "\n" + re.sub("^    > ", "", more, flags=re.M)
        yield terminal, command, re.sub("^    ", "", shown, flags=re.M)


class Terminal:
    """A shell that stays from command to command, with their status."""

    def __init__(self, folder):
        self.shell = subprocess.Popen(
            ["bash"], stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
            cwd=os.path.dirname(os.path.dirname(PAGE)), text=True,
            env={**os.environ, "PATH": os.path.dirname(ORUCTL) + ":" + os.environ["PATH"],
                 "TMPDIR": folder, "ORUCTL_DB": os.path.join(folder, "network.db"),
                 "ORUCTL_MODEL": "examples/network/packages"})

    def run(self, command):
        timer = threading.Timer(60, self.shell.kill)
        timer.start()
        self.shell.stdin.write(f"{{ {command} }} </dev/null\n"
                               f"status=$?; printf '\\n%s\\n' '{END}'; (exit $status)\n")
        self.shell.stdin.flush()
        printed = ""
        while not printed.endswith(f"\n{END}\n"):
            line = self.shell.stdout.readline()
            if not line:
                raise AssertionError(f"the shell ended: {printed}")
            printed += line
        timer.cancel()
        return printed[:-len(END) - 2]

    def close(self):
        self.shell.communicate()


class Examples(unittest.TestCase):
    maxDiff = None

    def test_examples_print_what_the_page_shows(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        terminals = {}
        for number, command, shown in examples():
            if number not in terminals:
                terminals[number] = Terminal(folder.name)
                self.addCleanup(terminals[number].close)
            with self.subTest(command=command):
                self.assertEqual(terminals[number].run(command), shown)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
