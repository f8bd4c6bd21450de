#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Compares what shared libraries export with a list: symbols.py [--write] LIST LIBRARY...

quill's symbols are left out: a process must have one copy of them, and which there are is quill's to say.
"""
import difflib
import pathlib
import re
import subprocess
import sys


def exported(library):
    lines = subprocess.run(
        ["nm", "--dynamic", "--demangle", "--defined-only", library], check=True, capture_output=True, text=True
    ).stdout.splitlines()
    names = {line.split(maxsplit=2)[-1] for line in lines}
    return {name for name in names if not re.search(r"\b(fmt)?quill::", name)}


def main(arguments):
    write = arguments[0] == "--write"
    path, *libraries = arguments[1:] if write else arguments
    found = sorted(set().union(*map(exported, libraries)))
    if write:
        pathlib.Path(path).write_text("\n".join(found) + "\n")
        return
    listed = pathlib.Path(path).read_text().splitlines()
    changes = [line for line in difflib.ndiff(listed, found) if line[0] in "+-"]
    print("\n".join(changes))
    if changes or not found:
        sys.exit(f"exported symbols differ from {path}; if that is meant, repeat with --write in front")


main(sys.argv[1:])
