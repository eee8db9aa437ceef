#!/usr/bin/env python3
"""Holds that who uses a name of the commonest standard headers includes its header, itself or by a header of the project.

The check of single files reads these headers once for all of them (check_sources.py), so the compiler cannot tell; what
else they bring along is in this table, too.
"""

import re
import sys

import sources

HEADERS = {header: set(names.split()) for header, names in {
    "map": "map multimap",
    "memory": """addressof allocator allocator_traits default_delete dynamic_pointer_cast enable_shared_from_this make_shared
        make_unique shared_ptr static_pointer_cast unique_ptr weak_ptr""",
    "mutex": "call_once lock_guard mutex once_flag recursive_mutex scoped_lock unique_lock",
    "optional": "make_optional nullopt nullopt_t optional",
    "stdexcept": "domain_error invalid_argument length_error logic_error out_of_range overflow_error range_error runtime_error",
    "string": """basic_string char_traits getline stod stof stoi stol stoll stoul stoull string to_string to_wstring u16string
        u32string u8string wstring""",
    "system_error": "errc error_code generic_category make_error_code system_category system_error",
    "tuple": "apply forward_as_tuple make_tuple tie tuple tuple_cat",
    "variant": """bad_variant_access get_if holds_alternative in_place_index monostate variant variant_alternative_t
        variant_size_v visit""",
    "vector": "vector",
}.items()}
HEADER_OF = {name: header for header, names in HEADERS.items() for name in names}

STANDARD_NAME = re.compile(r"\bstd::(\w+)")
NO_CODE = re.compile(r'//[^\n]*|"(?:\\.|[^"\\\n])*"')


def included_headers(path):
    """What a file includes that is not the project's, directly or by the project's headers."""
    seen, waiting, found = set(), [path], set()
    while waiting:
        current = waiting.pop()
        if current in seen:
            continue
        seen.add(current)
        for _, _, target in sources.includes(current):
            header = sources.included_file(target, current)
            if header:
                waiting.append(header)
            else:
                found.add(target)
    return found


def used_names(text):
    """The first line of each name of the table that a text uses."""
    found = {}
    for number, line in enumerate(text.splitlines(), start=1):
        for name in STANDARD_NAME.findall(NO_CODE.sub("", line)):
            if name in HEADER_OF:
                found.setdefault(name, number)
    return found


def faults_of(path):
    included = included_headers(path)
    return [f"{path}:{number}: std::{name} needs <{HEADER_OF[name]}>"
            for name, number in used_names(sources.read(path)).items() if HEADER_OF[name] not in included]


def main():
    faults = [fault for path in sources.project_files("*.hpp", "*.cpp") for fault in faults_of(path)]
    for fault in faults:
        print(fault, file=sys.stderr)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
