#!/usr/bin/env python3
"""Writes the figures of docs/performance.md anew: its tables from what the benchmarks printed with --json, and its pictures
from the jobs that tell how something grows. The words around them stay.

usage: page.py PAGE RESULTS...
"""

import json
import pathlib
import re
import sys

import plot

BEGIN, END = "<!-- figures: {} -->", "<!-- end -->"


def objects_of(files):
    return [json.loads(line) for file in files for line in pathlib.Path(file).read_text("utf-8").splitlines() if line.strip()]


def figure(value, unit):
    """As the report for people writes it."""
    if unit != "ns":
        return f"{value:,.0f} {unit}" if value >= 100 else f"{value:.2f} {unit}"
    name, size = next((name, size) for name, size in plot.TIMES if value >= size or size == 1)
    return f"{value / size:.3g} {name}" if value / size < 1000 else f"{value / size:,.0f} {name}"


def machine_text(run):
    memory = run["memory"] / 1024**3
    system = re.sub(r"^(\w+ \d+\.\d+).*", r"\1", run["system"])
    return (f"Taken on {run['day']}: {run['processor']}, {run['cores']} cores, {memory:.0f} GiB, {system}; "
            f"{run['compiler']}, build {run['build']}; the median of {run['repetitions']} repetitions of at least "
            f"{run['seconds']} s.\n")


def pair_row(job):
    interval = f" ({job['interval'][0]:.2f} to {job['interval'][1]:.2f})" if "interval" in job else ""
    sign = "≤" if job["direction"] == "at most" else "≥"
    what = job["name"].split(": ", 1)[-1]
    return (f"| {what} | {job['oursIs']}: {figure(job['ours'], job['unit'])} | "
            f"{job['baselineIs']}: {figure(job['baseline'], job['unit'])} | {job['ratio']:.2f}{interval} | "
            f"{sign} {job['aim']:.2f} | {'yes' if job['met'] else 'no'} |")


def pair_tables(jobs):
    groups = {}
    for job in jobs:
        groups.setdefault(job["name"].split(": ", 1)[0], []).append(job)
    text = ""
    for group, members in groups.items():
        text += f"\n### {group[0].upper()}{group[1:]}\n\n| what | the library | beside | ratio | aim | met |\n|---|---|---|---|---|---|\n"
        text += "\n".join(map(pair_row, members)) + "\n"
    return text


def growth_table(job, folder):
    what = job["name"].split(": ", 1)[-1]
    text = f"\n### {what[0].upper()}{what[1:]}\n\n![{job['name']}]({folder.name}/{plot.file_name(job)})\n\n"
    memory = any(job["bytes"])
    text += f"| {job['sizes']} | {job['item']} |" + (" memory |" if memory else "") + "\n|---:|---:|" + ("---:|" if memory else "") + "\n"
    for size, time, space in zip(job["at"], job["ns"], job["bytes"]):
        text += f"| {size:,.0f} | {figure(time, 'ns')} |" + (f" {space:,.0f} bytes |" if memory else "") + "\n"
    return text


def replaced(page, name, text):
    begin = BEGIN.format(name)
    if begin not in page:
        sys.exit(f"page.py: the page has no place for its {name} figures: {begin}")
    return re.sub(re.escape(begin) + ".*?" + re.escape(END), lambda _: f"{begin}\n{text}\n{END}", page, count=1, flags=re.S)


def main(page_file, *results):
    page_file = pathlib.Path(page_file)
    found = objects_of(results)
    wrong = [job["name"] for job in found if "error" in job]
    if wrong:
        sys.exit(f"page.py: these jobs gave wrong results: {', '.join(wrong)}")
    page = page_file.read_text("utf-8")
    run = next((each for each in found if "processor" in each), None)
    if run is None:
        sys.exit("page.py: no result says where it was taken")
    page = replaced(page, "machine", machine_text(run))
    page = replaced(page, "ratios", pair_tables([job for job in found if "ratio" in job]))
    folder = page_file.with_suffix("")
    growing = [job for job in found if "at" in job]
    page = replaced(page, "growth", "".join(growth_table(job, folder) for job in growing))
    page_file.write_text(page, "utf-8")


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    main(*sys.argv[1:])
