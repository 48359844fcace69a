"""What the tests of the commands on a database share: a database of their own, and its commands."""

import os
import shutil
import subprocess
import sys
import tempfile
import unittest

ORUCTL, NETWORK, NODES = map(os.path.abspath, sys.argv[1:4])
DATA = os.path.join(NETWORK, "data.json")
PORT = "/chassis;id=1/slots;number=1/ports;name=1%2F1"
LONG = "/" + "a" * 100
HOSTILE = ["", "x", "//x", "//locations;locationId=other/links", LONG, "/a" * 10, "/a" * 5000,
           "/links;id", "/links;;", "/" + "a;b=" * 2000, "/chassis;id=99999999999999999999",
           "/links;id=" + "9" * 70000, "/%", "/links;id=%zz", "/links;id=\"\\\x01", "///", "/a//b"]


class Database(unittest.TestCase):
    """Each test has an empty folder, and the database `net.db` in it."""

    model = os.path.join(NETWORK, "packages")

    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder)

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, text):
        with open(self.path(name), "w", encoding="utf-8") as file:
            file.write(text)
        return name

    def run_tool(self, *arguments, read="", env=None):
        return subprocess.run(
            [ORUCTL, *arguments], input=read.encode() if isinstance(read, str) else read,
            cwd=self.folder, capture_output=True, timeout=120, check=False,
            env={**os.environ, "ORUCTL_DB": "net.db", "ORUCTL_MODEL": self.model, **(env or {})})

    def does(self, *arguments, read="", status=0, errors=None):
        """Runs a command, which tells nothing on standard error, or these lines; its output."""
        result = self.run_tool(*arguments, read=read)
        said = result.stderr.decode().splitlines()
        self.assertEqual(result.returncode, status, said)
        self.assertEqual(said, errors or [])
        return result.stdout.decode()

    def fails(self, *arguments, read="", errors=None):
        self.assertEqual(self.does(*arguments, read=read, status=1, errors=errors), "")

    def survives(self, *arguments, read=""):
        result = self.run_tool(*arguments, read=read)
        self.assertIn(result.returncode, (0, 1), (arguments, result.stderr[-500:]))
        return result

    def load(self):
        self.assertEqual(self.does("load", DATA), "106 created, 1 updated\n")

    def value(self, address, name):
        return self.does("get", address, name, "--format", "text").strip().partition(" = ")[2]


def main():
    unittest.main(argv=sys.argv[:1])
