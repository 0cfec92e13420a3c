"""A PDF document as poppler's and qpdf's programs see it: pages, words, renderings, objects.

Each program is a process of its own, so that a document that harms its reader doesn't harm the comparison.
"""

import collections
import contextlib
import html
import json
import math
import os
import re
import subprocess
import tempfile

from PIL import Image

import modifftools as tool

MARK_WITHIN = 1024         # bytes at each end that hold a document's first and last mark
MAX_PAGES = 5_000
MAX_WORDS = 1 << 26        # bytes of one page's words, as poppler tells them
MAX_OBJECTS = 1 << 28      # bytes of a document's objects, as qpdf tells them
PACKAGES = {"qpdf": "qpdf"}   # which brings a program; all others come with poppler

SIZE = re.compile(r"^Page +\d+ size: +(\S+) x (\S+) pts", re.M)
ROTATION = re.compile(r"^Page +\d+ rot: +(\S+)", re.M)
PAGES = re.compile(r"^Pages: +(\d+)", re.M)
ERROR = re.compile(rb"^[\w/ ]+ Error\b.*$", re.M)
WORD = re.compile(r'<word xMin="([^"]*)" yMin="([^"]*)" xMax="([^"]*)" yMax="([^"]*)">(.*?)</word>', re.S)
WHERE = re.compile(r" \(\d+\)|\d+")   # what differs between two complaints of the same kind

# What poppler complains about although it shows the page as every viewer does.
HARMLESS = re.compile(r"font|bounding box|name token|language pack|character collection|annotation|destination"
                      r"|[Cc]olor ?[Ss]pace|ICC|profile|[Xx]ref|tagged|[Ss]truct|outline|optional content|PDF version"
                      r"|bad file sp\w+|named? tree", re.I)

Word = collections.namedtuple("Word", "text box")        # box: left, top, right, bottom in points
Page = collections.namedtuple("Page", "width height rotation")   # in points and degrees
Tile = collections.namedtuple("Tile", "left top width height")   # part of a rendered page, in pixels


class Document:
    """A PDF document of a given path. Raises CannotCompare for what no viewer opens."""

    def __init__(self, path):
        self.path = os.path.abspath(path)   # which no program takes for an option
        self.name = path
        self.complaints = {}                # of poppler: without what differs each time -> as it stands
        self._refuse_fragments()
        with self._program("pdfinfo", "-f", "1", "-l", str(MAX_PAGES), self.path) as output:
            text = output.read().decode("utf-8", "replace")
        pages = PAGES.search(text)
        sizes = [[finite(float(side)) for side in size] for size in SIZE.findall(text)]
        if not pages or not 0 < int(pages[1]) <= MAX_PAGES or int(pages[1]) != len(sizes):
            why = "; ".join(["", *list(self.complaints.values())[:1]])
            raise tool.CannotCompare(f"{path}: {pages[1] if pages else 'no'} pages; "
                                     f"between 1 and {MAX_PAGES} can be compared{why}")
        self.pages = [Page(*size, rotation) for size, rotation in zip(sizes, ROTATION.findall(text))]

    def _refuse_fragments(self):
        """Raises what the two ends of the file tell."""
        with tool.open_input(self.path) as file:
            if b"%PDF-" not in file.read(MARK_WITHIN):
                raise tool.CannotCompare(f"{self.name}: no PDF document")
            file.seek(-min(MARK_WITHIN, os.fstat(file.fileno()).st_size), os.SEEK_END)
            if b"%%EOF" not in file.read(MARK_WITHIN):
                raise tool.CannotCompare(f"{self.name}: damaged (cut short)")

    def refuse_damage(self, other):
        """Raises what poppler complained about here alone, unless it shows such pages as they should be."""
        for kind, complaint in self.complaints.items():
            if kind not in other.complaints and not HARMLESS.search(kind):
                raise tool.CannotCompare(f"{self.name}: damaged ({complaint})")

    @contextlib.contextmanager
    def _program(self, *command, fine=(0,)):
        """Runs a program and gives what it prints; other statuses than the fine ones are raised."""
        with tempfile.TemporaryFile() as messages:
            try:
                process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=messages)
            except FileNotFoundError as error:
                package = PACKAGES.get(command[0], "poppler-utils")
                raise tool.CannotCompare(f"{command[0]} is missing; install the package {package}") from error
            with process:
                try:
                    yield process.stdout
                    process.stdout.read()
                except BaseException:
                    process.kill()
                    raise
            messages.seek(0)
            self._judge(command[0], process.returncode in fine, process.returncode, messages.read(tool.CHUNK))

    def _judge(self, program, well, status, messages):
        """Takes up what a program that has ended had to complain about."""
        if b"Incorrect password" in messages:
            raise tool.CannotCompare(f"{self.name}: protected by a password")
        errors = [error.decode("utf-8", "replace") for error in ERROR.findall(messages)]
        if not well:
            told = errors or messages.decode("utf-8", "replace").split("\n")
            raise tool.CannotCompare(f"{self.name}: {program} ended with status {status}"
                                     f" ({told[0] or 'no message'})")
        for error in errors:
            self.complaints.setdefault(WHERE.sub("", error), error)

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
                yield self._read_image(output)

    def tile(self, page, long_side, tile):
        """A tile of the page that would be so many pixels long, as an image."""
        numbers = (str(number) for number in (page, page, long_side, *tile))
        names = "-f", "-l", "-scale-to", "-x", "-y", "-W", "-H"
        options = [item for pair in zip(names, numbers) for item in pair]
        with self._program("pdftoppm", "-cropbox", *options, self.path) as output:
            return self._read_image(output)

    def _read_image(self, stream):
        kind, size, _depth = (stream.readline(64) for _ in range(3))
        if kind != b"P6\n":
            raise tool.CannotCompare(f"{self.name}: damaged (a page can't be rendered)")
        width, height = map(int, size.split())
        return Image.frombytes("RGB", (width, height), stream.read(width * height * 3))

    def objects(self, keep):
        """The parts of qpdf's account of the document; each dictionary in it is what `keep` makes of it."""
        keys = (f"--json-key={key}" for key in ("qpdf", "outlines", "pages", "attachments", "acroform"))
        with self._program("qpdf", "--json=2", *keys, self.path, fine=(0, 3)) as output:   # 3: with warnings
            text = output.read(MAX_OBJECTS)
            if len(text) == MAX_OBJECTS:
                raise tool.CannotCompare(f"{self.name}: more objects than can be compared")
        return json.loads(text.decode("utf-8", "replace"), object_hook=keep)

    def stream(self, reference):
        """Yields the bytes of the stream object of a reference, such as "12 0 R"."""
        with self._program("qpdf", f"--show-object={','.join(reference.split()[:2])}", "--filtered-stream-data",
                           self.path, fine=(0, 3)) as output:
            yield from iter(lambda: output.read(tool.CHUNK), b"")


def parse_words(text):
    """The words of a page, from poppler's account of it."""
    return [Word(html.unescape(word), tuple(finite(float(side)) for side in box))
            for *box, word in WORD.findall(text.decode("utf-8", "replace"))]


def finite(number):
    """The number, or 0 for one that is no place on a page."""
    return number if math.isfinite(number) else 0.0
