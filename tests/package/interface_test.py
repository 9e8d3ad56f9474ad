#!/usr/bin/env python3
"""Compares what the shared libraries export with the list in the tree.

    interface_test.py check LIST LIBRARY...     fails if a name is gone, or one came that no listed class has
    interface_test.py write LIST LIBRARY...     prints a new list: what the builds of a library have in common

A line has a name without template arguments and parameters, and how many functions or variables have it. Compilers may
add weak members of a listed class, which are inlined elsewhere. The list is that of GCC; Clang hides some templates that only
the tests of this library name.
"""

import collections
import pathlib
import re
import subprocess
import sys

OPERATORS = re.compile(r"operator(<=>|<<=?|>>=?|<=?|>=?|\(\)|->\*?)")


def plain(name):
    """The name without template arguments, parameters and results."""
    name = name.replace("(anonymous namespace)", "anonymous").replace("[abi:cxx11]", "")
    name = OPERATORS.sub(lambda match: "operator" + "".join(f"%{ord(c):x}" for c in match[1]), name)
    depth, kept = 0, []
    for character in name:
        depth += character in "<("
        if depth == 0:
            kept.append(character)
        depth -= character in ">)"
    return re.sub(r" const$", "", "".join(kept)).split(" ")[-1]


def exports(library):
    """Counts of plain names, and those that are not weak. Tables, thunks and the language's own library are left out."""
    symbols = subprocess.run(["nm", "-DC", "--defined-only", library], capture_output=True, text=True, check=True).stdout
    kinds = dict(match.group(2, 1) for match in re.finditer(r"^\S+ ([TDBRW]) (.*)$", symbols, re.MULTILINE))
    table = re.compile(r".*thunk to |(vtable|typeinfo|typeinfo name|VTT|guard variable) for ")
    foreign = re.compile(r"std::|__gnu|__odr_asan|_init$|_fini$")
    kinds = {name: kind for name, kind in kinds.items() if not table.match(name) and not foreign.match(plain(name))}
    strong = {plain(name) for name, kind in kinds.items() if kind != "W"}
    return collections.Counter(map(plain, kinds)), strong


def scopes(name):
    """The classes and namespaces around a name, the innermost first."""
    while "::" in name:
        name = name.rpartition("::")[0]
        yield name


def file_name(library):
    return pathlib.Path(library).name.split(".")[0]


def check(listed, library):
    (found, strong), faults = exports(library), []
    classes = {around for name in listed for around in scopes(name) if around.split("::")[-1][:1].isupper()} - {"BP"}
    for name, count in listed.items():
        if found.get(name, 0) < count:
            faults.append(f"{file_name(library)}: {name}: {found.get(name, 0)} of {count} are exported")
    for name in found.keys() - listed.keys():
        if name in strong or classes.isdisjoint(scopes(name)):
            faults.append(f"{file_name(library)}: {name} is exported and not listed")
    return faults


def main(action, list_path, *libraries):
    if action == "write":
        for name in sorted({file_name(library) for library in libraries}):
            builds = [exports(library)[0] for library in libraries if file_name(library) == name]
            for symbol in sorted(set.intersection(*(set(build) for build in builds))):
                print(name, symbol, min(build[symbol] for build in builds))
        return 0
    listed = collections.defaultdict(dict)
    for line in pathlib.Path(list_path).read_text().splitlines():
        library, name, count = line.rsplit(" ", 2)
        listed[library][name] = int(count)
    faults = [fault for library in libraries for fault in check(listed[file_name(library)], library)]
    print("\n".join(faults) or "the interface is as listed")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
