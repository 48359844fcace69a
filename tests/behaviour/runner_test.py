#!/usr/bin/env python3
"""Runs the runner of behaviour scripts on scripts that are wrong.

    runner_test.py BEHAVIOUR BACK_END MODEL
"""

import os
import subprocess
import sys
import tempfile
import unittest

BEHAVIOUR, BACK_END, MODEL = map(os.path.abspath, sys.argv[1:4])

HALLS = """commit
  create /halls number=1
  create /halls number=2 title="any text"
> done
"""


class Runner(unittest.TestCase):
    def run_script(self, text, *options):
        with tempfile.TemporaryDirectory() as folder:
            with open(os.path.join(folder, "s.txt"), "w", encoding="utf-8") as file:
                file.write(text)
            result = subprocess.run(
                [BEHAVIOUR, "--library", BACK_END, *options, MODEL, "s.txt"], cwd=folder,
                capture_output=True, timeout=60, check=False)
        return result.returncode, result.stdout.decode()

    def answers(self, text, *lines):
        """The script is answered rightly, or with the lines that say what is not."""
        status, output = self.run_script(text)
        self.assertEqual(output.splitlines()[:-1], list(lines))
        self.assertEqual(status, 1 if lines else 0)

    def test_right_answers_say_nothing(self):
        self.answers(HALLS + "rows /?halls title\n> /halls;number=1   -\n>/halls;number=2 "
                     '"any text"\n')

    def test_wrong_rows_are_shown_beside_right_ones(self):
        self.answers(
            HALLS + "\n# Rows.\nrows /?halls\n  where number > 0\n> /halls;number=0\n"
            "> /halls;number=2\n> /halls;number=3\n",
            "s.txt:7: rows /?halls",
            "    where number > 0",
            "  expected (-) and got (+):",
            "    - /halls;number=0",
            "    + /halls;number=1",
            "      /halls;number=2",
            "    - /halls;number=3")

    def test_a_missing_answer_is_wrong(self):
        self.answers("read / name\n", "s.txt:1: read / name", "  expected (-) and got (+):",
                     "    + name=-")
        self.answers("rows /?halls\n> nothing\n")

    def test_dots_stand_for_the_rest(self):
        self.answers("rows /?nothing\n> 103 ...\n")
        self.answers("rows /?nothing\n> 10... No such ...\n")
        self.answers("read / name\n> nam...\n")
        status, _ = self.run_script("rows /?nothing\n> 103 No such row...\n")
        self.assertEqual(status, 1)

    def test_stores_in_files_are_new(self):
        for _ in range(2):
            self.assertEqual(self.run_script(HALLS, "--file")[0], 0)

    def test_stores_that_are_not_empty_are_refused(self):
        with tempfile.TemporaryDirectory() as folder:
            database = os.path.join(folder, "a.db")
            self.assertEqual(self.run_script(HALLS, "--database", database)[0], 0)
            self.assertEqual(self.run_script(HALLS, "--database", database),
                             (2, "s.txt: the store is not empty\n"))

    def test_what_cannot_be_read_is_told_with_its_line(self):
        for text, words in (
                ("> x\n", "line 1: there is no request yet"),
                ("ask /\n", 'line 1: there is no request "ask"'),
                ("\ncommit now\n", 'line 2: a commit is no "now"'),
                ("commit\n\n  make /halls\n", 'line 3: there is no operation "make"'),
                ("commit\n  set / name\n", 'line 2: NAME=VALUE is expected at "name"'),
                ("commit\n  set / name=\n", 'line 2: a value is expected at ""'),
                ('commit\n  set / name="x\n', "line 2: a quote is missing at the end"),
                ("commit\n  set / name=int:x\n", 'line 2: "x" is no int'),
                ("read / name\n> -\n  operational\n",
                 "line 3: a request begins at the left margin"),
                ("read / name\n  loudly\n", 'line 2: a request is no "loudly"'),
                ("rows /?halls\n  where or(number 1\n",
                 "line 2: a parenthesis is missing at the end"),
                ("read\n", "line 1: a word is missing at the end"),
                ("start keep_days=1\n", 'line 1: there is no option "keep_days"'),
                ("next c 1\n", 'line 1: there is no cursor "c"')):
            self.assertEqual(self.run_script(text), (2, f"s.txt: {words}\n"), text)

    def test_arguments_are_told(self):
        result = subprocess.run([BEHAVIOUR, MODEL], capture_output=True, timeout=60, check=False)
        self.assertEqual((result.returncode, result.stdout), (2, b""))
        self.assertTrue(result.stderr.startswith(b"usage: behaviour "))
        missing = self.run_script("read / name\n", "--root", "depot:1.0/Nobody")
        self.assertEqual(missing, (2, "s.txt: no session: 107 MetaData Errors\n"))


unittest.main(argv=sys.argv[:1])
