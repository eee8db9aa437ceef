#!/usr/bin/env python3
"""Runs clang-tidy over the sources of the library and its benchmarks, one on each core.

usage: tidy.py BUILD_FOLDER [PATTERN...]

BUILD_FOLDER holds the compile commands. A file that was clean is not looked at again until it, a header it includes, the
rules or the tool change: what it was clean with is kept in BUILD_FOLDER/tidy.
"""

import concurrent.futures
import hashlib
import json
import os
import pathlib
import subprocess
import sys

import sources


def closure(path):
    """The file and every file of the project that it includes, directly or not."""
    seen, waiting = set(), [path]
    while waiting:
        current = waiting.pop()
        if current not in seen:
            seen.add(current)
            waiting += [header for _, _, target in sources.includes(current)
                        if (header := sources.included_file(target))]
    return sorted(seen)


def fingerprint(path, rules):
    digest = hashlib.sha256(rules)
    for part in closure(path):
        digest.update(str(part).encode() + b"\0" + sources.read(part).encode() + b"\0")
    return digest.hexdigest()


def check(path, build_folder):
    """Whether the file is clean, and what clang-tidy says when it is not."""
    done = subprocess.run(["clang-tidy", "--quiet", "--extra-arg=-Wno-unknown-warning-option", "-p", str(build_folder), str(path)], cwd=sources.ROOT,
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, check=False)
    return done.returncode == 0, done.stdout + (done.stderr if done.returncode else "")


def main():
    build_folder = pathlib.Path(sys.argv[1]).resolve()
    patterns = sys.argv[2:] or ["src/*.cpp", "bench/*.cpp"]
    stamps = build_folder / "tidy"
    stamps.mkdir(parents=True, exist_ok=True)
    version = subprocess.run(["clang-tidy", "--version"], capture_output=True, check=True).stdout
    rules = version + sources.read(".clang-tidy").encode()

    # What only another host compiles cannot be read on this one.
    commands = json.loads((build_folder / "compile_commands.json").read_text("utf-8"))
    compiled = {pathlib.Path(command["file"]) for command in commands}

    waiting = {}
    for path in sources.project_files(*patterns):
        if sources.ROOT / path not in compiled:
            continue
        mark = fingerprint(path, rules)
        if not (stamps / mark).exists():
            waiting[path] = mark

    failed = 0
    with concurrent.futures.ThreadPoolExecutor(max_workers=max(2, os.cpu_count() or 2)) as pool:
        running = {pool.submit(check, path, build_folder): path for path in waiting}
        for count, future in enumerate(concurrent.futures.as_completed(running), start=1):
            clean, text = future.result()
            path = running[future]
            print(f"[{count}/{len(waiting)}] {path}", file=sys.stderr)
            if clean:
                (stamps / waiting[path]).touch()
            else:
                failed += 1
                print(text, file=sys.stderr)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
