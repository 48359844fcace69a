"""Looks whether the links of all pages lead somewhere.

A link leads to a file, and behind a `#` to a heading of it. Every page is linked to from another
one. A path in backticks whose first folder is one of the project is there; words in capitals stand
for any name, as in `tests/fuzz/NAME_fuzz.cpp`.

    links.py PROJECT
"""

import pathlib
import re
import sys

FENCE = re.compile(r"^([ \t]*)```.*?^\1```$", re.M | re.S)
LINK = re.compile(r"\]\(([^)\s]+)\)")
PATH = re.compile(r"`([\w.-]+/[\w./*-]*)`")


def text_of(page):
    """The text without its examples; lines stay where they are."""
    return FENCE.sub(lambda block: "\n" * block[0].count("\n"), page.read_text())


def anchors_of(page):
    """What the headings of a page are linked by."""
    anchors = set()
    for heading in re.findall(r"^#+ +(.*)$", text_of(page), re.M):
        words = re.sub(r"\[([^]]*)\]\([^)]*\)", r"\1", heading).lower()
        anchors.add(re.sub(r"[^\w\- ]", "", words).strip().replace(" ", "-"))
    return anchors


def fault_of(page, link):
    """What is wrong with a link, and the page that it leads to."""
    file, _, anchor = link.partition("#")
    target = (page.parent / file).resolve() if file else page
    if not target.exists():
        return "there is no such file", target
    if anchor and anchor not in anchors_of(target):
        return "there is no such heading", target
    return None, target


def missing(project, path):
    first, *rest = path.split("/")
    if first == "build" or not (project / first).is_dir():
        return False
    pattern = re.sub(r"[A-Z]{2,}|\bX\b", "*", "/".join(rest).rstrip("/"))
    return pattern != "" and not any((project / first).glob(pattern))


def faults_of(project, pages):
    linked = {project / "README.md"}
    for page in pages:
        text = text_of(page)
        for match in list(LINK.finditer(text)) + list(PATH.finditer(text)):
            fault, target = None, None
            if match.re is PATH:
                fault = "there is no such path" if missing(project, match[1]) else None
            elif "://" not in match[1]:
                fault, target = fault_of(page, match[1])
            if target != page:
                linked.add(target)
            if fault:
                yield page, text.count("\n", 0, match.start()) + 1, f"{match[1]}: {fault}"
    for page in pages:
        if page not in linked:
            yield page, 1, "no page leads here"


def main():
    project = pathlib.Path(sys.argv[1]).resolve()
    pages = [project / "README.md"] + sorted((project / "docs").glob("**/*.md")) + sorted(
        (project / "examples").glob("**/*.md"))
    faults = [f"{page.relative_to(project)}:{line}: {words}"
              for page, line, words in faults_of(project, pages)]
    if len(pages) < 3:
        faults.append(f"there are no pages in {project}")
    sys.exit("\n".join(faults) or None)


if __name__ == "__main__":
    main()
