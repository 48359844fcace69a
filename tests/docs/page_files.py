"""Takes the files of a page out of it, and compares what a command prints with what the page says.

A fenced block with `<!-- file: NAME -->` in front is a part of that file; parts stand in it in the
order of the page. A block with `<!-- prints: NAME -->` in front is what the program NAME prints.

    page_files.py extract PAGE DIRECTORY NAME ...
    page_files.py check PAGE NAME COMMAND ...
"""

import difflib
import pathlib
import re
import subprocess
import sys


def blocks(page, mark):
    """The line and the text of each block that has the mark in front."""
    text = page.read_text()
    pattern = rf"^<!-- {re.escape(mark)} -->\n\s*```[a-z]*\n(.*?)^```$"
    found = [(text.count("\n", 0, block.start(1)) + 1, block[1])
             for block in re.finditer(pattern, text, re.M | re.S)]
    if not found:
        sys.exit(f"{page.name} has no block with the mark '{mark}'")
    return found


def extract(page, directory, *names):
    for name in names:
        parts = []
        for line, body in blocks(pathlib.Path(page), f"file: {name}"):
            if name.endswith((".c", ".h")):
                parts.append(f'#line {line} "{pathlib.Path(page).name}"\n')
            parts.append(body)
        (pathlib.Path(directory) / name).write_text("".join(parts))


def check(page, name, *command):
    said = "".join(body for _, body in blocks(pathlib.Path(page), f"prints: {name}"))
    run = subprocess.run(command, capture_output=True, text=True, check=False)
    if run.stdout == said and run.returncode == 0:
        return
    sys.stderr.write(run.stderr)
    sys.stdout.writelines(difflib.unified_diff(said.splitlines(True), run.stdout.splitlines(True),
                                               "the page", "the program"))
    sys.exit(f"{name} ended with {run.returncode}")


if __name__ == "__main__":
    {"extract": extract, "check": check}[sys.argv[1]](*sys.argv[2:])
