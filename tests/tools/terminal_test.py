#!/usr/bin/env python3
"""Runs every command as somebody would who wants to do harm: characters that a terminal obeys, texts
that are no UTF-8, output that finds no room, signals, processes beside each other.

    terminal_test.py ORUCTL NETWORK NODES
"""

import json
import os
import pty
import resource
import signal
import subprocess
import time

from database import DATA, NETWORK, NODES, ORUCTL, PORT, Database, main

EVIL = "a\x1b[2Jb\x07c\x7fd\u009be\u202ef\u2028g\rh\ni\tj"
SHOWN = "c\\u007fd\\u009be\\u202ef\\u2028g"
FORMS = ("table", "tree", "text", "json", "compact", "xml")


def obeyed(output):
    """The characters in an output that a terminal would obey, line feeds and tabs apart."""
    return [c for c in output.decode() if (c < " " and c not in "\n\t") or "\x7f" <= c < "\xa0"
            or c in "\u202e\u2028"]


class Terminal(Database):
    model = NODES

    def says_nothing_obeyed(self, *arguments, read=""):
        result = self.run_tool(*arguments, read=read)
        self.assertIn(result.returncode, (0, 1, 2), result.stderr[-500:])
        self.assertEqual(obeyed(result.stdout), [], arguments)
        self.assertEqual(obeyed(result.stderr), [], arguments)
        return result

    def test_no_value_reaches_the_terminal_as_it_is(self):
        evil = {"_uri": {"%mr_uri": "/nodes;name=e"}, "_mr": {"%string": "test.nodes:1.0/Node"},
                "name": {"%string": "e"}, "peers": {"%mr_uri": ["/nodes;name=" + EVIL]}}
        self.survives("load", "-", read=json.dumps({"%properties": evil}))
        self.does("create", "/nodes;name=" + EVIL)
        node = 'mr="test.nodes:1.0/Node" op="get"'
        location = "//locations;locationId=global"
        for form in FORMS:
            for arguments in (["get", "/nodes;name=" + EVIL], ["get", "/?nodes"],
                              ["get", "/?nodes", "name"]):
                self.says_nothing_obeyed(*arguments, "-f", form)
            result = self.says_nothing_obeyed(
                "query", "-f", form, read=f'<n uri="{location}?nodes" {node}><name/></n>')
            if form != "xml":  # which has no place for some of them
                self.assertIn(SHOWN, result.stdout.decode())
        read = json.loads(self.does("get", "/?nodes", "name", "-f", "compact"))
        self.assertIn({"name": EVIL}, read)
        exported = self.says_nothing_obeyed("export")
        self.does("load", "-", "--db", "other.db", read=exported.stdout)
        self.assertEqual(self.run_tool("export", "--db", "other.db").stdout, exported.stdout)

    def test_no_fault_reaches_the_terminal_as_it_is(self):
        self.does("create", "/nodes;name=a")
        for command in ("get", "set", "create", "delete", "export"):
            for address in (EVIL, "/" + EVIL, "/nodes;name=" + EVIL, "/nodes;" + EVIL, "/?" + EVIL):
                self.says_nothing_obeyed(command, address)
        for arguments in (["get", "/", EVIL], ["get", "/", "-f", EVIL], ["get", "/", "--" + EVIL],
                          ["get", "/", "--root", EVIL], ["get", "/", "--db", EVIL],
                          ["get", "/", "--model", EVIL], ["load", EVIL], ["query", EVIL], [EVIL],
                          ["dtl", EVIL], ["set", "/nodes;name=a", EVIL + "=1"],
                          ["set", "/nodes;name=a", "size=" + EVIL], ["model", "show", EVIL],
                          ["set", "/nodes;name=a", 'size={"' + EVIL], ["model", "check", EVIL],
                          ["create", "/nodes;name=b", "--type", EVIL], ["convert", "--to", EVIL],
                          ["model", "tree", "--root", EVIL], ["convert", "--type", EVIL]):
            self.says_nothing_obeyed(*arguments)
        for read in ('{"%' + EVIL + '":1}', '{"%properties":{"_uri":' + json.dumps(EVIL) + "}}",
                     '{"%properties":{' + json.dumps(EVIL) + ':{"%x":1},"_uri":"/nodes;name=c"}}',
                     json.dumps({"%properties": {"_uri": "/nodes;name=c", "_mr": EVIL}}),
                     json.dumps({"%properties": {"_uri": "/nodes;name=c", EVIL: 5}})):
            self.says_nothing_obeyed("load", "-", read=read)
            self.says_nothing_obeyed("convert", read=read)
        some = EVIL.replace("\x1b", "").replace("\x07", "")  # what XML may hold
        for read in (f"<{some}/>", f'<a uri="{some}" mr="{some}"/>', f'<a uri="/" mr="{some}"/>',
                     f'<a uri="/" mr="test.nodes:1.0/Root" op="{some}"><b>"{some}"</b></a>'):
            self.says_nothing_obeyed("query", read=read)
            self.says_nothing_obeyed("dtl", "check", "-", read=read)
            self.says_nothing_obeyed("query", "-p", EVIL + "=1", read=read)

    def test_texts_that_are_no_utf8_are_refused(self):
        for value in (b"\xff", b"\xc3", b"\xed\xa0\x80", b"\xc0\x80", b"a\x80b"):
            result = subprocess.run(
                [ORUCTL.encode(), b"create", b"/nodes;name=x" + value], cwd=self.folder,
                env={**os.environ, "ORUCTL_DB": "net.db", "ORUCTL_MODEL": NODES},
                capture_output=True, timeout=60, check=False)
            self.assertEqual((result.returncode, result.stdout), (1, b""))
            self.assertEqual(obeyed(result.stderr), [])
            self.assertIn(b"it is no UTF-8", result.stderr)


class Places(Database):
    def setUp(self):
        super().setUp()
        self.load()

    def environment(self):
        return {**os.environ, "ORUCTL_DB": self.path("net.db"), "ORUCTL_MODEL": self.model}

    def test_output_that_finds_no_room_is_a_fault(self):
        self.write("document.xml", '<s uri="/" mr="com.example.network:1.0/System" op="get">'
                                   "<hostname/></s>")
        for arguments in (["get", "/"], ["get", "/?links"], ["export"], ["model", "tree"],
                          ["query", "document.xml"], ["dtl", "check", "document.xml"], ["--help"],
                          ["set", "/", "utcOffset=7"]):
            with open("/dev/full", "wb") as full:
                result = subprocess.run([ORUCTL, *arguments], stdout=full, stderr=subprocess.PIPE,
                                        cwd=self.folder, env=self.environment(), timeout=60,
                                        check=False)
            self.assertEqual(result.returncode, 1, arguments)
            self.assertEqual(result.stderr.decode().splitlines()[-1],
                             "oructl: standard output: No space left on device", arguments)

    def test_a_reader_that_goes_ends_the_command(self):
        with subprocess.Popen([ORUCTL, "export"], stdout=subprocess.PIPE, cwd=self.folder,
                              env=self.environment(), stderr=subprocess.DEVNULL,
                              restore_signals=True) as tool:
            tool.stdout.read(10)
            tool.stdout.close()
            self.assertIn(tool.wait(60), (-signal.SIGPIPE, 0, 1))

    def test_a_full_disk_leaves_what_there_was(self):
        before = self.run_tool("export", "--show-secrets").stdout
        data = subprocess.run([os.path.join(NETWORK, "generate"), "2000"], check=True,
                              capture_output=True, timeout=60).stdout
        self.write("data.json", data.decode())
        result = subprocess.run(
            [ORUCTL, "load", "data.json"], cwd=self.folder, env=self.environment(), timeout=120,
            capture_output=True, check=False,
            preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (300_000, 300_000)))
        self.assertEqual(result.returncode, 1, result.stderr)
        self.assertTrue(result.stderr.decode().startswith(self.path("net.db") + ": "),
                        result.stderr)
        self.assertEqual(result.stderr.decode().splitlines()[-1], "nothing was written")
        self.assertEqual(self.run_tool("export", "--show-secrets").stdout, before)

    def test_a_load_that_is_interrupted_leaves_what_there_was(self):
        before = after = self.run_tool("export").stdout
        data = subprocess.run([os.path.join(NETWORK, "generate"), "5000"], check=True,
                              capture_output=True, timeout=60).stdout
        self.write("data.json", data.decode())
        for stop, wait in ((signal.SIGINT, 0.02), (signal.SIGTERM, 0.1), (signal.SIGKILL, 0.2),
                           (signal.SIGINT, 0.3), (signal.SIGKILL, 0.5)):
            with subprocess.Popen([ORUCTL, "load", "data.json"], cwd=self.folder,
                                  env=self.environment(), stdout=subprocess.PIPE) as tool:
                time.sleep(wait)
                tool.send_signal(stop)
                output = tool.communicate(timeout=120)[0]
            if output:
                break  # it was faster
            self.assertEqual(tool.returncode, -stop)
            after = self.run_tool("export").stdout
            if after != before:
                break  # it came between the commit and its answer, so that all is there
        self.assertIn("updated", self.does("load", "data.json"))
        if after != before:
            self.assertEqual(self.run_tool("export").stdout, after)

    def test_processes_write_to_one_file_one_after_the_other(self):
        tools = [subprocess.Popen([ORUCTL, "set", PORT, f"mtu={1000 + i}"], cwd=self.folder,
                                  env=self.environment(), stdout=subprocess.PIPE,
                                  stderr=subprocess.STDOUT) for i in range(12)]
        said = sorted(tool.communicate(timeout=120)[0].decode() for tool in tools)
        self.assertEqual(said, sorted(f"written as revision {3 + i}\n" for i in range(12)))

    def test_progress_is_for_terminals_and_goes(self):
        data = subprocess.run([os.path.join(NETWORK, "generate"), "5000"], check=True,
                              capture_output=True, timeout=60).stdout
        self.write("data.json", data.decode())
        leader, follower = pty.openpty()
        with subprocess.Popen([ORUCTL, "load", "data.json", "--dry-run"], cwd=self.folder,
                              env=self.environment(), stdout=subprocess.PIPE,
                              stderr=follower) as tool:
            os.close(follower)
            shown = b""
            while not shown.endswith(b"\r\x1b[K"):
                shown = shown[-100000:] + os.read(leader, 1000)
            output = tool.communicate(timeout=120)[0]
        os.close(leader)
        self.assertIn(b"resources", shown)
        self.assertIn(b"nothing was written", output)

    def test_standard_input_is_read_once(self):
        result = self.run_tool("load", "-", "-", read='{"%properties_list":[]}')
        self.assertEqual((result.returncode, result.stderr.decode()),
                         (2, "oructl load: - is given twice, and standard input ends once\n"
                             "oructl load --help tells more\n"))
        self.assertEqual(self.does("load", "-", read='{"%properties_list":[]}'),
                         "0 created, 0 updated\n")


class Usage(Database):
    def wrong(self, *arguments, words):
        result = self.run_tool(*arguments)
        self.assertEqual(result.returncode, 2)
        self.assertEqual(result.stdout, b"")
        self.assertEqual(result.stderr.decode().splitlines()[0], words)

    def test_the_bare_tool_prints_its_first_page(self):
        result = self.run_tool()
        self.assertEqual(result.returncode, 2)
        page = result.stdout.decode()
        self.assertEqual(page, self.run_tool("--help").stdout.decode())
        for line in ("Models:", "Data:", "Documents:", "Objects:", "First steps"):
            self.assertIn(line, page)

    def test_commands_of_no_name_are_guessed(self):
        self.wrong("laod", DATA, words='oructl: "laod" is no command; is it "load"?')
        self.wrong("zzz", words='oructl: "zzz" is no command')
        self.wrong("model", words="oructl model: a command is wanted: check, list, show, tree")
        self.wrong("model", "chek", words='oructl model: "chek" is no command; is it "check"?')

    def test_numbers_have_their_bounds(self):
        for number in ("0", "-1", "2147483648", "99999999999999999999", "1.5", "x", "+1", " 1"):
            self.wrong("query", "--count=" + number, words=f'oructl query: --count: "{number}" '
                                                           "is no number from 1 to 2147483647")
        self.wrong("load", DATA, "--batch", "0", words='oructl load: --batch: "0" is no number '
                                                       "from 1 to 2147483647")

    def test_an_option_without_its_value_is_told(self):
        self.wrong("query", "-p", words="oructl query: --param: 1 required TEXT missing")
        self.wrong("get", "/", "--db", words="oructl get: --db: 1 required TEXT missing")
        self.fails("get", "/", "--db", "", errors=[
            "oructl: --db is empty, where it names the file of the database"])


if __name__ == "__main__":
    main()
