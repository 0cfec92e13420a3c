#!/usr/bin/env python3
"""Compares two PDF documents as their readers see them: diffPdfFiles.py [options] MASTER ACTUAL

KINDS lists what is compared. Documents of the same bytes are the same, whatever a reader of them complains about.
Else the words, the objects and small renderings are looked at; what is costlier only where these differ.

What poppler complains about in one document alone, and isn't known to be harmless, means that it is damaged: then
only a difference, never an equivalence, is taken as proved.
"""

import contextlib
import os
import pathlib
import sys

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.dirname(os.path.dirname(os.path.realpath(__file__))))
try:
    import modifftools as tool
except ImportError as missing:
    print(f"diffPdfFiles.py: {missing}; the folder modifftools belongs beside this script's folder", file=sys.stderr)
    sys.exit(2)

with tool.clean_exit():
    from modifftools import ignore, pdfpixels, pdfstructure
    from modifftools.pdfdocument import Document
    from modifftools.pdfreport import PageReport
    from modifftools.pdfwords import TextFlow, at, near

MEGABYTES, SECONDS = 1024, 600   # address space of each process, and time of one comparison

KINDS = (
    ignore.Kind("pages", "the number of pages"),
    ignore.Kind("size", "size and rotation of each page, and the unit of its measures (UserUnit)"),
    ignore.Kind("words", "the words and their places, aligned line by line; 0.25 points off are the same place"),
    ignore.Kind("drawing", "what each page looks like: pictures, scans, lines, colours, shades"),
    ignore.Kind("links", "links: places, targets"),
    ignore.Kind("annotations", "annotations: kinds, texts, authors"),
    ignore.Kind("fields", "form fields: names, types, values"),
    ignore.Kind("outline", "outline (bookmarks): titles, levels, targets"),
    ignore.Kind("attachments", "attached files: names, contents"),
    ignore.Kind("labels", "the labels of pages"),
)
UNSEEN = (
    "producer, dates, ids, title, author, names of fonts",
    "compression, linearization, order and numbers of objects, PDF version",
    "words, drawings and links off by less than 0.25 points, the rim of a glyph drawn a shade differently",
    "shades off by less than 3 per cent",
    "drawings between lines that moved, on the page where they moved; tags, scripts, permissions",
)
LISTED = ("links", "annotations", "fields", "outline", "attachments", "labels")
MEMBERS = {"annotations": "notes"}   # of Structure, where it isn't the kind's name


class Comparison:
    """Compares two documents and tells each difference to a report."""

    def __init__(self, master, actual, report, ignored, folder):
        self.master, self.actual, self.report, self.ignored, self.folder = master, actual, report, ignored, folder
        self.pixels = pdfpixels.PixelComparison(master, actual)
        self.flow = TextFlow(self if "words" in ignored else report)

    def difference(self, _page, _line):
        """Takes up differences of the words when these don't count."""

    def run(self):
        """Compares everything."""
        counts = len(self.master.pages), len(self.actual.pages)
        if counts[0] != counts[1] and "pages" not in self.ignored:
            self.report.difference(0, f"number of pages: master {counts[0]}, actual {counts[1]}")
        self._pages(min(counts))
        self.flow.close()
        if not {*LISTED, "size"} <= set(self.ignored):
            self._structures()
        if not self.report.count:
            self.master.refuse_damage(self.actual)
            self.actual.refuse_damage(self.master)

    def _pages(self, last):
        """Compares what stands on the pages."""
        side = pdfpixels.quick_side(self.master.pages + self.actual.pages)
        with contextlib.ExitStack() as stack:
            streams = [stack.enter_context(contextlib.closing(stream)) for document in (self.master, self.actual)
                       for stream in (document.words(last), document.images(last, side))]
            for number, page in enumerate(zip(*streams, strict=True), 1):
                self._page(number, *page)

    def _page(self, number, left_words, left_image, right_words, right_image):
        """Compares one page."""
        left, right = self.master.pages[number - 1], self.actual.pages[number - 1]
        same_size = left.rotation == right.rotation and near(left[:2], right[:2])
        if not same_size and "size" not in self.ignored:
            self.report.difference(number, f"size: master {size(left)}, actual {size(right)}")
        boxes = self.flow.take(number, left_words, right_words, max(right[:2]))
        mask, seen = None, []
        if same_size and "drawing" not in self.ignored:
            seen, mask = self.pixels.look(number, (left_image, right_image), boxes)
        for box in seen:
            self.report.difference(number, f"drawing differs between {at(box)} and {at(box[2:])}"
                                           f"{beside(box, right_words)}")
        if self.folder and (seen or boxes or not same_size):
            self._save(number, pdfpixels.marked(right_image, mask, [*boxes, *seen], max(right[:2])))

    def _structures(self):
        """Compares what the documents offer beside the looks of their pages; of pages, those that both have."""
        last = min(len(self.master.pages), len(self.actual.pages))
        left, right = (pdfstructure.Structure(document, places=not self.flow.differs)
                       for document in (self.master, self.actual))
        if "size" not in self.ignored:
            for number, units in enumerate(zip(left.units, right.units), 1):
                if units[0] != units[1]:
                    self.report.difference(number, f"UserUnit: master {units[0]:g}, actual {units[1]:g}")
        for kind in LISTED:
            if kind not in self.ignored:
                lists = ([entry for entry in getattr(side, MEMBERS.get(kind, kind)) if entry[0] <= last]
                         for side in (left, right))
                pdfstructure.compare(*lists, self.report)

    def _save(self, number, picture):
        """Writes the picture of a page into the folder."""
        os.makedirs(self.folder, exist_ok=True)
        name = f"{pathlib.Path(self.actual.name).stem[:50]}-page-{number:04}.png"
        with tool.whole_file(os.path.join(self.folder, name)) as file:
            picture.save(file, "PNG")


def beside(box, words):
    """The words, for a reader, that stand within a box."""
    within = [word.text for word in words if word.box[0] < box[2] and word.box[2] > box[0]
              and word.box[1] < box[3] and word.box[3] > box[1]]
    return f' at "{tool.clip(" ".join(within), 60)}"' if within else ""


def size(page):
    """The size of a page for a reader."""
    return f"{page.width:g} x {page.height:g} points, turned by {page.rotation} degrees"


def compare(options, ignored, file=None):
    """Compares the documents named by the options and returns the status."""
    report = PageReport(file)
    notes = ignore.said(ignored)
    try:
        if not tool.same_files(options.master, options.actual):
            Comparison(Document(options.master), Document(options.actual), report, ignored, options.images).run()
    except tool.CannotCompare as reason:
        if not report.count:
            raise
        notes.append(f"not compared to the end: {reason}")
    return report.close(notes)


def main(arguments):
    """Runs the comparison that the arguments ask for and returns its status."""
    options = tool.parse_arguments(
        "Compares two PDF documents.\n\n" + ignore.table(KINDS, UNSEEN), arguments, ignore.OPTION,
        ("--images", {"metavar": "DIR", "help": "folder that gets a picture of each differing page"}),
        ("--report", {"metavar": "FILE", "help": "file that gets all differences"}))
    ignored = ignore.ignored("pdf", KINDS, options.ignore)
    if not options.report:
        return compare(options, ignored)
    with tool.whole_file(options.report) as file:
        return compare(options, ignored, file)


if __name__ == "__main__":
    with tool.clean_exit():
        tool.bound(MEGABYTES, SECONDS)
        sys.exit(main(sys.argv[1:]))
