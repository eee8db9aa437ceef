#!/usr/bin/env python3
"""Lists the files and the headers that take longest to compile.

usage: build_report.py PLAIN_BUILD BUILD...

The files' times are those of the last time that each was compiled in a BUILD (Ninja's log). The headers' times are what
clang++ takes to read them and what they include, over all files of PLAIN_BUILD, each by itself; nothing is built for it.
"""

import collections
import concurrent.futures
import json
import os
import pathlib
import subprocess
import sys
import tempfile

import check_sources
import sources

LISTED = 20


def object_times(build):
    """Seconds by object, from the log's lines: start, end, time of the file, name, hash."""
    times = {}
    for line in (build / ".ninja_log").read_text("utf-8").splitlines()[1:]:
        start, end, _, name, _ = line.split("\t")
        if name.endswith((".o", ".obj", ".gch")):
            times[name] = (int(end) - int(start)) / 1000
    return times


def header_times(command, folder):
    """Seconds by header, in one file."""
    with tempfile.TemporaryDirectory(dir=folder) as own:
        words = ["clang++", *command.words[1:], "-w", "-O0", "-c", "-ftime-trace",
                 "-ftime-trace-granularity=2000", "-o", f"{own}/read.o"]
        subprocess.run(words, cwd=command.folder, capture_output=True, check=False)
        traces = list(pathlib.Path(own).glob("*.json"))
        if not traces:
            return {}
        events = json.loads(traces[0].read_text("utf-8"))["traceEvents"]
    times = collections.Counter()
    for event in events:
        if event["name"] == "Source" and event.get("ph") == "X":
            times[os.path.normpath(command.folder / event["args"]["detail"])] += event["dur"] / 1e6
    return times


def print_table(title, rows):
    print(f"\n{title}\n")
    for columns in rows:
        print("  " + "  ".join(columns))


def main():
    plain, *builds = (pathlib.Path(argument).resolve() for argument in sys.argv[1:])
    for build in builds:
        times = object_times(build)
        rows = [(f"{seconds:7.1f} s", name) for name, seconds in
                sorted(times.items(), key=lambda item: -item[1])[:LISTED]]
        print_table(f"{build.name}: {sum(times.values()):.0f} s for {len(times)} objects; the longest", rows)

    totals, counts = collections.Counter(), collections.Counter()
    commands = check_sources.commands_of(plain)
    with tempfile.TemporaryDirectory() as folder, concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for times in pool.map(lambda command: header_times(command, folder), commands):
            totals.update(times)
            counts.update(times.keys())
    rows = [(f"{seconds:7.1f} s", f"{counts[name]:4} files", f"{1000 * seconds / counts[name]:6.0f} ms each",
             os.path.relpath(name, sources.ROOT) if name.startswith(str(sources.ROOT)) else name)
            for name, seconds in totals.most_common(2 * LISTED)]
    print_table(f"Headers, with what they include, in the {len(commands)} files each by itself", rows)


if __name__ == "__main__":
    main()
