#!/usr/bin/env python3
"""Runs the command line tool on small models: its words, its places, its exit status.

    oructl_test.py ORUCTL MODELS
"""

import os
import subprocess
import sys
import unittest

ORUCTL, MODELS = sys.argv[1:3]


def run(*arguments, **environment):
    return subprocess.run([ORUCTL, *arguments], cwd=MODELS, env={**os.environ, **environment},
                          capture_output=True, text=True, timeout=60)


class ModelCheck(unittest.TestCase):
    def check(self, folder, status, *lines):
        result = run("model", "check", folder)
        self.assertEqual(result.stdout.splitlines(), list(lines))
        self.assertEqual(result.stderr, "")
        self.assertEqual(result.returncode, status)

    def test_a_clean_model_says_nothing(self):
        self.check("clean", 0)

    def test_every_fault_has_its_file_line_and_element(self):
        self.check(
            "faulty", 1,
            "faulty/damaged.oru2d:4: Opening and ending tag mismatch: managedResourceDef line 3"
            " and oru2dImpl",
            "faulty/lid.oru2d:5: <reference>: Unresolved reference mr test.lid:1.0/Lid",
            "faulty/lid.oru2d:8: <attribute>: type test.lid/Height unresolved",
            "faulty/other.oru2d:2: <model>: no package: the root has to be 'oru2dLib' or"
            " 'oru2dImpl'",
            "faulty/unnamed.oru2d:4: <managedResource>: Mandatory field 'name' is missing,"
            " rc=10000",
            "faulty/unnamed.oru2d:2: <oru2dLib>: Error occured processing meta_package"
            " test.unnamed...",
            "faulty/unnamed.oru2d: Failed to load faulty/unnamed.oru2d",
            "faulty/untyped.oru2d:6: <attribute>: ORU2D property names and types are mandatory",
            "faulty/untyped.oru2d:6: <attribute>: Error occured instanciating oru_do_prop_meta",
            "faulty/untyped.oru2d:5: <configData>: Error processing configData node",
            "faulty/untyped.oru2d:2: <oru2dImpl>: Error occured processing meta_package"
            " test.untyped...",
            "faulty/untyped.oru2d: Failed to load faulty/untyped.oru2d")

    def test_what_would_end_the_library_is_only_told(self):
        self.check("deadly", 1,
                   "deadly/anonymous.oru2d:2: <oru2dLib>: the attribute 'package' is missing",
                   "deadly/anonymous.oru2d:4: <configData>: the attribute 'name' is missing")

    def test_a_folder_without_packages_is_a_fault(self):
        self.check("empty", 1, "empty: no file ends in '.oru2d'")


class ModelPrint(unittest.TestCase):
    def prints(self, arguments, text):
        result = run("model", *arguments, "--model", "clean")
        self.assertEqual(result.stdout, text)
        self.assertEqual(result.stderr, "")
        self.assertEqual(result.returncode, 0)

    def test_list_gives_what_packages_define(self):
        self.prints(["list"], """\
test.base:1.0  (library)
  type               Percent                  unsignedByte
  type               State                    enumeration: down = 0, up = 1
  type               Place                    sequence: row unsignedByte, side string
  configuration data Described                1 attribute
  operational data   Counters                 1 attribute
  resource           Port                     1 key, 1 attribute, 0 references
test.box:2.1  (implementation)
  resource           Box                      0 keys, 0 attributes, 1 reference
  resource           Port                     3 keys, 3 attributes, 2 references, implements test.base/Port
""")

    def test_show_gives_a_resource_in_full(self):
        self.prints(["show", "test.box/Port"], """\
test.box:2.1/Port
  kind             implementation resource
  implements       test.base/Port
  access           read
keys
  name                     string
secondary keys
  number                   int
  side                     string               with the key above
references
  box                      parent               test.box:2.1/Box
  other                    peer                 test.box:2.1/Port
configuration
  state                    State
  vlans                    unsignedShort[]      size(0..64)   when values(state,"up")
operational
  load                     test.base/Percent
action reset
  delay                    int                  in
  done                     boolean              out
action forget
""")

    def test_show_gives_everything_of_a_plain_name(self):
        result = run("model", "show", "Port", "--model", "clean")
        titles = [line for line in result.stdout.splitlines() if line.startswith("test.")]
        self.assertEqual(titles, ["test.base:1.0/Port", "test.box:2.1/Port"])

    def test_show_gives_types_and_definitions(self):
        self.prints(["show", "Percent"], """\
test.base:1.0/Percent
  kind             type
  definition       unsignedByte
  constraint       values(0..100)
""")
        self.prints(["show", "test.base:1.0/Described"], """\
test.base:1.0/Described
  kind             configuration data
attributes
  description              string
""")

    def test_tree_goes_through_library_resources(self):
        self.prints(["tree"], """\
test.box:2.1/Box
└── ports[name]  test.base:1.0/Port
    └── = test.box:2.1/Port
""")

    def test_tree_ends_at_its_depth(self):
        self.prints(["tree", "--depth", "1"], """\
test.box:2.1/Box
└── ports[name]  test.base:1.0/Port  ...
""")

    def test_tree_begins_where_it_is_told(self):
        self.prints(["tree", "--root", "test.base/Port"], """\
test.base:1.0/Port
└── = test.box:2.1/Port
""")

    def test_the_environment_can_name_the_model(self):
        result = run("model", "tree", "--depth", "1", ORUCTL_MODEL="clean")
        self.assertTrue(result.stdout.startswith("test.box:2.1/Box\n"))

    def test_a_name_that_is_not_there_is_a_fault(self):
        for arguments in (["show", "Lid"], ["tree", "--root", "Lid"]):
            result = run("model", *arguments, "--model", "clean")
            self.assertEqual((result.stdout, result.returncode), ("", 1))
            self.assertTrue(result.stderr.startswith("Lid: there is no"))

    def test_faults_are_told_beside_what_there_is(self):
        result = run("model", "list", "--model", "faulty")
        self.assertEqual(result.returncode, 1)
        self.assertIn("type test.lid/Height unresolved", result.stderr)


class Usage(unittest.TestCase):
    def test_wrong_use_has_a_status_of_its_own(self):
        for arguments in (["model"], ["nonsense"], ["model", "check"],
                          ["model", "check", "no such folder"], ["model", "list", "--nonsense"],
                          ["model", "tree", "--depth", "0", "--model", "clean"]):
            with self.subTest(arguments=arguments):
                result = run(*arguments)
                self.assertEqual((result.stdout, result.returncode), ("", 2))
                self.assertNotEqual(result.stderr, "")

    def test_help_is_no_fault(self):
        for arguments in (["--help"], ["model", "--help"], ["model", "check", "--help"]):
            self.assertEqual(run(*arguments).returncode, 0)


if __name__ == "__main__":
    os.environ.pop("ORUCTL_MODEL", None)
    unittest.main(argv=sys.argv[:1])
