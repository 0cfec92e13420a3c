#!/usr/bin/env python3
"""Compares two PDF documents: diffPdfFiles.py [--images DIR] MASTER ACTUAL

Compared are the number of pages, their sizes, the words with their places on the page, and the rendered pages.
Words may be off by TEXT_TOLERANCE; pixels by PIXEL_TOLERANCE, and PAGE_TOLERANCE pixels of a page by more than
that. Names of fonts, producer, dates and ids don't count. --images writes a picture of each differing page: the
actual one with the differing pixels in red and a frame around each differing word, or else around those pixels.

Poppler's programs read the documents, one page at a time and at a bounded size in pixels. What they report as an
error in a document means that it is damaged: then only a difference, never an equivalence, is taken as proved.
"""

import collections
import contextlib
import html
import itertools
import math
import os
import pathlib
import re
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.dirname(os.path.dirname(os.path.realpath(__file__))))
try:
    import modifftools as tool
except ImportError as missing:
    print(f"diffPdfFiles.py: {missing}; the folder modifftools belongs beside this script's folder", file=sys.stderr)
    sys.exit(2)

with tool.clean_exit():
    from PIL import Image, ImageChops, ImageDraw, ImageFilter

MEGABYTES, SECONDS = 1024, 600   # address space of each process, and time of one comparison
MARK_WITHIN = 1024               # bytes at each end that hold a document's first and last mark
MAX_PAGES = 5_000
MAX_WORDS = 1 << 26              # bytes of one page's words, as poppler tells them
SCALE, LONG_SIDE = 1.2, 1_000    # pixels per point of a rendered page, and pixels of its longer side at most
TEXT_TOLERANCE = 0.25            # points that each side of a word's box may be off
PIXEL_TOLERANCE = 24             # of 255, in any colour, after each pixel is averaged with its neighbours
PAGE_TOLERANCE = 12              # pixels of a page that may be off by more
SHOWN = 200                      # differences told on standard output

SIZE = re.compile(r"^Page +\d+ size: +(\S+) x (\S+) pts", re.M)
ROTATION = re.compile(r"^Page +\d+ rot: +(\S+)", re.M)
PAGES = re.compile(r"^Pages: +(\d+)", re.M)
ERROR = re.compile(rb"^[\w/ ]+ Error\b.*$", re.M)
WORD = re.compile(r'<word xMin="([^"]*)" yMin="([^"]*)" xMax="([^"]*)" yMax="([^"]*)">(.*?)</word>', re.S)

Word = collections.namedtuple("Word", "text box")        # box: left, top, right, bottom in points
Page = collections.namedtuple("Page", "width height rotation")   # in points and degrees


class Document:
    """A PDF document as poppler's programs see it."""

    def __init__(self, path):
        self.path = os.path.abspath(path)   # which no program takes for an option
        self.name = path
        self.errors = []                    # what poppler complained about
        with tool.open_input(path) as file:
            if b"%PDF-" not in file.read(MARK_WITHIN):
                raise tool.CannotCompare(f"{path}: no PDF document")
            file.seek(-min(MARK_WITHIN, os.fstat(file.fileno()).st_size), os.SEEK_END)
            if b"%%EOF" not in file.read(MARK_WITHIN):
                raise tool.CannotCompare(f"{path}: damaged (cut short)")
        with self._program("pdfinfo", "-f", "1", "-l", str(MAX_PAGES), self.path) as output:
            text = output.read().decode("utf-8", "replace")
        pages = PAGES.search(text)
        sizes = [[finite(float(side)) for side in size] for size in SIZE.findall(text)]
        self.refuse_damage()
        if not pages or not 0 < int(pages[1]) <= MAX_PAGES or int(pages[1]) != len(sizes):
            raise tool.CannotCompare(f"{path}: {pages[1] if pages else 'no'} pages; "
                                     f"between 1 and {MAX_PAGES} can be compared")
        self.pages = [Page(*size, rotation) for size, rotation in zip(sizes, ROTATION.findall(text))]

    def refuse_damage(self):
        """Raises what poppler complained about."""
        if self.errors:
            raise tool.CannotCompare(f"{self.name}: damaged ({self.errors[0]})")

    @contextlib.contextmanager
    def _program(self, *command):
        """Runs one of poppler's programs and gives what it prints."""
        with tempfile.TemporaryFile() as messages:
            try:
                process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=messages)
            except FileNotFoundError as error:
                raise tool.CannotCompare(f"{command[0]} is missing; install the package poppler-utils") from error
            with process:
                try:
                    yield process.stdout
                    process.stdout.read()
                except BaseException:
                    process.kill()
                    raise
            messages.seek(0)
            self._judge(command[0], process.returncode, messages.read(tool.CHUNK))

    def _judge(self, program, status, messages):
        """Takes up what a program that has ended had to complain about."""
        if b"Incorrect password" in messages:
            raise tool.CannotCompare(f"{self.name}: protected by a password")
        errors = [error.decode("utf-8", "replace") for error in ERROR.findall(messages)]
        if status:
            raise tool.CannotCompare(f"{self.name}: {program} ended with status {status}"
                                     f" ({errors[0] if errors else 'no message'})")
        self.errors += errors

    def words(self, last):
        """Yields the words of each page up to the last."""
        with self._program("pdftotext", "-bbox", "-cropbox", "-l", str(last), self.path, "-") as output:
            page, size, count = [], 0, 0
            for line in iter(lambda: output.readline(MAX_WORDS), b""):
                if line.strip() == b"</page>":
                    yield parse_words(b"".join(page))
                    page, size, count = [], 0, count + 1
                else:
                    page.append(line)
                    size += len(line)
                if size >= MAX_WORDS:
                    raise tool.CannotCompare(f"{self.name}: more words on a page than can be compared")
            if count != last:
                raise tool.CannotCompare(f"{self.name}: damaged (only {count} pages have a text)")

    def images(self, last, long_side):
        """Yields each page up to the last as an image whose longer side has so many pixels."""
        with self._program("pdftoppm", "-cropbox", "-scale-to", str(long_side), "-l", str(last), self.path) as output:
            for _ in range(last):
                kind, size, _depth = (output.readline(64) for _ in range(3))
                if kind != b"P6\n":
                    raise tool.CannotCompare(f"{self.name}: damaged (a page can't be rendered)")
                width, height = map(int, size.split())
                yield Image.frombytes("RGB", (width, height), output.read(width * height * 3))


def parse_words(text):
    """The words of a page, from poppler's account of it."""
    return [Word(html.unescape(word), tuple(finite(float(side)) for side in box))
            for *box, word in WORD.findall(text.decode("utf-8", "replace"))]


def finite(number):
    """The number, or 0 for one that is no place on a page."""
    return number if math.isfinite(number) else 0.0


def near(master, actual):
    """Whether two boxes are the same within the tolerance."""
    return all(abs(left - right) <= TEXT_TOLERANCE for left, right in zip(master, actual))


def without_partners(words, others):
    """The words, and the others, that have no partner of the same text and place."""
    if len(words) == len(others) and all(word.text == other.text and near(word.box, other.box)
                                         for word, other in zip(words, others)):
        return [], []
    places = collections.defaultdict(list)   # (text, column, row of a grid of points) -> words
    for other in others:
        places[other.text, int(other.box[0]), int(other.box[1])].append(other)
    alone = []
    for word in words:
        around = itertools.product((0, -1, 1), repeat=2)
        cells = (places.get((word.text, int(word.box[0]) + x, int(word.box[1]) + y), []) for x, y in around)
        cell, partner = next(((cell, other) for cell in cells for other in cell if near(word.box, other.box)),
                             (None, None))
        if partner:
            cell.remove(partner)
        else:
            alone.append(word)
    return alone, [other for cell in places.values() for other in cell]


def at(box):
    """A place on a page for a reader: points from the left and from the top."""
    return f"({box[0]:.1f}, {box[1]:.1f})"


def word_differences(missing, added):
    """Tells in words how the words without partners differ: changed, moved, missing or added."""
    by_place = {(round(word.box[0]), round(word.box[3])): word for word in added}
    by_text = {word.text: word for word in added}
    told = set()
    for word in missing:
        other = by_place.get((round(word.box[0]), round(word.box[3])))
        moved = by_text.get(word.text)
        if moved and moved not in told:
            told.add(moved)
            yield f'word "{tool.clip(word.text)}" moved from {at(word.box)} to {at(moved.box)}'
        elif other and other not in told:
            told.add(other)
            yield f'word "{tool.clip(word.text)}" at {at(word.box)} became "{tool.clip(other.text)}"'
        else:
            yield f'word "{tool.clip(word.text)}" at {at(word.box)} is missing'
    for word in added:
        if word not in told:
            yield f'word "{tool.clip(word.text)}" at {at(word.box)} is new'


def differing_pixels(master, actual):
    """A mask of what both images cover (255 where they differ visibly) and the number of such pixels."""
    soft = (image.filter(ImageFilter.BoxBlur(1)) for image in (master, actual))   # a letter's edge may shift a bit
    red, green, blue = ImageChops.difference(*soft).split()                       # as large as the smaller image
    worst = ImageChops.lighter(ImageChops.lighter(red, green), blue)
    mask = worst.point([0] * (PIXEL_TOLERANCE + 1) + [255] * (255 - PIXEL_TOLERANCE))
    return mask, mask.histogram()[255]


def draw_differences(image, mask, boxes):
    """The image with the pixels of the mask (if any) in red and a red frame around each box (in pixels)."""
    picture = image.copy()
    if mask:
        picture.paste((255, 0, 0), (0, 0, *mask.size), mask)
    draw = ImageDraw.Draw(picture)
    for left, top, right, bottom in boxes:
        draw.rectangle((left - 3, top - 3, right + 3, bottom + 3), outline=(255, 0, 0))
    return picture


class Comparison:
    """Compares two documents page by page and tells each difference to a report."""

    def __init__(self, master, actual, report, folder):
        self.master, self.actual, self.report, self.folder = master, actual, report, folder

    def run(self):
        """Compares everything."""
        counts = len(self.master.pages), len(self.actual.pages)
        if counts[0] != counts[1]:
            self.report.difference(f"number of pages: master {counts[0]}, actual {counts[1]}")
        last = min(counts)
        largest = max(side for page in (*self.master.pages, *self.actual.pages) for side in page[:2])
        long_side = max(1, round(min(LONG_SIDE, SCALE * largest)))
        with contextlib.ExitStack() as stack:
            streams = [stack.enter_context(contextlib.closing(stream)) for document in (self.master, self.actual)
                       for stream in (document.words(last), document.images(last, long_side))]
            for number, (left_words, left_image, right_words, right_image) in enumerate(zip(*streams, strict=True), 1):
                self._page(number, without_partners(left_words, right_words), left_image, right_image)
        if not self.report.count:
            self.master.refuse_damage()
            self.actual.refuse_damage()

    def _page(self, number, words, left_image, right_image):
        """Compares one page; `words` are those without partners."""
        before = self.report.count
        left, right = self.master.pages[number - 1], self.actual.pages[number - 1]
        scale = max(right_image.size) / max(right.width, right.height, 1)
        same_size = left.rotation == right.rotation and near(left[:2], right[:2])
        if not same_size:
            self.report.difference(f"page {number}: size: master {size(left)}, actual {size(right)}")
        for line in word_differences(*words):
            self.report.difference(f"page {number}: {line}")
        mask, boxes = None, [[side * scale for side in word.box] for word in (*words[0], *words[1])]
        if same_size and left_image.tobytes() != right_image.tobytes():
            mask, count = differing_pixels(left_image, right_image)
            if count > PAGE_TOLERANCE:
                boxes = boxes or [mask.getbbox()]
                place = [side / scale for side in mask.getbbox()]
                self.report.difference(f"page {number}: {count} of {mask.width * mask.height} pixels differ between "
                                       f"{at(place)} and {at(place[2:])}")
        if self.folder and self.report.count > before:
            self._save(number, draw_differences(right_image, mask, boxes))

    def _save(self, number, picture):
        """Writes the picture of a page into the folder."""
        os.makedirs(self.folder, exist_ok=True)
        name = f"{pathlib.Path(self.actual.name).stem[:50]}-page-{number:04}.png"
        with tool.whole_file(os.path.join(self.folder, name)) as file:
            picture.save(file, "PNG")


def size(page):
    """The size of a page for a reader."""
    return f"{page.width:g} x {page.height:g} points, turned by {page.rotation} degrees"


def main(arguments):
    """Runs the comparison that the arguments ask for and returns its status."""
    options = tool.parse_arguments("Compares two PDF documents.", arguments, ("--images", {
        "metavar": "DIR", "help": "folder that gets a picture of each differing page"}))
    master, actual = Document(options.master), Document(options.actual)
    report = tool.Report(SHOWN)
    if not tool.same_files(options.master, options.actual):
        Comparison(master, actual, report, options.images).run()
    return report.verdict()


if __name__ == "__main__":
    with tool.clean_exit():
        tool.bound(MEGABYTES, SECONDS)
        sys.exit(main(sys.argv[1:]))
