"""Compares three sets of names: what the library exports, what the lists beside the build name,
and what the public headers declare. They are the same, and every exported name carries the
library's version. A declaration without a comment above its group is a fault too."""

import argparse
import pathlib
import re
import subprocess
import sys

VERSION = "ORUAPI_1"


def exported(nm, library):
    names, unversioned = set(), set()
    out = subprocess.run([nm, "-D", "--defined-only", library], check=True,
                         capture_output=True, text=True).stdout
    for line in out.splitlines():
        kind, symbol = line.split()[-2:]
        if kind == "A":
            continue
        name, _, version = symbol.partition("@")
        names.add(name)
        if version.lstrip("@") != VERSION:
            unversioned.add(symbol)
    return names, unversioned


def listed(folder):
    names, twice = set(), set()
    for path in sorted(pathlib.Path(folder).glob("*.txt")):
        for name in path.read_text().split():
            (twice if name in names else names).add(name)
    return names, twice


DECLARATION = re.compile(r"^(?:extern )?ORU_API\b(.*?);", re.M | re.S)


def declared(folder):
    names, bare = set(), set()
    for path in sorted(pathlib.Path(folder).glob("*.h")):
        text = path.read_text()
        for match in DECLARATION.finditer(text):
            body = match.group(1)
            pointer = re.search(r"^[^(]*\(\*(\w+)\)\(", body)
            plain = re.search(r"(\w+)\s*(?:\(|\[|$)", body)
            name = pointer.group(1) if pointer else plain.group(1)
            names.add(name)
            if not commented(text, match.start()):
                bare.add(f"{path.name}: {name}")
    return names, bare


def not_included(folder):
    """Headers that the one for all of them forgets."""
    text = (pathlib.Path(folder) / "oru.h").read_text()
    names = {path.name for path in pathlib.Path(folder).glob("*.h")} - {"oru.h"}
    return {name for name in names if f'#include "oru/{name}"' not in text}


def commented(text, start):
    """A comment stands above the declaration, or above the first of the run it stands in."""
    for line in reversed(text[:start].splitlines()):
        stripped = line.strip()
        if stripped.endswith("*/"):
            return True
        if not stripped:
            return False
    return False


def report(words, names):
    for name in sorted(names):
        print(f"{words}: {name}")
    return len(names)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    for option in ("--library", "--lists", "--headers", "--nm"):
        parser.add_argument(option, required=True)
    args = parser.parse_args()
    have, unversioned = exported(args.nm, args.library)
    want, twice = listed(args.lists)
    told, bare = declared(args.headers)
    faults = (report("exported without the version", unversioned)
              + report("listed twice", twice)
              + report("listed, not exported", want - have)
              + report("exported, not listed", have - want)
              + report("exported, not declared", have - told)
              + report("declared, not exported", told - have)
              + report("declared without a comment", bare)
              + report("not included by oru.h", not_included(args.headers)))
    print(f"{len(have)} names exported, {faults} faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
