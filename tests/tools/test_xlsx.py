"""Tests of DiffXlsx.py."""

import datetime
import io
import os
import signal
import subprocess
import sys
import unittest
import unittest.mock
import zipfile

from tool_test import TOOLS, XLSX, ToolTest, loaded
from workbooks import SHEET, in_sheet, package, picture, put, repacked, table, workbook

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

# Changes of the workbook of PARTS by kind: (name, kind, edits, the text that tells them).
SEEN_ROWS = (
    ("a bold word", "fonts", [("styles", "<font><b/>", "<font>")], 'cell B2, font: master "Arial 11 pt bold"'),
    ("a red number", "colours", [("styles", 'color rgb="FFFF0000"', 'color rgb="FFFF0001"')], "cell B2, colour"),
    ("a colour of the theme", "fills", [("theme", "4F81BD", "4F81BE"), ("styles", 'rgb="FF4F81BD"', 'theme="4"')],
     'cell D3, fill: master "4F81BD", actual "4F81BE"'),
    ("a fill", "fills", [("sheet1", 'r="D3" s="2"', 'r="D3"')], 'cell D3, fill: master "4F81BD", actual "none"'),
    ("a row's fill", "fills", [("sheet1", 'r="4">', 'r="4" s="2" customFormat="1">')], "row 4, fill"),
    ("a column's fill", "fills", [("sheet1", 'width="12"', 'width="12" style="2"')], "fill of column B"),
    ("a border", "borders", [("styles", 'style="thin"', 'style="thick"')], "cell B2, borders: master \"left thin"),
    ("an alignment", "alignment", [("styles", 'horizontal="right"', 'horizontal="left"')], "cell B2, alignment"),
    ("a number format", "formats", [("styles", "#,##0", "#,##0.0")], "cell B2, number format"),
    ("a colour by sign", "formats", [("styles", "[Red]", "[Blue]")], "cell B2, number format"),
    ("a word in a text", "fonts", [("texts", "<b/>", "")], "cell B1, words in it"),
    ("a row of no height", "hidden", [("sheet1", 'ht="20"', 'ht="0"')], "hidden row 3"),
    ("a column of no width", "hidden", [("sheet1", 'width="12"', 'width="0"')], "hidden column B"),
    ("rows hidden by default", "hidden", [("sheet1", 'defaultRowHeight="15"', 'zeroHeight="1"')], 
     "rows without an entry"),
    ("a number too wide", "narrow", [("sheet1", 'width="12"', 'width="5"')], "column B stands only in the actual"),
    ("an old comment", "comments", [("comments", "value", "volume")], 'comment A2: master "Bob: low value"'),
    ("a threaded comment", "comments", [("threads", "why", "how")], 'comment A3: master "Ann: why?"'),
    ("a condition", "conditions", [("sheet1", "<formula>2", "<formula>3")], "conditional format A2:A4"),
    ("a condition's look", "conditions", [("styles", "FF00FF00", "FF00FF01")], "conditional format A2:A4"),
    ("a list to choose from", "validations", [("sheet1", '"a,b"', '"a,c"')], "data validation B2"),
    ("a filter", "filters", [("sheet1", 'filter val="1"', 'filter val="2"')], "filter autoFilter"),
    ("a table's style", "tables", [("table", "Medium2", "Medium3")], "table Sales"),
    ("a table's range", "tables", [("table", "A1:B4", "A1:B3")], "table Sales"),
    ("a pivot field", "pivots", [("pivot", '"sum"', '"count"')], "pivot table Pivot, dataFields/dataField subtotal"),
    ("a header", "headers", [("sheet1", "Secret", "Public")], "header or footer oddHeader"),
    ("a footer", "headers", [("sheet1", "</headerFooter>", "<oddFooter>&amp;RPaid</oddFooter></headerFooter>")],
     "header or footer oddFooter"),
    ("right to left", "view", [("sheet1", "<sheetView ", '<sheetView rightToLeft="1" ')], "view rightToLeft"),
    ("panes", "view", [("sheet1", 'ySplit="2"', 'ySplit="1"')], "view panes"),
    ("a sparkline", "sparklines", [("sheet1", "Data!A2:A4", "Data!A2:A3")], "sparklines E2"),
    ("a tab", "colours", [("sheet1", "FF00FF00", "FF00FF01")], "colour of the tab"),
    ("a chart's text", "charts", [("chart", "007", "7")], 'master "007", actual "7"'),
    ("a chart's number", "charts", [("chart", ">12<", ">13<")], "numCache/pt/v"),
    ("a chart's format", "charts", [("chart", "#,##0", "0")], "formatCode"),
    ("a text box", "shapes", [("xl/drawing", "Approved", "Rejected")],
     'text box 1 at B21, text: master "Approved", actual "Rejected"'),
    ("a text box's colour", "shapes", [("xl/drawing", "FFFF00", "FF0000")], "solidFill/srgbClr val"),
    ("a picture's place", "pictures", [("xl/drawing", "<row>1</row>", "<row>2</row>")], "picture 1 at F2:H5, place"),
)

LINK = '<hyperlinks><hyperlink ref="A2" location="Data!A1" {}/></hyperlinks>'

# Edits that no reader sees, of the master as well where there are two: (kind, name, edits, the master's edits).
UNSEEN_ROWS = (
    ("sheets", "a number of a sheet", [("xl/workbook", 'name="Data"', 'name="Data" sheetId="7"')]),
    ("rows", "what a row spans", [("sheet1", '<row r="2">', '<row r="2" spans="1:2">')]),
    ("values", "a way to write a number", [("sheet1", "<v>3</v>", "<v>3.0</v>")]),
    ("values", "an empty text", [("sheet1", "</row></sheetData>",
                                  '<c r="C4" t="str"><v></v></c></row></sheetData>')]),
    ("values", "a way to write a character", [("texts", "Name", "Na_x000b_me")], [("texts", "Name", "Na_x000B_me")]),
    ("formulas", "a shared formula", [("sheet1", '"A3"><v>2</v></c>', '"A3"><f t="shared" si="0" ref="A3">1+1</f>'
                                       '<v>2</v></c>')], [("sheet1", '"A3">', '"A3"><f>1+1</f>')]),
    ("formats", "formats that show the same", [("styles", "&quot;$&quot;#,##0;[Red]", "\\$#,##0;[RED]")]),
    ("fonts", "a font of empty cells", [("sheet1", "</row></sheetData>", '<c r="Z4" s="0"/></row></sheetData>')]),
    ("fonts", "a way to write bold", [("styles", "<font><b/>", '<font><b val="1"/>')]),
    ("colours", "black and automatic", [("styles", '<font><sz val="11"/>',
                                         '<font><sz val="11.0"/><color theme="1"/>')]),
    ("fills", "a colour by theme", [("styles", 'rgb="FF4F81BD"', 'theme="4"')]),
    ("fills", "a colour of no fill", [("styles", '<patternFill patternType="none"/>',
                                       '<patternFill patternType="none"><fgColor rgb="FF00FF00"/></patternFill>')]),
    ("borders", "borders that are none", [("styles", "<border/>", "<border><left/><right/></border>")]),
    ("alignment", "an alignment that is the usual one", [
        ("styles", "<cellXfs><xf/>", '<cellXfs><xf><alignment horizontal="general" vertical="bottom"/></xf>')]),
    ("merges", "a count of ranges", [("sheet1", "<mergeCells>", '<mergeCells count="1">')]),
    ("hidden", "a height", [("sheet1", 'ht="20"', 'ht="22"')]),
    ("hidden", "rows not hidden by default", [("sheet1", 'defaultRowHeight="15"', 'zeroHeight="0"')]),
    ("narrow", "a width", [("sheet1", 'width="12"', 'width="13"')]),
    ("names", "quotes around a name", [("xl/workbook.xml", "'Data'!", "Data!")]),
    ("links", "a text beside a link", [("sheet1", "<headerFooter>", LINK.format('display="x"') + "<headerFooter>")],
     [("sheet1", "<headerFooter>", LINK.format("") + "<headerFooter>")]),
    ("comments", "the date of a comment", [("threads", '"2024"', '"2025"')]),
    ("comments", "an author of blanks", [("comments", "Bob", " ")], [("comments", "Bob", "")]),
    ("comments", "runs of a comment", [("comments", "low </t></r><r><t>value", "low value")]),
    ("charts", "a chart's language", [("chart", "en-US", "de-DE")]),
    ("charts", "a chart's printing", [("chart", "</c:chartSpace>", "<c:printSettings><c:pageMargins l='1'/>"
                                       "</c:printSettings></c:chartSpace>")]),
    ("charts", "a chart's format", [("chart", '"$"#', "\\$#")]),
    ("charts", "ids of axes", [("chart", 'axId val="5"', 'axId val="77"')]),
    ("charts", "labels that don't show", [
        ("chart", "<c:cat>", '<c:dLbls><c:dLblPos val="r"/><c:showVal val="0"/></c:dLbls><c:cat>')]),
    ("pictures", "a name of a picture", [("xl/drawing", 'name="p"', 'name="q"')]),
    ("pictures", "an offset", [("xl/drawing", "<colOff>7", "<colOff>9")]),
    ("shapes", "a language of a text", [("xl/drawing", "en-US", "fr-FR")]),
    ("tables", "an id of a table", [("table", 'table id="1"', 'table id="2"')]),
    ("pivots", "a number of a cache", [("pivot", 'cacheId="1"', 'cacheId="2"')]),
    ("conditions", "an order of rules", [("sheet1", 'priority="3"', 'priority="1"')]),
    ("validations", "what is so without saying", [("sheet1", 'type="list"', 'type="list" allowBlank="0"')]),
    ("filters", "an id of a filter", [("sheet1", "<autoFilter", '<autoFilter uid="{1}"')]),
    ("headers", "an empty footer", [("sheet1", "</headerFooter>", "<oddFooter></oddFooter></headerFooter>")]),
    ("view", "zoom", [("sheet1", 'zoomScale="80"', 'zoomScale="90"')]),
    ("sparklines", "an id of a sparkline", [("sheet1", "<x14:sparklineGroup t", '<x14:sparklineGroup uid="1" t')]),
)

# Forms of the files that spreadsheet programs read.
READ_ROWS = (
    ("an empty style", [("sheet1", '<c r="A2">', '<c r="A2" s="">')]),
    ("a relation that leads nowhere", [("workbook.xml.rels", "</R",
                                        '<Relationship Id="" Type="x/y" Target="no"/></R')]),
    ("alternate content in a sheet", [("sheet1", "<drawing", "<mc:AlternateContent><mc:Choice><drawing"),
                                      ("sheet1", "<extLst", "</mc:Choice></mc:AlternateContent><extLst")]),
    ("alternate content", [("styles", "<fonts>", "<mc:AlternateContent><mc:Choice><fonts>"),
                           ("styles", "</fonts>", "</fonts></mc:Choice><mc:Fallback><fonts/></mc:Fallback>"
                                                  "</mc:AlternateContent>")]),
)

PLAN = [["Name", "Plan", "Actual"], *([f"item {number}", number * 7, number * 7.5] for number in range(12))]
SUM = ("B14", "=SUM(B2:B13)")


def with_row(place, rows=PLAN):
    """The plan with a row put in."""
    return [*rows[:place], ["new", 1, 2], *rows[place:]]


def with_column(rows):
    """The plan with a column put in before the second."""
    return [[row[0], f"extra {number}", *row[1:]] for number, row in enumerate(rows)]


# Moves: (name, actual workbook, kinds with their counts as the last line tells them, a text).
MOVED_ROWS = (
    ("a row put in", table(with_row(5), ("B15", "=SUM(B2:B14)")), "1 difference (rows 1)",
     "row 6 of the actual file put in"),
    ("a row at the end", table(with_row(13), ("B15", "=SUM(B2:B14)")), "1 difference (rows 1)", "row 14 of the actual"),
    ("a row taken out", table(PLAN[:4] + PLAN[5:], ("B13", "=SUM(B2:B12)")), "1 difference (rows 1)",
     "row 5 of the master taken out"),
    ("a formula that lags", table(with_row(5), ("B15", "=SUM(B2:B13)")), "2 differences (rows 1, formulas 1)", "B15"),
    ("a row and a value", table(with_row(5, [*PLAN[:9], ["item 8", 0, 60], *PLAN[10:]]), ("B15", "=SUM(B2:B14)")),
     "2 differences (rows 1, values 1)", "cell B11, value: master number 56, actual number 0"),
    ("a column put in", table(with_column(PLAN), ("C14", "=SUM(C2:C13)")), "1 difference (rows 1)",
     "column B of the actual file put in"),
    ("a block moved", table([*PLAN[:2], *PLAN[5:10], *PLAN[2:5], *PLAN[10:]], SUM), "1 difference (rows 1)",
     "rows 3 to 5 moved to rows 8 to 10"),
    ("a blank row", table([*PLAN[:5], [], *PLAN[5:]], ("B15", "=SUM(B2:B14)")), "1 difference (rows 1)",
     "1 blank row put in before row 6 of the master"),
    ("all values", table([[row[0], f"x{row[1]}", f"y{row[2]}"] for row in PLAN], SUM), "26 differences (values 26)",
     "cell B1,"),
)


class XlsxTest(ToolTest):
    def test_workbooks(self):
        master = workbook()
        for name, actual, status, text in XLSX_ROWS:
            with self.subTest(name):
                self.check_pair(XLSX, master, actual, status, text)

    def check_kind(self, name, kind, actual, text):
        """A change must be seen as one of its kind, and not be seen when the kind is left out."""
        with self.subTest(name):
            self.check_pair(XLSX, package(), actual, 1, text)
            self.assertRegex((self.folder / "result").read_text(), rf"\n1 difference \({kind} 1\)\n")
            self.check_pair(XLSX, package(), actual, 0, f"not compared, as asked: {kind}\n", "--ignore", kind)

    def test_kinds(self):
        for name, kind, edits, text in SEEN_ROWS:
            self.check_kind(name, kind, package(*edits), text)
        mark = {"xl/media/picture.png": picture(mark=(210, 30, 30))}
        self.check_kind("a mark in a picture", "pictures", package(**mark), "pixels differ between (5, 5) and (8, 8)")

    def test_what_no_reader_sees(self):
        for kind, name, edits, *masters in UNSEEN_ROWS:
            with self.subTest(f"{kind}: {name}"):
                self.check_pair(XLSX, package(*sum(masters, [])), package(*edits), 0, "no difference")
        for name, edits in READ_ROWS:
            with self.subTest(name):
                self.check_pair(XLSX, package(), package(*edits), 0, "no difference")
        repacked_picture = {"xl/media/picture.png": picture(compress_level=0)}
        self.check_pair(XLSX, package(), package(**repacked_picture), 0, "no difference")
        backslashes = io.BytesIO()
        with zipfile.ZipFile(io.BytesIO(package())) as old, zipfile.ZipFile(backslashes, "w") as new:
            for name in old.namelist():
                new.writestr(name.replace("/", "\\"), old.read(name))
        self.check_pair(XLSX, package(), backslashes.getvalue(), 0, "no difference")

    def test_moved_rows_and_columns(self):
        for name, actual, count, text in MOVED_ROWS:
            with self.subTest(name):
                self.check_pair(XLSX, table(PLAN, SUM), actual, 1, text)
                self.assertIn(f"\n{count}\n", (self.folder / "result").read_text())

    def test_same_bytes_are_the_same(self):
        for data in (b"", b"no workbook", workbook()[:900], b"\xd0\xcf\x11\xe0\xa1\xb1\x1a\xe1" + bytes(600)):
            self.check_pair(XLSX, data, data, 0, "no difference")

    def test_kinds_are_left_out(self):
        actual = workbook(put("B2", value=9))
        for value, status, text in (("values", 0, "no difference"), ("xlsx:values, fonts", 0, "asked: values, fonts"),
                                    ("pdf:words", 1, "B2"), ("valeus", 2, "did you mean 'values'?")):
            with self.subTest(value), unittest.mock.patch.dict(os.environ, MODIFF_IGNORE=value):
                self.check_pair(XLSX, workbook(), actual, status, text)

    def test_groups_are_counted(self):
        rows = [[number] for number in range(1, 60)]
        actual = table([[number + number % 2] for number in range(1, 60)])
        self.check_pair(XLSX, table(rows), actual, 1, "differences (values 30), the first 20 of them shown, all in ")
        result = (self.folder / "result").read_text()
        self.assertEqual((result.count("value: "), result.count("cell A59")), (30, 1))

    def test_results_of_other_pairs_are_kept(self):
        self.write("master", workbook())
        for name, value in (("first", 9), ("second", 8), ("third", 1.5), ("first", 7)):
            self.run_tool(XLSX, "master", self.write(name, workbook(put("B2", value=value))))
        kept = {path.name: path.read_text() for path in self.folder.glob("result-master-????????")}
        self.assertEqual(sorted(text.split("actual: ")[1].split()[0] for text in kept.values()), ["second"])
        self.assertIn("actual number 7", (self.folder / "result").read_text())
        self.run_tool(XLSX, "master", "second")
        self.assertEqual(len(list(self.folder.glob("result-*"))), 1)

    def test_documentation_lists_the_kinds(self):
        script = loaded(XLSX)
        documentation = (TOOLS.parent / "docs/comparing-workbooks.md").read_text()
        help_text = subprocess.run([sys.executable, XLSX, "--help"], capture_output=True, text=True).stdout
        self.assertIn(script.ignore.markdown(script.KINDS, script.UNSEEN), documentation)
        self.assertIn(script.ignore.table(script.KINDS, script.UNSEEN), help_text)
        elsewhere = {"sheets", "rows", "values", "formulas", "merges", "names", "links"}
        self.assertEqual({kind for _, kind, _, _ in SEEN_ROWS} | elsewhere, {kind.name for kind in script.KINDS})
        self.assertEqual({kind for kind, *_ in UNSEEN_ROWS}, {kind.name for kind in script.KINDS})

    def test_hostile_columns_end(self):
        columns = '<col min="1" max="16384" hidden="1"/>' * 200_000
        hostile = package(("sheet1", '<col min="2" max="2" width="12"/>', columns))
        self.check_pair(XLSX, package(), hostile, 1, "hidden column A stands only in the actual file")

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
