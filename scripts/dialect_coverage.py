#!/usr/bin/env python3
"""Makes the table of coverage of the dialect, docs/dialect/coverage.md, from the headers of the script files in tests/sql.

    scripts/dialect_coverage.py            writes the table
    scripts/dialect_coverage.py --check    tells what the table says that the files do not
"""

import re
import sys

import sources

TABLE = "docs/dialect/coverage.md"
HEADER = re.compile(r"# name: (\S+)\n# purpose: (.+)\n")

# Which page tells of the topics, by the folders of tests/sql.
AREAS = {
    "queries": ("Queries", """apply collate cte for_json for_xml grouping hints joins old_joins nulls pivot plans predicates samples
                select sets subqueries windows depth case"""),
    "functions": ("Functions", """functions_dates functions_general functions_numbers functions_text functions_stored json
                  table_functions"""),
    "types": ("Types and conversions", "conversion sql_variant types table_types table_variables"),
    "definition": ("Definition", """alter checks foreign_keys indexes metadata schemas select_into sequences synonyms tables temp_tables
                   truncate views"""),
    "modules": ("Modules", "calls cursors insert_exec procedures result_sets triggers"),
    "transactions": ("Changes and transactions", """application_locks delete errors insert locking merge output transactions try
                     update"""),
    "scripts": ("Scripts", """business control messages old_scripts programs settings shared_statements variables"""),
}


def headers():
    """The purpose of each script file, by its topic and name."""
    found = {}
    for path in sorted((sources.ROOT / "tests/sql").glob("*/*.test")):
        match = HEADER.match(path.read_text(encoding="utf-8"))
        name = f"{path.parent.name}/{path.stem}"
        if match is None or match.group(1) != name:
            sys.exit(f"{path.relative_to(sources.ROOT)}:1: begins with '# name: {name}' and '# purpose: ...'")
        found.setdefault(path.parent.name, {})[path.stem] = match.group(2)
    return found


def row(stem, purpose):
    return f"| `{stem}` | {purpose.replace('|', '&#124;')} |"


def rows_of(topic, files):
    return ["", f"### {topic}", "", "| file | holds that |", "|---|---|",
            *(row(stem, purpose) for stem, purpose in sorted(files.items()))]


def table(found):
    lines = ["# What the scripts hold",
             "",
             "Each file under `tests/sql` is a script with what the database must answer to it. This table is made from their first",
             "lines by `scripts/dialect_coverage.py`, which is run again when files are added."]
    rest = set(found)
    for page, (title, topics) in AREAS.items():
        lines += ["", f"## {title}", "", f"The page: [{title.lower()}]({page}.md)."]
        for topic in sorted(rest & set(topics.split())):
            lines += rows_of(topic, found[topic])
        rest -= set(topics.split())
    if rest:
        lines += ["", "## Others"]
    for topic in sorted(rest):
        lines += rows_of(topic, found[topic])
    return "\n".join(lines) + "\n"


def faults(found):
    """A file that was added since is no fault, so that adding one touches nothing else; what the table says is held."""
    path = sources.ROOT / TABLE
    text = path.read_text(encoding="utf-8") if path.exists() else ""
    topic = ""
    told = {}
    for line in text.splitlines():
        if line.startswith("### "):
            topic = line[len("### "):]
            told[topic] = []
        elif line.startswith("| `"):
            told[topic].append(line)
    for topic, lines in sorted(told.items()):
        rows = {row(stem, purpose) for stem, purpose in found.get(topic, {}).items()}
        for line in lines:
            if line not in rows:
                yield f"{TABLE}: tests/sql/{topic} says otherwise, or no more: {line}; run scripts/dialect_coverage.py"


def main():
    found = headers()
    if "--check" in sys.argv[1:]:
        said = list(faults(found))
        for fault in said:
            print(fault)
        sys.exit(1 if said else 0)
    path = sources.ROOT / TABLE
    path.parent.mkdir(exist_ok=True)
    path.write_text(table(found), encoding="utf-8")


if __name__ == "__main__":
    main()
