"""Measures what spreading a run over shards costs, and calculates from it what many machines take.

    spread.py MODIFF [--pairs N] [--shards N] [--size BYTES] [--format html|xlsx|pdf|vmd]
              [--for PAIRS --machines N --cores N --gigabits N --name-bytes N]

Makes pairs of HTML pages, a hundred in a folder, and runs, one after the other and in one process each: the search for
pairs alone, one run over all, each shard, the merge. --size 0 makes empty files, to see what a search among many costs.
With --for, the last lines calculate a run over so many pairs from CPU times: a shard on each machine, the files on one
file server, which takes --name-bytes to send a name of a listing. Exits with 1 when the shards' or the joined record is
not what one run gives."""

import argparse
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time
from collections import namedtuple

import suite

FOLDER = 100
Cost = namedtuple("Cost", "wall cpu memory")  # seconds, seconds, MiB
Each = namedtuple("Each", "search compare merge size")  # seconds of CPU for a pair, bytes of its files


def make_tree(root, options):
    """Pairs of HTML pages, which differ in what cleansing hides, or of a sample that a script compares."""
    suite.PAGE = options.size
    folder, output, sample, _ = suite.SCRIPTS.get(options.format, ("", "v5DebugHTML", "page.html", ""))
    run, actuals = root / "server/run", root / "server/webcontent" / output
    actuals.mkdir(parents=True)
    (root / "src/kavu/Builds").mkdir(parents=True)
    (root / "src/kavu/Builds/tools").symlink_to(suite.SOURCE / "tools")
    originals = (suite.SAMPLES / "run/reports/finance/Masters" / folder / sample,
                 suite.SAMPLES / "webcontent" / output / sample)
    for number in range(options.pairs):
        masters = run / f"reports/area{number // FOLDER:05}/Masters" / folder
        masters.mkdir(parents=True, exist_ok=True)
        for rendering, place in enumerate((masters, actuals)):
            file = place / f"report{number:07}{originals[0].suffix}"
            if options.format != "html":
                shutil.copy(originals[rendering], file)
            else:
                file.write_text(suite.page(number, rendering) if options.size else "")
    return run


def measure(command, run):
    """The cost of a command and of all it started."""
    start = time.perf_counter()
    process = subprocess.Popen(command, cwd=run, stdout=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode not in (0, 1):  # samples may differ
        sys.exit(f"status {process.returncode}: {command}")
    return Cost(time.perf_counter() - start, usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024)


def show(name, cost, note=""):
    print(f"{name:16} {cost.wall:8.2f} s {cost.cpu:8.2f} s CPU {cost.memory:7.0f} MiB  {note}", flush=True)


def read(record):
    """Outcomes by id, the bytes of both files of all pairs, the size of the record."""
    path = pathlib.Path(record) / "run.jsonl"
    outcomes, total = {}, 0
    with open(path, encoding="utf-8") as lines:
        for line in map(json.loads, lines):
            if "id" in line:
                outcomes[line["id"]] = line["outcome"]
                total += line["bytes"]["master"] + line["bytes"]["actual"]
    return outcomes, total, path.stat().st_size


def megabytes(size):
    return f"record {size / 1e6:.1f} MB"


def measure_all(options, run, out):
    """Prints each cost; returns what the calculation takes."""
    search = measure([options.modiff, "run", "--list"], run)
    show("search alone", search)
    one = measure([options.modiff, "run", "-j1", "--out", f"{out}/one"], run)
    outcomes, size, record = read(f"{out}/one")
    show("one run", one, megabytes(record))
    parts = [f"{out}/{number}" for number in range(1, options.shards + 1)]
    shards, found = [], {}
    for number, part in enumerate(parts, 1):
        command = [options.modiff, "run", "-j1", "--shard", f"{number}/{options.shards}", "--out", part]
        shards.append(measure(command, run))
        found.update(read(part)[0])
        show(f"shard {number} of {options.shards}", shards[-1], megabytes(read(part)[2]))
    total = Cost(*(sum(column) for column in zip(*shards)))
    merge = measure([options.modiff, "merge", *parts, "--out", f"{out}/all"], run)
    show("merge", merge, megabytes(read(f"{out}/all")[2]))
    if not outcomes == found == read(f"{out}/all")[0] or len(outcomes) != options.pairs:
        sys.exit("the shards do not give what one run gives")
    print(f"all shards take {total.cpu:.2f} s CPU, {total.cpu / one.cpu:.2f} times one run; "
          f"{size / options.pairs:.0f} bytes are read for a pair, {record / options.pairs:.0f} written")
    return Each(search.cpu / options.pairs, (one.cpu - search.cpu) / options.pairs, merge.cpu / options.pairs,
                size / options.pairs)


def calculate(options, each):
    """The longest way of a run: search on each machine, its part of the pairs or of the server's time, the merge."""
    pairs, machines, line = options.target, options.machines, options.gigabits * 1e9 / 8
    search, merge = pairs * each.search, pairs * each.merge
    compare = pairs / machines * each.compare / options.cores
    names = machines * 2 * pairs * options.name_bytes / line
    contents = pairs * each.size / line
    print(f"\n{pairs} pairs on {machines} machines with {options.cores} cores each, a file server with "
          f"{options.gigabits:g} Gbit/s:")
    for name, seconds in (
            ("search, CPU of each machine", search), ("names that the server sends", names),
            ("comparing, CPU of each machine", compare), ("contents that the server sends", contents),
            ("merge", merge), ("in all", max(search, names) + max(compare, contents) + merge)):
        print(f"{name:30} {seconds:8.1f} s")
    print(f"contents fill the server's line from {line / each.size * each.compare:.1f} cores on, "
          f"names take as long as contents with {each.size / 2 / options.name_bytes:.0f} machines")


def main():
    parser = argparse.ArgumentParser(description=__doc__.partition("\n")[0])
    parser.add_argument("modiff", type=os.path.abspath)
    parser.add_argument("--pairs", type=int, default=10000)
    parser.add_argument("--shards", type=int, default=4)
    parser.add_argument("--size", type=int, default=suite.PAGE)
    parser.add_argument("--format", choices=["html", *suite.SCRIPTS], default="html")
    parser.add_argument("--for", type=int, dest="target", metavar="PAIRS")
    parser.add_argument("--machines", type=int, default=100)
    parser.add_argument("--cores", type=int, default=8)
    parser.add_argument("--gigabits", type=float, default=10)
    parser.add_argument("--name-bytes", type=int, default=200)
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder)
        each = measure_all(options, make_tree(root, options), root)
    if options.target:
        calculate(options, each)


if __name__ == "__main__":
    main()
