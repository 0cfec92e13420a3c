"""Tests of diffPdfFiles.py."""

import re
import unittest

from documents import document, letter, password
from tool_test import PDF, ToolTest

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


class PdfTest(ToolTest):
    def test_documents(self):
        for name, actual, status, text in PDF_ROWS:
            with self.subTest(name):
                self.check_pair(PDF, letter(), actual, status, text)
        for name, master, actual, keywords, status, text in DRAWING_ROWS:
            with self.subTest(name):
                self.check_pair(PDF, document([master], **keywords), document([actual], **keywords), status, text)

    def test_pictures_of_differing_pages(self):
        self.check(self.run_tool(PDF, "--images", "out/put", self.write("m.pdf", letter()),
                                 self.write("a.pdf", letter((40, 100, "Respects")))), 1, "page 3")
        (picture,) = (self.folder / "out/put").iterdir()
        self.assertEqual((picture.name, picture.read_bytes()[:4]), ("a-page-0003.png", b"\x89PNG"))


if __name__ == "__main__":
    unittest.main()
