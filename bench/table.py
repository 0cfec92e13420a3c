"""Measures the library beside its yardsticks and peers and prints one table of ratios.

Everything is measured in rounds, each of which runs ours and theirs one after the other; a figure is the median of the
rounds. Times are CPU times, which other work on the machine disturbs little. Exits with 1 when a peer gives other
bytes or another verdict."""

import argparse
import json
import os
import platform
import re
import resource
import subprocess
import sys
import tempfile
from pathlib import Path
from statistics import median

HERE = Path(__file__).resolve().parent
MEGABYTE = 1000000
LISTS = ["HTML", "MHT", "XHTML", "DataXml", "RawXml", "NAO", "XLS", "XLWA", "SingleXLS-markup", "SingleXLS-data", "TVD"]
PEERS = {"Perl": ["/usr/bin/perl", HERE / "peer.pl"], "Python": ["/usr/bin/python3", HERE / "peer.py"]}
NUMDIFF = ["numdiff", "-q"]


class Trouble:
    """What makes the run fail in the end; the table is printed nevertheless."""

    def __init__(self):
        self.texts = []

    def check(self, condition, text):
        if not condition and text not in self.texts:
            self.texts.append(text)
            print("WRONG:", text, file=sys.stderr)


trouble = Trouble()


class Samples:
    """Seconds, a list a name."""

    def __init__(self):
        self._seconds = {}

    def add(self, name, seconds):
        self._seconds.setdefault(name, []).append(seconds)

    def names(self):
        return self._seconds.keys()

    def __contains__(self, name):
        return name in self._seconds

    def __getitem__(self, name):
        return median(self._seconds[name])


def progress(text):
    print(text, file=sys.stderr, flush=True)


def run_measured(command, statuses=(0,), **options):
    """Runs a process; returns its CPU seconds, its output and its status."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    done = subprocess.run([str(part) for part in command], stdout=subprocess.PIPE, timeout=1800, **options)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    if done.returncode not in statuses:
        raise RuntimeError(f"{command[0]} ended with status {done.returncode}")
    seconds = after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime
    return seconds, done.stdout.decode(), done.returncode


def output_of(*command):
    return run_measured(command)[1]


class Bench:
    def __init__(self, build, directory, quick):
        self.tool = build / "bench/modiff_bench_tool"
        self.google = build / "bench/modiff_bench"
        self.loader = build / "bench/modiff_bench_load"
        self.driver = build / "driver/modiff"
        self.library = build / "libMoDiffEngine.so"
        self.directory = directory
        self.quick = quick
        self.samples = Samples()
        self.memory = {}

    # Cleansing in one process: the library, the whole-text way, RE2.

    def run_google(self, names):
        command = [self.google, f"--benchmark_filter={names}", "--benchmark_min_time=0.03", "--benchmark_format=json"]
        for run in json.loads(run_measured(command, stderr=subprocess.DEVNULL)[1])["benchmarks"]:
            if run.get("error_occurred"):
                trouble.check(False, f"{run['name']}: {run['error_message']}")
            else:
                self.samples.add(run["name"], run["cpu_time"] / 1000)

    # The same lists in other languages.

    def prepare_peers(self):
        for name in LISTS:
            output_of(self.tool, "prepare", name, 8 * MEGABYTE, *self.peer_files(name))

    def peer_files(self, name):
        return [self.directory / f"{name}.{part}" for part in ("report", "expressions", "cleansed")]

    def run_peers(self):
        output = self.directory / "peer.output"
        for name in LISTS:
            report, expressions, cleansed = self.peer_files(name)
            for peer, command in PEERS.items():
                seconds = float(output_of(*command, expressions, report, output))
                self.samples.add(f"list/{name}/8M/{peer}", seconds)
                trouble.check(output.read_bytes() == cleansed.read_bytes(), f"{peer}, {name}: the bytes differ")

    # Bytes and numbers, process against process.

    def prepare_pairs(self):
        self.bytes = [self.directory / f"bytes.{side}" for side in "ma"]
        block = os.urandom(MEGABYTE)
        for path in self.bytes:
            with path.open("wb") as file:
                for _ in range(128 if self.quick else 512):
                    file.write(block)
        self.numbers = [self.directory / f"numbers.{side}" for side in "mad"]
        master, actual, different = self.numbers
        output_of(self.tool, "corpus", "numbers", (4 if self.quick else 16) * MEGABYTE, master)
        respelled = re.sub(rb"(\.\d\d)(?=\s)", rb"\g<1>00", master.read_bytes())
        actual.write_bytes(respelled)
        different.write_bytes(respelled.rstrip() + b"1\n")

    def run_pairs(self):
        for _ in range(3):  # alternating: time spent in the kernel varies most
            for name, command in {"library": [self.tool, "identical"], "cmp": ["cmp", "-s"]}.items():
                self.samples.add(f"bytes/{name}", run_measured(command + self.bytes)[0])
        master, actual, different = self.numbers
        for name, command in {"library": [self.tool, "numbers"], "numdiff": NUMDIFF}.items():
            self.samples.add(f"numbers/{name}", run_measured(command + [master, actual])[0])
            verdict = run_measured(command + [master, different], statuses=(0, 1))[2]
            trouble.check(verdict == 1, f"{name}: a changed number was not seen")

    # Many reports in one directory.

    def prepare_verify(self):
        report = self.directory / "small.report"
        output_of(self.tool, "corpus", "html", 3000, report)
        text = report.read_bytes()
        for count in self.master_counts():
            root = self.directory / f"verify{count}"
            masters = root / "run/out/Masters"
            actuals = root / "webcontent/v5DebugHTML"
            masters.mkdir(parents=True)
            actuals.mkdir(parents=True)
            for number in range(count):
                (masters / f"R{number:05}.html").write_bytes(text)
                (actuals / f"R{number:05}.html").write_bytes(text + b"<script>x</script>")

    def master_counts(self):
        return (2000, 4000) if self.quick else (2000, 4000, 10000)  # a pair is compared once, however often it is named

    def run_verify(self):
        for count in self.master_counts():
            reports = [f"out/R{number:05}.html" for number in range(2000)]
            seconds, output, _ = run_measured([self.driver, "verify", "--format", "html", *reports],
                                              cwd=self.directory / f"verify{count}/run")
            self.samples.add(f"verify/{count}", seconds / len(reports))
            trouble.check(re.search(r"\b2,?000\b.*", output.splitlines()[-1]), "modiff verify: not 2,000 reports")

    # Loading.

    def run_load(self):
        icu = re.search(r"libicui18n\S* => (\S+)", output_of("ldd", self.library)).group(1)
        for _ in range(9):
            both = [float(line) for line in output_of(self.loader, icu, self.library).split()]
            self.samples.add("load/icu", both[0])
            self.samples.add("load/after-icu", both[1])
            self.samples.add("load/all", float(output_of(self.loader, self.library)))

    # Memory of one comparison.

    def run_memory(self):
        for size in (8,) if self.quick else (8, 64):
            master, actual = (self.directory / f"memory.{side}" for side in "ma")
            output_of(self.tool, "corpus", "html", size * MEGABYTE, master)
            for name, change in {"equal once cleansed": b"<script>x</script>", "different": b"x"}.items():
                actual.write_bytes(master.read_bytes() + change)
                peak = run_measured([self.tool, "texts", "HTML", master, actual], statuses=(0, 1))[1]
                texts = master.stat().st_size + actual.stat().st_size
                self.memory[f"{size} MB, {name}"] = (int(peak), texts)

    def run(self, rounds):
        progress("preparing")
        self.prepare_peers()
        self.prepare_pairs()
        self.prepare_verify()
        for number in range(1, rounds + 1):
            progress(f"round {number} of {rounds}")
            self.run_google("100k|8M|^dense|^slow")
            if not self.quick:
                for _ in range(3):  # growth is the ratio of few and long samples
                    self.run_google("(8M|64M)/library")
            self.run_peers()
            self.run_pairs()
            self.run_verify()
            self.run_load()
        self.run_memory()


def seconds_text(seconds):
    return f"{seconds * 1000:.3g} ms" if seconds < 1 else f"{seconds:.3g} s"


class Table:
    def __init__(self):
        self.rows = [("what", "ours", "other", "ratio", "goal", "")]

    def add(self, what, ours, other, ratio, goal, is_reached):
        mark = "" if is_reached is None else "reached" if is_reached else "MISSED"
        self.rows.append((what, ours, other, ratio, goal, mark))

    def add_times_faster(self, what, ours, other_name, other, goal):
        ratio = other / ours
        self.add(what, seconds_text(ours), f"{other_name} {seconds_text(other)}", f"{ratio:.1f}",
                 f"at least {goal}" if goal else "", ratio >= goal if goal else None)

    def print(self):
        widths = [max(len(row[column]) for row in self.rows) for column in range(6)]
        for index, row in enumerate(self.rows):
            print("| " + " | ".join(cell.ljust(width) for cell, width in zip(row, widths)) + " |")
            if index == 0:
                print("|" + "|".join("-" * (width + 2) for width in widths) + "|")


def add_lists(table, samples):
    goals = {"Perl": 12, "re2": 5}
    names = {"wholetext": "whole text", "re2": "RE2"}
    for size in ("8M", "100k"):
        for name in LISTS:
            way = f"list/{name}/{size}"
            goal = (20 if name == "HTML" else 8) if size == "8M" else None
            for other in ("wholetext", "re2", *PEERS):
                if f"{way}/{other}" in samples:
                    wanted = goal if other == "wholetext" else goals.get(other) if name == "HTML" and goal else None
                    table.add_times_faster(f"{name} list, {size}B", samples[f"{way}/library"],
                                           names.get(other, other), samples[f"{way}/{other}"], wanted)


def add_growth(table, samples):
    for name in LISTS:
        if f"list/{name}/64M/library" in samples:
            small, large = (samples[f"list/{name}/{size}/library"] for size in ("8M", "64M"))
            growth = large / small / 8
            table.add(f"{name} list, growth from 8 MB to 64 MB", seconds_text(large), f"8 MB {seconds_text(small)}",
                      f"{growth:.2f}", "at most 1.15", growth <= 1.15)


def add_dense(table, samples):
    for name in ("TVD/number-starts", "XLS/number-starts", "HTML/tag-starts", "NAO/tag-starts", "MHT/soft-breaks",
                 "other/wide-expressions"):
        ours, whole = (samples[f"dense/{name}/{way}"] for way in ("library", "wholetext"))
        table.add(f"every character a candidate: {name}, 1 MB", seconds_text(ours), f"whole text {seconds_text(whole)}",
                  f"{ours / whole:.2f}", "at most 1.1", ours <= 1.1 * whole)


def add_slow(table, samples, names):
    for pattern in range(1, 28):
        prefix = f"slow/{pattern}/"
        ordinary = samples[prefix + "ordinary"]
        shapes = [name for name in names if name.startswith(prefix) and not name.endswith("/ordinary")]
        worst = max(shapes, key=lambda name: samples[name])
        ratio = samples[worst] / ordinary
        table.add(f"pattern {pattern}, worst of {len(shapes)} texts: {worst.split('/')[2]}, 1 MB",
                  seconds_text(samples[worst]), f"ordinary HTML {seconds_text(ordinary)}", f"{ratio:.1f}",
                  "at most 20", ratio <= 20)


def add_rest(table, bench):
    samples = bench.samples
    table.add("identical files of " + ("128" if bench.quick else "512") + " MB, cached, whole process",
              seconds_text(samples["bytes/library"]), f"cmp -s {seconds_text(samples['bytes/cmp'])}",
              f"{samples['bytes/cmp'] / samples['bytes/library']:.2f}", "at least 1",
              samples["bytes/cmp"] >= samples["bytes/library"])
    table.add_times_faster("number tables of " + ("4" if bench.quick else "16") + " MB, whole process",
                           samples["numbers/library"], " ".join(NUMDIFF), samples["numbers/numdiff"], 20)
    first = samples["verify/2000"]
    for count in bench.master_counts():
        each = samples[f"verify/{count}"]
        table.add(f"modiff verify, a report of 2,000, {count:,} masters", f"{each * 1e6:.0f} µs",
                  f"2,000 masters {first * 1e6:.0f} µs", f"{each / first:.2f}", "flat: at most 1.5", each <= 1.5 * first)
    loading = samples["load/all"]
    table.add("loading the library, ICU's own loading with it", seconds_text(loading),
              f"ICU alone {seconds_text(samples['load/icu'])}", f"{loading / samples['load/icu']:.2f}", "", None)
    after = samples["load/after-icu"]
    table.add("loading the library, ICU loaded before", seconds_text(after), "", "", "under 2 ms", after < 0.002)
    for name, (peak, texts) in bench.memory.items():
        table.add(f"memory of one comparison, {name}", f"{peak / MEGABYTE:.1f} MB",
                  f"both texts {texts / MEGABYTE:.1f} MB", f"{peak / texts:.2f}", "about 1", peak <= 1.25 * texts)


def describe_machine(build):
    information = Path("/proc/cpuinfo").read_text()
    cpu = re.search(r"model name\s*: (.*)", information)
    memory = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") / 2**30
    print(f"{cpu.group(1) if cpu else platform.machine()}, {os.cpu_count()} CPUs, {memory:.0f} GiB, "
          f"{platform.system()} {platform.release()}, load {os.getloadavg()[0]:.1f}")
    cache = (build / "CMakeCache.txt").read_text()
    compiler = re.search(r"^CMAKE_CXX_COMPILER:\w+=(.*)$", cache, re.MULTILINE).group(1)
    print(output_of(compiler, "--version").splitlines()[0])
    packages = ("libicu-dev", "libre2-dev", "perl", "python3", "numdiff", "diffutils")
    print(", ".join(output_of("dpkg-query", "-W", "-f", "${Package} ${Version}\\n", *packages).splitlines()))
    print()


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build", type=Path, help="build directory")
    parser.add_argument("--quick", action="store_true", help="without 64 MB and 10,000 masters, smaller files")
    parser.add_argument("--rounds", type=int, default=5)
    arguments = parser.parse_args()
    os.environ["LC_ALL"] = "C.UTF-8"
    describe_machine(arguments.build)
    with tempfile.TemporaryDirectory(prefix="modiff-bench-") as directory:
        bench = Bench(arguments.build.resolve(), Path(directory), arguments.quick)
        bench.run(arguments.rounds)
    table = Table()
    add_lists(table, bench.samples)
    add_growth(table, bench.samples)
    add_dense(table, bench.samples)
    add_slow(table, bench.samples, list(bench.samples.names()))
    add_rest(table, bench)
    table.print()
    print(f"\nMedians of {arguments.rounds} rounds. " +
          (f"{len(trouble.texts)} wrong: " + "; ".join(trouble.texts) if trouble.texts else
           "All peers gave the same bytes and verdicts."))
    return 1 if trouble.texts else 0


if __name__ == "__main__":
    sys.exit(main())
