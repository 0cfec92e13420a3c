"""Tests of DiffXlsx.py."""

import datetime
import os
import signal
import subprocess
import sys
import unittest
import zipfile

from tool_test import XLSX, ToolTest
from workbooks import SHEET, in_sheet, put, repacked, workbook

INLINE_TEXT = b't="inlineStr"><is><t>Name</t></is>'
BOMB = b"<worksheet>" + b" " * (80 << 20)

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
    ("no chart", workbook(lambda book, data: data._charts.clear()), 1, "chart 1 at D9 stands only in the master"),
    ("a chart's range", workbook(lambda book, data: setattr(data._charts[0].series[0].val.numRef, "f", "Data!$B$2")), 1,
     "chart 1 at D9, "),
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


class XlsxTest(ToolTest):
    def test_workbooks(self):
        master = workbook()
        for name, actual, status, text in XLSX_ROWS:
            with self.subTest(name):
                self.check_pair(XLSX, master, actual, status, text)

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
