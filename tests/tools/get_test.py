#!/usr/bin/env python3
"""Runs `oructl get`: resources and collections in every format, defaults, secrets, bad addresses.

    get_test.py ORUCTL NETWORK NODES
"""

import json
import xml.etree.ElementTree

from database import HOSTILE, PORT, Database, main

SLOT = "/chassis;id=1/slots;number=1"


class Get(Database):
    def setUp(self):
        super().setUp()
        self.load()

    def test_a_resource_has_six_forms(self):
        for form, output in (
                ("table", "attribute  value\nnumber     1\ncardType   4x1G\n"),
                ("text", "number = 1\ncardType = 4x1G\n"),
                ("tree", "\n  number = 1\n  cardType = 4x1G\n"),
                ("json", '{"%properties":{"number":{"%ushort":1},"cardType":'
                         '{"%string":"4x1G"}}}\n'),
                ("compact", '{"number":1,"cardType":"4x1G"}\n'),
                ("xml", '<properties><number type="unsignedShort">1</number>'
                        '<cardType type="string">4x1G</cardType></properties>\n')):
            with self.subTest(form=form):
                self.assertEqual(self.does("get", SLOT, "number", "cardType", "-f", form), output)

    def test_a_collection_has_six_forms(self):
        address = "/chassis;id=1?fans"
        for form, output in (
                ("table", "id  rpm\n1   4110\n2   4120\n"),
                ("text", "id = 1\nrpm = 4110\n\nid = 2\nrpm = 4120\n"),
                ("tree", "\n  id = 1\n  rpm = 4110\n\n  id = 2\n  rpm = 4120\n"),
                ("compact", '[{"id":1,"rpm":4110},\n{"id":2,"rpm":4120}]\n')):
            with self.subTest(form=form):
                self.assertEqual(self.does("get", address, "id", "rpm", "-f", form), output)
        read = json.loads(self.does("get", address, "id", "-f", "json"))
        self.assertEqual(read, {"%properties_list": [{"%properties": {"id": {"%uint": 1}}},
                                                     {"%properties": {"id": {"%uint": 2}}}]})
        root = xml.etree.ElementTree.fromstring(self.does("get", address, "id", "-f", "xml"))
        self.assertEqual([id.text for id in root.iter("id")], ["1", "2"])

    def test_all_attributes_are_read_when_none_is_named(self):
        lines = self.does("get", SLOT).splitlines()
        self.assertEqual([line.split()[0] for line in lines],
                         ["attribute", "_uri", "_mr", "number", "cardType", "enabled", "operState",
                          "temperature"])
        self.assertEqual(self.does("get", "/?:com.example.network:1.0/Fan").count("\n"), 5)

    def test_defaults_are_told_to_be_such(self):
        self.assertEqual(self.value(PORT, "duplex"), "auto  (default)")

    def test_lists_stand_on_one_line(self):
        self.assertEqual(self.value(PORT, "vlans"), "[10, 101]")

    def test_times_are_read_by_people_and_counted_on_the_wire(self):
        ada = "/users;name=ada"
        for form, output in (
                ("table", "attribute  value\nlastLogin  2023-11-14T22:13:20.001001Z\n"),
                ("text", "lastLogin = 2023-11-14T22:13:20.001001Z\n"),
                ("tree", "\n  lastLogin = 2023-11-14T22:13:20.001001Z\n"),
                ("compact", '{"lastLogin":1700000000001001}\n')):
            with self.subTest(form=form):
                self.assertEqual(self.does("get", ada, "lastLogin", "-f", form), output)
        self.assertIn('{"%datetime":1700000000001001',
                      self.does("get", ada, "lastLogin", "-f", "json"))
        self.assertIn(">1700000000001001<", self.does("get", ada, "lastLogin", "-f", "xml"))
        self.assertEqual(self.value("/logging/targets;name=messages", "rotateAt"),
                         "[2023-11-14T22:13:20Z, 2023-11-15T10:13:20Z]")
        self.assertEqual(self.value("/", "uptime"), "1d")
        self.assertEqual(self.value("/logging/targets;name=collector", "retry"), "30s")
        self.assertEqual(self.does("get", "/", "uptime", "-f", "compact"),
                         '{"uptime":86400000000}\n')

    def test_secrets_are_hidden_unless_they_are_asked_for(self):
        for form in ("table", "text", "tree", "json", "compact", "xml"):
            result = self.run_tool("get", "/users;name=ada", "-f", form)
            self.assertIn(b"removed", result.stdout)
            self.assertNotIn(b"analytical", result.stdout)
        shown = self.does("get", "/users;name=ada", "password", "--show-secrets")
        self.assertIn("$y$", shown)
        self.assertNotIn("analytical", shown)

    def test_what_is_not_there_is_told(self):
        for arguments, words in (
                (["/links;id=L99"], "/links;id=L99: there is no such resource"),
                (["/nothing"], "/nothing: there is no such resource"),
                (["/chassis;id=1?wheels"], "/chassis;id=1?wheels: the model has no such collection"),
                (["/chassis;id=1?slot"], "/chassis;id=1?slot: the model has no such collection; "
                                         'is it "slots"?'),
                (["/chassis;id=1?:Fan"], "/chassis;id=1?:Fan: the model has no such collection; "
                                         'is it "com.example.network:1.0/Fan"?'),
                (["/?:com.example.network:1.0/Nobody"],
                 "/?:com.example.network:1.0/Nobody: the model has no such collection"),
                ([PORT, "alais"], 'com.example.network:1.0/Port has no attribute "alais"; '
                                  'is it "alias"?'),
                (["links"], '"links" is no address: it begins with /')):
            with self.subTest(arguments=arguments):
                self.fails("get", *arguments, errors=["oructl: " + words])

    def test_wrong_use_has_a_status_of_its_own(self):
        for arguments in ([], ["/", "-f", "yaml"], ["/", "--nonsense"]):
            self.assertEqual(self.run_tool("get", *arguments).returncode, 2)

    def test_addresses_of_no_use_end_nothing(self):
        for address in HOSTILE:
            for form in (address, address + "?links", address + "?:com.example.network:1.0/Link",
                         "/chassis;id=1?" + address, "/?:" + address, "//?:" + address,
                         address + "*?:com.example.network:1.0/Fan", address + "?"):
                if "\0" not in form and len(form) < 100000:
                    self.survives("get", form)
        self.survives("get", "/", *HOSTILE)


if __name__ == "__main__":
    main()
