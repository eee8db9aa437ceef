#!/usr/bin/env python3
"""Follows the guides in a system that has nothing but installed packages, as they stand.

    follow_guides.py SYSTEM commands     the first page of the guide, its commands alone
    follow_guides.py SYSTEM guides       every page, with its programs in Python
    follow_guides.py SYSTEM database     makes azienda.db, of which docs/other_tools.md has its examples, in the folder /tmp/guide
    follow_guides.py SYSTEM sqlite       what that page types into sqlite3, where azienda.db is in the folder
"""

import difflib
import os
import pathlib
import re
import shutil
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tests/python"))

from guide_reader import GUIDES, Reader, pages  # noqa: E402

OTHER_TOOLS = ROOT / "docs/other_tools.md"
LANGUAGES = {"it": "it_IT.UTF-8", "en": "en_US.UTF-8"}


def fail(what, shown, printed):
    difference = "\n".join(difflib.unified_diff(shown.splitlines(), printed.splitlines(), "shown", "printed", lineterm=""))
    sys.exit(f"{what} shows otherwise than what is printed:\n{difference}")


class InstalledReader(Reader):
    """Somebody who sits in front of the fresh system, in a folder made anew."""

    def __init__(self, system, python, language):
        folder = system / "tmp/guide"
        folder.mkdir(exist_ok=True)
        super().__init__(folder, python, {"PATH": "/usr/local/bin:/usr/bin:/bin", "HOME": "/tmp/guide", "LANG": LANGUAGES[language],
                                          "KAPUTIL_HOME": "/tmp/guide/settings"})
        self.system = system

    def command(self, words, changes):
        as_root = [] if os.geteuid() == 0 else ["sudo"]
        variables = [f"{name}={value}" for name, value in {**self.environment, **changes}.items() if value]
        return [*as_root, "chroot", str(self.system), "/usr/bin/env", "-i", "-C", "/tmp/guide", *variables, *words]

    def run(self, *words, given="", **changes):
        done = subprocess.run(self.command(words, changes), input=given, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              encoding="utf-8", timeout=120)
        return "".join(f"{line.rstrip()}\n" for line in done.stdout.splitlines())


def follow(system, page, python):
    shutil.rmtree(system / "tmp/guide", ignore_errors=True)
    text = page.read_text(encoding="utf-8")
    followed = InstalledReader(system, python, page.parent.name).follow(text)
    if followed != text:
        fail(page.relative_to(ROOT), text, followed)


def commands(system):
    for page in sorted(GUIDES.glob("*/01-*.md")):
        follow(system, page, None)


def guides(system):
    for page in pages():
        follow(system, page, "python3")


def database(system):
    shutil.rmtree(system / "tmp/guide", ignore_errors=True)
    reader = InstalledReader(system, None, "en")
    made = re.search(r"^```sql\n(.*?)^```$", OTHER_TOOLS.read_text(encoding="utf-8"), re.DOTALL | re.MULTILINE)[1]
    (reader.folder / "tables.sql").write_text(made, encoding="utf-8")
    printed = reader.run("kaputil", "sql", "azienda.db", "--file", "tables.sql", "--csv")
    if printed:
        sys.exit(f"the database of {OTHER_TOOLS.relative_to(ROOT)} is not made: {printed}")


def sqlite(system):
    reader = InstalledReader(system, None, "en")
    block = re.search(r"^```console\n\$ (sqlite3 .*?)^```$", OTHER_TOOLS.read_text(encoding="utf-8"), re.DOTALL | re.MULTILINE)[1]
    program, *lines = block.splitlines()
    typed = [line.removeprefix("sqlite> ") for line in lines if line.startswith("sqlite> ")]
    shown = "".join(f"{line}\n" for line in lines if not line.startswith("sqlite> "))
    printed = reader.run(*program.split(), given="\n".join(typed) + "\n")
    if printed != shown:
        fail(OTHER_TOOLS.relative_to(ROOT), shown, printed)


if __name__ == "__main__":
    {"commands": commands, "guides": guides, "database": database, "sqlite": sqlite}[sys.argv[2]](pathlib.Path(sys.argv[1]))
