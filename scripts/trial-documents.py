#!/usr/bin/env python3
"""Tries diffPdfFiles.py on real documents: trial-documents.py [--pages N] [--packages NAME,...] FOLDER

FOLDER gets the corpus: the PDF files of Debian packages (downloaded unless their .deb files are in FOLDER) and
documents that weasyprint, ghostscript, LibreOffice and pdflatex make, each twice. For each document a copy must pass,
as must what its program makes anew and what HARMLESS makes of it, and one change of each kind must be told, the drawn
ones wherever a rendering at 150 dpi shows them.

An interrupt (Ctrl-C) ends the trial early and prints the figures so far; small documents come first.

Needs python3-pikepdf, qpdf, and what it has of weasyprint, ghostscript, libreoffice-writer-nogui, texlive-latex-base.
"""

import argparse
import collections
import concurrent.futures
import pathlib
import re
import shutil
import subprocess
import sys
import time

import pikepdf

SCRIPT = pathlib.Path(__file__).resolve().parents[1] / "tools/diffpdf/diffPdfFiles.py"
PACKAGES = "texlive-science-doc,texlive-latex-recommended-doc,texlive-metapost-doc,texlive-fonts-recommended-doc"
SECONDS = 300   # of one comparison
# Pattern of what tells each kind of change (a small page holds but half of the word); {page}, {first} and {last} are
# the pages that change() changes.
TOLD = {"word": "page {page}: .*Zq", "mark": "page {page}: drawing differs",
        "band": "page {first}: drawing differs", "link": "URI http://zqxj", "annotation": "annotation Text",
        "outline": "outline entry zqxj", "attachment": "attachment zqxj.txt", "unit": "page {page}: UserUnit",
        "field": "form field zqxj", "label": "page label", "pages": "number of pages: master",
        "size": "page {last}: size"}
DRAWN = "word", "mark", "band"


def run(*command, **keywords):
    return subprocess.run([str(part) for part in command], capture_output=True, timeout=SECONDS, text=True,
                          errors="replace", check=False, **keywords)


def compare(master, actual):
    """Status and output of the script."""
    done = run("/usr/bin/python3", SCRIPT, "--report", f"{actual}.txt", master, actual)
    report = pathlib.Path(f"{actual}.txt")
    told = report.read_text("utf-8") if report.exists() else ""
    return done.returncode, told + done.stderr


def fetch(folder, packages):
    """Unpacks the packages into the folder and gives their documents."""
    for package in packages:
        if not list(folder.glob(f"{package}_*.deb")):
            subprocess.run(["apt-get", "-q", "download", package], cwd=folder, check=True)
        subprocess.run(["dpkg", "-x", next(folder.glob(f"{package}_*.deb")), folder / package], check=True)
    return sorted(path for package in packages for path in (folder / package).rglob("*.pdf")
                  if path.is_file() and not path.is_symlink())


def written(folder, count=5):
    """Documents that programs make twice from one source: pairs of paths."""
    programs = [(name, make) for name, make in
                (("weasyprint", weasyprint), ("soffice", libreoffice), ("gs", ghostscript), ("pdflatex", pdflatex))
                if shutil.which(name)]
    pairs = []
    for number in range(count):
        rows = "".join(f"<tr><td>Item {row}</td><td>{row * 7919 % 1000}.50</td></tr>" for row in range(number * 9 + 5))
        source = folder / f"source{number}.html"
        source.write_text(f"<html><body><h1>Report {number}</h1><a href='http://example.com'>more</a>"
                          f"<table border=1>{rows}</table></body></html>", "utf-8")
        for name, make in programs:
            made = [folder / f"{name}{number}-{turn}.pdf" for turn in (1, 2)]
            for target in made:
                if not target.exists():
                    make(source, target)
            if not all(target.exists() for target in made):
                raise SystemExit(f"{name} made no document of {source}")
            pairs.append(made)
    return pairs


def weasyprint(source, target):
    run("weasyprint", source, target)


def libreoffice(source, target):
    run("soffice", "--headless", "--convert-to", "pdf:writer_web_pdf_Export", "--outdir", target.parent, source)
    source.with_suffix(".pdf").rename(target)


def pdflatex(source, target):
    rows = re.sub("<td>(.*?)</td><td>(.*?)</td>", r"\1 & \2 \\\\\\hline ", source.read_text("utf-8"))
    cells = re.sub("<[^>]*>", "", rows[rows.index("<table"):])
    text = target.with_suffix(".tex")
    text.write_text(r"\documentclass{article}\begin{document}\section{Report}The sum $\sum_i x_i^2$ of all."
                    r"\begin{tabular}{|l|r|}\hline " + cells + r"\end{tabular}\end{document}", "utf-8")
    run("pdflatex", "-interaction=batchmode", text.name, cwd=target.parent)


def ghostscript(source, target):
    first = source.parent / f"weasyprint{source.stem.removeprefix('source')}-1.pdf"
    run("gs", "-q", "-sDEVICE=pdfwrite", "-o", target, first)


def saved_by_qpdf(path, target):
    """Linearized, with object streams."""
    run("qpdf", "--linearize", "--object-streams=generate", path, target)


def saved_plainly(path, target):
    """Without compression and object streams, by another producer, at another time, as another version."""
    with pikepdf.open(path) as document:
        document.docinfo["/Producer"], document.docinfo["/ModDate"] = "zqxj", "D:20200101000000Z"
        document.docinfo["/Title"] = "zqxj"
        document.save(target, force_version="1.7", compress_streams=False,
                      stream_decode_level=pikepdf.StreamDecodeLevel.generalized,
                      object_stream_mode=pikepdf.ObjectStreamMode.disable)


def drawn_a_bit_off(path, target):
    """Everything on the pages stands off by 0.2 points to the right and 0.1 up."""
    with pikepdf.open(path) as document:
        moved = set()
        for page in document.pages:
            for _, pattern in page.resources.get("/Pattern", {}).items():   # stands on the page, not on the drawing
                if pattern.objgen not in moved or not pattern.is_indirect:
                    *turned, x, y = (float(number) for number in pattern.get("/Matrix", [1, 0, 0, 1, 0, 0]))
                    pattern.Matrix = pikepdf.Array([*turned, x + 0.2, y + 0.1])
                    moved.add(pattern.objgen)
            page.contents_add(b"q 1 0 0 1 0.2 0.1 cm", prepend=True)
            page.contents_add(b"Q")
            for note in page.obj.get("/Annots", []):
                left, bottom, right, top = (float(side) for side in note.Rect)
                note.Rect = pikepdf.Array([left + 0.2, bottom + 0.1, right + 0.2, top + 0.1])
        document.save(target)


HARMLESS = {"saved by qpdf": saved_by_qpdf, "saved plainly": saved_plainly, "0.2 points off": drawn_a_bit_off}


def change(path, target, kinds=tuple(TOLD)):
    """Writes the document with one change of each of the kinds; gives what tells them, by kind."""
    with pikepdf.open(path) as document:
        count = len(document.pages)
        pages = {"page": count // 2 + 1, "first": 1, "last": count}
        page, first, last = (document.pages[number - 1] for number in pages.values())
        # The changes that would hide each other stand on pages of their own.
        possible = [kind for kind in kinds if (kind != "band" or count > 1) and (kind != "size" or count > 2)]
        draw(page, [kind for kind in possible if kind in ("word", "mark")])
        if "band" in possible:
            left, bottom = (float(side) for side in list(first.cropbox)[:2])
            first.contents_add(b"q", prepend=True)
            first.contents_add(f"Q q 0.95 g {left + 5} {bottom + 5} 90 12 re f Q".encode())
        if "size" in possible:
            box = [float(side) for side in last.cropbox]
            last.mediabox = last.cropbox = [*box[:2], box[2] + 10, box[3]]
        if "unit" in possible:
            page.obj.UserUnit = 2
        annotate(document, page, possible)
        offer(document, possible)
        document.save(target)
    return {kind: TOLD[kind].format(**pages) for kind in possible}


def draw(page, kinds):
    """Puts what a reader sees on a page."""
    left, bottom = (float(side) for side in list(page.cropbox)[:2])
    marks = {"mark": f"0.1 0.5 0.2 rg {left + 5} {bottom + 22} 6 6 re f ",
             "word": f"0 g BT /Zqxj 9 Tf {left + 12} {bottom + 5} Td (Zqxj) Tj ET "}
    page.contents_add(b"q", prepend=True)
    page.contents_add(f"Q q {''.join(marks[kind] for kind in kinds)}Q".encode())
    font = pikepdf.Dictionary(Type=pikepdf.Name.Font, Subtype=pikepdf.Name.Type1, BaseFont=pikepdf.Name.Helvetica)
    page.add_resource(font, pikepdf.Name.Font, pikepdf.Name.Zqxj)


def annotate(document, page, kinds):
    """Adds to the annotations of a page what shows nothing on it."""
    action = pikepdf.Dictionary(S=pikepdf.Name.URI, URI=pikepdf.String("http://zqxj"))
    entries = {"link": {"/Subtype": pikepdf.Name.Link, "/A": action},
               "annotation": {"/Subtype": pikepdf.Name.Text, "/Contents": pikepdf.String("zqxj"), "/F": 2},
               "field": {"/Subtype": pikepdf.Name.Widget, "/FT": pikepdf.Name.Tx, "/T": pikepdf.String("zqxj"),
                         "/V": pikepdf.String("x"), "/F": 2}}
    added = {kind: document.make_indirect(pikepdf.Dictionary({
        "/Type": pikepdf.Name.Annot, "/Rect": [30, 30, 60, 60], "/Border": [0, 0, 0], **entry}))
        for kind, entry in entries.items() if kind in kinds}
    if added:
        page.obj.Annots = pikepdf.Array([*page.obj.get("/Annots", []), *added.values()])
    if "field" in added:
        form = document.Root.get("/AcroForm", pikepdf.Dictionary())
        form.Fields = pikepdf.Array([*form.get("/Fields", []), added["field"]])
        document.Root.AcroForm = form


def offer(document, kinds):
    """Changes what the document offers beside its pages."""
    if "outline" in kinds:
        with document.open_outline() as outline:
            outline.root.append(pikepdf.OutlineItem("zqxj", 0))
    if "attachment" in kinds:
        document.attachments["zqxj.txt"] = pikepdf.AttachedFileSpec(document, b"zqxj", filename="zqxj.txt")
    if "label" in kinds:
        style = pikepdf.Dictionary(S=pikepdf.Name.D, P=pikepdf.String("zqxj"))
        document.Root.PageLabels = pikepdf.Dictionary(Nums=pikepdf.Array([0, style]))
    if "pages" in kinds:
        document.add_blank_page()


def shown(path, kind, told, folder):
    """Whether a rendering at 150 dpi shows a change of the kind."""
    change(path, folder / "one.pdf", (kind,))
    page = re.search("page ([0-9]+)", told)[1]
    pictures = []
    for name in (path, folder / "one.pdf"):
        run("pdftoppm", "-cropbox", "-r", 150, "-f", page, "-singlefile", name, folder / "picture")
        pictures.append((folder / "picture.ppm").read_bytes())
    return pictures[0] != pictures[1]


def try_document(path, folder):
    """The outcome of each trial of one document: (trial, right, what was told)."""
    work = folder / f"work-{abs(hash(path))}"
    work.mkdir()
    outcomes = []
    try:
        actual, changed = work / "actual.pdf", work / "changed.pdf"
        actual.write_bytes(path.read_bytes() + b"% not the same bytes, so that it is compared\n")
        status, told = compare(path, actual)
        outcomes.append(("copy", status == 0, told))
        for trial, save in HARMLESS.items():
            save(path, actual)
            status, told = compare(path, actual)
            outcomes.append((trial, status == 0, told))
        expected = change(path, changed)
        status, told = compare(path, changed)
        for kind, text in expected.items():
            right = status == 1 and bool(re.search(text, told))
            if right or kind not in DRAWN or shown(path, kind, text, work):
                outcomes.append((f"changed {kind}", right, told))
            else:
                outcomes.append((f"not to be seen at 150 dpi: {kind}", True, ""))
    except (pikepdf.PdfError, subprocess.TimeoutExpired, OSError, ValueError, TypeError) as error:
        outcomes.append(("trial itself", False, f"{type(error).__name__}: {error}"))
    finally:
        shutil.rmtree(work)
    return outcomes


def pages_of(path):
    """The number of pages, or 0 for what can't be opened."""
    try:
        with pikepdf.open(path) as document:
            return len(document.pages)
    except pikepdf.PdfError:
        return 0


def main():
    """Builds the corpus, tries each document and prints the figures."""
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--packages", default=PACKAGES)
    parser.add_argument("--pages", type=int, default=30, help="pages that a document may have")
    parser.add_argument("--limit", type=int, default=10_000, help="documents of packages that are tried, evenly drawn")
    parser.add_argument("--written", type=int, default=5, help="documents that each program makes")
    parser.add_argument("--jobs", type=int, default=2, help="documents that are tried at a time")
    parser.add_argument("folder", type=pathlib.Path)
    options = parser.parse_args()
    options.folder.mkdir(parents=True, exist_ok=True)
    figures, start = collections.defaultdict(collections.Counter), time.monotonic()
    pairs = written(options.folder, options.written)
    found = fetch(options.folder, options.packages.split(",")) if options.limit else []
    pages = {path: pages_of(path) for path in found}
    documents = [path for path in found if 0 < pages[path] <= options.pages]
    documents = sorted(documents[::max(1, -(-len(documents) // max(1, options.limit)))], key=pages.get)
    tried = 0

    def count(path, outcomes):
        for trial, right, told in outcomes:
            figures[trial][right] += 1
            if not right:
                print(f"{trial}: {path}: {told[-300:]!r}", flush=True)

    for pair in pairs:
        status, told = compare(*pair)
        count(pair[1], [("made anew", status == 0, told)])
        pathlib.Path(f"{pair[1]}.txt").unlink(missing_ok=True)
    sources = [*(pair[0] for pair in pairs), *documents]
    workers = concurrent.futures.ThreadPoolExecutor(options.jobs)
    try:
        for path, outcomes in zip(sources, workers.map(lambda path: try_document(path, options.folder), sources)):
            count(path, outcomes)
            tried += 1
    except KeyboardInterrupt:
        print("interrupted")
    workers.shutdown(cancel_futures=True)
    print(f"{tried} documents tried of {len(documents)} of packages and {len(pairs)} written;"
          f" {time.monotonic() - start:.0f} s")
    for trial, counter in figures.items():
        print(f"{trial}: {counter[True]} right, {counter[False]} wrong")
    return int(any(counter[False] for counter in figures.values()))


if __name__ == "__main__":
    sys.exit(main())
