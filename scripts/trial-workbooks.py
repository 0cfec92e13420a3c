#!/usr/bin/env python3
"""Tries DiffXlsx.py on workbooks that nobody here made: trial-workbooks.py [--folder DIR] [--office N] [FILE...]

Without FILEs it takes the test files of Debian's source package libxlsxwriter (saved by a spreadsheet program),
workbooks that openpyxl and XlsxWriter write (python3-openpyxl, python3-xlsxwriter), LibreOffice's templates, and has
LibreOffice (libreoffice-calc) save N of them twice, and once more what it has saved. DIR keeps them for the next run.
Then it counts for how many
- a copy packed anew, so that not a byte need be the same, passes,
- a copy that differs in all of HARMLESS, which no reader sees, passes,
- a change of each kind is seen, and told as that kind,
- two savings of one file, and a saving and its own saving, are the same; and a file and its saving in what
  LibreOffice keeps (KEPT).
"""

import argparse
import collections
import contextlib
import io
import os
import pathlib
import re
import subprocess
import sys
import tarfile
import tempfile
import zipfile
from unittest import mock

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "tests/tools"))
from PIL import Image  # noqa: E402
import tool_test  # noqa: E402 (found by the path above)
import workbooks  # noqa: E402

SCRIPT = tool_test.loaded(tool_test.XLSX)
SOURCE = "deb-src http://deb.debian.org/debian bookworm main\n"
OFFICE_SECONDS = 900
KEPT = {"sheets", "rows", "values", "merges"}   # the authors of comments and the targets of links, it doesn't
PLAIN_CELL = rb'<c r="[A-Z]+\d+"(?: s="0")?(?: t="\w+")?><'    # of the first style
HIGH = rb'(?![^>]*hidden|[^>]*ht="[0-2][."])'   # of a row; one of two points at most counts as hidden already
MERGE = b'</sheetData><mergeCells><mergeCell ref="XA90:XB91"/></mergeCells>'


def added_entry(group, entry, number):
    """A change that adds an entry to a group of the styles and has the first style use it."""
    def change(before):
        part = before
        entries = part[part.index(b"<" + group):part.index(b"</" + group)]
        count = len(re.findall(rb"<" + entry.split()[0][1:] + rb"\b", entries))
        part = part.replace(b"</" + group + b">", entry + b"</" + group + b">", 1)
        head, xfs, tail = part.partition(b"<cellXfs")
        tail, used = re.subn(number + rb'="0"', number + b'="%d"' % count, tail, count=1)
        return head + xfs + tail if used else before
    return change


def marked(part):
    """A picture with a mark in its middle."""
    stream = io.BytesIO()
    with Image.open(io.BytesIO(part)) as picture:
        picture = picture.convert("RGB")
        corner = picture.width // 2, picture.height // 2
        colour = tuple(255 - band for band in picture.getpixel(corner))
        picture.paste(colour, (*corner, min(corner[0] + 6, picture.width), min(corner[1] + 6, picture.height)))
        picture.save(stream, "PNG")
    return stream.getvalue()


def swapped(pattern, replacement):
    """A change of the first match of a pattern."""
    return lambda part: re.sub(pattern, replacement, part, count=1)


# Kind, the part that is changed, what it must hold, the change.
CHANGES = (
    ("sheets", r"workbook\.xml$", rb"<sheet ", swapped(rb'(<sheet [^>]*?name=")', rb"\1X")),
    ("values", r"worksheets/sheet[^/]*xml$", rb"<c[^>t]*><v>[1-9]", swapped(rb"(<c[^>t]*><v>)(?=[1-9])", rb"\g<1>7")),
    ("values", r"sharedStrings\.xml$", rb"<t[^>]*>\w", swapped(rb"(<t[^>]*>)(?=\w)", rb"\1X")),
    ("formulas", r"worksheets/sheet[^/]*xml$", rb"<f>", swapped(rb"<f>", rb"<f>1+")),
    ("fonts", r"styles\.xml$", rb"<font>", swapped(rb"<font>(.*?)<sz val=\"\d+", rb'<font>\1<sz val="33')),
    ("colours", r"styles\.xml$", rb"<font>", swapped(rb"<font>((?:(?!</font>|<color).)*)(<color[^>]*/>)?",
                                                     rb'<font>\1<color rgb="FFFE0102"/>')),
    ("formats", r"styles\.xml$", rb"<cellXfs", swapped(rb'(<cellXfs[^>]*>\s*<xf numFmtId=")\d+', rb"\g<1>11")),
    ("fills", r"styles\.xml$", rb"<fills", added_entry(
        b"fills", b'<fill><patternFill patternType="solid"><fgColor rgb="FFABCDEF"/></patternFill></fill>', b"fillId")),
    ("borders", r"styles\.xml$", rb"<borders", added_entry(
        b"borders", b'<border ><left style="thick"/></border>', b"borderId")),
    ("merges", r"worksheets/sheet[^/]*xml$", rb"</sheetData>", swapped(rb"</sheetData>", MERGE)),
    ("hidden", r"worksheets/sheet[^/]*xml$", rb"<row " + HIGH, swapped(
        rb"<row " + HIGH, rb'<row hidden="1" ')),
    ("names", r"workbook\.xml$", rb"</definedName>", swapped(rb"</definedName>", rb"+1</definedName>")),
    ("links", r"worksheets/_rels/.*rels$", rb'Type="[^"]*/hyperlink"', swapped(
        rb'(<Relationship (?=[^>]*/hyperlink")[^>]*Target=")', rb"\1x")),
    ("comments", r"comments\d*\.xml$", rb"<t[ >]", swapped(rb"(<t(?: [^>]*)?>)", rb"\1X")),
    ("charts", r"charts/chart\d+\.xml$", rb"<c:v>", swapped(rb"<c:v>", rb"<c:v>7")),
    ("pictures", r"media/image[^/]*png$", rb"", marked),
    ("shapes", r"drawings/drawing\d+\.xml$", rb"<a:t>", swapped(rb"<a:t>", rb"<a:t>X")),
    ("tables", r"tables/table\d+\.xml$", rb"<tableColumn ", swapped(rb'(<tableColumn [^>]*name=")', rb"\1X")),
    ("conditions", r"worksheets/sheet[^/]*xml$", rb"<cfRule ", swapped(rb"<cfRule ", rb'<cfRule changed="1" ')),
    ("validations", r"worksheets/sheet[^/]*xml$", rb"<dataValidation ", swapped(rb"<dataValidation ",
                                                                              rb'<dataValidation changed="1" ')),
    ("filters", r"worksheets/sheet[^/]*xml$", rb"<autoFilter", swapped(rb'(<autoFilter[^>]*ref="[A-Z]+)', rb"\g<1>1")),
    ("headers", r"worksheets/sheet[^/]*xml$", rb"<odd(Header|Footer)>", swapped(rb"(<odd(?:Header|Footer)>)", rb"\1X")),
    ("view", r"worksheets/sheet[^/]*xml$", rb"<sheetView (?![^>]*rightToLeft=\"(1|true))", lambda part: re.sub(
        rb'rightToLeft="\w+" ?', b"", part).replace(b"<sheetView ", b'<sheetView rightToLeft="1" ', 1)),
)

def other_format(match):
    """A number format that shows the same: dollars marked the other way, names of colours in capitals."""
    code = match[2].replace(b"&quot;$&quot;", b"\\$")
    return match[1] + re.sub(rb"\[(Red|Blue|Green|Black|White)\]", lambda colour: colour[0].upper(), code)


EMPTY_TEXT = b'<row r="1048576"><c r="XA1048576" t="str"><v></v></c></row>'

# What no reader sees: the part, a pattern in it, what comes in its place.
HARMLESS = (
    (r"charts/chart\d+\.xml$", rb'(<c:lang val=")[^"]*', rb"\g<1>sq-AL"),
    (r"charts/chart\d+\.xml$", rb"<c:printSettings>.*?</c:printSettings>", rb""),
    (r"charts/chart\d+\.xml$", rb"(<c:formatCode>)([^<]*)", other_format),
    (r"styles\.xml$", rb'(<numFmt [^>]*formatCode=")([^"]*)', other_format),
    (r"styles\.xml$", rb"(?s)(<fonts.*?</fonts>)", rb"<mc:AlternateContent xmlns:mc='http://schemas.openxmlformats.org/"
     rb"markup-compatibility/2006'><mc:Choice Requires='x'>\1</mc:Choice></mc:AlternateContent>"),
    (r"worksheets/sheet[^/]*xml$", rb'(?s)\A((?!.*r="1048576").*)(?=</sheetData>)', rb"\1" + EMPTY_TEXT),
    (r"worksheets/sheet[^/]*xml$", rb'(<c r="[A-Z]+\d+")(?=>| t=)', rb'\1 s=""'),
    (r"worksheets/sheet[^/]*xml$", rb'zoomScale="\d+"', b'zoomScale="33"'),
    (r"workbook\.xml$", rb"(FilterDatabase[^>]*>)([A-Za-z]\w*)!", rb"\1'\2'!"),
    (r"workbook\.xml\.rels$", rb"</Relationships>", rb'<Relationship Id="" Type="x/y" Target="no"/></Relationships>'),
    (r"docProps/core\.xml$", rb"(<dc:creator>)[^<]*", rb"\1Zqxj"),
)
OF_PLAIN_CELLS = ("fonts", "colours", "formats", "fills", "borders")    # kinds whose change needs such a cell


def compared(master, actual):
    """Status and output of a comparison; files of the same bytes are read as well."""
    output = io.StringIO()
    to_output = contextlib.redirect_stdout(output), contextlib.redirect_stderr(output)
    with tempfile.NamedTemporaryFile() as result, to_output[0], to_output[1]:
        try:
            with SCRIPT.tool.clean_exit():
                status = SCRIPT.main(["-o", result.name, str(master), str(actual)])
        except SystemExit as end:
            status = end.code
    return status, output.getvalue()


def parts_of(path):
    """The parts of a workbook by name."""
    with zipfile.ZipFile(path) as package:
        return {name: package.read(name) for name in package.namelist()}


def write(path, parts):
    """Writes a workbook of the parts."""
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED, compresslevel=1) as package:
        for name, data in parts.items():
            package.writestr(name, data)


def changed(parts, kind, name, needed, change):
    """The parts with one change, or None when there is nothing to change."""
    found = [part for part in parts if re.search(name, part) and re.search(needed, parts[part])]
    sheets = [data for part, data in parts.items() if "worksheets/sheet" in part]
    if not found or kind in OF_PLAIN_CELLS and not any(re.search(PLAIN_CELL, data) for data in sheets):
        return None
    after = change(parts[found[0]])
    return None if after == parts[found[0]] else {**parts, found[0]: after}


def harmless(parts):
    """The parts with all that no reader sees changed."""
    after = dict(parts)
    for name, pattern, instead in HARMLESS:
        for part in [part for part in after if re.search(name, part)]:
            after[part] = re.sub(pattern, instead, after[part])
    return after


def try_workbook(path, folder, counts, complaints):
    """Counts what a copy and each change of a workbook come to."""
    parts, other = parts_of(path), folder / "other.xlsx"
    write(other, dict(reversed(parts.items())))
    status, text = compared(path, other)
    counts["copy", status == 0] += 1
    if status:
        complaints.append(f"{path}: a copy: {text.splitlines()[0]}")
    write(other, {name.replace("/", "\\"): data for name, data in harmless(parts).items()})
    status, text = compared(path, other)
    counts["what no reader sees", status == 0] += 1
    if status:
        complaints.append(f"{path}: what no reader sees: {text[:400]!r}")
    for kind, *what in CHANGES:
        after = changed(parts, kind, *what)
        if after:
            write(other, after)
            status, text = compared(path, other)
            seen = status == 1 and f"{kind} " in text.splitlines()[-1]
            counts[kind, seen] += 1
            if not seen:
                complaints.append(f"{path}: {kind} unseen: {text.splitlines()[-1]}")


def from_debian(folder):
    """The workbooks of the source package, fetched by apt with lists of its own."""
    if not list(folder.glob("*.orig.tar.gz")):
        (folder / "lists/partial").mkdir(parents=True, exist_ok=True)
        (folder / "sources.list").write_text(SOURCE)
        options = [f"-oDir::Etc::SourceList={folder}/sources.list", "-oDir::Etc::SourceParts=/dev/null",
                   f"-oDir::State::Lists={folder}/lists", "-oAPT::Sandbox::User=root"]
        for command in (["update"], ["source", "--download-only", "libxlsxwriter"]):
            subprocess.run(["apt-get", "-q", *options, *command], cwd=folder, check=True, stdout=subprocess.DEVNULL)
    for archive in folder.glob("*.orig.tar.gz"):
        with tarfile.open(archive) as tar:
            for member in tar:
                if member.isfile() and member.name.endswith(".xlsx"):
                    (folder / "debian").mkdir(exist_ok=True)
                    (folder / "debian" / os.path.basename(member.name)).write_bytes(tar.extractfile(member).read())
    return sorted((folder / "debian").glob("*.xlsx"))


def written(folder):
    """Workbooks of openpyxl and XlsxWriter."""
    folder.mkdir(exist_ok=True)
    (folder / "openpyxl.xlsx").write_bytes(workbooks.workbook())
    (folder / "table.xlsx").write_bytes(workbooks.table([[number, f"text {number}"] for number in range(500)]))
    (folder / "parts.xlsx").write_bytes(workbooks.package())
    with contextlib.suppress(ImportError):
        import xlsxwriter
        with xlsxwriter.Workbook(str(folder / "xlsxwriter.xlsx")) as book:
            for name, kind in (("Lines", "line"), ("Pie", "pie"), ("Radar", "radar"), ("Area", "area")):
                sheet = book.add_worksheet(name)
                sheet.write_column("A1", range(20), book.add_format({"num_format": "0.0", "bg_color": "#ffee00"}))
                chart = book.add_chart({"type": kind})
                chart.add_series({"values": f"={name}!$A$1:$A$20"})
                sheet.insert_chart("C3", chart)
                sheet.write_comment("A2", "a comment")
                sheet.insert_textbox("K3", "a text")
                sheet.conditional_format("A1:A20", {"type": "data_bar"})
                sheet.add_sparkline("B1", {"range": f"{name}!A1:A20"})
    return sorted(folder.glob("*.xlsx"))


def office(sources, folder, profile):
    """Has LibreOffice save the sources; gives the files by the sources' names."""
    folder.mkdir(exist_ok=True)
    missing = [source for source in sources if not (folder / f"{source.stem}.xlsx").exists()]
    if missing:
        with contextlib.suppress(subprocess.TimeoutExpired):
            subprocess.run(["soffice", f"-env:UserInstallation=file://{profile}", "--headless", "--convert-to", "xlsx",
                            "--outdir", folder, *missing], stdout=subprocess.DEVNULL, timeout=OFFICE_SECONDS)
    return {source.stem: folder / f"{source.stem}.xlsx" for source in sources
            if (folder / f"{source.stem}.xlsx").exists()}


def try_pairs(name, masters, actuals, counts, complaints, ignored=""):
    """Counts the pairs of one name that are the same, but for the kinds ignored."""
    with mock.patch.dict(os.environ, MODIFF_IGNORE=ignored):
        for stem in sorted(masters.keys() & actuals.keys()):
            status, text = compared(masters[stem], actuals[stem])
            counts[name, status == 0] += 1
            if status:
                complaints.append(f"{stem}: {name}: {text.splitlines()[bool(ignored)]}")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--folder", type=pathlib.Path, help="keeps the workbooks for the next run")
    parser.add_argument("--office", type=int, default=200, metavar="N", help="workbooks for LibreOffice to save")
    parser.add_argument("--every", type=int, default=1, metavar="N", help="takes every Nth of the test files")
    parser.add_argument("files", nargs="*", type=pathlib.Path)
    options = parser.parse_args()
    SCRIPT.tool.same_files = lambda _master, _actual: False
    counts, complaints = collections.Counter(), []
    with tempfile.TemporaryDirectory() as temporary:
        folder = (options.folder or pathlib.Path(temporary)).resolve()
        folder.mkdir(exist_ok=True)
        files = options.files or from_debian(folder)[::options.every] + written(folder / "written")
        if not options.files and options.office:
            templates = list(pathlib.Path("/usr/lib/libreoffice/share/template").rglob("*.ots"))
            sources = templates + files[::max(1, len(files) // options.office)]
            saved = office(sources, folder / "saved", folder / "profile")
            try_pairs("saved twice", saved, office(sources, folder / "again", folder / "profile"), counts, complaints)
            try_pairs("saved anew", saved, office(list(saved.values()), folder / "anew", folder / "profile"), counts,
                      complaints)
            others = ",".join(kind.name for kind in SCRIPT.KINDS if kind.name not in KEPT)
            try_pairs("as its source", {file.stem: file for file in files}, saved, counts, complaints, others)
            files = files + list(saved.values())
        for path in files:
            try_workbook(path, pathlib.Path(temporary), counts, complaints)
    print(*complaints, sep="\n")
    for name in dict.fromkeys(name for name, _ in counts):
        print(f"{name}: {counts[name, True]} of {counts[name, True] + counts[name, False]}")


if __name__ == "__main__":
    main()
