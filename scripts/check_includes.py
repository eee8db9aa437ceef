#!/usr/bin/env python3
"""Holds the direction of includes between the folders of the library, and within the engine and the drivers.

A file may include its own folder and those named for it in MAY_INCLUDE. Everything that belongs to one host or one
database stays in the folders made for it. Public headers include the standard library and other public headers only.
"""

import re
import sys

import sources

GROUND = {"base", "automation"}
VALUES = GROUND | {"tsql", "data", "engine/values"}
SQLITE = VALUES | {"platform", "engine/sqlite"}
CATALOG = SQLITE | {"engine/catalog"}
BINDER = CATALOG | {"engine/binder"}
PLAN = BINDER | {"engine/plan"}
EXECUTOR = PLAN | {"engine/executor"}
LIBRARY = GROUND | {"ado", "data", "platform"}

# From below upwards: nothing includes what stands further down in this list.
MAY_INCLUDE = {
    "base": set(),
    "automation": {"base"},
    "platform": GROUND,
    "tsql": GROUND,
    "data": GROUND,
    "engine/values": GROUND | {"tsql", "data"},
    "engine/sqlite": SQLITE,
    "engine/catalog": CATALOG,
    "engine/binder": BINDER,
    "engine/plan": PLAN,
    "engine/executor": EXECUTOR,
    "engine/script": EXECUTOR,
    "engine": EXECUTOR | {"engine/script"},
    "drivers/embedded": EXECUTOR | {"engine", "engine/script"},
    "drivers/odbc": GROUND | {"data", "tsql", "platform", "drivers"},
    "drivers/without_servers": GROUND | {"data", "drivers"},
    "drivers/late_bound": GROUND | {"data", "tsql", "platform"},
    "drivers/text": GROUND | {"data", "platform", "drivers"},
    "drivers": GROUND | {"data", "drivers/embedded"},
    # Which driver answers for a connection string, and what makes one of another maker's connection.
    "ado": GROUND | {"data", "tsql", "platform", "drivers", "drivers/late_bound"},
    "migrate": GROUND | {"ado", "data", "tsql"},
    "core": GROUND,
    "util": LIBRARY,
    "db": LIBRARY | {"core", "util"},
    "config": LIBRARY | {"core", "db"},
    "sqlscript": LIBRARY | {"core", "util"},
    "numbering": LIBRARY | {"core", "util", "db"},
    "host": LIBRARY | {"core", "db", "drivers", "drivers/text"},
    "catalogue": LIBRARY | {"tsql", "core", "util", "db", "config", "sqlscript", "numbering", "host"},
    "com": LIBRARY | {"catalogue", "drivers", "drivers/late_bound"},
    "python": GROUND | {"catalogue"},
    "sqlite_extension": SQLITE,
    "cli/output": GROUND,
    "cli/commands": GROUND | {"migrate", "platform", "cli", "cli/output"},
    "cli/demo": GROUND | {"cli", "cli/output", "cli/commands"},
    "cli": GROUND | {"cli/output", "cli/commands", "cli/demo"},
}

# The command line and the Python package are clients like any other: they may use every public header, but no module's
# insides.
CLIENTS = ("python", "cli")

# Folders that may include what their host, database or language offers.
SPECIAL = re.compile(r"^src/(platform/[^/]+/|engine/sqlite/|drivers/[^/]+/|com/|python/|cli/|sqlite_extension/)")

# The Unicode library, for case, for the order of texts and for their width.
UNICODE_HEADER = "utf8proc.h"
UNICODE_USERS = {"src/base/character_width.cpp", "src/base/text_order.cpp", "src/base/unicode.cpp"}

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
    """The library folder that a path below src/ or include/kaputil/ belongs to: the longest that the table names."""
    folder = path.parent
    while len(folder.parts) > 1 and str(folder) not in MAY_INCLUDE:
        folder = folder.parent
    return str(folder)


def below_root(path):
    """The path as an include names it."""
    return path.relative_to("include/kaputil" if path.parts[0] == "include" else "src")


def check_project_include(path, quoted, target):
    """The fault in including a file of the project, or None."""
    folder = folder_of(below_root(path))
    public = path.parts[0] == "include"
    if quoted and public:
        return f'a public header includes the private "{target}"'
    root = "src" if quoted else "include"
    if not (sources.ROOT / root / target).is_file():
        return f"{target} does not exist under {root}/ (private headers are named from src/)"
    named = sources.pathlib.PurePosixPath(target)
    other = folder_of(named if quoted else named.relative_to("kaputil"))
    if other == folder or (folder.split("/")[0] in CLIENTS and not quoted):
        return None
    if other not in MAY_INCLUDE:
        return f"{other}/ is no folder of the library"
    if other not in MAY_INCLUDE[folder]:
        return f"{folder}/ may not include {other}/ ({target})"
    return None


def check_foreign_include(path, target):
    """The fault in including a header that is not the project's, or None."""
    if target in STANDARD or SPECIAL.match(str(path)):
        return None
    if target == UNICODE_HEADER and str(path) in UNICODE_USERS:
        return None
    return f"<{target}> belongs under platform/<host>/, engine/sqlite/, drivers/<driver>/ or to a way in (com, python, cli, sqlite_extension)"


def check_file(path):
    folder = folder_of(below_root(path))
    if folder not in MAY_INCLUDE:
        return [f"{path}:1: {folder}/ is no folder of the library"]
    faults = []
    for number, quoted, target in sources.includes(path):
        if quoted or target.startswith("kaputil/"):
            fault = check_project_include(path, quoted, target)
        else:
            fault = check_foreign_include(path, target)
        if fault:
            faults.append(f"{path}:{number}: {fault}")

    lines = sources.read(path).splitlines()
    if not SPECIAL.match(str(path)):
        for number, line in enumerate(lines, start=1):
            if HOST_CONDITION.match(line):
                faults.append(f"{path}:{number}: a condition on the host belongs under platform/<host>/")
    if path.suffix == ".hpp" and "#pragma once" not in lines:
        faults.append(f"{path}:1: a header needs #pragma once")
    return faults


def main():
    faults = []
    for path in sources.project_files("include/kaputil/*.hpp", "src/*.hpp", "src/*.cpp"):
        faults += check_file(path)
    for fault in faults:
        print(fault, file=sys.stderr)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
