#!/usr/bin/env python3
"""Runs `oructl set`, `create` and `delete`: values in the types of the model, refusals, bad values.

    change_test.py ORUCTL NETWORK NODES
"""

import random

from database import HOSTILE, NODES, PORT, Database, main

ROUTER = "/routers;name=lab"


class Change(Database):
    def setUp(self):
        super().setUp()
        self.load()

    def refuses(self, *arguments, faults):
        count = f"the change was refused: {len(faults)} fault" + ("s" if len(faults) > 1 else "")
        self.fails(*arguments, errors=[*faults, count])


class Set(Change):
    def test_texts_are_read_in_the_type_of_the_attribute(self):
        for address, name, text, value in (
                (PORT, "mtu", "1600", "1600"), (PORT, "mtu", "+0068", "68"),
                (PORT, "alias", "a = b", "a = b"), (PORT, "alias", "", '""'),
                (PORT, "adminState", "testing", "testing"), (PORT, "vlans", "[]", "[]"),
                (PORT, "vlans", '[7,"8",{"%ushort":9}]', "[7, 8, 9]"),
                (PORT, "link", "/links;id=L2", "/links;id=L2"), (PORT, "alias", '"\\u0041"', "A"),
                ("/", "utcOffset", "-60", "-60"), (PORT, "mtu", '{"%int":1500}', "1500"),
                ("/", "position", '{"row":2,"rack":3,"side":"rear"}',
                 "{row : 2, rack : 3, side : rear}")):
            with self.subTest(name=name, text=text):
                self.assertRegex(self.does("set", address, f"{name}={text}"), "^written as revis")
                self.assertEqual(self.value(address, name), value)

    # One resource has a time, the other a duration: what is given, its count, and what is printed.
    def times(self, address, name, cases):
        for text, count, printed in cases:
            with self.subTest(text=text):
                self.does("set", address, f"{name}={text}", "--system")
                self.assertEqual(self.does("get", address, name, "-f", "compact"),
                                 f'{{"{name}":{count}}}\n')
                self.assertEqual(self.value(address, name), printed)
                self.assertEqual(self.does("set", address, f"{name}={printed}", "--system"),
                                 "nothing changes; nothing was written\n")

    def test_points_in_time_are_taken_as_they_are_printed(self):
        self.times("/users;name=ada", "lastLogin", (
            ("1970-01-01T00:00:00Z", 0, "1970-01-01T00:00:00Z"),
            ("1", 1, "1970-01-01T00:00:00.000001Z"),
            ("-1", -1, "1969-12-31T23:59:59.999999Z"),
            ("2024-02-29T12:30:05.5Z", 1709209805500000, "2024-02-29T12:30:05.5Z"),
            ("0000-01-01T00:00:00Z", -62167219200000000, "0000-01-01T00:00:00Z"),
            ("-62167219200000001", -62167219200000001, "-62167219200000001"),
            ("9999-12-31T23:59:59.999999Z", 253402300799999999, "9999-12-31T23:59:59.999999Z"),
            ("253402300800000000", 253402300800000000, "253402300800000000"),
            (str(2**63 - 1), 2**63 - 1, str(2**63 - 1)), (str(-2**63), -2**63, str(-2**63))))

    def test_durations_are_taken_as_they_are_printed(self):
        self.times("/", "uptime", (
            ("0s", 0, "0s"), ("90min", 5400000000, "1h 30min"), ("1.5h", 5400000000, "1h 30min"),
            ("1d 2h 3min 4.5s", 93784500000, "1d 2h 3min 4.5s"),
            ("1d2h3min4.5s", 93784500000, "1d 2h 3min 4.5s"), ("50ms", 50000, "50ms"),
            ("1.5ms", 1500, "1.5ms"), ("250us", 250, "250us"), ("1000", 1000, "1ms"),
            ("-2min 0.25s", -120250000, "-2min 250ms"), ("59.000001s", 59000001, "59.000001s"),
            (str(2**63 - 1), 2**63 - 1, "106751991d 4h 54.775807s"),
            (str(-2**63), -2**63, "-106751991d 4h 54.775808s")))

    def test_elements_of_a_list_are_times_too(self):
        target = "/logging/targets;name=messages"
        self.does("set", target, 'rotateAt=["2024-02-29T00:00:00Z",1]')
        self.assertEqual(self.value(target, "rotateAt"),
                         "[2024-02-29T00:00:00Z, 1970-01-01T00:00:00.000001Z]")

    def test_what_is_no_time_is_told(self):
        for text in ("2023-02-29T00:00:00Z", "2023-13-01T00:00:00Z", "2023-11-14", "", "Z",
                     "2023-11-14T24:00:00Z", "2023-11-14T22:60:00Z", "2023-11-14T22:13:60Z",
                     "2023-11-14T22:13:20", "2023-11-14T22:13:20.Z", "2023-11-14T22:13:20.1234567Z",
                     "02023-11-14T22:13:20Z", "2023-11-14T22:13:20ZZ", "-2023-11-14T22:13:20Z"):
            with self.subTest(text=text):
                self.fails("set", "/users;name=ada", f"lastLogin={text}", "--system", errors=[
                    "oructl: lastLogin takes a time like 2023-11-14T22:13:20Z (dateTime), not "
                    f'"{text}"'])
        for text in ("", "s", "1x", "1.s", "1 s", "--1s", "1s 1", "0.5us", "1.1234567s",
                     "99999999999999999999s", "106751991d 4h 54.775808s", "300000000d", "1s,2s"):
            with self.subTest(text=text):
                self.fails("set", "/", f"uptime={text}", "--system", errors=[
                    "oructl: uptime takes a duration like 1h 30min or 2.5s (duration), not "
                    f'"{text}"'])

    def test_many_faults_are_counted_unless_all_are_wanted(self):
        gone = [f"/vlans;id={i}" for i in range(1000, 1060)]
        faults = [f"{address}: there is no such resource (102)" for address in gone]
        self.fails("delete", *gone, errors=[
            *faults[:50], "and 10 more; --all-faults prints them",
            "the change was refused: 60 faults"])
        self.refuses("delete", *gone, "--all-faults", faults=faults)
        self.refuses("delete", *gone[:50], faults=faults[:50])

    def test_what_does_not_fit_is_told_before_it_is_sent(self):
        for text, words in (
                ("mtu=x", 'mtu takes unsignedShort, not "x"'),
                ("mtu=", 'mtu takes unsignedShort, not ""'),
                ("mtu=99999", 'mtu takes a number from 0 to 65535 (unsignedShort), not "99999"'),
                ("mtu=-1", 'mtu takes a number from 0 to 65535 (unsignedShort), not "-1"'),
                ("vlans=10", 'vlans takes an array: ["...",...] (com.example.network.lib/VlanId[]),'
                             ' not "10"'),
                ("mtuu=1", 'com.example.network:1.0/Port has no attribute "mtuu"; is it "mtu"?'),
                ("mtu", '"mtu" is no NAME=VALUE'), ("=5", '"=5" is no NAME=VALUE'),
                ('mtu={"_div()":[1,0]}', 'mtu: "{"_div()":[1,0]}": "_div()" is not computed here: '
                                         'it can end the process'),
                ('alias="\\u0000"', "alias: \\u0000, at which a text ends"),
                ("link=L1", '"L1" is no address: it begins with /')):
            with self.subTest(text=text):
                self.fails("set", PORT, text, errors=["oructl: " + words])
        self.fails("set", PORT, "mtu=1500", "mtu=1600", errors=["oructl: mtu is given twice"])
        self.fails("set", PORT, "mtu=1500", "--unset", "mtu",
                   errors=["oructl: mtu is given twice"])
        self.fails("set", "/links;id=L99", "cost=1",
                   errors=["oructl: /links;id=L99: there is no such resource"])

    def test_every_fault_of_a_refused_change_is_told_and_nothing_is_written(self):
        self.refuses("set", PORT, "mtu=32", "adminState=left", "link=/links;id=L99", "name=x",
                     "operState=down", faults=[
                         PORT + ": name: keys cannot be changed: expected 1/1, got x (111)",
                         PORT + ": operState: operational data is not configured (111)",
                         PORT + ": mtu: Property values constraint violation: expected "
                                "values(68..9216)default(1500), got 32 (114)",
                         PORT + ": adminState: Property enum values violation: expected down, up, "
                                "testing, got left (117)",
                         PORT + ": link: a reference leads to nothing: expected "
                                "com.example.network:1.0/Link, got /links;id=L99 (102)"])
        self.assertEqual(self.value(PORT, "mtu"), "1500")

    def test_values_are_taken_away(self):
        self.does("set", PORT, "--unset", "mtu", "--unset", "alias")
        self.assertEqual(self.value(PORT, "mtu"), "1500  (default)")
        self.assertEqual(self.value(PORT, "alias"), "")

    def test_a_dry_run_writes_nothing(self):
        self.assertEqual(self.does("set", PORT, "mtu=1600", "--dry-run"),
                         "nothing is wrong; nothing was written\n")
        self.assertEqual(self.value(PORT, "mtu"), "1500")

    def test_a_provider_sets_operational_data(self):
        self.does("set", PORT, "operState=down", "--system")
        self.assertEqual(self.value(PORT, "operState"), "down")

    def test_secrets_are_hidden_in_faults(self):
        result = self.survives("set", "/users;name=ada", "password=" + "no" * 500, "uid=1001")
        self.assertNotIn(b"nono", result.stdout + result.stderr)
        self.fails("set", "/users;name=ada", 'password={"%string":"nono"', errors=[
            "oructl: password takes com.example.network.management.lib/PasswordString, not what was given"])

    def test_the_user_is_recorded(self):
        self.does("set", PORT, "mtu=1600", "--user", "some-body")
        with open(self.path("net.db"), "rb") as file:
            content = file.read()
        self.assertIn(b"some-body", content)


class Create(Change):
    def test_a_resource_has_its_keys_from_the_address(self):
        self.does("create", "/vlans;id=77", "name=lab")
        self.assertEqual(self.does("get", "/vlans;id=77", "id", "name", "-f", "compact"),
                         '{"id":77,"name":"lab"}\n')
        self.refuses("create", "/vlans;id=77", "name=lab", faults=[
            "/vlans;id=77: the resource exists already (105)"])

    def test_what_the_model_does_not_have_is_told(self):
        for address, words in (
                ("/wheels;id=1", "/wheels;id=1: the model has no such address"),
                ("/vlans", '"/vlans" is no address of com.example.network:1.0/Vlan: it has no key '
                           '"id"'),
                ("/vlans;id=x", 'id takes unsignedShort (com.example.network.lib/VlanId), not "x"'),
                ("/", "the resource at the top is always there")):
            with self.subTest(address=address):
                self.fails("create", address, errors=["oructl: " + words])
        self.refuses("create", "/chassis;id=1/fans;id=9", faults=[
            "/chassis;id=1/fans;id=9: resources of the type com.example.network:1.0/Fan cannot be "
            "created (111)"])
        self.refuses("create", "/chassis;id=9/slots;number=1", "--system", faults=[
            "/chassis;id=9: there is no such resource (102)"])

    def test_a_library_resource_wants_a_type(self):
        self.fails("create", "/logging/targets;name=x", errors=[
            "oructl: com.example.network.management.lib:1.0/LogTarget is a library resource; "
            "--type tells which of these it is: com.example.network.management:1.0/ConsoleLog, "
            "com.example.network.management:1.0/FileLog, "
            "com.example.network.management:1.0/HostLog"])
        self.fails("create", "/vlans;id=7", "--type", "Vlam",
                   errors=['oructl: the model has no resource "Vlam"'])


class Delete(Change):
    def test_children_go_along(self):
        self.does("delete", ROUTER)
        self.fails("get", ROUTER + "/interfaces;name=x",
                   errors=[f"oructl: {ROUTER}/interfaces;name=x: there is no such resource"])

    def test_all_go_or_none(self):
        self.does("create", "/vlans;id=77", "name=lab")
        self.refuses("delete", "/vlans;id=77", "/vlans;id=78", faults=[
            "/vlans;id=78: there is no such resource (102)"])
        self.assertEqual(self.value("/vlans;id=77", "name"), "lab")
        self.does("delete", "/vlans;id=77")

    def test_what_others_refer_to_stays(self):
        self.refuses("delete", "/links;id=L1", faults=[
            f"/links;id=L1: another resource refers to it: {port} (12)"
            for port in (PORT, "/chassis;id=2/slots;number=1/ports;name=1%2F1")])


class Hostile(Database):
    model = NODES

    def setUp(self):
        super().setUp()
        self.does("create", "/nodes;name=a")

    def test_addresses_of_no_use_end_nothing(self):
        for address in HOSTILE:
            for command in ("create", "delete", "set"):
                self.survives(command, address, "--system")
            self.survives("set", "/nodes;name=a", "peer=" + address, "--system")
            self.survives("set", "/nodes;name=a", 'peers=["' + address + '"]', "--system")
            self.survives("set", "/nodes;name=a", 'peer={"%mr_uri":"' + address + '"}', "--system")

    def test_values_of_no_use_end_nothing(self):
        texts = ["{", "[", '"', "[[1]]", "[{}]", "{}", '{"%int":1', "[" * 5000, '{"a":' * 5000,
                 '{"%vlist":[1]}', '{"%dtree":{"name":"n"}}', '["\\u0000"]', "9" * 5000, "\x01",
                 '{"%int":[1,2]}', '{"%properties":{"a":1}}', "nan", "1e9", "[null]", "null",
                 '{"%typedef":"x"}', '{"%null":null}', '{"_tostring()":["a"]}']
        texts += [random.Random(i).randbytes(30).replace(b"\0", b"").decode("latin-1")
                  for i in range(20)]
        for text in texts:
            for name in ("size", "peer", "peers", "name", text):
                self.survives("set", "/nodes;name=a", f"{name}={text}", "--system")
            self.survives("create", "/nodes;name=b", f"size={text}")

    def test_wrong_use_has_a_status_of_its_own(self):
        for arguments in (["set"], ["create"], ["delete"], ["set", "/", "--nonsense"],
                          ["set", "/", "--unset"]):
            self.assertEqual(self.run_tool(*arguments).returncode, 2)


if __name__ == "__main__":
    main()
