"""Tests of diffPdfFiles.py."""

import os
import re
import subprocess
import sys
import unittest
from unittest import mock

from PIL import Image

from documents import document, flowing, letter, offering, password, picture
from tool_test import PDF, TOOLS, ToolTest, loaded

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
     "page 1: drawing differs between (48.0, 108.0) and (132.0, 152.0)\n1 diff"),
    ("a shade", "0.5 g 50 50 80 40 re f", "0.52 g 50 50 80 40 re f", {}, 0, "no difference"),
    ("a dot", "0 g", "0 g 50 50 0.5 0.5 re f", {}, 1, "drawing differs between (48.0, 148.0) and (52.0, 152.0)"),
    ("an absurd size", "0 g", "0 0 500000000 500000000 re f", {"box": "0 0 1000000000 1000000000"}, 1,
     "drawing differs"),
    ("content that can't be read", "0 g", "0 g /F (", {}, 2, "damaged"),
)

A0 = "0 0 2384 3370"
LINES = [f"Line {index} of the text says {index * 7919 % 1000}" for index in range(95)]


def scan(text, points, **keywords):
    """A document whose only text stands in a picture."""
    return document([picture([(20, 100, points, text)], **keywords)])


def bands(grey):
    """Rows with a band behind every second one."""
    rows = " ".join(f"20 {bottom} 260 10 re f" for bottom in range(20, 180, 20))
    return document([f"{grey} g {rows} 0 g", (20, 100, "Sum 12.50")])


def hairs(points, count=7):
    """Hair lines, not quite level so that they aren't put on whole pixels, at several places between these."""
    rows = (50 + 9.31 * index + points for index in range(count))
    return document([" ".join(f"20 {row:.2f} m 80 {row + 0.02:.2f} l 80 {row + 0.3:.2f} l 20 {row + 0.28:.2f} l f"
                              for row in rows)])


def pairs(points, gap, missing=None):
    """Pairs of lines, close to each other, at several places between whole pixels; one of the lines may be missing."""
    rows = (60 + 5.137 * pair + line * (0.4 + gap) + points for pair in range(30) for line in (0, 1)
            if (pair, line) != missing)
    return document(["0.4 w " + " ".join(f"40 {row:.3f} m 140 {row:.3f} l S" for row in rows)])


def shifted(points, size):
    """A text that stands off by so many points both ways."""
    return document([f"BT /F {size} Tf {20 + points} {100 + points} Td (Sum of 1,234.56; red) Tj ET"])


def wide(points):
    """A text so wide that the fine look takes several tiles for it."""
    lines = " ".join(f"BT /F 9 Tf {20 + points} {bottom + points} Td ({'million ' * 40}) Tj ET"
                     for bottom in range(20, 180, 10))
    return document([lines], box="0 0 1300 200")


def annotated(subtype, entries, left=20):
    """A document with an annotation that shows nothing on its page."""
    place = f"/Border [0 0 0] /Rect [{left} 100 60 120]"
    return offering(f"/Annots [<< /Type /Annot /Subtype /{subtype} {place} {entries} >>]")


def linked(target, left=20):
    return annotated("Link", target, left)


def outlined(title, page=6, target="/Dest [{} 0 R /Fit]"):
    return offering("", "/Outlines 8 0 R", ["<< /Type /Outlines /First 9 0 R /Last 9 0 R /Count 1 >>",
                                            f"<< /Title ({title}) /Parent 8 0 R {target.format(page)} >>"])


def attached(text, name="a.txt", entries=""):
    return offering("", f"/Names << /EmbeddedFiles << /Names [({name}) 8 0 R] >> >>",
                    [f"<< /Type /Filespec /F ({name}) /UF ({name}) /EF << /F 9 0 R >> >>",
                     f"<< /Type /EmbeddedFile {entries} /Length {len(text)} >>\nstream\n{text}\nendstream"])


def spaced(gap):
    """A word with a gap, in thousandths of its size, within which it may be split into two."""
    return document([f"BT /F 12 Tf 20 100 Td [(b) -{gap} (ohr)] TJ ET"])


def labelled(entry):
    return offering("", f"/PageLabels << /Nums [0 << {entry} >>] >>")


def stamped(box="/BBox [0 0 9 9]", content="", *forms):
    """A document with a stamp whose looks are a form with such a box and content, which may use more forms."""
    entry = "<< /Type /XObject /Subtype /Form {} /Length {} >>\nstream\n{}\nendstream"
    uses = [f"/Resources << /XObject << /X {number} 0 R >> >>" for number in range(9, 9 + len(forms))]
    looks = [entry.format(f"{box} {use}", len(text), text) for text, use in zip((content, *forms), [*uses, ""])]
    return offering("/Annots [<< /Type /Annot /Subtype /Stamp /Rect [0 0 30 20] /AP << /N 8 0 R >> >>]", "", looks)


def nested_pages():
    """The document of two pages whose first page hangs on a branch of its own."""
    return offering("", "", ["<< /Type /Pages /Parent 2 0 R /Kids [4 0 R] /Count 1 >>"]).replace(
        b"/Kids [4 0 R 6", b"/Kids [8 0 R 6")


def filled(value):
    return offering("/Annots [8 0 R]", "/AcroForm << /Fields [8 0 R] >>", [
        f"<< /Type /Annot /Subtype /Widget /FT /Tx /T (name) /V {value} /F 2 /Rect [20 20 60 40] >>"])


# What must be seen, by kind, and beside it what must not: (kind, name, master, actual, status, text).
SEEN_ROWS = (
    ("drawing", "a digit in a scan", scan("1,234.56", 8), scan("1,234.58", 8), 1, "1 difference"),
    ("drawing", "a comma in a scan", scan("1.234", 12), scan("1,234", 12), 1, "1 difference"),
    ("drawing", "a small digit in a scan", scan("3", 6), scan("8", 6), 1, "1 difference"),
    ("drawing", "rims of letters a shade lighter", scan("1,234.56", 8), scan("1,234.56", 8, rim=40), 0,
     "no difference"),
    ("drawing", "a red digit on A0", document([(40, 100, "1234")], box=A0),
     document(["BT /F 10 Tf 40 100 Td 0 g /F 12 Tf (123) Tj 1 0 0 rg (4) Tj ET"], box=A0), 1, 'at "1234"'),
    ("drawing", "a mark on A0", document([(40, 100, "1")], box=A0), document([(40, 100, "1"), "900 900 6 6 re f"],
                                                                           box=A0), 1, "(908.0, 2472.0)"),
    ("drawing", "light bands", bands(0.95), bands(1), 1, "between (20.0, 28.0) and (280.0, 40.0)"),
    ("drawing", "hair lines off by less than 0.25 points", hairs(0), hairs(0.1), 0, "no difference"),
    ("drawing", "a hair line too many", hairs(0), hairs(0, 8), 1, "1 difference"),
    ("drawing", "close lines off by less than 0.25 points", pairs(0, 0.2), pairs(0.1, 0.2), 0, "no difference"),
    ("drawing", "close lines off, one of them missing", pairs(0, 0.4), pairs(0.1, 0.4, (3, 1)), 1, "1 difference"),
    ("drawing", "a shade of bands", bands(0.95), bands(0.94), 0, "no difference"),
    ("words", "small words off by less than 0.25 points", shifted(0, 6), shifted(0.24, 6), 0, "no difference"),
    ("words", "words off by less than 0.25 points", shifted(0, 30), shifted(0.24, 30), 0, "no difference"),
    ("words", "words off by less than 0.25 points over tiles", wide(0), wide(0.24), 0, "no difference"),
    ("words", "words off by more", shifted(0, 12), shifted(0.5, 12), 1, "1 difference"),
    ("words", "a gap at which a word may end", spaced(99), spaced(101), 0, "no difference"),
    ("words", "a gap that is wider", spaced(99), spaced(150), 1, 'word "bohr" at (20.0, 91.4)'),
    ("words", "a line too many", flowing(LINES), flowing([*LINES[:14], "New line", *LINES[14:]]), 1,
     'page 2: line "New line" at (20.0, 75.4) is new; 81 lines after it moved on\n1 difference\n'),
    ("words", "a block moved", flowing(LINES), flowing(LINES[:10] + LINES[14:40] + LINES[10:14] + LINES[40:]), 1,
     "moved from (20.0, 11.4) to (20.0, 107.4) on page 4; 26 lines after it moved on\n1 difference\n"),
    ("words", "an order of drawing", document([(20, 150, "a"), (90, 150, "b")]),
     document([(90, 150, "b"), (20, 150, "a")]), 0, "no difference"),
    ("words", "words of many lines", flowing(LINES), flowing([line.replace("of", "in") for line in LINES]), 1,
     "95 differences"),
    ("links", "a target", linked("/A << /S /URI /URI (http://a) >>"), linked("/A << /S /URI /URI (http://b) >>"), 1,
     'page 1: link at (20, 100): master "/URI http://a", actual "/URI http://b"'),
    ("links", "a target page", linked("/Dest [4 0 R /Fit]"), linked("/Dest [6 0 R /Fit]"), 1, 'actual "page 2"'),
    ("links", "a place", linked("/Dest [6 0 R /Fit]", 20.4), linked("/Dest [6 0 R /Fit]", 21), 1,
     "link at (20.4, 100)"),
    ("links", "a place within tolerance", linked("/Dest [6 0 R /Fit]", 40.34), linked("/Dest [6 0 R /Fit]", 40.56), 0,
     "no difference"),
    ("links", "an action for a destination", linked("/Dest [6 0 R /Fit]"),
     linked("/A << /S /GoTo /D [6 0 R /Fit] >>"), 0, "no difference"),
    ("annotations", "a text", annotated("Text", "/F 2 /Contents (paid)"),
     annotated("Text", "/F 2 /Contents (due)"), 1, 'master "paid", actual "due"'),
    ("annotations", "a date", annotated("Text", "/F 2 /M (D:2023)"), annotated("Text", "/F 2 /M (D:2024)"), 0,
     "no difference"),
    ("annotations", "looks that a reader complains of", stamped(), stamped(box=""), 0, "no difference"),
    ("outline", "a title", outlined("One"), outlined("Two"), 1, "outline entry One"),
    ("outline", "a target", outlined("One"), outlined("One", 4), 1, 'actual "level 1, page 1"'),
    ("outline", "an action for a destination", outlined("One"),
     outlined("One", 6, "/A << /S /GoTo /D [{} 0 R /Fit] >>"), 0, "no difference"),
    ("attachments", "a content", attached("one"), attached("two"), 1, "attachment a.txt"),
    ("attachments", "a name", attached("one"), attached("one", "b.txt"), 1, "actual attachment b.txt"),
    ("attachments", "a date", attached("one"), attached("one", entries="/Params << /ModDate (D:2025) >>"), 0,
     "no difference"),
    ("fields", "a way to write a value", filled("(x)"), filled("<78>"), 0, "no difference"),
    ("fields", "a value", filled("(x)"), filled("(y)"), 1, "form field name"),
    ("labels", "a style", labelled("/S /D"), labelled("/S /r"), 1,
     'page 2: page label: master "2 in digits", actual "2 in small Roman numerals"'),
    ("labels", "no prefix", labelled("/S /D"), labelled("/S /D /P ()"), 0, "no difference"),
    ("pages", "a page too few", offering(), document([(20, 150, "Dear")]), 1, "number of pages: master 2, actual 1"),
    ("pages", "a branch of its own", offering(), nested_pages(), 0, "no difference"),
    ("size", "a unit", offering(), offering("/UserUnit 2"), 1, "page 1: UserUnit: master 1, actual 2"),
    ("size", "a name that is too long", offering(), offering(f"/{200 * 'x'} 2"), 0, "no difference"),
    ("size", "an entry without meaning", offering(), offering("/Nothing 2"), 0, "no difference"),
)


class PdfTest(ToolTest):
    def test_documents(self):
        for name, actual, status, text in PDF_ROWS:
            with self.subTest(name):
                self.check_pair(PDF, letter(), actual, status, text)
        for name, master, actual, keywords, status, text in DRAWING_ROWS:
            with self.subTest(name):
                self.check_pair(PDF, document([master], **keywords), document([actual], **keywords), status, text)

    def test_kinds(self):
        for kind, name, master, actual, status, text in SEEN_ROWS:
            with self.subTest(f"{kind}: {name}"):
                self.check_pair(PDF, master, actual, status, text)
                if status:
                    with mock.patch.dict(os.environ, MODIFF_IGNORE=f"xlsx:colours, pdf:{kind}"):
                        self.check_pair(PDF, master, actual, 0, f"not compared, as asked: {kind}\nno difference\n")

    def test_every_kind_has_a_row(self):
        kinds = {kind.name for kind in loaded(PDF).KINDS}
        for status in (0, 1):
            self.assertEqual(kinds, {row[0] for row in SEEN_ROWS if row[4] == status})

    def test_the_same_bytes_are_the_same(self):
        for data in (b"no document", letter()[:700], letter(trailer=password())):
            self.check_pair(PDF, data, data, 0, "no difference\n")

    def test_saved_anew_is_no_difference(self):
        self.write("m.pdf", attached("one"))
        subprocess.run(["qpdf", "--linearize", "--object-streams=generate", "m.pdf", "a.pdf"], cwd=self.folder,
                       check=True)
        self.check(self.run_tool(PDF, "m.pdf", "a.pdf"), 0, "no difference")

    def test_kinds_that_are_none(self):
        for text, told in (("word", "did you mean 'words'?"), ("pfd:words", "unknown format 'pfd'")):
            with mock.patch.dict(os.environ, MODIFF_IGNORE=text):
                self.check_pair(PDF, letter(), letter(date="2"), 2, told)

    def test_documentation_lists_what_is_compared(self):
        script = loaded(PDF)
        text = (TOOLS.parent / "docs/comparing-documents.md").read_text()
        self.assertIn(script.ignore.markdown(script.KINDS, script.UNSEEN), text)
        self.assertIn(script.ignore.table(script.KINDS, script.UNSEEN), self.run_tool(PDF, "--help").stdout)

    def test_report_holds_what_is_not_shown(self):
        pages = [[(20, 10 + 16 * index, f"{word}{index}") for index in range(11)] for word in ("a", "b")]
        names = [self.write(name, document(*[[*page, *((150, y, text) for _, y, text in page)]] * 3))
                 for name, page in zip(("m.pdf", "a.pdf"), pages)]
        done = self.run_tool(PDF, "--report", "all", *names)
        self.check(done, 1, "page 2: 2 more; all are in")
        self.assertEqual((self.folder / "all").read_text().count("became"), 66)
        self.assertEqual(done.stdout.count("became"), 60)

    def test_what_makes_a_word_is_left_to_looks(self):
        above, below, both = (65, 209.2, 69.2, 216.3), (65, 216.8, 69.7, 223.8), (65.2, 209.1, 69.9, 223.7)
        lower = (65.2, 210.2, 69.4, 217.3)
        for left, right, differs in (([("0", above), ("d", below)], [("0d", both)], False),
                                     ([("0", above), ("d", below)], [("0b", both)], True),
                                     ([("|", above)], [("|", lower)], False), ([("l", above)], [("l", lower)], True)):
            flow = loaded(PDF).TextFlow(mock.Mock())
            flow.take(1, *([mock.Mock(text=text, box=box) for text, box in side] for side in (left, right)), 300)
            self.assertEqual(flow.differs, differs, right)

    def test_unstable_rendering_is_no_difference(self):
        module = loaded(PDF).pdfpixels
        white, dark = (Image.new("RGB", (400, 400), colour) for colour in ("white", "black"))
        for second, found in ((white, False), (dark, True)):
            documents = [mock.Mock(pages=[(100, 100)]), mock.Mock(pages=[(100, 100)])]
            documents[0].tile.return_value = white
            documents[1].tile.side_effect = [dark, *[second] * 3]
            images = white.resize((100, 100)), dark.resize((100, 100))
            boxes, _ = module.PixelComparison(*documents).look(1, images, [])
            self.assertEqual(bool(boxes), found)

    def test_forms_in_forms_end_in_time(self):
        hostile = stamped("/BBox [0 0 9 9]", *[12 * "/X Do "] * 20, "0 0 1 1 re f")
        code = ("import sys; from tool_test import PDF, loaded; script = loaded(PDF)\n"
                "with script.tool.clean_exit():\n"
                "    script.tool.bound(script.MEGABYTES, 3); sys.exit(script.main(sys.argv[1:]))")
        done = subprocess.run([sys.executable, "-c", code, self.write("m", stamped()), self.write("a", hostile)],
                              cwd=self.folder, env={**os.environ, "PYTHONPATH": os.path.dirname(__file__)},
                              capture_output=True, text=True, timeout=60)
        self.check(done, 2, "longer than 3 seconds")

    def test_pictures_of_differing_pages(self):
        self.check(self.run_tool(PDF, "--images", "out/put", self.write("m.pdf", letter()),
                                 self.write("a.pdf", letter((40, 100, "Respects")))), 1, "page 3")
        (picture,) = (self.folder / "out/put").iterdir()
        self.assertEqual((picture.name, picture.read_bytes()[:4]), ("a-page-0003.png", b"\x89PNG"))


if __name__ == "__main__":
    unittest.main()
