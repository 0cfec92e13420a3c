#!/usr/bin/env python3
"""Tries diffPdfFiles.py on real documents: trial-documents.py [--pages N] [--packages NAME,...] FOLDER

FOLDER gets the corpus: the PDF files of Debian packages (downloaded unless their .deb files are in FOLDER) and
documents that weasyprint, ghostscript and LibreOffice make, each twice. For each document a copy must pass, as must
what qpdf saves anew and what its program makes anew, and one change of each kind must be told, the drawn ones wherever
a rendering at 150 dpi shows them.

Needs python3-pikepdf, qpdf, weasyprint, ghostscript and libreoffice-writer-nogui.
"""

import argparse
import collections
import concurrent.futures
import pathlib
import shutil
import subprocess
import sys
import time

import pikepdf

SCRIPT = pathlib.Path(__file__).resolve().parents[1] / "tools/diffpdf/diffPdfFiles.py"
PACKAGES = "texlive-science-doc,texlive-latex-recommended-doc,texlive-metapost-doc,texlive-fonts-recommended-doc"
SECONDS = 300   # of one comparison
TOLD = {"word": "Zqxj", "mark": "drawing differs", "link": "URI http://zqxj", "annotation": "annotation Text",
        "outline": "outline entry Zqxj", "attachment": "attachment zqxj.txt", "unit": "UserUnit"}


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
    pairs = []
    for number in range(count):
        rows = "".join(f"<tr><td>Item {row}</td><td>{row * 7919 % 1000}.50</td></tr>" for row in range(number * 9 + 5))
        source = folder / f"source{number}.html"
        source.write_text(f"<html><body><h1>Report {number}</h1><a href='http://example.com'>more</a>"
                          f"<table border=1>{rows}</table></body></html>", "utf-8")
        for program, make in (("weasyprint", weasyprint), ("libreoffice", libreoffice), ("gs", ghostscript)):
            made = [folder / f"{program}{number}-{turn}.pdf" for turn in (1, 2)]
            for target in made:
                make(source, target)
            if all(target.exists() for target in made):
                pairs.append(made)
    return pairs


def weasyprint(source, target):
    run("weasyprint", source, target)


def libreoffice(source, target):
    run("soffice", "--headless", "--convert-to", "pdf:writer_web_pdf_Export", "--outdir", target.parent, source)
    source.with_suffix(".pdf").rename(target)


def ghostscript(source, target):
    first = source.parent / f"weasyprint{source.stem.removeprefix('source')}-1.pdf"
    run("gs", "-q", "-sDEVICE=pdfwrite", "-o", target, first)


def change(path, target):
    """Writes the document with one change of each kind."""
    with pikepdf.open(path) as document:
        page = document.pages[len(document.pages) // 2]
        left, bottom = (float(side) for side in list(page.cropbox)[:2])
        page.contents_add(b"q", prepend=True)
        page.contents_add(f"Q q 0.1 0.5 0.2 rg {left + 5} {bottom + 22} 6 6 re f 0 g BT /Zqxj 9 Tf "
                          f"{left + 12} {bottom + 5} Td (Zqxj) Tj ET Q".encode())
        font = pikepdf.Dictionary(Type=pikepdf.Name.Font, Subtype=pikepdf.Name.Type1, BaseFont=pikepdf.Name.Helvetica)
        page.add_resource(font, pikepdf.Name.Font, pikepdf.Name.Zqxj)
        page.obj.UserUnit = 2
        notes = list(page.obj.get("/Annots", []))
        action = pikepdf.Dictionary(S=pikepdf.Name.URI, URI=pikepdf.String("http://zqxj"))
        for subtype, more in (("/Link", {"/A": action}), ("/Text", {"/Contents": pikepdf.String("zqxj"), "/F": 2})):
            notes.append(document.make_indirect(pikepdf.Dictionary({
                "/Type": pikepdf.Name.Annot, "/Subtype": pikepdf.Name(subtype), "/Rect": [30, 30, 60, 60],
                "/Border": [0, 0, 0], **more})))
        page.obj.Annots = pikepdf.Array(notes)
        with document.open_outline() as outline:
            outline.root.append(pikepdf.OutlineItem("Zqxj", 0))
        document.attachments["zqxj.txt"] = pikepdf.AttachedFileSpec(document, b"zqxj", filename="zqxj.txt")
        document.save(target)
        return len(document.pages) // 2 + 1


def shown(master, actual, page, folder):
    """Whether a rendering at 150 dpi shows a difference."""
    pictures = []
    for name, path in (("m", master), ("a", actual)):
        run("pdftoppm", "-cropbox", "-r", 150, "-f", page, "-singlefile", path, folder / name)
        pictures.append((folder / f"{name}.ppm").read_bytes())
    return pictures[0] != pictures[1]


def try_document(path, folder):
    """The outcome of each trial of one document: (trial, right, what was told)."""
    work = folder / f"work-{abs(hash(path))}"
    work.mkdir()
    outcomes = []
    try:
        copy, saved, changed = (work / name for name in ("copy.pdf", "saved.pdf", "changed.pdf"))
        shutil.copy(path, copy)
        run("qpdf", "--linearize", "--object-streams=generate", path, saved)
        for trial, actual in (("copy", copy), ("saved by qpdf", saved)):
            status, told = compare(path, actual)
            outcomes.append((trial, status == 0, told))
        page = change(path, changed)
        status, told = compare(path, changed)
        for kind, text in TOLD.items():
            if kind not in ("word", "mark") or shown(path, changed, page, work):
                outcomes.append((f"changed {kind}", status == 1 and text in told, told))
    except (pikepdf.PdfError, subprocess.TimeoutExpired, OSError, ValueError) as error:
        outcomes.append(("trial itself", False, str(error)))
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
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--packages", default=PACKAGES)
    parser.add_argument("--pages", type=int, default=30, help="pages that a document may have")
    parser.add_argument("--limit", type=int, default=10_000, help="documents that are tried")
    parser.add_argument("folder", type=pathlib.Path)
    options = parser.parse_args()
    options.folder.mkdir(parents=True, exist_ok=True)
    figures, start = collections.defaultdict(collections.Counter), time.monotonic()
    pairs = written(options.folder)
    documents = [path for path in fetch(options.folder, options.packages.split(","))
                 if 0 < pages_of(path) <= options.pages][:options.limit]

    def count(path, outcomes):
        for trial, right, told in outcomes:
            figures[trial][right] += 1
            if not right:
                print(f"{trial}: {path}: {told[-300:]!r}", flush=True)

    for pair in pairs:
        status, told = compare(*pair)
        count(pair[1], [("made anew", status == 0, told)])
    with concurrent.futures.ThreadPoolExecutor(2) as workers:
        sources = [*documents, *(pair[0] for pair in pairs)]
        for path, outcomes in zip(sources, workers.map(lambda path: try_document(path, options.folder), sources)):
            count(path, outcomes)
    print(f"{len(documents)} documents of packages, {len(pairs)} written; {time.monotonic() - start:.0f} s")
    for trial, counter in figures.items():
        print(f"{trial}: {counter[True]} right, {counter[False]} wrong")
    return int(any(counter[False] for counter in figures.values()))


if __name__ == "__main__":
    sys.exit(main())
