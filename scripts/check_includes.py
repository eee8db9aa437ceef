#!/usr/bin/env python3
"""Holds the direction of includes between the folders of the library.

A folder may include itself, frame and the folders named for it in MAY_INCLUDE. Everything that belongs to one host or one
database stays in the folders made for it. Public headers include the standard library and other public headers only.
"""

import re
import sys

import sources

MAY_INCLUDE = {
    "frame": set(),
    "platform": set(),
    "tsql": set(),
    "ado": {"tsql", "platform"},
    "core": set(),
    "util": {"ado", "platform"},
    "db": {"core", "util", "ado", "platform"},
    "config": {"core", "db", "ado"},
    "sqlscript": {"core", "util", "ado"},
    "numbering": {"core", "util", "db", "ado"},
    "host": {"core", "db", "ado", "platform"},
    "catalogue": {"platform", "tsql", "ado", "core", "util", "db", "config", "sqlscript", "numbering", "host"},
    "com": {"catalogue", "ado", "platform"},
    "python": {"catalogue"},
    "tools": {"catalogue"},
}

# The command line and the Python package are clients like any other: they may use every public header, but no module's
# insides.
CLIENTS = {"python", "tools"}

# Folders that may include what their host, database or language offers.
SPECIAL = re.compile(r"^src/(platform/[^/]+/|ado/[^/]+/|com/|python/|tools/)")

# The Unicode library, which one file of frame may include.
UNICODE_HEADER = "utf8proc.h"

HOST_CONDITION = re.compile(
    r"^\s*#\s*(?:if|ifdef|ifndef|elif)\b.*\b(_?WIN32|_WIN64|__MINGW\w+|__CYGWIN__|_?_?linux(?:__)?|_?_?unix(?:__)?"
    r"|__APPLE__|__MACH__|__FreeBSD__|_POSIX_VERSION)\b")

STANDARD = set("""
algorithm any array atomic barrier bit bitset cassert cctype cerrno cfenv cfloat charconv chrono cinttypes climits
clocale cmath codecvt compare complex concepts condition_variable coroutine csetjmp csignal cstdarg cstddef cstdint
cstdio cstdlib cstring ctime cuchar cwchar cwctype deque exception execution filesystem format forward_list fstream
functional future initializer_list iomanip ios iosfwd iostream istream iterator latch limits list locale map memory
memory_resource mutex new numbers numeric optional ostream queue random ranges ratio regex scoped_allocator semaphore
set shared_mutex source_location span sstream stack stdexcept stop_token streambuf string string_view syncstream
system_error thread tuple type_traits typeindex typeinfo unordered_map unordered_set utility valarray variant vector
version
""".split())


def folder_of(path):
    """The library folder that a file of the project belongs to."""
    return path.parts[2] if path.parts[0] == "include" else path.parts[1]


def check_project_include(path, quoted, target):
    """The fault in including a file of the project, or None."""
    folder = folder_of(path)
    public = path.parts[0] == "include"
    if quoted and public:
        return f'a public header includes the private "{target}"'
    other = target.split("/")[0 if quoted else 1]
    if other == folder or other == "frame":
        pass
    elif folder in CLIENTS and not quoted:
        pass
    elif other not in MAY_INCLUDE:
        return f"{other}/ is no folder of the library"
    elif other not in MAY_INCLUDE[folder]:
        return f"{folder}/ may not include {other}/ ({target})"
    root = "src" if quoted else "include"
    if not (sources.ROOT / root / target).is_file():
        return f"{target} does not exist under {root}/ (private headers are named from src/)"
    return None


def check_foreign_include(path, target, unicode_users):
    """The fault in including a header that is not the project's, or None."""
    if target in STANDARD or SPECIAL.match(str(path)):
        return None
    if target == UNICODE_HEADER and path.parts[:2] == ("src", "frame"):
        unicode_users.append(path)
        return None
    return f"<{target}> belongs under platform/<host>/, ado/<driver>/ or in a door"


def check_file(path, unicode_users):
    if folder_of(path) not in MAY_INCLUDE:
        return [f"{path}:1: {folder_of(path)}/ is no folder of the library"]
    faults = []
    for number, quoted, target in sources.includes(path):
        if quoted or target.startswith("kaputil/"):
            fault = check_project_include(path, quoted, target)
        else:
            fault = check_foreign_include(path, target, unicode_users)
        if fault:
            faults.append(f"{path}:{number}: {fault}")

    lines = sources.read(path).splitlines()
    if not SPECIAL.match(str(path)):
        for number, line in enumerate(lines, start=1):
            if HOST_CONDITION.match(line):
                faults.append(f"{path}:{number}: a condition on the host belongs under platform/<host>/ or in a door")
    if path.suffix == ".hpp" and "#pragma once" not in lines:
        faults.append(f"{path}:1: a header needs #pragma once")
    return faults


def main():
    faults = []
    unicode_users = []
    for path in sources.project_files("include/kaputil/*.hpp", "src/*.hpp", "src/*.cpp"):
        faults += check_file(path, unicode_users)
    if len(unicode_users) > 1:
        users = ", ".join(str(path) for path in unicode_users)
        faults.append(f"{UNICODE_HEADER} is for one file of frame/, but these include it: {users}")
    for fault in faults:
        print(fault, file=sys.stderr)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
