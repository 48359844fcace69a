#!/usr/bin/env python3
"""Has every document of the sample network answered, and compares with what was worked out by hand.

    documents_test.py SOURCE_DIR oructl ORUCTL
    documents_test.py SOURCE_DIR memory QUERY

For each document there is a file in `answers/`. Its first line has the count of rows of a call, 0
for all, and the parameters; behind it stands the answer, a line a node, as on the page of the
language (`tests/docs/answers.py`), with the address of each resource behind its name.
"""

import os
import pathlib
import shlex
import subprocess
import sys
import tempfile
import unittest

SOURCE, BACKEND, TOOL = pathlib.Path(sys.argv[1]).resolve(), sys.argv[2], sys.argv[3]
sys.path.insert(0, str(SOURCE / "tests" / "docs"))

import answers  # pylint: disable=wrong-import-position

NETWORK = SOURCE / "examples" / "network"
DOCUMENTS = sorted((NETWORK / "documents").glob("*.xml"))
ANSWERS = SOURCE / "tests" / "integration" / "answers"


def run(*command, **options):
    return subprocess.run([str(word) for word in command], capture_output=True, text=True,
                          timeout=120, check=False, **options)


class Memory:
    """The example back end, through the example client."""

    def __init__(self, _folder):
        pass

    def answer(self, document, count, params):
        result = run(TOOL, NETWORK / "packages", NETWORK / "data.json", document, count, *params)
        return answers.answer(result.stdout, addresses=True)


class Embedded:
    """The embedded back end, through the command line tool."""

    def __init__(self, folder):
        self.env = {**os.environ, "ORUCTL_MODEL": str(NETWORK / "packages"),
                    "ORUCTL_DB": os.path.join(folder, "network.db")}
        run(TOOL, "load", NETWORK / "data.json", env=self.env).check_returncode()

    def answer(self, document, count, params):
        options = [word for param in params for word in ("-p", param)]
        options += ["--count", count, "--all"] if count != "0" else []
        result = run(TOOL, "query", document, "--format", "json", *options, env=self.env)
        calls = result.stdout.splitlines(True)
        printed = [line for n, call in enumerate(calls, 1) for line in (f"-- call {n}\n", call)]
        lines = answers.answer("".join(printed), addresses=True)
        if result.stderr and not any(" !" in line for line in lines):
            lines.append("? " + result.stderr)
        return lines


class Documents(unittest.TestCase):
    maxDiff = None

    def test_each_is_answered_as_worked_out(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        backend = (Memory if BACKEND == "memory" else Embedded)(folder.name)
        self.assertGreaterEqual(len(DOCUMENTS), 12)
        for document in DOCUMENTS:
            with self.subTest(document=document.name):
                asked, *said = (ANSWERS / f"{document.stem}.txt").read_text().splitlines(True)
                count, *params = shlex.split(asked)
                self.assertEqual("".join(backend.answer(document, count, params)), "".join(said))

    def test_each_answer_has_a_document(self):
        self.assertEqual(sorted(answer.stem for answer in ANSWERS.iterdir()),
                         [document.stem for document in DOCUMENTS])


class Checked(unittest.TestCase):
    @unittest.skipIf(BACKEND == "memory", "asked once")
    def test_one_has_a_fault_and_the_others_none(self):
        for document in DOCUMENTS:
            with self.subTest(document=document.name):
                result = run(TOOL, "dtl", "check", document, "--model", NETWORK / "packages")
                self.assertEqual(result.returncode, int(document.stem == "14-fault"))
                self.assertTrue(document.read_text().startswith("<!--"))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
