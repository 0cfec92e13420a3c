"""Tests of the diff scripts: /usr/bin/python3 -m unittest discover -s tests/tools

Each table row names a case, makes the pair, and states the status and a text that the script must print.
"""

import contextlib
import datetime
import functools
import importlib.util
import io
import os
import pathlib
import re
import signal
import subprocess
import sys
import tempfile
import unittest
import zipfile

from openpyxl import Workbook
from openpyxl.chart import BarChart, Reference
from openpyxl.workbook.defined_name import DefinedName

TOOLS = pathlib.Path(__file__).resolve().parents[2] / "tools"
XLSX, PDF, VMD = TOOLS / "DiffXlsx/DiffXlsx.py", TOOLS / "diffpdf/diffPdfFiles.py", TOOLS / "diffvmd/diffvmd.py"
SHEET = "xl/worksheets/sheet1.xml"
TEXTS_RELATION = b'<Relationship Id="texts" Type="x/sharedStrings" Target="sharedStrings.xml"/>'
INLINE_TEXT = b't="inlineStr"><is><t>Name</t></is>'
BOMB = b"<worksheet>" + b" " * (80 << 20)


def unchanged(_book, _data):
    """A change that is none."""


@functools.lru_cache
def workbook(change=unchanged):
    """The bytes of a workbook that `change` has been applied to."""
    book = Workbook()
    data = book.active
    data.title = "Data"
    for row in (["Name", "Amount"], ["North", 1.5], ["South", 123456.789012345], ["Sum", "=SUM(B2:B3)"],
                ["Day", datetime.date(2024, 2, 29)], ["Paid", True]):
        data.append(row)
    data.merge_cells("A8:C8")
    data["A2"].hyperlink = "https://example.com/north"
    chart = BarChart()
    chart.add_data(Reference(data, min_col=2, min_row=1, max_row=3), titles_from_data=True)
    data.add_chart(chart, "D9")
    book.create_sheet("Notes")["A1"] = "note"
    book.defined_names.append(DefinedName("Rate", attr_text="Data!$B$2"))
    change(book, data)
    stream = io.BytesIO()
    book.save(stream)
    return stream.getvalue()


def put(cell, **attributes):
    """A change that sets attributes of one cell."""
    return lambda book, data: [setattr(data[cell], name, value) for name, value in attributes.items()]


def repacked(edits, method=zipfile.ZIP_DEFLATED):
    """A workbook in which each part named in `edits` holds the bytes, or what the function makes of its bytes.

    A shared text table stands ready for sheets that use it.
    """
    edits = {"xl/_rels/workbook.xml.rels": lambda data: data.replace(b"</Rel", TEXTS_RELATION + b"</Rel"),
             "xl/sharedStrings.xml": b"<sst><si><t>Name</t></si></sst>", **edits}
    stream = io.BytesIO()
    with zipfile.ZipFile(io.BytesIO(workbook())) as old, zipfile.ZipFile(stream, "w", method) as new:
        for name in [*old.namelist(), "xl/sharedStrings.xml"]:
            edit = edits.get(name, lambda data: data)
            new.writestr(name, edit(old.read(name)) if callable(edit) else edit)
    return stream.getvalue()


def in_sheet(old, new, count=1):
    """A workbook with a text of the first sheet's XML replaced."""
    return repacked({SHEET: lambda data: data.replace(old, new, count)})


XLSX_ROWS = (
    ("other properties", workbook(lambda book, data: setattr(book.properties, "title", "other")), 0, "no difference"),
    ("a number", workbook(put("B2", value=4.5)), 1, "B2, value: master number 1.5, actual number 4.5"),
    ("one unit in digit 15", workbook(put("B3", value=123456.789012346)), 0, ""),
    ("two units in digit 15", workbook(put("B3", value=123456.789012347)), 1, 'sheet "Data", cell B3'),
    ("a type", workbook(put("B2", value="1.5")), 1, 'master number 1.5, actual "1.5"'),
    ("a truth", workbook(put("B6", value=False)), 1, "master boolean 1, actual boolean 0"),
    ("a date", workbook(put("B5", value=datetime.date(2024, 3, 1))), 1, "(2024-02-29 00:00:00), actual number 45352"),
    ("a formula", workbook(put("B4", value="=SUM(B2:B2)")), 1, "formula: master =SUM(B2:B3), actual =SUM(B2:B2)"),
    ("a value for a formula", workbook(put("B4", value=5)), 1, "formula: master =SUM(B2:B3), actual none"),
    ("a shared formula", in_sheet(b"<f>SUM", b'<f t="shared" si="0" ref="B4">SUM'), 0, ""),
    ("a format", workbook(put("B2", number_format="0.00")), 1, 'number format: master "General", actual "0.00"'),
    ("a format elsewhere", workbook(put("Z9", number_format="0.00")), 0, ""),
    ("a cell too many", workbook(put("C2", value="x")), 1, 'C2, value: master empty, actual "x"'),
    ("a merge", workbook(lambda book, data: data.merge_cells("A9:B9")), 1, "merged range A9:B9 stands only in the act"),
    ("a row", workbook(lambda book, data: setattr(data.row_dimensions[3], "hidden", True)), 1, "hidden row 3"),
    ("a column", workbook(lambda book, data: setattr(data.column_dimensions["B"], "hidden", 1)), 1, "hidden column B"),
    ("a sheet's name", workbook(lambda book, data: setattr(book["Notes"], "title", "N")), 1, "sheet Notes stands only"),
    ("order", workbook(lambda book, data: book.move_sheet("Notes", -1)), 1, 'actual "Notes", "Data"'),
    ("visibility", workbook(lambda book, data: setattr(book["Notes"], "sheet_state", "hidden")), 1, 'actual "hidden"'),
    ("a name", workbook(lambda book, data: setattr(book.defined_names["Rate"], "attr_text", "1")), 1, "name Rate"),
    ("a link", workbook(put("A2", hyperlink="https://example.com/x")), 1, "hyperlink A2: master"),
    ("no chart", workbook(lambda book, data: data._charts.clear()), 1, "chart 1 stands only in the master: at D9"),
    ("a chart's range", workbook(lambda book, data: setattr(data._charts[0].series[0].val.numRef, "f", "Data!$B$2")), 1,
     "chart 1, "),
    ("years from 1904", repacked({"xl/workbook.xml": lambda data: data.replace(
        b"<workbookPr", b'<workbookPr date1904="1"', 1)}), 1, "first year of dates: master 1900, actual 1904"),
    ("control characters", workbook(put("A2", value="a\x85\u202eb")), 1, '"a\\x85\\u202eb"'),
    ("cut short", workbook()[:-500], 2, "actual: damaged or no workbook"),
    ("no zip file", b"<html></html>", 2, "damaged or no workbook"),
    ("empty", b"", 2, "damaged or no workbook"),
    ("a password", b"\xd0\xcf\x11\xe0\xa1\xb1\x1a\xe1" + bytes(600), 2, "protected by a password"),
    ("broken XML", in_sheet(b"</sheetData>", b""), 2, "mismatched tag"),
    ("a DTD", in_sheet(b"<worksheet", b"<!DOCTYPE w [<!ENTITY a 'aa'>]><worksheet"), 2, "DTDForbidden"),
    ("cells out of order", in_sheet(b'r="B2"', b'r="A1"'), 2, "damaged"),
    ("a shared text", in_sheet(INLINE_TEXT, b't="s"><v>0</v>'), 0, "no difference"),
    ("no such text", in_sheet(INLINE_TEXT, b't="s"><v>1</v>'), 2, "damaged"),
    ("a negative text", in_sheet(INLINE_TEXT, b't="s"><v>-1</v>'), 2, "damaged"),
    ("a text table for a sheet", repacked({SHEET: b"<sst><si><t>a</t></si></sst>"}), 2, "in a sheet's place"),
    ("deep XML", repacked({"xl/workbook.xml": b"<a>" * 50_000}), 2, "nested too deeply"),
    ("a bomb", repacked({SHEET: BOMB}), 2, "unpacks to"),
    ("odd packing", repacked({}, zipfile.ZIP_LZMA), 2, "packed in a way"),
)


def document(*pages, box="0 0 300 200", date="2024", trailer="", count=None):
    """A PDF document; each page is a list of (x, y, text) or of drawing operators."""
    kids = " ".join(f"{4 + 2 * index} 0 R" for index in range(len(pages)))
    objects = ["<< /Type /Catalog /Pages 2 0 R >>", f"<< /Type /Pages /Kids [{kids}] /Count {count or len(pages)} >>",
               "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>"]
    for index, page in enumerate(pages):
        content = "\n".join(item if isinstance(item, str) else "BT /F 12 Tf %s %s Td (%s) Tj ET" % item
                            for item in page)
        objects += [f"<< /Type /Page /Parent 2 0 R /MediaBox [{box}] /Contents {5 + 2 * index} 0 R"
                    " /Resources << /Font << /F 3 0 R >> >> >>",
                    f"<< /Length {len(content)} >>\nstream\n{content}\nendstream"]
    objects.append(f"<< /Producer (p{date}) /CreationDate (D:{date}) >>")
    text, offsets = "%PDF-1.4\n", []
    for number, item in enumerate(objects, 1):
        offsets.append(len(text))
        text += f"{number} 0 obj\n{item}\nendobj\n"
    table = "".join(f"{offset:010} 00000 n \n" for offset in offsets)
    size = len(objects) + 1
    return (f"{text}xref\n0 {size}\n0000000000 65535 f \n{table}trailer\n<< /Size {size} /Root 1 0 R"
            f" /Info {size - 1} 0 R {trailer} >>\nstartxref\n{len(text)}\n%%EOF\n").encode()


def letter(last=(40, 100, "Regards"), **keywords):
    """A document of three pages; `last` stands on the last of them."""
    return document([(20, 150, "Dear"), (60, 150, "reader")], [(20, 150, "Page two")], [last], **keywords)


def password():
    """A trailer entry that asks for a password."""
    return f"/ID [<00> <00>] /Encrypt << /Filter /Standard /V 1 /R 2 /P -4 /O <{'a5' * 32}> /U <{'5a' * 32}> >>"


PDF_ROWS = (
    ("made at another time", letter(date="2025"), 0, "no difference"),
    ("a word", letter((40, 100, "Respects")), 1, 'page 3: word "Regards" at (40.0, '),
    ("a place", letter((41, 100, "Regards")), 1, 'page 3: word "Regards" moved from (40.0, 91.4) to (41.0, 91.4)'),
    ("a place within tolerance", letter((40.05, 100, "Regards")), 0, "no difference"),
    ("no word", letter("0 0 0 rg"), 1, 'page 3: word "Regards" at (40.0, 91.4) is missing'),
    ("the number of pages", document([(20, 150, "Dear"), (60, 150, "reader")]), 1, "master 3, actual 1"),
    ("the size of pages", letter(box="0 0 300 210"), 1, "page 1: size: master 300 x 200 points"),
    ("cut short", letter()[:700], 2, "damaged (cut short)"),
    ("no PDF", b"PK\3\4" * 300, 2, "no PDF document"),
    ("a password", letter(trailer=password()), 2, "protected by a password"),
    ("endless", letter(count=2_000_000_000), 2, "Page count (2000000000)"),
    ("no tables", re.sub(rb"(obj|xref|trailer)", b"xxxx", letter()), 2, "trailer"),
)

# Pairs whose text is the same: (name, master's page, actual page, keywords of both, status, text).
DRAWING_ROWS = (
    ("a colour", "1 0 0 rg 50 50 80 40 re f", "0 0.5 0 rg 50 50 80 40 re f", {}, 1,
     "pixels differ between (49.2, 109.2) and (130.8, 150.8)"),
    ("a shade", "0.5 g 50 50 80 40 re f", "0.52 g 50 50 80 40 re f", {}, 0, "no difference"),
    ("a dot", "0 g", "0 g 50 50 0.5 0.5 re f", {}, 0, "no difference"),
    ("an absurd size", "0 g", "0 0 500000000 500000000 re f", {"box": "0 0 1000000000 1000000000"}, 1, "pixels differ"),
    ("content that can't be read", "0 g", "0 g /F (", {}, 2, "damaged"),
)

VMD_ROWS = (
    ("an end of line", b"a\r\nb\n", b"a\nb", 1, "No newline"),
    ("carriage returns", b"a\r\nb\r\n", b"a\nb\r\r\n", 0, ""),
    ("a line", b"a\nb\nc\n", b"a\nx\nc\n", 1, "\n a\n-b\n+x\n c\n"),
    ("bytes", b"a\0\r\n", b"a\0\n", 1, "master from byte 2: 0d 0a\nactual from byte 2: 0a"),
    ("an end", bytes(70_000), bytes(70_001), 1, "master from byte 70000: end of file"),
    ("control characters", b"a\n", b"\x1b[2J\xff\n", 1, "+\\x1b[2J\\xff"),
    ("a great difference", b"a\n" * 9_000, b"b\n" * 9_000, 1, "the diff goes on"),
)


@functools.lru_cache
def loaded(script):
    """A script as a module."""
    found = importlib.util.spec_from_file_location(script.stem, script)
    module = importlib.util.module_from_spec(found)
    found.loader.exec_module(module)
    return module


class ToolTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def write(self, name, data):
        (self.folder / name).write_bytes(data)
        return name

    def run_tool(self, script, *arguments, **keywords):
        options = ("-o", "result") if script == XLSX and arguments[0] != "-o" else ()
        return subprocess.run([sys.executable, script, *options, *arguments], cwd=self.folder, timeout=60, text=True,
                              errors="surrogateescape", capture_output=True, **keywords)

    def check(self, done, status, text):
        """Status and text must be there, a refusal on standard error alone, in one line."""
        printed = done.stderr if status == 2 else done.stdout
        self.assertEqual((done.returncode, text in printed), (status, True), done)
        self.assertEqual(done.stderr.count("\n"), int(status == 2), done)

    def check_pair(self, script, master, actual, status, text):
        """Checks a pair of contents without a process of its own, which would cost more than the comparison."""
        names = [str(self.folder / self.write(*file)) for file in (("master", master), ("actual", actual))]
        options = ["-o", str(self.folder / "result")] if script == XLSX else []
        module, output, errors = loaded(script), io.StringIO(), io.StringIO()
        with contextlib.redirect_stdout(output), contextlib.redirect_stderr(errors):
            with self.assertRaises(SystemExit) as end, module.tool.clean_exit():
                sys.exit(module.main([*options, *names]))
        self.check(subprocess.CompletedProcess(names, end.exception.code, output.getvalue(), errors.getvalue()),
                   status, text)

    def test_workbooks(self):
        master = workbook()
        for name, actual, status, text in XLSX_ROWS:
            with self.subTest(name):
                self.check_pair(XLSX, master, actual, status, text)

    def test_documents(self):
        for name, actual, status, text in PDF_ROWS:
            with self.subTest(name):
                self.check_pair(PDF, letter(), actual, status, text)
        for name, master, actual, keywords, status, text in DRAWING_ROWS:
            with self.subTest(name):
                self.check_pair(PDF, document([master], **keywords), document([actual], **keywords), status, text)

    def test_models(self):
        for name, master, actual, status, text in VMD_ROWS:
            with self.subTest(name):
                self.check_pair(VMD, master, actual, status, text)

    def test_names_of_files(self):
        hostile = ("-o", "--help", "-x y", "$(touch pwned)`touch pwned`", "a\n\"b'\\", "fd:0",
                   "\udcff\x1b[2J", "n" * 255)
        for script, data in ((XLSX, workbook()), (PDF, letter()), (VMD, b"a\n")):
            for name in hostile:
                with self.subTest(script=script.name, name=name):
                    names = "master", self.write(name, data)
                    options = ("-o", "result") if script == XLSX else ()
                    self.write("master", data)
                    self.check(self.run_tool(script, *options, *names), 0, "")
        self.assertFalse((self.folder / "pwned").exists())

    def test_no_verdict(self):
        os.mkfifo(self.folder / "fifo")
        (self.folder / "openpyxl.py").write_text("raise ModuleNotFoundError(name='openpyxl')")
        self.write("book", workbook())
        self.write("paper", letter())
        for script, arguments, environment, text in (
                (VMD, ["book", "fifo"], {}, "fifo: not a regular file"), (PDF, ["fifo", "paper"], {}, "not a regular"),
                (VMD, ["."], {}, "two files are needed"), (VMD, ["--help", "x\ny"], {}, "--help: No such file"),
                (PDF, ["--image", "x", "a", "b"], {}, "unrecognized"),
                (XLSX, ["-o", "book", "book", "fifo"], {}, "to be overwritten by the result"),
                (XLSX, ["book", "book"], {"PYTHONPATH": "."}, "install the package python3-openpyxl"),
                (PDF, ["paper", "paper"], {"PATH": "/nowhere"}, "install the package poppler-utils")):
            with self.subTest(arguments=arguments, text=text):
                self.check(self.run_tool(script, *arguments, env={**os.environ, **environment}), 2, text)

    def test_result_is_whole_or_untouched(self):
        self.write("master", workbook())
        for actual, status, text in ((workbook()[:900], 2, "old"), (workbook(put("B2", value=9)), 1, "cell B2"),
                                     (workbook(), 0, "no difference")):
            self.write("result", b"old")
            self.check(self.run_tool(XLSX, "master", self.write("actual", actual)), status, "")
            self.assertIn(text, (self.folder / "result").read_text())
            self.assertEqual(sorted(os.listdir(self.folder)), ["actual", "master", "result"])
        os.symlink("/dev/full", self.folder / "full")
        self.check(self.run_tool(XLSX, "-o", "full", "master", "actual"), 2, "No space left on device")

    def test_standard_output_may_be_closed_early(self):
        read, write = os.pipe()
        os.close(read)
        lines = [self.write(name, name.encode() * 5 + b"\n") for name in "ab"]
        for output, status in ((write, 1), (os.open("/dev/full", os.O_WRONLY), 2)):
            done = subprocess.run([sys.executable, VMD, *lines], cwd=self.folder, stdout=output, stderr=subprocess.PIPE)
            os.close(output)
            self.assertEqual((done.returncode, b"Traceback" in done.stderr), (status, False), done)

    def test_pictures_of_differing_pages(self):
        self.check(self.run_tool(PDF, "--images", "out/put", self.write("m.pdf", letter()),
                                 self.write("a.pdf", letter((40, 100, "Respects")))), 1, "page 3")
        (picture,) = (self.folder / "out/put").iterdir()
        self.assertEqual((picture.name, picture.read_bytes()[:4]), ("a-page-0003.png", b"\x89PNG"))

    def write_large(self, name, changed):
        """Writes a workbook of 200,000 cells, half of them texts of their own, with one row of numbers changed."""
        rows, texts = range(1, 10_001), (f"<si><t>text {index}</t></si>" for index in range(100_000))
        sheet = "".join(f'<row r="{row}">' + "".join(
            f'<c r="{letter}{row}"><v>{row + (row == changed)}</v></c><c t="s"><v>{row * 10 - 10 + column}</v></c>'
            for column, letter in enumerate("ACEGIKMOQS")) + "</row>" for row in rows)
        return self.write(name, repacked({
            SHEET: f"<worksheet><sheetData>{sheet}</sheetData></worksheet>".encode(),
            "xl/sharedStrings.xml": f"<sst>{''.join(texts)}</sst>".encode()}))

    def test_large_workbook_in_bounded_memory(self):
        script = "import os, sys; pid = os.spawnv(os.P_NOWAIT, sys.executable, [sys.executable, *sys.argv[1:]]);" \
                 "usage = os.wait4(pid, 0); print('KB', usage[2].ru_maxrss)"
        names = self.write_large("master", 0), self.write_large("actual", 9_999)
        done = subprocess.run([sys.executable, "-c", script, XLSX, "-o", "result", *names], cwd=self.folder, text=True,
                              capture_output=True)
        self.assertIn("cell A9999, value: master number 9999, actual number 10000\n", done.stdout)
        self.assertLess(int(done.stdout.split("KB ")[1]), 100_000)

    def test_terminated_run_leaves_the_old_result(self):
        names = self.write_large("master", 0), self.write_large("actual", 5)
        self.write("result", b"old")
        process = subprocess.Popen([sys.executable, XLSX, "-o", "result", *names], cwd=self.folder,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        process.stdout.readline()
        process.send_signal(signal.SIGTERM)
        _, errors = process.communicate(timeout=30)
        self.assertEqual((process.returncode, errors), (2, b"DiffXlsx.py: interrupted\n"))
        self.assertEqual((self.folder / "result").read_bytes(), b"old")
        self.assertEqual(sorted(os.listdir(self.folder)), ["actual", "master", "result"])


if __name__ == "__main__":
    unittest.main()
