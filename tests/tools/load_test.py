#!/usr/bin/env python3
"""Runs `oructl load` and `export`: what goes in comes out, whatever the order; bad files.

    load_test.py ORUCTL NETWORK NODES
"""

import contextlib
import json
import os
import random
import sqlite3

from database import DATA, HOSTILE, NODES, Database, main


def node(address, **attributes):
    name = address.rpartition("=")[2]
    props = {"_uri": {"%mr_uri": address}, "_mr": {"%string": "test.nodes:1.0/Node"},
             "name": {"%string": name}, **attributes}
    return {"%properties": props}


def as_list(*resources):
    return json.dumps({"%properties_list": list(resources)})


class Network(Database):
    def test_what_is_exported_loads_again_and_is_the_same(self):
        self.load()
        first = self.run_tool("export", "--show-secrets").stdout
        self.write("first.json", first.decode())
        self.does("load", "first.json", "--db", "other.db")
        self.assertEqual(self.run_tool("export", "--show-secrets", "--db", "other.db").stdout, first)
        self.assertEqual(len(json.loads(first)["%properties_list"]), 107)

    def test_a_second_load_updates(self):
        self.load()
        self.assertEqual(self.does("load", DATA), "0 created, 107 updated\n")

    def test_the_order_of_the_file_does_not_matter(self):
        with open(DATA, encoding="utf-8") as file:
            data = json.load(file)
        random.Random(3).shuffle(data["%properties_list"])
        self.does("load", "-", read=json.dumps(data))
        shuffled = self.run_tool("export").stdout
        self.does("load", DATA, "--db", "other.db")
        self.assertEqual(self.run_tool("export", "--db", "other.db").stdout, shuffled)

    def test_secrets_are_left_out_of_an_export(self):
        self.load()
        result = self.run_tool("export")
        self.assertNotIn(b"analytical", result.stdout)
        self.assertNotIn(b"<removed>", result.stdout)
        self.assertEqual(result.stderr.decode(), "4 secrets left out; --show-secrets writes those "
                                                 "that can be read back\n")
        with open(self.path("net.db"), "rb") as file:
            self.assertNotIn(b"analytical-1815", file.read())

    def test_a_part_is_exported_with_all_below_it(self):
        self.load()
        part = json.loads(self.does("export", "/chassis;id=1/slots;number=1"))
        addresses = [entry["%properties"]["_uri"]["%mr_uri"] for entry in part["%properties_list"]]
        self.assertEqual(len(addresses), 5)
        self.assertTrue(all("/chassis;id=1/slots;number=1" in address for address in addresses))

    def test_a_dry_run_needs_no_database_and_makes_none(self):
        self.assertEqual(self.does("load", DATA, "--dry-run"),
                         "106 created, 1 updated; nothing was written\n")
        self.assertEqual(os.listdir(self.folder), [])

    def test_a_refused_load_writes_nothing_and_tells_every_fault(self):
        with open(DATA, encoding="utf-8") as file:
            bad = file.read().replace('"mtu":{"%ushort":9000}', '"mtu":{"%ushort":32}', 2)
        self.write("bad.json", bad)
        result = self.run_tool("load", "bad.json")
        self.assertEqual(result.returncode, 1)
        port = "/chassis;id=1/slots;number=%d/ports;name=%d%%2F2: mtu: Property values constraint " \
               "violation: expected values(68..9216)default(1500), got 32 (114)"
        self.assertEqual(result.stderr.decode().splitlines()[-2:],
                         ["the change was refused: 2 faults", "nothing was written"])
        self.assertIn(port % (1, 1), result.stderr.decode())
        self.assertEqual(self.value("/", "hostname"), "")


class Nodes(Database):
    model = NODES

    def test_references_within_a_commit_may_point_ahead(self):
        self.assertEqual(
            self.does("load", "-", read=as_list(
                node("/nodes;name=a", peer={"%mr_uri": "/nodes;name=b"}),
                node("/nodes;name=b", peer={"%mr_uri": "/nodes;name=a"}))),
            "2 created, 0 updated\n")
        self.assertEqual(self.value("/nodes;name=a", "peer"), "/nodes;name=b")

    def test_batches_are_commits_and_what_came_before_a_fault_stays(self):
        many = [node(f"/nodes;name={i}", size={"%int": i}) for i in range(10)]
        many[7]["%properties"]["size"] = {"%string": "x"}
        result = self.run_tool("load", "-", "--batch", "3", read=as_list(*many))
        self.assertEqual(result.returncode, 1)
        self.assertEqual(result.stderr.decode().splitlines()[-1],
                         "6 resources before it: written already")
        self.assertEqual(self.does("get", "/?nodes", "name", "-f", "compact").count("name"), 6)

    def test_references_to_resources_of_later_batches_are_set_when_these_are_there(self):
        def ring(i, away):
            return {"%mr_uri": f"//locations;locationId=global/nodes;name={(i + away) % 10}"}
        many = [node(f"/nodes;name={i}", peer=ring(i, 1),
                     peers={"%mr_uri": [ring(i, 5)["%mr_uri"], ring(i, 9)["%mr_uri"]]})
                for i in range(10)]
        self.assertEqual(self.does("load", "-", "--batch", "3", read=as_list(*many)),
                         "10 created, 0 updated\n")
        self.does("load", "-", "--db", "one.db", read=as_list(*many))
        self.assertEqual(self.does("export"), self.does("export", "--db", "one.db"))
        self.assertEqual(self.does("load", "-", "--batch", "3", read=as_list(*many)),
                         "0 created, 10 updated\n")

    def test_references_to_nothing_are_refused_in_their_batch(self):
        many = [node(f"/nodes;name={i}") for i in range(4)]
        many[2]["%properties"]["peer"] = {"%mr_uri": "/nodes;name=none"}
        self.fails("load", "-", "--batch", "2", read=as_list(*many), errors=[
            "/nodes;name=2: peer: a reference leads to nothing: expected test.nodes:1.0/Node, got "
            "/nodes;name=none (102)", "the change was refused: 1 fault",
            "2 resources before it: written already"])

    def test_keys_come_from_the_address_and_do_not_contradict_it(self):
        entry = node("/nodes;name=a")
        del entry["%properties"]["name"]
        self.does("load", "-", read=as_list(entry))
        self.assertEqual(self.value("/nodes;name=a", "name"), "a")
        self.fails("load", "-", read=as_list(node("/nodes;name=b", name={"%string": "c"})),
                   errors=['-:1:23: the key "name" is "b" in the address and "c" among the '
                           "attributes", "nothing was written"])

    def test_keys_of_any_text_survive(self):
        names = ['"', "\\", "a b", "ä/;=%", "'", "x" * 3000]
        for name in names:
            with self.subTest(name=name):
                escaped = "".join(f"%{ord(c):02X}" if c in " /;=%'" else c for c in name)
                read = node("/nodes;name=" + escaped, name={"%string": name})
                self.does("load", "-", read=as_list(read))
        exported = self.does("export")
        self.assertEqual({entry["%properties"].get("name", {}).get("%string")
                          for entry in json.loads(exported)["%properties_list"]},
                         {None, *names})
        self.does("load", "-", "--db", "other.db", read=exported)
        self.assertEqual(self.does("export", "--db", "other.db"), exported)

    def test_a_resource_may_stand_in_one_place_only(self):
        one = node("/nodes;name=a")
        column = len('{"%properties_list": [') + len(json.dumps(one)) + len(", ") + 1
        self.fails("load", "-", read=as_list(one, one),
                   errors=[f'-:1:{column}: "/nodes;name=a" stands in -:1 already',
                           "nothing was written"])

    def test_what_is_no_list_of_resources_is_told_with_its_place(self):
        for read, words in (
                ("[1]", "-:1:1: an array without a tag; --type tells what it is"),
                ('{"%int":1}', '-:1:1: resources stand in {"%properties_list":[...]}'),
                ('{"%properties":{"a":1}}', '-:1:1: a resource without "_uri", its address'),
                ('{"%properties":{"_uri":"x"}}',
                 '-:1:1: "x" is no address: it begins with /'),
                ('{"%properties":{"_uri":"/a?b"}}',
                 '-:1:1: "/a?b" is no address: that is a collection, with a ?')):
            with self.subTest(read=read):
                self.fails("load", "-", read=read, errors=[words, "nothing was written"])
        self.assertEqual(os.listdir(self.folder), [])

    def test_the_model_is_nine_deep_at_most(self):
        deep = [node("/nodes;name=a" * depth) for depth in range(1, 10)]
        self.does("load", "-", read=as_list(*reversed(deep)))
        self.assertEqual(len(json.loads(self.does("export"))["%properties_list"]), 10)
        self.fails("load", "-", read=as_list(node("/nodes;name=a" * 10)),
                   errors=['-:1:23: "/nodes;name=a/nodes;name=a/nodes;name=a/nodes;name=a/nodes;n..." '
                           "is no address: it has more than 9 segments", "nothing was written"])


class Hostile(Database):
    model = NODES

    def test_addresses_at_which_the_library_ends_the_process_are_kept_from_it(self):
        for address in HOSTILE:
            with self.subTest(address=address[:100]):
                self.survives("load", "-", read=as_list(node(address)))
                self.survives("load", "-", read=as_list(
                    node("/nodes;name=q", peer={"%mr_uri": address},
                         peers={"%mr_uri": [address, address]})))
                self.survives("export", address)

    def test_values_of_no_use_are_refused(self):
        for value in ({"_div()": [1, 0]}, {"_mod()": [1, 0]}, {"_key()": "x"}, {"%nope": 1},
                      {"%vlist": [1]}, [1], {"%array": []}, {"%sequence": {"a": 1}}, None, "x",
                      {"%string": "x"}, {"%int": 5}, {"%ulong": 2 ** 64 - 1}):
            with self.subTest(value=value):
                self.survives("load", "-", read=as_list(node("/nodes;name=a", size=value)))

    def test_files_of_no_use_are_refused(self):
        for read in ("", "{", b"\x7fELF\0\0", "[" * 100000, random.Random(2).randbytes(5000)):
            result = self.run_tool("load", "-", read=read)
            self.assertEqual(result.returncode, 1)
        self.assertEqual(self.run_tool("load", "none").returncode, 2)
        self.assertEqual(self.run_tool("load", "/").returncode, 1)

    def test_many_faulty_resources_are_told_in_time(self):
        many = [node(f"/nodes;name={i}", size={"%string": "x"}) for i in range(5000)]
        result = self.run_tool("load", "-", read=as_list(*many))
        self.assertEqual(result.returncode, 1)
        self.assertEqual(result.stderr.splitlines()[50:], [
            b"and 4950 more; --all-faults prints them", b"the change was refused: 5000 faults",
            b"nothing was written"])
        result = self.run_tool("load", "-", "--all-faults", read=as_list(*many))
        self.assertEqual(result.stderr.count(b"\n"), 5002)


class Files(Database):
    def test_what_is_no_database_is_refused_and_left_as_it_was(self):
        self.write("net.db", "text")
        self.fails("load", DATA, errors=["oructl: net.db: file is not a database (15)"])
        with open(self.path("net.db"), encoding="utf-8") as file:
            self.assertEqual(file.read(), "text")
        self.fails("load", DATA, "--db", ".", errors=[
            "oructl: .: a folder, where the file of a database is wanted"])
        self.fails("load", DATA, "--db", "no/net.db",
                   errors=["oructl: no/net.db: there is no folder " + self.path("no")])
        self.fails("export", "--db", "none.db", errors=[
            "oructl: none.db: there is no such database; oructl load makes one"])

    def test_databases_of_others_are_told_apart(self):
        self.does("load", DATA, "--db", "newer.db")
        for file, change, words in (
                ("other.db", "CREATE TABLE other (x)", "the file is a database of another program"),
                ("newer.db", "PRAGMA user_version = 99",
                 "the database was written by a newer version of this program")):
            with contextlib.closing(sqlite3.connect(self.path(file))) as connection:
                connection.execute(change)
            for command in (["export"], ["get", "/"], ["load", DATA], ["delete", "/links;id=L1"]):
                self.fails(*command, "--db", file, errors=[f"oructl: {file}: {words} (15)"])

    def test_a_damaged_database_is_told(self):
        self.load()
        with open(self.path("net.db"), "r+b") as file:
            file.seek(100)
            file.write(b"\xff" * 8000)
        for command in (["export"], ["get", "/"], ["load", DATA]):
            result = self.survives(*command)
            self.assertEqual(result.returncode, 1)
            self.assertNotEqual(result.stderr, b"")

    def test_the_tool_brings_its_own_back_end(self):
        result = self.run_tool("load", DATA, env={"ORU_DEFAULT_LIB": "/nothing.so",
                                                  "ORU_DEFAULT_LIB_INIT": "nothing"})
        self.assertEqual((result.returncode, result.stderr), (0, b""))

    def test_wrong_use_has_a_status_of_its_own(self):
        for arguments in (["load"], ["load", DATA, "--batch", "0"],
                          ["load", DATA, "--model", "none"],
                          ["load", DATA, "--batch", "5", "--dry-run"]):
            self.assertEqual(self.run_tool(*arguments).returncode, 2)

    def test_the_root_is_found_or_told(self):
        self.assertEqual(self.does("load", DATA, "--root", "System"), "106 created, 1 updated\n")
        self.fails("export", "--root", "Sistem",
                   errors=['oructl: the model has no resource "Sistem"'])


if __name__ == "__main__":
    main()
