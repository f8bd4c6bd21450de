#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Fails where a room includes one above it: rooms.py SOURCE_TREE HEADER...

The HEADERs are the public ones: they and nothing else lie outside the private folders. The names of private headers are
in a namespace detail, or in those of the software device, and other libraries do not include them.
"""
import pathlib
import re
import sys

# From the ground up; a room may include itself and the rooms before it.
ROOMS = [
    ("export", r"vela_core/(export|version)\.hpp"),
    ("runtime", r"vela_gpu/(runtime\.hpp|software/)"),
    ("types", r"vela_core/types/(?!records/)"),
    ("log", r"vela_core/log/"),
    ("kernels", r"vela_gpu/kernels(\.hpp|/)"),
    ("utils", r"vela_core/utils/"),
    ("geometry", r"vela_core/geometry/"),
    ("records", r"vela_core/types/records/"),
    ("vela.hpp", r"vela_core/vela\.hpp"),
    ("interop", r"vela_interop/"),
    ("io headers", r"vela_io/\w+\.hpp"),
    ("io detail", r"vela_io/detail/"),
    ("io formats", r"vela_io/formats/"),
    ("io pictures", r"vela_io/pictures/"),
    ("io", r"vela_io/\w+\.cpp"),
    ("tools", r"tools/"),
    ("python", r"python/src/"),
]
BESIDE = {("io", "interop")}  # by the first word of a room
LIBRARIES = ("vela_core", "vela_gpu", "vela_io", "vela_interop", "tools", "python/src")
GENERATED = {"vela_core/version.hpp"}
PRIVATE = r"/detail/|^vela_io/(formats|pictures)/"
PRIVATE_NAMESPACE = r"vela::(?:\w+::)*detail\b|vela::software_(device|runtime)$"
NAMESPACE = re.compile(r"^\s*namespace\s+([\w:]+)", re.M)
INCLUDE = re.compile(r'^\s*#\s*include\s*[<"]((?:vela_|tools/|python/)[^>"]+)[>"]', re.M)


def floor(path):
    for number, (_, pattern) in enumerate(ROOMS):
        if re.match(pattern, path):
            return number
    return None


def library(path):
    return "core" if re.match(r"vela_(core|gpu)/", path) else path.split("/")[0]


def main(tree, public):
    faults = []
    included = 0
    paths = sorted(
        path.relative_to(tree).as_posix()
        for library in LIBRARIES
        for path in (tree / library).rglob("*")
        if path.suffix in {".hpp", ".cpp", ".cu", ".inl"}
    )
    for path in paths:
        here = floor(path)
        if here is None:
            faults.append(f"{path}: in no room")
            continue
        text = (tree / path).read_text()
        if path.endswith(".hpp") and re.search(PRIVATE, path):
            faults += [f"{path}: private, but in namespace {name}"
                       for name in NAMESPACE.findall(text) if not re.match(PRIVATE_NAMESPACE, name)]
        for other in INCLUDE.findall(text):
            included += 1
            there = floor(other)
            if there is None or (other not in GENERATED and not (tree / other).is_file()):
                faults.append(f"{path}: includes {other}, which is in no room")
            elif there > here:
                faults.append(f"{path} ({ROOMS[here][0]}): includes {other} ({ROOMS[there][0]}), which is above it")
            elif (ROOMS[here][0].split()[0], ROOMS[there][0].split()[0]) in BESIDE:
                faults.append(f"{path} ({ROOMS[here][0]}): includes {other}, which is beside it")
            elif re.search(PRIVATE, other) and (path in public or library(path) != library(other)):
                faults.append(f"{path}: includes {other}, which is private")
    headers = {path for path in paths if path.startswith("vela_") and path.endswith(".hpp")}
    outside = {path for path in headers if not re.search(PRIVATE, path)} | GENERATED
    faults += [f"{path}: neither listed as public nor in a detail folder" for path in sorted(outside - public)]
    faults += [f"{path}: listed as public, but not there or in a detail folder" for path in sorted(public - outside)]
    print("\n".join(faults))
    if included < 100:
        sys.exit(f"only {included} includes found")
    sys.exit(1 if faults else 0)


main(pathlib.Path(sys.argv[1]), set(sys.argv[2:]))
