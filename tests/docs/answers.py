"""Has the documents of a page answered from the sample network, and compares with what it says.

A document is a fenced block with `<!-- query: COUNT [NAME=VALUE ...] -->` in front; the fenced block
behind it is the answer, a line a node:

    name attribute=value ... !CODE "words of its error"

`_uri` and `_mr` and the location of the network are left out, and so are the heads of the calls when
there is one, and the last line when nothing went wrong.

    answers.py PAGE QUERY NETWORK
"""

import difflib
import json
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile

LOCATION = "//locations;locationId=global"
EXAMPLE = re.compile(r"^<!-- query: ([^\n]*) -->\n```xml\n(.*?)^```\n```\n(.*?)^```$", re.M | re.S)


def text_of(value):
    """A value in the wire form as people read it."""
    if value is None:
        return "null"
    if not isinstance(value, dict):
        return json.dumps(value)
    tag, inner = next(iter(value.items()))
    if tag in ("%sequence", "%choice"):
        return "{" + ", ".join(f"{name}={text_of(member)}" for name, member in inner.items()) + "}"
    if isinstance(inner, list):
        return "[" + ", ".join(text_of(item if isinstance(item, dict) else {tag: item})
                               for item in inner) + "]"
    if tag in ("%mr_uri", "%coll_uri", "%any_uri"):
        return inner.removeprefix(LOCATION)
    return inner if tag == "%enumeration" else json.dumps(inner)


def lines_of(node, indent, addresses=False):
    """A node and its children, with the addresses of resources if asked for."""
    words = [node["name"]]
    if addresses and "mr_uri" in node:
        words.append(node["mr_uri"].removeprefix(LOCATION) or "/")
    for name, value in node.get("props", {}).get("%properties", {}).items():
        if name.split(".")[-1] not in ("_uri", "_mr", "__uri"):
            words.append(f"{name}={text_of(value)}")
    if "err" in node:
        error = node["err"].get("%error", node["err"])
        words.append(f"!{error['code']} {json.dumps(error.get('msg', '').strip())}")
    line = "  " * indent + " ".join(words) + "\n"
    return [line] + lines_below(node, indent + 1, addresses)


def lines_below(node, indent, addresses=False):
    children = node.get("children", {}).get("%dtree", [])
    return [line for child in children for line in lines_of(child, indent, addresses)]


def answer(printed, addresses=False):
    """What the program printed, a tree a call, as the page has it."""
    lines, calls = [], printed.count("-- call")
    for line in printed.splitlines():
        if line.startswith("{"):
            lines += lines_below(json.loads(line)["%dtree"], 0, addresses)
        elif line != "-- No more value" and (calls > 1 or not line.startswith("-- call")):
            lines.append(line + "\n")
    return lines


def run(query, network, arguments, document):
    with tempfile.NamedTemporaryFile("w", suffix=".xml") as file:
        file.write(document)
        file.flush()
        command = [query, f"{network}/packages", f"{network}/data.json", file.name]
        result = subprocess.run(command + shlex.split(arguments), capture_output=True, text=True,
                                check=False)
    return answer(result.stdout) + [f"? {line}\n" for line in result.stderr.splitlines()]


def main():
    page, query, network = sys.argv[1:]
    text = pathlib.Path(page).read_text()
    examples = list(EXAMPLE.finditer(text))
    failed = len(examples) != text.count("<!-- query:")
    for example in examples:
        said = example[3].splitlines(True)
        got = run(query, network, example[1], example[2])
        if got != said:
            failed = True
            line = text.count("\n", 0, example.start()) + 1
            sys.stdout.writelines(difflib.unified_diff(said, got, f"{page}:{line}", "the answer"))
    sys.exit(f"{page}: answers differ" if failed else None)


if __name__ == "__main__":
    main()
