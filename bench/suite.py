"""Measures `modiff run` beside what it replaces and prints a table of ratios.

    suite.py MODIFF [--before MODIFF] [--pairs N] [--books N] [--rounds N] [--only texts|xlsx|pdf|vmd]

MODIFF is the program to be measured, --before one whose `verify` is taken as the yardstick (the same one unless
given). Rounds run all rows one after the other, and a figure is the best of its rounds: wall-clock times, since
processes run side by side, so the machine should have nothing else to do. Exits with 1 when a verdict is wrong."""

import argparse
import json
import os
import pathlib
import random
import shutil
import subprocess
import sys
import tempfile
import time

SOURCE = pathlib.Path(__file__).resolve().parent.parent
SAMPLES = SOURCE / "samples/server"
PAGE = 30000
# Format: folder of masters, output directory, a sample, the command that its engine runs.
SCRIPTS = {
    "xlsx": ("XLS2007", "v5DebugXLS2007", "Budget.xlsx", "DiffXlsx/DiffXlsx.py -o DiffXlsx.qpr"),
    "pdf": ("PDF", "v5DebugPDF", "Statement.pdf", "diffpdf/diffPdfFiles.py"),
    "vmd": ("vmd", "v5DebugVMD", "Cube.vmd", "diffvmd/diffvmd.py"),
}


def page(number, rendering):
    """A page of figures; two renderings differ in what cleansing hides."""
    figures, hidden = random.Random(number), random.Random(number * 2 + rendering)
    parts = [f'<html><head><script type="text/javascript">var session="{hidden.randrange(10**12)}";</script></head>']
    size = 0
    while size < PAGE:
        parts.append(f'<tr><td class="name">Item {figures.randrange(10**6)}</td>'
                     f'<td class="figure">{figures.randrange(10**8) / 100:,.2f}</td></tr>\n')
        size += len(parts[-1])    # what is hidden has other lengths in another rendering
        if figures.random() < 0.05:
            corners = ",".join(f"{hidden.randrange(500)}" for _ in range(4))
            parts.append(f'<area shape="rect" coords="{corners}" href="#">\n')
    return "".join(parts) + "</html>\n"


def make_tree(root, options):
    """Makes pairs of pages and copies of sample files that scripts compare."""
    run, web = root / "server/run", root / "server/webcontent"
    for folder in (run / "texts/Masters", web / "v5DebugHTML"):
        folder.mkdir(parents=True)
    for number in range(options.pairs):
        for rendering, folder in enumerate((run / "texts/Masters", web / "v5DebugHTML")):
            (folder / f"page{number:06}.html").write_text(page(number, rendering))
    for word, (folder, output, sample, _) in SCRIPTS.items():
        masters, actuals = run / word / "Masters" / folder, web / output
        masters.mkdir(parents=True)
        actuals.mkdir(parents=True)
        for number in range(options.books):
            for place in (masters, actuals):
                shutil.copy(SAMPLES / "run/reports/finance/Masters" / folder / sample,
                            place / f"{number:04}{pathlib.Path(sample).suffix}")
    shutil.copytree(SOURCE / "tools", root / "src/kavu/Builds/tools")
    return run


def timed(command, run):
    """Wall-clock seconds of a command in the working directory; its output is dropped."""
    start = time.perf_counter()
    status = subprocess.run(command, cwd=run, stdout=subprocess.DEVNULL, check=False).returncode
    if status != 0:
        sys.exit(f"status {status}: {command}")
    return time.perf_counter() - start


def own_way(word, jobs):
    """The engine's own way, one process a pair, `jobs` at a time."""
    folder, output, _, script = SCRIPTS[word]
    return ["sh", "-c", f"cd {word}/Masters/{folder} && ls | (cd ../../.. && xargs -P{jobs} -I@ "
            f"python ../../src/kavu/Builds/tools/{script} {word}/Masters/{folder}/@ ../webcontent/{output}/@)"]


def modiff_run(options, word, jobs, out, count):
    command = [options.modiff, "run", "--format", word, "-j", str(jobs), "--out", out]

    def measure(run):
        seconds = timed(command, run)
        with open(pathlib.Path(out) / "run.jsonl", encoding="utf-8") as record:
            counts = json.loads(record.readlines()[-1])["counts"]
        if counts["passed"] != count:
            sys.exit(f"wrong verdicts: {counts}")
        return seconds
    return measure


def rows(options, out):
    """Name of each row and what measures it."""
    table = {}
    if options.only in (None, "texts"):
        cat = "find texts/Masters ../webcontent/v5DebugHTML -type f -print0 | xargs -0 -P2 cat >/dev/null"
        table["texts, xargs -P2 cat"] = lambda run: timed(["sh", "-c", cat], run)
        verify = [options.before, "verify", "--format", "html", "texts/page"]
        table["texts, verify before"] = lambda run: timed(verify, run)
        for jobs in (1, 2):
            table[f"texts, run -j{jobs}"] = modiff_run(options, "html", jobs, out, options.pairs)
    for word in SCRIPTS:
        if options.only in (None, word):
            table[f"{word}, own way, 2 processes"] = lambda run, word=word: timed(own_way(word, 2), run)
            table[f"{word}, run -j2"] = modiff_run(options, word, 2, out, options.books)
    return table


def main():
    parser = argparse.ArgumentParser(description=__doc__.partition("\n")[0])
    parser.add_argument("modiff", type=os.path.abspath)
    parser.add_argument("--before", type=os.path.abspath)
    parser.add_argument("--pairs", type=int, default=10000)
    parser.add_argument("--books", type=int, default=300)
    parser.add_argument("--rounds", type=int, default=3)
    parser.add_argument("--only", choices=["texts", *SCRIPTS])
    options = parser.parse_args()
    options.before = options.before or options.modiff
    with tempfile.TemporaryDirectory() as folder:
        run = make_tree(pathlib.Path(folder), options)
        table = rows(options, str(pathlib.Path(folder) / "out"))
        best = {}
        for _ in range(options.rounds):
            for name, measure in table.items():
                best[name] = min(best.get(name, float("inf")), measure(run))
    for name, seconds in best.items():
        print(f"{name:28} {seconds:8.2f} s")
    ratios = [("texts, run -j1", "texts, verify before"), ("texts, run -j1", "texts, run -j2"),
              ("texts, run -j2", "texts, xargs -P2 cat"),
              *((f"{word}, own way, 2 processes", f"{word}, run -j2") for word in SCRIPTS)]
    for over, under in ratios:
        if over in best and under in best:
            print(f"{over} / {under}: {best[over] / best[under]:.2f}")


if __name__ == "__main__":
    main()
