#!/usr/bin/env python3
"""Compares what programs build upon with the last release: the names that the shared library shows, the classes, members,
identifiers and parameters that it publishes, and the libraries that are loaded with it. docs/stability.md says what may change
in which version.

    check_interface.py BUILD [--update | --release]

tests/interface/<kind>.txt is the last release's, <kind>.added.txt what has been added since. What is gone or changed is a fault,
and so is an addition that is not written down. --update writes the additions down; --release makes them part of the release:
for a new major version it also drops what is gone.
"""

import json
import pathlib
import re
import subprocess
import sys

FOLDER = pathlib.Path(__file__).resolve().parent.parent / "tests/interface"


def output_of(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout


def visible_symbols(build):
    """What a program finds in the shared library. A function counts once, however many entries the compiler makes for it; the
    constants of headers, which programs have themselves, do not count, nor does the name of the interface's version."""
    listing = output_of("nm", "--dynamic", "--defined-only", "--demangle", str(build / "libkaputil.so"))
    entries = [line.split(" ", 2)[1:] for line in listing.splitlines()]
    names = [name for kind, name in entries if kind not in "AVu" or re.match(r"(vtable|typeinfo|typeinfo name) for ", name)]
    return sorted({re.sub(r"@@?KAPUTIL_\d+$", "", name) for name in names})


def libraries_at_start(build):
    """What the host loads before a program begins, beside the runtime of C++ and the sanitizers."""
    lines = []
    for name in ("libkaputil.so", "kaputil"):
        needed = re.findall(r"NEEDED\s+(\S+)", output_of("objdump", "--private-headers", str(build / name)))
        lines += [f"{name}  {library}" for library in needed if not re.match(r"lib(\w+san|c|m|gcc_s|stdc\+\+)\.|ld-", library)]
    return sorted(lines)


def parameter_text(parameter):
    text = f"{parameter['passing']} {parameter['name']} As {parameter['type']}"
    if parameter["optional"]:
        text += f" = {parameter.get('default', 'missing')!r}"
    return text


def class_lines(kaputil, name):
    described = json.loads(output_of(kaputil, "classes", name, "--json"))
    yield (f"{name}  class {described['classId']}, interface {described['interface']['id']}, {described['instancing']}")
    for member in described["members"]:
        parameters = ", ".join(parameter_text(parameter) for parameter in member["parameters"])
        kind = "/".join([member["kind"], *member["access"]])
        yield (f"{name}.{member['name']}  {member['dispatchId']:#x} {kind} ({parameters})"
               + (f" As {member['result']}" if member["result"] else "") + (", default" if member["default"] else ""))


def published_members(build):
    kaputil = str(build / "kaputil")
    described = json.loads(output_of(kaputil, "classes", "--json"))
    lines = [f"library  {described['library']['typeLibrary']['id']}"]
    for each in described["classes"] + described["platform"] + described["objects"]:
        lines += class_lines(kaputil, each["programmaticName"])
    for enumeration in described["enumerations"] + described["dataAccessEnumerations"]:
        lines += [f"{enumeration['name']}.{value['name']}  {value['value']}" for value in enumeration["values"]]
    return sorted(lines)


def read(path):
    return path.read_text(encoding="utf-8").splitlines() if path.exists() else []


def write(path, lines):
    path.write_text("".join(f"{line}\n" for line in lines), encoding="utf-8")


def check(kind, found, mode):
    """The faults in what was found of one kind."""
    release_file, added_file = FOLDER / f"{kind}.txt", FOLDER / f"{kind}.added.txt"
    if mode == "--release":
        write(release_file, found)
        write(added_file, [])
    release = read(release_file)
    new = [line for line in found if line not in set(release)]
    if mode == "--update":
        write(added_file, new)
    gone = [line for line in release if line not in set(found)]
    added = read(added_file)
    return ([f"{kind}: gone or changed since the last release: {line}" for line in gone]
            + [f"{kind}: added, and not in {added_file.name} (see --update): {line}" for line in new if line not in added]
            + [f"{kind}: in {added_file.name}, but no more there: {line}" for line in added if line not in new])


def main():
    build, mode = pathlib.Path(sys.argv[1]), (sys.argv[2] if len(sys.argv) > 2 else "")
    faults = []
    for kind, found in (("symbols", visible_symbols), ("catalogue", published_members), ("libraries", libraries_at_start)):
        faults += check(kind, found(build), mode)
    print(*faults, sep="\n", end="\n" if faults else "")
    if not faults:
        print("interface: nothing of the last release is gone, and every addition is written down")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
