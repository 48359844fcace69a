#!/usr/bin/env python3
"""Loads generated networks of 50 and 5,000 resources, and reads all of them back.

    sizes_test.py ORUCTL NETWORK NODES
"""

import json
import os
import subprocess
import sys

from database import NETWORK, Database, main

SYSTEM = "//locations;locationId=global"


def generate(resources):
    return subprocess.run([sys.executable, os.path.join(NETWORK, "generate"), str(resources)],
                          check=True, capture_output=True, timeout=120).stdout


class Sizes(Database):
    def rows_of(self, name):
        """How many resources of a type a document reads, batch by batch."""
        read = f'<row uri="{SYSTEM}?:{name}" mr="{name}" op="get"><_uri/></row>'
        drawn = self.does("query", "--count", "300", "--all", read=read)
        return sum(line.startswith("row  /") for line in drawn.splitlines())

    def all_that_is_generated_is_there(self, size):
        data = generate(size)
        self.write("data.json", data.decode())
        resources = [entry["%properties"] for entry in json.loads(data)["%properties_list"]]
        self.assertAlmostEqual(len(resources), size, delta=max(10, size // 50))
        self.assertEqual(self.does("load", "data.json"),
                         f"{len(resources) - 1} created, 1 updated\n")
        types = [entry["_mr"]["%string"] for entry in resources]
        for name in sorted(set(types)):
            if name.endswith("/System"):
                continue  # the top is below nothing
            with self.subTest(type=name):
                lines = self.does("get", f"//?:{name}", "_uri", "-f", "text").split()
                self.assertEqual(lines.count("_uri"), types.count(name))
                self.assertEqual(self.rows_of(name), types.count(name))
        exported = json.loads(self.does("export"))["%properties_list"]
        self.assertEqual(sorted(entry["%properties"]["_uri"]["%mr_uri"] for entry in exported),
                         sorted(entry["_uri"]["%mr_uri"] for entry in resources))

    def test_some_fifty_resources(self):
        self.all_that_is_generated_is_there(50)

    def test_some_five_thousand_resources(self):
        self.all_that_is_generated_is_there(5000)


if __name__ == "__main__":
    main()
