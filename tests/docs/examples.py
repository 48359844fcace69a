"""Makes a program in C of the examples of a page: each fenced block of C becomes a function, which
the program runs in a process of its own and after which nothing may be live."""

import argparse
import pathlib
import re

HEAD = """\
#undef NDEBUG
#include <assert.h>
#include <oru/oru.h>
#include <oruplatform/chunk.h>
#include <oruplatform/poolheap.h>
#include <oruplatform/tracelet.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>
"""

TAIL = """
static int run(void (*example)(void)) {
    const uint64_t blocks = poolheap_live_blocks();
    const uint64_t elements = chunk_live_elements();
    const pid_t child = fork();
    int status = 1;
    if (child == 0) {
        example();
        assert(poolheap_live_blocks() == blocks);
        assert(chunk_live_elements() == elements);
        exit(0);
    }
    return waitpid(child, &status, 0) == child && status == 0;
}

int main(void) {
    int failed = 0;
    for (size_t i = 0; i < sizeof examples / sizeof *examples; ++i)
        failed += !run(examples[i]);
    return failed;
}
"""


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("page", type=pathlib.Path)
    parser.add_argument("program", type=pathlib.Path)
    args = parser.parse_args()
    text = args.page.read_text()
    parts, names = [HEAD], []
    for block in re.finditer(r"^```c\n(.*?)^```$", text, re.M | re.S):
        line = text.count("\n", 0, block.start()) + 2
        names.append(f"example_at_line_{line}")
        parts.append(f'\nstatic void {names[-1]}(void) {{\n#line {line} "{args.page.name}"\n'
                     f"{block[1]}}}\n")
    parts.append(f"\nstatic void (*const examples[])(void) = {{{', '.join(names)}}};\n")
    args.program.write_text("".join(parts) + TAIL)


if __name__ == "__main__":
    main()
