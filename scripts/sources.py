"""What the checks share: the files of the project and the includes they hold."""

import functools
import os
import pathlib
import re
import subprocess

ROOT = pathlib.Path(__file__).resolve().parent.parent

_INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')


def project_files(*patterns):
    """The files that belong to the project, committed or about to be, as paths below the root."""
    listing = subprocess.run(
        ["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard", "--", *patterns],
        cwd=ROOT, check=True, capture_output=True).stdout.decode()
    names = sorted(set(name for name in listing.split("\0") if name))
    return [pathlib.PurePosixPath(name) for name in names if (ROOT / name).is_file()]


@functools.lru_cache(maxsize=None)
def read(path):
    return (ROOT / path).read_text(encoding="utf-8")


@functools.lru_cache(maxsize=None)
def includes(path):
    """The includes of a file: (line number, True for quotes and False for angle brackets, what is included)."""
    found = []
    for number, line in enumerate(read(path).splitlines(), start=1):
        match = _INCLUDE.match(line)
        if match:
            found.append((number, match.group(1) == '"', match.group(2)))
    return found


@functools.lru_cache(maxsize=None)
def included_file(target, including="."):
    """The project's file that an include names, below the root; None when it is not one of the project's."""
    beside = pathlib.PurePosixPath(including).parent
    for folder in ("include", "src", "tests", ".", beside):
        candidate = pathlib.PurePosixPath(os.path.normpath(folder / pathlib.PurePosixPath(target)))
        if (ROOT / candidate).is_file():
            return candidate
    return None
