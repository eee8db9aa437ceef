#!/usr/bin/env python3
"""Checks the sources with compilers, two or more at once:

    plain   every file compiles by itself: it includes what it uses
    tidy    clang-tidy, over the files of a folder joined to one: most of its time goes into headers, which are then read
            once. That their names do not clash, however many of them a build joins, shows in passing
    unity   the same without clang-tidy for tests, which are not held to the naming rules

usage: check_sources.py PLAIN_BUILD UNITY_BUILD [CHECK...]

The builds are only configured; their compile commands are read. What was clean is not looked at again until a file that it
includes, its command or the tool changes: that is kept by content in the user's cache folder, for all clones.
"""

import concurrent.futures
import dataclasses
import functools
import hashlib
import json
import os
import pathlib
import shlex
import subprocess
import sys
import threading
import time

import sources

KEPT_DAYS = 30
# Nearly every file names these or a header that does; check_std_headers.py sees from the text that they are.
EVERYDAY = ("map", "memory", "optional", "string", "variant", "vector")
FRAMEWORK = ("gtest/gtest.h",)
PRECOMPILING = threading.Lock()


@dataclasses.dataclass(frozen=True)
class Command:
    """One call of the compiler, as the build has it."""
    file: pathlib.Path
    folder: pathlib.Path
    words: tuple

    def relative(self):
        return " ".join(self.words).replace(str(sources.ROOT), ".")


def commands_of(build):
    """The compiler's calls of a configured build, without its cache and without what names the object."""
    found = []
    for entry in json.loads((build / "compile_commands.json").read_text("utf-8")):
        words = shlex.split(entry["command"])
        while pathlib.Path(words[0]).name in ("cmake", "ccache", "-E", "env") or "=" in words[0]:
            words = words[1:]
        at = words.index("-o")
        found.append(Command(pathlib.Path(entry["file"]), pathlib.Path(entry["directory"]),
                             tuple(words[:at] + words[at + 2:])))
    return found


def compiler(command):
    # Most of it is reading headers, which this compiler does in two thirds of the time; warnings come with the build, from
    # the one that builds.
    return ["clang++", *command.words[1:], *read_once(command), "-fsyntax-only", "-w"]


def read_once(command):
    """The headers of every file, and of every test its framework's: half of what there is to read."""
    options = tuple(word for word in command.words[1:] if word.startswith(("-std", "-D", "-fPIC", "-fvisibility")))
    headers = FRAMEWORK if "-DGTEST_HAS_PTHREAD=1" in options else EVERYDAY
    with PRECOMPILING:
        return ["-include-pch", str(precompiled(headers, options, command.folder))]


@functools.cache
def precompiled(headers, options, folder):
    made = folder / f"headers-{hashlib.sha256(repr((headers, options)).encode()).hexdigest()[:12]}.pch"
    text = "".join(f"#include <{header}>\n" for header in headers)
    subprocess.run(["clang++", *options, "-w", "-x", "c++-header", "-", "-o", str(made)], input=text, text=True, check=True)
    return made


def clang_tidy(command):
    # What hides a name is the compiler's to say: this tool also means names of the other files that are joined.
    return ["clang-tidy", "--quiet", "--extra-arg=-Wno-unknown-warning-option", "--extra-arg=-Wno-shadow", "-p",
            str(command.folder), str(command.file)]


def output_of(*words):
    return subprocess.run(words, capture_output=True, check=True).stdout


def closure(path):
    """The file and every file of the project that it includes, directly or not."""
    seen, waiting = set(), [path]
    while waiting:
        current = waiting.pop()
        if current not in seen:
            seen.add(current)
            waiting += [header for _, _, target in sources.includes(current)
                        if (header := sources.included_file(target, current))]
    return sorted(seen)


def fingerprint(name, command, rules):
    digest = hashlib.sha256(name.encode() + rules + command.relative().encode())
    for part in closure(command.file.relative_to(sources.ROOT)):
        digest.update(str(part).encode() + b"\0" + sources.read(part).encode() + b"\0")
    return digest.hexdigest()


def kept_folder():
    root = os.environ.get("XDG_CACHE_HOME") or pathlib.Path.home() / ".cache"
    folder = pathlib.Path(root) / "kaputil" / "lint"
    folder.mkdir(parents=True, exist_ok=True)
    return folder


def forget_old(folder):
    for mark in folder.iterdir():
        if time.time() - mark.stat().st_mtime > KEPT_DAYS * 86400:
            mark.unlink(missing_ok=True)


def run(words, command):
    """Whether a file is clean, and what the tool says when it is not."""
    done = subprocess.run(words(command), cwd=command.folder, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                          check=False)
    return done.returncode == 0, done.stdout + (done.stderr if done.returncode else "")


def is_test(command):
    return (sources.ROOT / "tests") in command.file.parents or command.file.name.startswith("test_")


def waiting_checks(plain, unity, chosen):
    """What has to be run: (name, words, command, mark)."""
    clang = output_of("clang++", "--version")
    tidy = output_of("clang-tidy", "--version") + sources.read(".clang-tidy").encode()
    joined = [command for command in commands_of(unity) if command.file.is_relative_to(unity / "unity")]
    checks = {
        "plain": (compiler, clang, commands_of(plain)),
        "unity": (compiler, clang, [command for command in joined if is_test(command)]),
        "tidy": (clang_tidy, tidy, [command for command in joined if not is_test(command)]),
    }
    kept = kept_folder()
    for name in chosen or checks:
        words, rules, commands = checks[name]
        for command in commands:
            if not command.file.is_file():
                continue  # made by a build, which checks it
            mark = kept / fingerprint(name, command, rules)
            if mark.exists():
                mark.touch()
            else:
                yield name, words, command, mark


def main():
    plain, unity = (pathlib.Path(argument).resolve() for argument in sys.argv[1:3])
    # The longest first, so that no core idles at the end.
    order = {"tidy": 0, "unity": 1, "plain": 2}
    waiting = sorted(waiting_checks(plain, unity, sys.argv[3:]),
                     key=lambda check: (order[check[0]], -len(closure(check[2].file.relative_to(sources.ROOT)))))
    failed = 0
    with concurrent.futures.ThreadPoolExecutor(max_workers=max(2, os.cpu_count() or 2)) as pool:
        running = {pool.submit(run, words, command): (name, command, mark) for name, words, command, mark in waiting}
        for count, future in enumerate(concurrent.futures.as_completed(running), start=1):
            clean, text = future.result()
            name, command, mark = running[future]
            if clean:
                mark.touch()
            else:
                failed += 1
                print(f"{name}: {command.file.relative_to(sources.ROOT)}\n{text}", file=sys.stderr)
            if count % 50 == 0 or count == len(waiting):
                print(f"[{count}/{len(waiting)}]", file=sys.stderr)
    forget_old(kept_folder())
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
