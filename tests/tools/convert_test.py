#!/usr/bin/env python3
"""Runs `oructl convert`: every kind in every form, every fault with its place, hostile input.

    convert_test.py ORUCTL CASES
"""

import os
import random
import subprocess
import sys
import tempfile
import unittest

from cases import cases as read_cases

ORUCTL, CASES = map(os.path.abspath, sys.argv[1:3])
FORMS = ("json", "compact", "xml", "text")


def run(*arguments, read=b"", folder=None, to=subprocess.PIPE):
    return subprocess.run([ORUCTL, "convert", *arguments], input=read, cwd=folder, stdout=to,
                          stderr=subprocess.PIPE, timeout=120)


def cases(name):
    return read_cases(os.path.join(CASES, name))


class Test(unittest.TestCase):
    def converts(self, arguments, read, output, faults=()):
        if isinstance(read, str):
            read = read.encode()
        result = run(*arguments, read=read)
        self.assertEqual(result.stderr.decode().splitlines(), list(faults))
        self.assertEqual(result.stdout.decode(), output)
        self.assertEqual(result.returncode, 1 if faults else 0)


class Kinds(Test):
    def test_every_kind_has_its_forms(self):
        for case in cases("kinds.txt"):
            read = case["read"][0]
            for form in FORMS:
                with self.subTest(read=read, form=form):
                    if form in case:
                        self.converts(["--to", form], read, "\n".join(case[form]) + "\n")
                    else:
                        kind = read[2:read.index('"', 2)]
                        self.converts(["--to", form], read, "", [f"-:1:1: {kind} has no XML form"])

    def test_what_is_written_reads_back(self):
        # Descriptions are written with members that are not read.
        for case in cases("kinds.txt"):
            json = case["json"][0]
            # Operations lose names that are written behind their properties, rows their tags.
            if any(word in json for word in ("prop_meta", "child_ref_name", "%vtable")):
                continue
            with self.subTest(json=json):
                self.converts([], json, json + "\n")

    def test_the_type_is_told_for_what_has_no_tag(self):
        for kind, read, output in (
                ("properties", '{"a":1}', '{"%properties":{"a":{"%int":1}}}'),
                ("ubyte", "7", '{"%ubyte":7}'),
                ("unsignedByte", "7", '{"%ubyte":7}'),
                ("ubyte", "[7,8]", '{"%ubyte":[7,8]}'),
                ("mr_uri", '"/a"', '{"%mr_uri":"/a"}'),
                ("array", '[1,"x"]', '{"%array":[{"%int":1},{"%string":"x"}]}'),
                ("vlist", "[1,2]", '{"%vlist":[{"%int":1},{"%int":2}]}'),
                ("vtable", "[[1,2]]", '{"%vtable":[{"%int":[1,2]}]}'),
                ("value", "7", '{"%long":7}'),
                ("value", '"x"', '{"%string":"x"}'),
                ("value", '{"%int":7}', '{"%int":7}'),
                ("dtree", '{"name":"n"}', '{"%dtree":{"name":"n"}}'),
                ("constraint", '{"constraint_str":"values(1)"}',
                 '{"%constraint":{"constraint_str":"values(1)"}}'),
                ("properties", '{"%properties":{"a":1}}', '{"%properties":{"a":{"%int":1}}}'),
                ("int", '{"_add()":[1,2]}', None)):
            with self.subTest(kind=kind, read=read):
                if output:
                    self.converts(["--type", kind], read, output + "\n")
                else:
                    self.converts(["--type", kind], read, "",
                                  ["-:1:1: an expression, where %int is expected"])

    def test_another_type_than_was_told_is_a_fault(self):
        self.converts(["--type", "nlist"], '{"%properties":{"a":1}}', "",
                      ["-:1:1: %properties, where %nlist is expected"])
        self.converts(["--type", "value"], '{"%nlist":["a"]}', "",
                      ["-:1:1: %nlist, where %value is expected"])
        self.converts(["--type", "value"], "[1]", "",
                      ['-:1:1: an array stands in no object without a tag: {"%array":[...]}'])

    def test_scalars_need_neither_tag_nor_type(self):
        self.converts([], '5 -1.5 "x" true null',
                      '{"%long":5}\n{"%double":-1.5}\n{"%string":"x"}\n{"%boolean":true}\nnull\n')

    def test_expressions_are_computed(self):
        self.converts([], '{"_add()":[1,{"_mult()":[2,3]}]}', '{"%long":7}\n')
        self.converts(["--to", "compact"], '{"%properties":{"a":{"_max()":[1,5]}}}', '{"a":5}\n')
        self.converts(["--type", "value", "--to", "text"], '{"_tostring()":["a",1]}', "a1\n")

    def test_a_tree_in_xml_is_laid_out_with_an_indent(self):
        tree = '{"%dtree":{"name":"n","children":{"%dtree":[{"name":"k"}]}}}'
        self.converts(["--to", "xml"], tree, "<n><k></k></n>\n")
        self.converts(["--to", "xml", "--indent", "1"], tree, "<n>\n\t\t<k>\n\t\t</k>\n\t</n>\n")
        self.converts(["--to", "text", "--indent", "1"], tree, "\tn\n\t└── k\n")
        self.converts(["--to", "text", "--indent", "2"], "5", "\t\t5\n")


class Secrets(Test):
    def test_passwords_are_hidden_in_every_form(self):
        for secret in ('{"%string":"pw","%typedef":"PasswordString"}',
                       '{"%string":"pw","%typedef":"EncryptedString64"}',
                       '{"%string":"pw","%t":"PasswordString"}',
                       '{"%string":["pw","pw"],"%typedef":"PasswordString"}',
                       '{"%array":["pw",{"%string":"pw"}],"%typedef":"PasswordString"}',
                       '{"_tostring()":[{"%string":"pw","%typedef":"PasswordString"}]}',
                       '{"%string":"\\u0070w","%\\u0074ypedef":"PasswordString"}'):
            tree = '{"%dtree":{"name":"n","props":{"%properties":{"p":' + secret + "}}}}"
            for form in FORMS:
                with self.subTest(secret=secret, form=form):
                    result = run("--to", form, read=tree.encode())
                    self.assertNotIn(b"pw", result.stdout)
                    self.assertTrue(b"<removed>" in result.stdout or
                                    b"&lt;removed&gt;" in result.stdout)
                    shown = run("--to", form, "--show-secrets", read=tree.encode())
                    self.assertIn(b"pw", shown.stdout)

    def test_other_texts_are_no_secrets(self):
        for value in ('{"%string":"x","%typedef":"MyPasswordString"}',
                      '{"%enumeration":"x","%typedef":"PasswordString"}'):
            self.converts([], value, value + "\n")


class Faults(Test):
    def test_every_fault_has_its_place_and_its_words(self):
        for case in cases("faults.txt"):
            with self.subTest(read=case["read"][0]):
                output = "".join(line + "\n" for line in case.get("json", []))
                self.converts([], case["read"][0], output,
                              ["-:1:" + fault for fault in case["fault"]])

    def test_what_is_no_json_is_told_in_the_words_of_its_parser(self):
        for read, fault in (
                ('{"a":1', "1:7: parse error: premature EOF"),
                ('{"a" 1}', "1:6: parse error: object key and value must be separated by a colon "
                            "(':')"),
                ('{"a":tru}', "1:9: lexical error: invalid string in json text."),
                ("]", "1:1: parse error: unallowed token at this point in JSON text"),
                ('{"a":"\\x"}', "1:8: lexical error: inside a string, '\\' occurs before a "
                                "character which it may not."),
                ('"a\nb"', "1:3: lexical error: invalid character inside string."),
                ("// nothing\n", "1:11: parse error: premature EOF"),
                ('{"%int":5}\n{"ä":x}', "2:6: lexical error: invalid char in json text."),
                ("", "1:1: there is no document"),
                (" \n\t ", "1:1: there is no document")):
            with self.subTest(read=read):
                output = '{"%int":5}\n' if read.startswith('{"%int') else ""
                self.converts([], read, output, ["-:" + fault])

    def test_columns_count_characters_and_lines_line_feeds(self):
        self.converts([], '\n{"%properties":{"äöü":{"%byte":300},\n"b":{"%byte":300}}}',
                      '{"%properties":{"äöü":{"%byte":44},"b":{"%byte":44}}}\n',
                      ["-:2:32: %byte is cut here: it goes from -128 to 127",
                       "-:3:14: %byte is cut here: it goes from -128 to 127"])

    def test_a_fault_is_told_with_its_file(self):
        with tempfile.TemporaryDirectory() as folder:
            with open(os.path.join(folder, "a.json"), "w", encoding="utf-8") as file:
                file.write('{"%nope":1}')
            result = run("a.json", folder=folder)
            self.assertEqual(result.stderr.decode(),
                             'a.json:1:2: no type is known by "%nope"; this is left out\n')


class Pipes(Test):
    def test_documents_of_a_pipe_are_converted_one_by_one(self):
        self.converts([], '{"%int":1}{"%int":2}\n/* three */ {"%int":3} // last',
                      '{"%int":1}\n{"%int":2}\n{"%int":3}\n')

    def test_documents_around_a_fault_are_converted(self):
        self.converts([], '{"%int":1} {"%nope":2} {"%int":3} {"%int":',
                      '{"%int":1}\n{"%int":3}\n',
                      ['-:1:13: no type is known by "%nope"; this is left out',
                       "-:1:43: parse error: premature EOF"])

    def test_files_and_the_pipe_come_in_their_order(self):
        with tempfile.TemporaryDirectory() as folder:
            for name, text in (("a", "1"), ("b", "2")):
                with open(os.path.join(folder, name), "w", encoding="utf-8") as file:
                    file.write(text)
            result = run("a", "-", "b", "--to", "compact", folder=folder, read=b"5")
            self.assertEqual((result.stdout, result.returncode), (b"1\n5\n2\n", 0))

    def test_the_output_may_be_the_input(self):
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "a")
            with open(path, "w", encoding="utf-8") as file:
                file.write("1 2")
            self.assertEqual(run("a", "-o", "a", folder=folder).returncode, 0)
            with open(path, encoding="utf-8") as file:
                self.assertEqual(file.read(), '{"%long":1}\n{"%long":2}\n')

    def test_without_any_result_the_output_stays_as_it_was(self):
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "a")
            with open(path, "w", encoding="utf-8") as file:
                file.write("kept")
            self.assertEqual(run("-", "-o", "a", folder=folder, read=b"{").returncode, 1)
            with open(path, encoding="utf-8") as file:
                self.assertEqual(file.read(), "kept")

    def test_what_cannot_be_written_is_a_fault(self):
        with open("/dev/full", "wb") as full:
            result = run(read=b"1", to=full)
        self.assertEqual(result.returncode, 1)
        self.assertEqual(result.stderr, b"oructl: standard output: No space left on device\n")
        result = run("-o", "/no such folder/a", read=b"1")
        self.assertEqual(result.returncode, 1)
        self.assertIn(b"/no such folder/a: No such file or directory", result.stderr)

    def test_what_cannot_be_read_is_a_fault(self):
        result = run("/")
        self.assertEqual(result.returncode, 1)
        self.assertIn(b"/: Is a directory", result.stderr)


class Hostile(Test):
    def survives(self, read, *arguments):
        for form in FORMS:
            result = run("--to", form, *arguments, read=read)
            self.assertIn(result.returncode, (0, 1), (read[:200], result.stderr[-500:]))
            self.assertNotIn(b"oructl: ", result.stderr)

    def test_nesting_is_bounded_as_the_reader_is(self):
        # The innermost array is level 1000, or 1001.
        for levels in (1000, 1001):
            deep = '{"%vlist":' + "[" * (levels - 1) + "1" + "]" * (levels - 1) + "}"
            result = run(read=deep.encode())
            if levels == 1000:
                self.assertEqual((result.returncode, result.stderr), (0, b""))
            else:
                self.assertEqual(result.stderr,
                                 b"-:1:1010: nested deeper than 1000 levels\n")
        self.survives(b"[" * 5000000)
        self.survives(b'{"a":' * 1000000)

    def test_binary_is_no_json(self):
        self.converts([], b"\x7fELF\0\0", "", ["-:1:1: lexical error: invalid char in json text."])
        self.converts([], b'{"%string":"\xff\xfe"}', "",
                      ["-:1:13: lexical error: invalid bytes in UTF8 string."])
        self.converts([], b'{"%string":"a\0b"}', "",
                      ["-:1:14: lexical error: invalid character inside string."])
        self.survives(random.Random(1).randbytes(100000))

    def test_addresses_that_may_not_be_parsed_are_only_copied(self):
        for address in ("/" + "a" * 5000, "/a" * 5000, "/a;k=" + "9" * 5000, "?" * 100):
            for kind in ("any_uri", "mr_uri", "coll_uri"):
                self.converts([], f'{{"%{kind}":"{address}"}}', f'{{"%{kind}":"{address}"}}\n')
            self.survives(f'{{"%dtree":{{"name":"n","mr_uri":"{address}"}}}}'.encode())
            self.survives(f'{{"%config_ops":[{{"op_code":1,"mr_uri":"{address}",'
                          '"props":{"%properties":{"a":1}}}]}'.encode())
            self.survives(f'{{"%event":{{"name":"{address}","mr_uri":"{address}",'
                          '"info":{"%properties":{"a":1}}}}'.encode())

    def test_every_end_of_every_document_is_survived(self):
        for case in cases("kinds.txt"):
            text = case["read"][0].encode()
            # One pipe for all beginnings would end at the first.
            for end in range(0, len(text), 7):
                with self.subTest(text=text[:end]):
                    result = run(read=text[:end])
                    self.assertEqual((result.stdout, result.returncode), (b"", 1))

    def test_documents_under_types_that_they_are_not_are_survived(self):
        documents = " ".join(case["read"][0] for case in cases("kinds.txt"))
        documents += " " + " ".join(case["compact"][0] for case in cases("kinds.txt"))
        types = run("--type", "?").stderr.decode().split("known are: ")[1].split("\n")[0].split()
        self.assertEqual(len(types), 46)
        for kind in types:
            self.survives(documents.encode(), "--type", kind)

    def test_many_faults_on_one_line_are_told_in_time(self):
        many = '{"%nlist":["a"' + ",5" * 200000 + "]}"
        result = run(read=many.encode())
        self.assertEqual(result.stdout, b'{"%nlist":["a"]}\n')
        self.assertEqual(result.stderr.count(b"\n"), 200000)

    def test_a_file_that_is_too_large_is_not_read(self):
        with tempfile.TemporaryDirectory() as folder:
            with open(os.path.join(folder, "a"), "wb") as file:
                file.truncate(3 << 30)
            result = run("a", folder=folder)
            self.assertEqual(result.returncode, 1)
            self.assertEqual(result.stderr, b"oructl: a: larger than 2147418111 bytes\n")

    def test_xml_that_would_be_broken_is_not_written(self):
        for read in ('{"%properties":{"a b":1}}', '{"%properties":{"":1}}',
                     '{"%string":"\\u0001"}', '{"%enumeration":"<"}',
                     '{"%event":{"name":"<","mr_uri":"/a","info":{"%properties":{"a":1}}}}'):
            with self.subTest(read=read):
                result = run("--to", "xml", read=read.encode())
                self.assertEqual((result.stdout, result.returncode), (b"", 1))
                self.assertIn(b"-:1:1: no XML comes of it: ", result.stderr)


class Usage(unittest.TestCase):
    def test_wrong_use_has_a_status_of_its_own(self):
        for arguments in (["no such file"], ["--to", "yaml"], ["--type", "nonsense"],
                          ["--type", "u"], ["--indent", "-1"], ["--nonsense"]):
            with self.subTest(arguments=arguments):
                result = run(*arguments, read=b"1")
                self.assertEqual((result.stdout, result.returncode), (b"", 2))
                self.assertNotEqual(result.stderr, b"")

    def test_help_is_no_fault(self):
        self.assertEqual(run("--help").returncode, 0)


if __name__ == "__main__":
    os.environ["TZ"] = "UTC"
    unittest.main(argv=sys.argv[:1])
