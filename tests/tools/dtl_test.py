#!/usr/bin/env python3
"""Runs `oructl dtl check`: the drawn tree, every fault at its node, hostile documents.

    dtl_test.py ORUCTL CASES
"""

import os
import subprocess
import sys
import tempfile
import unittest

from cases import cases

ORUCTL, CASES = map(os.path.abspath, sys.argv[1:3])
BOX = 'uri="/boxes;id=1" mr="net:1.0/Box"'
BOXES = 'uri="/system?boxes" mr="net:1.0/Box"'


def check(document, model="model", file="-", folder=CASES):
    return subprocess.run([ORUCTL, "dtl", "check", file, "--model", os.path.join(CASES, model)],
                          input=document.encode() if isinstance(document, str) else document,
                          cwd=folder, capture_output=True, timeout=120)


class Test(unittest.TestCase):
    def draws(self, document, tree, status=0, model="model"):
        result = check(document, model)
        self.assertEqual(result.stdout.decode(), tree)
        if model == "model":
            self.assertEqual(result.stderr, b"")
        self.assertEqual(result.returncode, status)

    def faults(self, document):
        result = check(document)
        self.assertIn(result.returncode, (0, 1), result.stderr[-500:])
        lines = result.stdout.decode().splitlines()
        found = [line.split("! ", 1)[1] for line in lines if "! " in line]
        found += [line for line in lines if line.startswith("-:")]
        self.assertEqual(result.returncode, 1 if found else 0)
        return found


class Tree(Test):
    def test_a_clean_document_is_drawn(self):
        self.draws(f"<a {BOX}><id/><name prop=\"mtu\" default=\"5\"/><up/><_uri/></a>", """\
a  mr-op  get  net:1.0/Box  /boxes;id=1
│   reads id, mtu, _uri
│   reads operational up
├── id  attr
├── name  attr
│       prop mtu
│       default 5
├── up  oper-attr
└── _uri  attr
""")

    def test_references_show_where_they_lead(self):
        self.draws(f"<a {BOX}><slots><size/></slots><link/><system op=\"get-all\"/></a>", """\
a  mr-op  get  net:1.0/Box  /boxes;id=1
│   reads link
├── slots  child-ref  coll:get  net:1.0/Slot  $_PARENT_URI_?slots
│   │   reads size
│   └── size  attr
├── link  peer-ref  get  net:1.0/Box  $_PEER_URI_link
└── system  parent-ref  get-all  net:1.0/System  $_URI_PARENT_system
""")

    def test_how_rows_are_read_is_told(self):
        self.draws(f"""\
<a {BOXES} batch-size="5" max-batches="$m" return="last" return-default="false" flatten="true"
   return-w-child="true" continue-on-error="true" attr-select="&quot;x&quot;" order="id"
   xmlns:dtl="urn:oru:dtl">
  <dtl:where use-once="true">
    <mtu op="ge">1500</mtu>
    <or><id>1</id><and><id op="gt">$low</id><id op="lt">@high</id></and></or>
    <cfg.speed op="like">"1%"</cfg.speed>
  </dtl:where>
  <id order="asc"/><mtu order="desc"/>
</a>""", """\
a  mr-op  coll:get  net:1.0/Box  /system?boxes
│   reads id, mtu
│   select "x"
│   where, once: mtu >= 1500, (id = 1 OR (id > "$low" AND id < "@high")), cfg.speed like "1%"
│   order id, mtu desc
│   order id
│   batch-size 5
│   max-batches $m
│   return last
│   return-w-child
│   without defaults
│   continue-on-error
│   flatten
├── id  attr
└── mtu  attr
""")

    def test_the_text_of_an_attribute_selects_rows(self):
        self.draws(f"<a {BOXES}><id>5</id><mtu> $mtu </mtu></a>", """\
a  mr-op  coll:get  net:1.0/Box  /system?boxes
│   reads id, mtu
│   where id = 5, mtu = "$mtu"
├── id  attr
└── mtu  attr
""")

    def test_groups_are_read_as_a_whole(self):
        self.draws(f"<a {BOX} op=\"get-all\"><cfg/><stats/><mtu/></a>", """\
a  mr-op  get-all  net:1.0/Box  /boxes;id=1
│   reads cfg.speed, mtu
│   reads operational stats.rx
│   group cfg
│   operational group stats
├── cfg  cfg-data
├── stats  oper-data
└── mtu  attr
""")

    def test_an_action_has_its_parameters(self):
        self.draws(f"<a {BOX} op=\"action\"><reset><mode>\"cold\"</mode></reset></a>", """\
a  mr-op  action  net:1.0/Box  /boxes;id=1
│   action reset with mode = "cold"
└── reset  action
    └── mode  action-param
""")

    def test_a_library_resource_stands_for_what_implements_it(self):
        self.draws('<a><p uri="/system/ports;id=1" mr="net.lib:1.0/Port"><mtu/></p><q/></a>', """\
a  root
├── p  mr-op  get  net:1.0/Ethernet  /system/ports;id=1
│   │   reads mtu
│   └── mtu  attr
├── p  mr-op  get  net:1.0/Optical  /system/ports;id=1
│   │   reads mtu
│   └── mtu  attr
└── q  container
""")

    def test_recursive_operations_are_drawn_as_they_expand(self):
        self.draws('<a uri="/system/slots;no=1" mr="net:1.0/Slot" op="get-all-cfg-r"/>', """\
a  mr-op  get-all-cfg-r  net:1.0/Slot  /system/slots;no=1
│   reads size
├── boxes  mr-op  coll:get-all-cfg  net:1.0/Box  $_PARENT_URI_?boxes
│   │   reads mtu, cfg.speed
│   └── slots  mr-op  coll:get-all-cfg  net:1.0/Slot  $_PARENT_URI_?slots
├── ports  mr-op  coll:get-all-cfg  net:1.0/Ethernet  $_PARENT_URI_?ports
│       reads mtu
└── ports  mr-op  coll:get-all-cfg  net:1.0/Optical  $_PARENT_URI_?ports
        reads mtu
""")

    def test_a_document_may_stand_in_a_file(self):
        with tempfile.TemporaryDirectory() as folder:
            with open(os.path.join(folder, "a.xml"), "w", encoding="utf-8") as file:
                file.write(f"<a {BOX}>\n  <mtu/>\n  <mtv/>\n</a>\n")
            result = check("", file="a.xml", folder=folder)
        self.assertEqual(result.stdout.decode(), """\
a  mr-op  get  net:1.0/Box  /boxes;id=1
│   reads mtu
├── mtu  attr
└── mtv  container
        ! a.xml:3: <mtv>: Box has no "mtv"; is it "mtu"?
""")

    def test_faults_of_the_model_are_told_beside_the_tree(self):
        result = check(f"<a {BOX}><mtu/><ghost/></a>", "ghost")
        self.assertIn("! -:1: <ghost>: the model has not what this leads to",
                      result.stdout.decode())
        self.assertIn("Ghost", result.stderr.decode())
        self.assertEqual(result.returncode, 1)


class Faults(Test):
    def test_every_fault_is_told_at_its_node(self):
        for case in cases(os.path.join(CASES, "faults.txt")):
            with self.subTest(read=case["read"][0]):
                found = [fault.removeprefix("-:1: ") for fault in self.faults(case["read"][0])]
                self.assertEqual(found, case.get("fault", []))

    def test_a_resource_that_is_not_known_may_have_been_meant_otherwise(self):
        self.assertEqual(self.faults('<a uri="/b;id=1" mr="net:1.0/Bax"/>'),
                         ['-:1: <a>: Unknown MR: net:1.0/Bax; is it "net:1.0/Box"?'])

    def test_elements_are_read_fifteen_levels_below_the_root(self):
        def nested(levels):
            return "<x>" * (levels + 1) + "</x>" * (levels + 1)

        self.assertEqual(self.faults(nested(15)), [])
        self.assertEqual(self.faults(nested(16)),
                         ["-:1: <x>: Max Level Exceeded: no element is read 16 levels below the"
                          " root"])


class Hostile(Test):
    def test_values_that_would_end_the_process_are_only_told(self):
        for value in ('{"_div()":[1,0]}', '{"_mod()":[1,0]}', '{"_div()":[1,0]} x',
                      '[{"_div()":[1,0]}', '{"_add()":[{"_div()":[1,0]} x',
                      '{"_div()":<b>[1,0]</b>}',
                      '<![CDATA[{"_div()":[1,0]}]]>', '{"&#95;div()":[1,0]}',
                      '{"\\u005fdiv()":[1,0]}', '{"%int":"x"}',
                      '{"_key()":[{"%mr_uri":"/' + "a" * 70 + '"}]}'):
            for document in (f"<a {BOXES}><mtu>{value}</mtu></a>",
                             f'<a {BOXES} xmlns:dtl="u"><dtl:where><mtu>{value}</mtu></dtl:where>'
                             "</a>",
                             f'<a {BOX} op="action"><reset><mode>{value}</mode></reset></a>'):
                with self.subTest(document=document):
                    self.assertNotEqual(self.faults(document), [])

    def test_addresses_that_would_end_the_process_are_only_told(self):
        for address in ("/a" * 11, "/" + "a" * 64, "/a" * 10000, "/" + "a" * 10000):
            for document in (f'<a uri="{address}" mr="net:1.0/Box"/>',
                             f'<a><b uri="{address}" mr="net:1.0/Box"/></a>'):
                self.assertEqual(len(self.faults(document)), 1)

    def test_what_is_no_document_is_told(self):
        for document, fault in (
                ("", "-:2: Start tag expected, '<' not found"),
                ("text", "-:1: Start tag expected, '<' not found"),
                ("<a>", "-:2: Premature end of data in tag a line 1"),
                ("<a></b>", "-:1: Opening and ending tag mismatch: a line 1 and b"),
                ("<a/><b/>", "-:1: Extra content at the end of the document"),
                (b"<a>\0</a>", "-:1:4: a zero byte, at which the document would end"),
                (b"\x7fELF", "-:1: Start tag expected, '<' not found"),
                ("<a>&x;</a>", "-:1: Entity 'x' not defined"),
                ("<a b='1' b='2'/>", "-:1: Attribute b redefined"),
                ("<a>" + " " * (1 << 20) + "</a>", "-: larger than 1048576 bytes")):
            with self.subTest(document=document[:20]):
                self.assertEqual(self.faults(document), [fault])

    def test_declarations_are_refused_before_they_grow(self):
        entities = "".join(f'<!ENTITY e{i} "{f"&e{i - 1};" * 10 if i else "x" * 1000}">'
                           for i in range(10))
        for declared in (entities, '<!ATTLIST a b CDATA "x">', '<!ENTITY x SYSTEM "/etc/passwd">',
                         '<!ENTITY % x SYSTEM "/etc/passwd"> %x;',
                         '<!ENTITY x SYSTEM "x" NDATA y>'):
            self.assertEqual(self.faults(f"<!DOCTYPE a [{declared}]><a>&e9;&x;</a>"),
                             ["-: declares entities or attributes, which is refused"])
        self.assertEqual(self.faults("<!DOCTYPE a><a/>"), [])

    def test_nesting_and_numbers_of_elements_are_survived(self):
        self.faults("<a>" * 200 + "</a>" * 200)
        self.faults("<a>" * 100000)
        self.faults(f"<a {BOX}>" + "<mtu/>" * 20000 + "</a>")
        self.faults(f'<a {BOXES} xmlns:dtl="u"><dtl:where>' + "<or>" * 200 + "</or>" * 200 +
                    "</dtl:where></a>")
        self.faults("<a>" * 100 + "1" * 500000 + "</a>" * 100)

    def test_every_end_of_a_document_is_survived(self):
        for case in cases(os.path.join(CASES, "faults.txt")):
            text = case["read"][0]
            for end in range(0, len(text), 23):
                self.faults(text[:end])


class Usage(unittest.TestCase):
    def test_wrong_use_has_a_status_of_its_own(self):
        for arguments in ([], ["check"], ["check", "-"], ["check", "no such file", "-m", CASES],
                          ["check", "-", "-m", "no such folder"]):
            with self.subTest(arguments=arguments):
                result = subprocess.run([ORUCTL, "dtl", *arguments], input=b"<a/>",
                                        capture_output=True, timeout=60)
                self.assertEqual((result.stdout, result.returncode), (b"", 2))
                self.assertNotEqual(result.stderr, b"")

    def test_the_environment_can_name_the_model(self):
        result = subprocess.run([ORUCTL, "dtl", "check", "-"], input=b"<a/>", capture_output=True,
                                env={**os.environ, "ORUCTL_MODEL": os.path.join(CASES, "model")},
                                timeout=60)
        self.assertEqual((result.stdout, result.returncode), (b"a  root\n", 0))


if __name__ == "__main__":
    os.environ.pop("ORUCTL_MODEL", None)
    unittest.main(argv=sys.argv[:1])
