#!/usr/bin/env python3
"""Holds that numbers and dates turn into text and back in one place, src/automation/convert/.

The rest of the library and its programs call <kaputil/automation/convert.hpp> and <kaputil/automation/format.hpp> for texts that
people read, and <kaputil/automation/plain_text.hpp> for those that programs do.
"""

import re
import sys

import sources

PLACE = "src/automation/convert/"

# What converts, and is not to be called elsewhere.
CONVERSION = re.compile(
    r"\b(?:std::)?(to_string|to_wstring|sto[idflu]\w*|strto\w+|ato[ilf]|from_chars|to_chars|v?s?n?printf|f?s?scanf|"
    r"strftime|strptime|put_time|get_time|put_money|get_money|(?:o|i)?stringstream|gcvt|ecvt|fcvt)\s*[(<{ ]"
    r"|\bstd::(format|vformat)\b")

COMMENT = re.compile(r"//.*$")


def faults():
    for path in sources.project_files("src/*.cpp", "src/*.hpp", "include/*.hpp"):
        if str(path).startswith(PLACE):
            continue
        for number, line in enumerate(sources.read(path).splitlines(), start=1):
            match = CONVERSION.search(COMMENT.sub("", line))
            if match:
                yield f"{path}:{number}: {match.group(1) or match.group(2)} converts; use <kaputil/automation/plain_text.hpp> or convert.hpp"


def main():
    found = list(faults())
    for fault in found:
        print(fault, file=sys.stderr)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
