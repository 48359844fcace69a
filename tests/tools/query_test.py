#!/usr/bin/env python3
"""Runs `oructl query`: documents, parameters, batches, formats, faults, hostile documents.

    query_test.py ORUCTL NETWORK NODES
"""

import json
import os
import xml.etree.ElementTree

from database import HOSTILE, LONG, NETWORK, NODES, Database, main

LINK = 'mr="com.example.network:1.0/Link" op="get"'
FANS = '<fan uri="/chassis;id=1?fans" mr="com.example.network:1.0/Fan" op="get">' \
       "<id/><rpm/></fan>"


def document(name):
    return os.path.join(NETWORK, "documents", name)


class Query(Database):
    def setUp(self):
        super().setUp()
        self.load()

    def test_a_document_has_six_forms(self):
        for form, output in (
                ("table", "fan.id  fan.rpm\n1       4110\n2       4120\n"),
                ("text", "fan.id = 1\nfan.rpm = 4110\n\nfan.id = 2\nfan.rpm = 4120\n\n")):
            self.assertEqual(self.does("query", "-f", form, read=FANS), output)
        tree = self.does("query", read=FANS).splitlines()
        self.assertEqual(tree[0], "fan  /chassis;id=1/fans;id=1")
        self.assertIn("  rpm = 4110", tree)
        compact = json.loads(self.does("query", "-f", "compact", read=FANS))
        self.assertEqual([fan["rpm"] for fan in compact["fan"]], [4110, 4120])
        rows = json.loads(self.does("query", "-f", "json", read=FANS))["%dtree"]["children"]
        self.assertEqual(len(rows["%dtree"]), 2)
        root = xml.etree.ElementTree.fromstring(
            "<all>" + self.does("query", "-f", "xml", read=FANS) + "</all>")
        self.assertEqual([rpm.text for rpm in root.iter("rpm")], ["4110", "4120"])

    def test_parameters_are_json_or_texts(self):
        table = self.does("query", document("03-ports.xml"), "-p", "slot=2", "-p", "mtu=9000",
                          "-f", "table")
        self.assertEqual(table, "port.name  port.mtu  port.alias\n"
                                "2/4        9000      port 1-2-4\n"
                                "2/2        9000      port 1-2-2\n")
        self.fails("query", document("03-ports.xml"), "-p", "slot",
                   errors=['oructl: "slot" is no NAME=VALUE'])
        self.fails("query", document("03-ports.xml"), "-p", "a=1", "-p", "a=2",
                   errors=["oructl: the parameter a is given twice"])

    def test_parameters_that_are_compared_with_times_are_times(self):
        read = '<r uri="/logging?records" mr="com.example.network.management:1.0/LogRecord" ' \
               'op="get" xmlns:dtl="urn:oru:dtl"><dtl:where><and><time op="ge">$t</time></and>' \
               '</dtl:where><time order="asc"/></r>'
        rows = "r.time\n2023-11-14T22:13:23Z\n2023-11-14T22:13:24Z\n"
        for text in ("2023-11-14T22:13:23Z", "1700000003000000", "2023-11-14T22:13:22.000001Z",
                     '{"%datetime":1700000003000000}'):
            with self.subTest(text=text):
                self.assertEqual(self.does("query", "-p", "t=" + text, "-f", "table", read=read),
                                 rows)
        self.assertIn("  time = 2023-11-14T22:13:24Z",
                      self.does("query", "-p", "t=1700000004000000", read=read).splitlines())
        self.fails("query", "-p", "t=noon", read=read, errors=[
            'oructl: the parameter t takes a time like 2023-11-14T22:13:20Z, not "noon"'])

    def test_parts_stand_on_one_line_of_a_drawing(self):
        read = '<s uri="/" mr="com.example.network:1.0/System" op="get"><position/><uptime/>' \
               "<capabilities/></s>"
        self.does("set", "/", 'position={"row":2,"rack":3,"side":"rear"}')
        self.assertEqual(self.does("query", read=read).splitlines()[1:], [
            '  position = {"row":2,"rack":3,"side":"rear"}', "  uptime = 1d",
            '  capabilities = ["switching","routing"]'])

    def test_a_parameter_leaves_the_document_behind_it(self):
        self.assertEqual(self.does("query", "-p", "slot=2", "-p", "mtu=9000",
                                   document("03-ports.xml"), "-f", "text").count("port.name"), 2)

    def test_parameters_that_are_missing_or_not_asked_for_are_told(self):
        self.assertEqual(
            self.does("query", document("03-ports.xml"), "-p", "slot=2", "-p", "mtus=1", errors=[
                "the document asks for $mtu: -p mtu=VALUE",
                'the document does not ask for $mtus; is it "mtu"?']), "")
        read = '<l uri="/links;id=$$l" {} order="$o" batch-size="$b"><cost default=\'' \
               '{{"_add()":["$n","$$m","$o"]}}\'> </cost><from/></l>'.format(LINK)
        self.does("query", "-p", "b=1", read=read, status=1, errors=[
            "-:1: <l>: an order is read in a collection only",
            "the document asks for $o: -p o=VALUE", "the document asks for $n: -p n=VALUE"])

    def test_an_address_may_be_a_parameter(self):
        read = f'<l uri="$a" {LINK}><cost/></l>'
        self.assertEqual(self.does("query", "-p", "a=/links;id=L1", "-f", "table", read=read),
                         "l.cost\n10\n")
        self.fails("query", read=read,
                   errors=["oructl: the parameter a is an address: -p a=/..."])

    def test_everything_of_a_type_is_a_collection_of_the_location(self):
        kind = ":com.example.network:1.0/Link"
        words = f'"//?{kind}" is the address of one resource here, since no reference stands in ' \
                f"front of the ?; //locations;locationId=global?{kind} is a collection"
        everything = f"//locations;locationId=global?{kind}"
        read = f'<l uri="%s" {LINK}><id/></l>'
        rows = self.does("query", "-f", "text", read=read % everything)
        self.assertEqual(rows.count("l.id"), 10)
        self.assertEqual(self.does("query", "-f", "text", "-p", "a=" + everything, read=read % "$a"),
                         rows)
        self.does("query", read=read % f"//?{kind}", status=1, errors=[f"-:1: <l>: {words}"])
        self.fails("query", "-p", f"a=//?{kind}", read=read % "$a",
                   errors=[f"oructl: the parameter a: {words}"])

    def test_an_address_may_come_from_the_row_above(self):
        read = '<a uri="/alarms;id=1" mr="com.example.network.management:1.0/Alarm" op="get">' \
               "{}<s uri=\"{}\" {}><voltage/></s></a>"
        supply = 'mr="com.example.network:1.0/PowerSupply" op="get"'
        self.assertEqual(
            self.does("query", "-f", "table", read=read.format("<resource/>", "@resource", supply)),
            "a.resource                   s.voltage\n"
            "/chassis;id=2/supplies;id=2  48.5\n")
        for asked, address in (("<text/>", "@text"), ("<siblings/>", "@siblings"), ("", "@"),
                               ("<chassis/>", "@chassis"), ("<resource/>", "@(../resource)"),
                               ("<resource default='\"/a\"'/>", "@resource"), ("", "@none")):
            self.fails("query", read=read.format(asked, address, supply), errors=[
                f"oructl: {address} is no address: one from the data is an attribute of the "
                "element above, of the type mrURI and without a default"])

    def test_no_address_in_the_data_ends_a_walk(self):
        read = '<a uri="/alarms;id=1" mr="com.example.network.management:1.0/Alarm" op="get">' \
               '<resource/><s uri="@resource" mr="com.example.network:1.0/Slot" op="get">' \
               "<number/><ports/></s></a>"
        for address in HOSTILE + ["/a" * 9, "/a" * 9 + "?b", "$p", "@p", "/logging", "/"]:
            self.survives("set", "/alarms;id=1", "--system",
                          "resource=" + json.dumps({"%mr_uri": address}))
            self.survives("get", "/alarms;id=1")
            self.survives("query", read=read)

    def test_rows_come_in_batches(self):
        inventory = document("06-inventory.xml")
        whole = self.does("query", inventory, "-f", "text")
        self.assertEqual(whole.count("ports.name"), 12)
        self.assertEqual(self.does("query", inventory, "-f", "text", "--count", "5", "--all"), whole)
        first = self.does("query", inventory, "-f", "text", "--count", "5",
                          errors=["there may be more rows: --all prints them"])
        self.assertEqual(first.count("ports.name"), 5)
        self.assertTrue(whole.startswith(first))

    def test_a_fault_is_told_with_its_place_and_the_rest_is_answered(self):
        output = self.does("query", document("14-fault.xml"), status=1, errors=[
            document("14-fault.xml") + ":7: <shelf>: Unknown MR: com.example.network:1.0/Shelf"])
        self.assertIn("serial = \"CH-2001\"", output)

    def test_what_the_data_does_not_have_is_null(self):
        self.assertEqual(self.does("query", "-f", "table",
                                   read=f'<l uri="/links;id=L99" {LINK}><cost/></l>'),
                         "l.cost\n-\n")

    def test_secrets_are_hidden_unless_they_are_asked_for(self):
        read = '<u uri="/users;name=ada" mr="com.example.network:1.0/User" op="get"><password/></u>'
        for form in ("table", "text", "tree", "json", "compact", "xml"):
            self.assertIn("removed", self.does("query", "-f", form, read=read))
        self.assertIn("$y$", self.does("query", "--show-secrets", read=read))

    def test_wrong_use_has_a_status_of_its_own(self):
        for arguments in (["none.xml"], ["--count", "0"], ["-f", "yaml"]):
            self.assertEqual(self.run_tool("query", *arguments).returncode, 2)


class Hostile(Database):
    def setUp(self):
        super().setUp()
        self.load()

    def test_addresses_of_no_use_end_nothing(self):
        for address in HOSTILE + ["/a" * 9, "/a" * 9 + "?b", "$p", "@p", "@(../p)", "a" * 100,
                                  "/links;id=$p", "$p?links", "/" * 20]:
            text = address.replace('"', "&quot;").replace("\x01", "")
            read = f'<l uri="{text}" {LINK}><id/><from op="get"><name/></from></l>'
            self.survives("query", read=read)
            for value in HOSTILE + ["/a" * 9, "/links?", "$p", "@p", "[1]", '{"_div()":[1,0]}',
                                    '{"%mr_uri":"' + LONG + '"}', '["' + LONG + '"]', "7"]:
                if len(address) < 200 and len(value) < 200:
                    self.survives("query", "-p", "p=" + value, read=read)

    def test_documents_of_no_use_end_nothing(self):
        for read in ("", "<", "<a/>", "<a>" * 50 + "</a>" * 50, b"\x7fELF\0", "<a>\0</a>",
                     '<!DOCTYPE a [<!ENTITY x "y">]><a>&x;</a>',
                     f'<l uri="/?links" {LINK}><id>{{"_div()":[1,0]}}</id></l>',
                     f'<l uri="/?links" {LINK} batch-size="-1" max-batches="x"><id order="x"/></l>',
                     f'<l uri="/?links" {LINK} xmlns:dtl="urn:oru:dtl"><dtl:where><cost op="le">'
                     '{"_mod()":[1,0]}</cost></dtl:where><id/></l>'):
            self.survives("query", read=read)
            self.survives("query", "--count", "1", "--all", read=read)


class Deep(Database):
    model = NODES

    def test_resources_at_the_end_of_all_addresses_are_read(self):
        deep = ["/nodes;name=a" * depth for depth in range(1, 10)]
        for address in deep:
            self.does("create", address)
        self.does("set", deep[0], "peer=" + deep[8], "size=1", "--system")
        node = 'mr="test.nodes:1.0/Node"'
        for inner in ("<size/>", '<peer op="get"><size/></peer>', '<nodes op="get"><size/></nodes>',
                      '<only op="get"><size/></only>', '<peer op="get"><nodes op="get"><size/>'
                      '</nodes><only op="get"><size/></only></peer>'):
            for address in (deep[0], deep[7], deep[8]):
                self.survives("query", read=f'<n uri="{address}" {node} op="get">{inner}</n>')
        for op in ("get-all", "get-all-r", "getAllR", "get_all_r"):
            self.survives("query", read=f'<n uri="{deep[0]}" {node} op="{op}"/>')
        self.survives("get", deep[8] + "?nodes")
        self.survives("get", deep[8] + "/only")


if __name__ == "__main__":
    main()
