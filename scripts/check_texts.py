#!/usr/bin/env python3
"""Checks the texts of the project: long files, references and links that lead nowhere for a reader, examples in the guides.

With --update it first copies the examples into the guides.
"""

import re
import sys

import sources

LONGEST = 500
# Of a comment in C++, as the formatter has of code.
MOST_COLUMNS = 100
LENGTH_REASON = re.compile(r"^\s*//\s*length:\s*\S")

# A reader of the code has the code: it must not send him to documents that do not travel with it.
OUTSIDE = re.compile(r"\bParts? \d+\.\d+|\bspec\.md\b|\.\./shared\b|\bDESIGN\.md\b|\bissue #?\d+\b")

# In a guide, a line <!-- example: path --> stands before the block that repeats that file.
EXAMPLE = re.compile(r"^(<!-- example: (\S+) -->\s*```\w*\n)(.*?)(?=^```)", re.DOTALL | re.MULTILINE)
USING = re.compile(r"^using (?:\w+::)+(\w+);")

# Links of a page, but none to other sites, and headings; blocks of code hold neither.
LINK = re.compile(r"\]\((?!\w+:)([^)\s]+)\)")
HEADING = re.compile(r"^#+ +(.*)$", re.MULTILINE)
BLOCK = re.compile(r"^```.*?^```$", re.DOTALL | re.MULTILINE)
CODE = re.compile(rf"{BLOCK.pattern}|`[^`\n]*`", re.DOTALL | re.MULTILINE)

EXAMPLE_MARK = re.compile(r"^<!-- example: \S+ -->", re.MULTILINE)


def check_length(path, lines):
    if len(lines) <= LONGEST or any(LENGTH_REASON.match(line) for line in lines):
        return []
    return [f"{path}:{LONGEST + 1}: {len(lines)} lines; split the file, or say why not in a line `// length: reason`"]


def check_references(path, lines):
    return [f"{path}:{number}: refers to a document outside the project: {match.group(0)}"
            for number, line in enumerate(lines, start=1) for match in OUTSIDE.finditer(line)]


def check_comment_width(path, lines):
    """The formatter leaves comments as they are, for the sake of tables and lists, so their width is held here."""
    return [f"{path}:{number}: a comment of {len(line)} columns, {MOST_COLUMNS} at most"
            for number, line in enumerate(lines, 1)
            if line.lstrip().startswith("//") and len(line) > MOST_COLUMNS and " " in line.strip("/ ")]


def check_usings(path, lines):
    """Names that a source brings into its scope and does not use; clang-tidy sees them only in a file by itself."""
    faults = []
    for number, line in enumerate(lines, start=1):
        match = USING.match(line)
        if match and path.suffix == ".cpp":
            rest = "\n".join(lines[:number - 1] + lines[number:])
            if not re.search(rf"\b{match.group(1)}\b", rest):
                faults.append(f"{path}:{number}: {match.group(1)} is not used")
    return faults


def check_examples(path, text):
    faults = []
    blocks = EXAMPLE.findall(text)
    if len(blocks) != len(EXAMPLE_MARK.findall(text)):
        faults.append(f"{path}:1: an example mark has no block after it")
    for _, name, block in blocks:
        if not (sources.ROOT / name).is_file():
            faults.append(f"{path}:1: the example {name} does not exist")
        elif sources.read(name) != block:
            faults.append(f"{path}:1: the block differs from {name} (check_texts.py --update copies it)")
    return faults


def anchor_of(heading):
    """What a heading is called in links, as the usual viewers of Markdown have it."""
    plain = re.sub(r"\[([^\]]*)\]\([^)]*\)", r"\1", heading).strip().lower()
    return re.sub(r"[^\w\- ]", "", plain).replace(" ", "-")


def check_links(path, text):
    """Links of a page lead to files that are there, and to headings in them."""
    faults = []
    for target in LINK.findall(CODE.sub("", text)):
        name, _, anchor = target.partition("#")
        file = (sources.ROOT / path).parent / name if name else sources.ROOT / path
        if not file.exists():
            faults.append(f"{path}:1: the link {target} leads nowhere")
        elif anchor and anchor not in map(anchor_of, HEADING.findall(BLOCK.sub("", file.read_text(encoding="utf-8")))):
            faults.append(f"{path}:1: there is no heading for the link {target}")
    return faults


def update_examples():
    for path in sources.project_files("*.md"):
        old = sources.read(path)
        new = EXAMPLE.sub(lambda match: match.group(1) + sources.read(match.group(2)), old)
        if new != old:
            (sources.ROOT / path).write_text(new, encoding="utf-8")
            sources.read.cache_clear()


def main():
    if "--update" in sys.argv[1:]:
        update_examples()
    faults = []
    for path in sources.project_files():
        try:
            text = sources.read(path)
        except UnicodeDecodeError:
            continue  # Not a text: tests may keep damaged or binary files.
        lines = text.splitlines()
        faults += check_references(path, lines)
        if path.suffix in (".hpp", ".cpp"):
            faults += check_length(path, lines)
            faults += check_usings(path, lines)
            faults += check_comment_width(path, lines)
        if path.suffix == ".md":
            faults += check_examples(path, text) + check_links(path, text)
    for fault in faults:
        print(fault, file=sys.stderr)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
