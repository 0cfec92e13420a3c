"""Reads the package of a workbook: a zip file of XML parts that point to each other by relationships.

Parts are read as streams. What spreadsheet programs read is read: names with backslashes, relationships that lead
nowhere, alternate content.
"""

import contextlib
import posixpath
import re
import zipfile
import zlib

import modifftools as tool

from defusedxml.expatreader import DefusedExpatParser
from xml.sax import SAXException
from xml.sax.handler import ContentHandler

MAX_PARTS = 20_000                 # files in the package
MAX_UNPACKED = 3 << 30             # bytes of all parts together
MAX_RATIO, RATIO_FROM = 250, 32 << 20   # packed to unpacked, for parts from this many bytes on
MAX_DEPTH = 100                    # nested XML elements
ESCAPE = re.compile("_x([0-9A-Fa-f]{4})_")   # of a character in a text
DAMAGE = (zipfile.BadZipFile, zlib.error, EOFError, SAXException, ValueError, LookupError, NotImplementedError,
          RuntimeError, OverflowError)


class LocalNames(dict):
    """Maps an XML name to the name without its prefix."""

    def __missing__(self, name):
        self[name] = local = name.rpartition(":")[2]
        return local


LOCAL = LocalNames()
TRUTHS = {"true": "1", "false": "0", "on": "1", "off": "0"}


def local(attributes):
    """Attributes by their names without prefixes, declarations of prefixes left out."""
    return {LOCAL[name]: value for name, value in attributes.items() if not name.startswith("xmlns")}


def is_true(text):
    """Whether the text of an attribute means yes."""
    return text in ("1", "true", "on")


def whole(text, default=0):
    """The integer in a text, or the default where there is none."""
    try:
        return int(text)
    except (TypeError, ValueError):
        return default


def decimal_of(text, default=0.0):
    """The number in a text, or the default where there is none."""
    try:
        return float(text)
    except (TypeError, ValueError):
        return default


class Element:
    """An element of a part: name and attributes without prefixes, character data, elements inside."""

    __slots__ = ("name", "attributes", "text", "children")

    def __init__(self, name, attributes):
        self.name, self.attributes, self.text, self.children = name, attributes, "", ()

    def get(self, name, default=None):
        """The value of an attribute."""
        return self.attributes.get(name, default)

    def add(self, child):
        """Takes up an element inside this one."""
        if not self.children:
            self.children = []
        self.children.append(child)

    def child(self, name):
        """The first element of a name directly inside, or None."""
        return next((child for child in self.children if child.name == name), None)

    def walk(self):
        """Yields this element and all inside, as they stand in the part."""
        yield self
        for child in self.children:
            yield from child.walk()

    def all(self, *names):
        """The elements of the names given, at whatever depth."""
        return [element for element in self.walk() if element.name in names]

    def value(self, name, default=None):
        """The attribute `val` of the first element of a name directly inside."""
        child = self.child(name)
        return default if child is None else child.get("val", default)

    def plain_text(self):
        """All text runs inside, one line for each paragraph; without phonetic hints."""
        if self.name == "rPh":
            return ""
        if self.name in ("t", "br"):
            return unescaped(self.text) if self.name == "t" else "\n"
        ends = "\n" if self.name == "p" else ""
        return "".join(child.plain_text() for child in self.children) + ends


def unescaped(text):
    """A text with the characters that stand in it as `_x000B_`, which XML can't hold."""
    return ESCAPE.sub(_character, text) if "_x" in text else text


def _character(escape):
    code = int(escape[1], 16)
    return escape[0].upper() if code == 0 or 0xD800 <= code < 0xE000 else chr(code)


class Wrapper(Element):
    """Alternate content or one of its alternatives: what is inside belongs to the element around it."""

    __slots__ = ()


def flatten(element, skipped=frozenset(), without=frozenset(), path=""):
    """Yields (path, text, element) for each attribute and text in an element.

    `skipped` names elements and `without` attributes that don't count. Elements of one name are numbered.
    """
    for key, value in sorted(element.attributes.items()):
        if key not in without:
            yield f"{path} {key}".strip(), TRUTHS.get(value, value), element
    if element.text.strip():
        yield path, element.text, element
    counted = {}
    for child in element.children:
        if child.name not in skipped:
            counted[child.name] = number = counted.get(child.name, 0) + 1
            name = child.name if number == 1 else f"{child.name} {number}"
            yield from flatten(child, skipped, without, f"{path}/{name}" if path else name)


class PartParser(DefusedExpatParser):
    """A push parser for parts of any length: subclasses take elements as they come and fill `found`.

    Element names are LOCAL[name]; `pieces` holds the character data since it was last cleared.
    """

    def __init__(self):
        super().__init__(forbid_dtd=True)
        self.pieces = []
        self.found = []
        handler = ContentHandler()
        handler.characters = self.pieces.append
        self.setContentHandler(handler)

    def stream(self, chunks):
        """Feeds the chunks of a part and yields what the elements have left in `found`."""
        for chunk in chunks:
            self.feed(chunk)
            yield from self.found
            self.found.clear()
        self.close()
        yield from self.found


class TreeParser(PartParser):
    """Finds (path of the parent, Element) for each element at a depth, where the part's root has the depth 0.

    Of alternate content the first choice counts, or the fallback when there is none.
    """

    def __init__(self, depth):
        super().__init__()
        self._depth = depth
        self._open = []            # elements, wrappers of alternate content among them
        self._wrappers = 0
        self._skipped = 0          # open elements that don't count

    def start_element(self, name, attributes):
        name = LOCAL[name]
        if len(self._open) + self._skipped >= MAX_DEPTH:
            raise ValueError("XML elements are nested too deeply")
        if self._skipped or self._is_passed_over(name):
            self._skipped += 1
            return
        is_wrapper = name == "AlternateContent" or self._is_alternative(name)
        self._wrappers += is_wrapper
        self._open.append((Wrapper if is_wrapper else Element)(name, local(attributes)))
        self.pieces.clear()

    def end_element(self, _name):
        if self._skipped:
            self._skipped -= 1
            return
        element = self._open.pop()
        if isinstance(element, Wrapper):
            self._wrappers -= 1
            self._unwrap(element)
            return
        element.text = "".join(self.pieces)
        self.pieces.clear()
        depth = len(self._open) - self._wrappers
        if depth == self._depth:
            self.take("/".join(outer.name for outer in self._open if not isinstance(outer, Wrapper)), element)
        elif depth > self._depth and not self.consume(element):
            self._open[-1].add(element)

    def take(self, path, element):
        """Called with each element of the depth."""
        self.found.append((path, element))

    def consume(self, _element):
        """Called with each deeper element; one that is used up here doesn't become part of the outer one."""
        return False

    def _unwrap(self, wrapper):
        if self._open:
            for child in wrapper.children:
                self._open[-1].add(child)

    def _is_alternative(self, name):
        return bool(name in ("Choice", "Fallback") and self._open and self._open[-1].name == "AlternateContent")

    def _is_passed_over(self, name):
        """Whether an earlier alternative has been taken; else this one is."""
        if not self._is_alternative(name):
            return False
        taken = "taken" in self._open[-1].attributes
        self._open[-1].attributes["taken"] = "1"
        return taken


class Package:
    """An open package."""

    def __init__(self, path, files):
        """Opens the package at `path`; the stack `files` is to close what it opens."""
        self.path = path
        self.files = files
        with self.damage_named():
            self._package = self._open()
            self._parts = {name.replace("\\", "/").lstrip("/").lower(): name for name in self._package.namelist()}
            if len(self._parts) < len(self._package.namelist()):
                raise ValueError("two parts of one name")

    @contextlib.contextmanager
    def damage_named(self):
        """Tells what goes wrong in the block as damage of this workbook."""
        try:
            yield
        except DAMAGE as error:
            raise tool.CannotCompare(f"{self.path}: damaged or no workbook ({tool.clip(str(error))})") from error

    def _open(self):
        """Opens the zip file after a look at what it announces; more than that is never unpacked."""
        file = self.files.enter_context(tool.open_input(self.path))
        if file.read(8) == b"\xd0\xcf\x11\xe0\xa1\xb1\x1a\xe1":
            raise tool.CannotCompare(f"{self.path}: protected by a password, or of the old binary format")
        package = self.files.enter_context(zipfile.ZipFile(file))
        members = package.infolist()
        if len(members) > MAX_PARTS or sum(member.file_size for member in members) > MAX_UNPACKED:
            raise tool.CannotCompare(f"{self.path}: unpacks to more than a workbook may hold")
        for member in members:
            self._check(member)
        return package

    def _check(self, member):
        if member.flag_bits & 1:
            raise tool.CannotCompare(f"{self.path}: protected by a password")
        if member.compress_type not in (zipfile.ZIP_STORED, zipfile.ZIP_DEFLATED):
            raise ValueError(f"{member.filename} is packed in a way that workbooks don't use")
        if member.file_size > max(RATIO_FROM, MAX_RATIO * member.compress_size):
            raise tool.CannotCompare(f"{self.path}: {member.filename} unpacks to {member.file_size} bytes")

    def holds(self, name):
        """Whether there is a part of a name; upper and lower case don't matter."""
        return bool(name) and name.lower() in self._parts

    def size(self, name):
        """The bytes of a part."""
        return self._package.getinfo(self._parts[name.lower()]).file_size

    def chunks(self, name):
        """Yields the bytes of a part, piece by piece."""
        with self.damage_named(), self._package.open(self._parts[name.lower()]) as part:
            while chunk := part.read(tool.CHUNK):
                yield chunk

    def parsed(self, name, parser):
        """Yields what a PartParser finds in a part."""
        with self.damage_named():
            yield from parser.stream(self.chunks(name))

    def elements(self, name, depth):
        """Yields (path of the parent, Element) of a part, see TreeParser; nothing when there is no such part."""
        return self.parsed(name, TreeParser(depth)) if self.holds(name) else iter(())

    def tree(self, name):
        """The root of a small part; an empty element when there is no such part."""
        return next((root for _, root in self.elements(name, 0)), Element("", {}))

    def related(self, part, kind=""):
        """The targets of the relationships that `part` has to parts of a kind, by id."""
        folder, base = posixpath.split(part)
        targets = {}
        for _, relation in self.elements(f"{folder}/_rels/{base}.rels".lstrip("/"), 1):
            target = relation.get("Target", "")
            if relation.name == "Relationship" and relation.get("Type", "").endswith(kind):
                if relation.get("TargetMode") != "External":
                    target = posixpath.normpath(posixpath.join("/", folder, target.replace("\\", "/"))).lstrip("/")
                targets[relation.get("Id")] = target
        return targets

    def only_related(self, part, kind):
        """The part of a kind that `part` points to, or None."""
        return next((target for target in self.related(part, kind).values() if self.holds(target)), None)
