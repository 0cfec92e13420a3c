#!/usr/bin/python3
"""Makes a tree of masters and actual files in all formats and three languages, with every outcome and warning:

    make_tree.py DIR PAIRS MODIFF

DIR/server/run is the working directory, with a configuration; DIR/expected.json tells for each pair's id the outcome
and a piece of each warning. The scripts are those that MODIFF installs, but for the one of vmd files: it does what
the actual file says, so that it can crash, hang and eat memory.
"""

import io
import json
import os
import pathlib
import subprocess
import sys
from collections import namedtuple

from openpyxl import Workbook

Format = namedtuple("Format", "word masters output extension")
FORMATS = [Format(*row.split()) for row in """
html . v5DebugHTML .html
mht . v5DebugMHT .mht
xhtml . v5DebugXHTML .xml
xml XML v5DebugXML .xml
dataxml DataXML v5DebugDataXml .xml
pageddataxml PagedDataXML v5DebugPagedDataXml .xml
rawxml RawXML v5DebugRawXml .xml
nao . v5DebugNAO .nao
xls XLS v5DebugXLS .html
xlwa XLWA v5DebugXLWA .mht
singlexls singleXLS v5DebugSingleXLS .html
csv CSV v5DebugCSV .csv
csi . v5DebugROM .csi
tvd charts v5DebugTVD _en.tvd
prp props v5DebugPRP .prp
xlsx XLS2007 v5DebugXLS2007 .xlsx
pdf PDF v5DebugPDF .pdf
vmd vmd v5DebugVMD .vmd
""".split("\n") if row]
LANGUAGES = ("", "en-us", "de-de")
CLEANSED = {"html", "xhtml", "xls", "singlexls"}  # whose engines delete scripts

CONFIGURATION = """
time-limit = "12s"
memory-limit = "400MB"
max-age = "10d"

[[tvd]]
type-name = "v5DebugTVD"
master-sub-directory = "charts"
master-suffix = "en"

[[prp]]
type-name = "v5DebugPRP"
master-sub-directory = "props"

[[expected]]
pair = "**/*_expected*"
reason = "TRACK-42"

[[expected]]
pair = "**/*_over*"
reason = "TRACK-7"
until = 2020-01-31
"""

SCRIPT = """
import os, sys, time
if "_hush" in sys.argv[-1]:
    sys.exit()
master, actual = (open(name, "rb").read() for name in sys.argv[-2:])
deed = actual.split()[0]
if deed == b"crash":
    os.kill(os.getpid(), 11)
if deed == b"hang":
    os.spawnlp(os.P_NOWAIT, "sleep", "sleep", "1000")
    time.sleep(1000)
if deed == b"eat":
    hoard = [b"x" * (64 << 20) for _ in range(64)]
if deed == b"fail":
    print("no model")
    sys.exit(2)
print("same" if master == actual else "line 1 differs")
sys.exit(master != actual)
"""

TEXT = b"<table><tr><td>Region Nord</td><td>1,204.50</td></tr><tr><td>Region S\xc3\xbcd</td><td>77.00</td></tr></table>"
HIDDEN = b"<script>" + b"var a = 1;" * 40 + b"</script>"

# What happens to one pair: the kind's word in its name, master, actual, outcome, a piece of its warning.
Kind = namedtuple("Kind", "word master actual outcome warning", defaults=("passed", None))
TEXT_KINDS = [
    Kind("same", TEXT, TEXT),
    Kind("other", TEXT, TEXT.replace(b"Nord", b"Sud"), "different"),
    Kind("gone", TEXT, None, "missing"),
    Kind("expected", TEXT, TEXT.replace(b"Nord", b"Ost"), "expected"),
    Kind("expectedgone", TEXT, None, "expected"),
    Kind("expectedsame", TEXT, TEXT, "unexpectedly-passed"),
    Kind("over", TEXT, TEXT.replace(b"Nord", b"West"), "different"),
    Kind("old", TEXT, TEXT, "passed", "older than 10 days"),
    Kind("fifo", TEXT, "fifo", "error"),
    Kind("link", TEXT, "link", "passed", "one and the same file"),
    Kind("twin", TEXT, "twin", "missing", "differs only in case"),
]
READ_KINDS = [  # of formats whose texts are looked into
    Kind("nul", TEXT + b"\0a", TEXT + b"\0b", "error"),
    Kind("mark", b"\xef\xbb\xbf" + TEXT, TEXT, "different", "byte-order mark"),
    Kind("latin", TEXT + b"\xe9", TEXT + b"\xe9", "passed", "not UTF-8"),
]
HIDING_KINDS = [
    Kind("much", TEXT + HIDDEN, TEXT + HIDDEN, "passed", "cleansing hides"),
    Kind("unequal", TEXT + HIDDEN, TEXT, "passed", "very unequal"),
]
SCRIPT_KINDS = [
    Kind("same", b"text 1", b"text 1"),
    Kind("other", b"text 1", b"text 2", "different"),
    Kind("crash", b"text 1", b"crash", "crashed"),
    Kind("hang", b"text 1", b"hang", "timeout"),
    Kind("eat", b"text 1", b"eat", "memory"),
    Kind("fail", b"text 1", b"fail", "error"),
    Kind("hush", b"text 1", b"hush", "error"),
]


def workbook(value):
    book = Workbook()
    book.active["A1"] = value
    stream = io.BytesIO()
    book.save(stream)
    return stream.getvalue()


def document(text):
    content = f"BT /F 12 Tf 20 50 Td ({text}) Tj ET"
    objects = ["<< /Type /Catalog /Pages 2 0 R >>", "<< /Type /Pages /Kids [4 0 R] /Count 1 >>",
               "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>",
               "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 99 99] /Contents 5 0 R /Resources << /Font << /F 3 0 R >> >> >>",
               f"<< /Length {len(content)} >>\nstream\n{content}\nendstream"]
    data, offsets = "%PDF-1.4\n", []
    for number, item in enumerate(objects, 1):
        offsets.append(len(data))
        data += f"{number} 0 obj\n{item}\nendobj\n"
    table = "".join(f"{offset:010} 00000 n \n" for offset in offsets)
    return (f"{data}xref\n0 6\n0000000000 65535 f \n{table}trailer\n<< /Size 6 /Root 1 0 R >>\nstartxref\n"
            f"{len(data)}\n%%EOF\n").encode()


def kinds_of(form):
    if form.word == "vmd":
        return SCRIPT_KINDS
    if form.word in ("xlsx", "pdf"):
        make = workbook if form.word == "xlsx" else document
        return [Kind("same", make("1"), make("1")), Kind("other", make("1"), make("2"), "different"),
                Kind("damaged", make("1"), b"nothing of the kind", "error")]
    kinds = TEXT_KINDS + ([] if form.word == "csv" else READ_KINDS)
    return kinds + (HIDING_KINDS if form.word in CLEANSED else [])


class Tree:
    def __init__(self, root, modiff):
        self.root = pathlib.Path(root)
        self.run = self.root / "server/run"
        self.expected = {}
        self.run.mkdir(parents=True)
        (self.run / "modiff.toml").write_text(CONFIGURATION)
        subprocess.run([modiff, "install-tools", self.root], check=True, stdout=subprocess.DEVNULL)
        (self.root / "src/kavu/Builds/tools/diffvmd/diffvmd.py").write_text(SCRIPT)

    def add(self, form, language, kind, number):
        name = f"r{number}_{kind.word}{form.extension}"
        area = ("sales", "finance", "logistics & stock")[number % 3]
        master = self.run / "reports" / area / "Masters" / language / form.masters / name
        actual = self.root / "server/webcontent" / form.output / language / name
        for path in (master, actual):
            path.parent.mkdir(parents=True, exist_ok=True)
        master.write_bytes(kind.master)
        if kind.actual == "fifo":
            os.mkfifo(actual)
        elif kind.actual == "link":
            os.link(master, actual)
        elif kind.actual == "twin":
            actual.with_name(name.upper()).write_bytes(kind.master)
        elif kind.actual is not None:
            actual.write_bytes(kind.actual)
        if kind.word == "old":
            os.utime(actual, (0, 0))
        self.expected[f"{form.word}:{master.relative_to(self.run)}"] = [kind.outcome, kind.warning]

    def fill(self, pairs):
        """Every kind of every format in turn; then such as pass, as most do."""
        kinds = [(form, kind) for form in FORMATS for kind in kinds_of(form)]
        plain = [(form, Kind("same", TEXT, TEXT)) for form in FORMATS if form.word not in ("xlsx", "pdf", "vmd")]
        for number in range(pairs):
            form, kind = kinds[number] if number < len(kinds) else plain[number % len(plain)]
            self.add(form, LANGUAGES[number % len(LANGUAGES)], kind, number)
        web = self.root / "server/webcontent/v5DebugHTML"
        (web / "nobody's.html").write_bytes(TEXT)
        (self.root / "expected.json").write_text(json.dumps(self.expected))


def main():
    directory, pairs, modiff = sys.argv[1:]
    Tree(directory, modiff).fill(int(pairs))


if __name__ == "__main__":
    main()
