#!/usr/bin/env python3
"""Lists the functions longer than a limit in the C++ files below the given folders.

A function is a definition whose body opens at the end of a line with no indentation, or with one
level (four blanks: a member defined in its class), and closes with "}" at the same indentation;
its length runs from the first line of its signature to that closing line. Exit status 1 when any
function is too long.

    check-function-length.py [--max N] FOLDER...
"""
import argparse
import pathlib
import re
import sys

NOT_FUNCTIONS = re.compile(r"^\s*(namespace|class|struct|enum|union|extern|template\s*<[^>]*>\s*(class|struct))\b")
CONTROL = re.compile(r"^\s*(if|for|while|switch|else|do|try|catch)\b")


def functions(path):
    lines = path.read_text(encoding="utf-8", errors="replace").split("\n")
    for number, line in enumerate(lines):
        stripped = line.rstrip()
        if not stripped.endswith("{"):
            continue
        indent = len(line) - len(line.lstrip(" "))
        if indent not in (0, 4) or CONTROL.match(line) or stripped.lstrip().startswith(("//", "#")):
            continue
        # The signature starts after the previous statement, block or blank line.
        start = number
        while start > 0:
            previous = lines[start - 1].rstrip()
            if (not previous or previous.endswith((";", "{", "}", ":")) or
                    previous.lstrip().startswith(("//", "#"))):
                break
            start -= 1
        signature = " ".join(l.strip() for l in lines[start:number + 1])
        if "(" not in signature or NOT_FUNCTIONS.match(signature) or "=" in signature.split("(")[0]:
            continue
        closing = " " * indent + "}"
        for end in range(number + 1, len(lines)):
            if lines[end].startswith(closing) and (len(lines[end]) == indent + 1 or
                                                    not lines[end][indent + 1:].startswith(" ")):
                yield signature.split("(")[0].split()[-1], start + 1, end - start + 1
                break


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--max", type=int, default=60)
    parser.add_argument("folders", nargs="+")
    arguments = parser.parse_args()
    too_long = 0
    for folder in arguments.folders:
        for path in sorted(pathlib.Path(folder).rglob("*")):
            if path.suffix not in (".cpp", ".h", ".cc", ".hpp"):
                continue
            for name, line, length in functions(path):
                if length > arguments.max:
                    print(f"{path}:{line}: {name} is {length} lines (at most {arguments.max})")
                    too_long += 1
    return 1 if too_long else 0


if __name__ == "__main__":
    sys.exit(main())
