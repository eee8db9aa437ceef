#!/usr/bin/env python3
"""Draws what `kaputil-bench --growth --json` found: one picture a job, the cost of one item over the size.

usage: plot.py RESULTS FOLDER
"""

import json
import pathlib
import re
import subprocess
import sys

# The names of the units, and how many nanoseconds or bytes one is.
TIMES = (("s", 1e9), ("ms", 1e6), ("us", 1e3), ("ns", 1))
SIZES = (("MiB", 1024 * 1024), ("KiB", 1024), ("bytes", 1))


def growth_jobs(text):
    """The growth jobs of a run, those left out whose results were wrong."""
    objects = [json.loads(line) for line in text.splitlines() if line.strip()]
    return [found for found in objects if "at" in found]


def unit_for(values, units):
    """The largest unit in which the smallest value is one at least."""
    return next((name, size) for name, size in units if min(values) >= size or size == 1)


def series(job):
    """What is drawn: (title, label, sizes, values)."""
    name, size = unit_for(job["ns"], TIMES)
    yield job["item"], f"time ({name})", job["at"], [value / size for value in job["ns"]]
    if any(job["bytes"]):
        name, size = unit_for(job["bytes"], SIZES)
        yield "memory of one", f"memory ({name})", job["at"], [value / size for value in job["bytes"]]


def script(job, file):
    """The commands for gnuplot."""
    parts = list(series(job))
    lines = [
        f"set terminal svg size {480 * len(parts)},320 font 'sans-serif,12' background '#ffffff'",
        f"set output '{file}'",
        f"set multiplot layout 1,{len(parts)} title '{job['name']}'",
        "set logscale x",
        "set format x '%.0s%c'",
        "set grid ytics linecolor '#dddddd'",
        "set key off",
        f"set xlabel '{job['sizes']}'",
    ]
    for number, (title, label, sizes, values) in enumerate(parts):
        rows = "\n".join(f"{size} {value}" for size, value in zip(sizes, values))
        lines += [
            f"$data{number} << END\n{rows}\nEND",
            f"set title '{title}' font ',11'",
            f"set ylabel '{label}'",
            f"set yrange [0:{max(values) * 1.25}]",
            f"plot $data{number} with linespoints linewidth 2 pointtype 7 linecolor '#1f5fa8'",
        ]
    return "\n".join(lines + ["unset multiplot", ""])


def file_name(job):
    return re.sub(r"[^a-z0-9]+", "_", job["name"].lower()).strip("_") + ".svg"


def main(results, folder):
    jobs = growth_jobs(pathlib.Path(results).read_text("utf-8"))
    if not jobs:
        sys.exit(f"plot.py: {results} has no job that tells how something grows")
    target = pathlib.Path(folder)
    target.mkdir(parents=True, exist_ok=True)
    for job in jobs:
        file = target / file_name(job)
        subprocess.run(["gnuplot"], input=script(job, file), text=True, check=True)
        print(file)


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    main(*sys.argv[1:])
