#!/usr/bin/env python3
"""Compares two workbooks: DiffXlsx.py -o RESULT MASTER ACTUAL

Compared are the sheets with their order and visibility, the values of cells by type, formulas, number formats of
filled cells, merged ranges, hidden rows and columns, defined names, hyperlinks and charts. Numbers are equal
within one unit in the fifteenth significant digit. Document properties, calculation chains, the order of
style and text tables, looks and printing set-up don't count.

RESULT lists every difference; it is replaced as a whole when the comparison is complete and stays as it was
when the files cannot be compared. Both workbooks are read as streams, so memory doesn't grow with the cells.
"""

import array
import collections
import contextlib
import decimal
import functools
import itertools
import math
import os
import posixpath
import sys
import tempfile
import zipfile
import zlib

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.dirname(os.path.dirname(os.path.realpath(__file__))))
try:
    import modifftools as tool
except ImportError as missing:
    print(f"DiffXlsx.py: {missing}; the folder modifftools belongs beside this script's folder", file=sys.stderr)
    sys.exit(2)

with tool.clean_exit():
    from defusedxml.expatreader import DefusedExpatParser
    from openpyxl.formula.translate import Translator
    from openpyxl.styles.numbers import BUILTIN_FORMATS, is_date_format
    from openpyxl.utils.cell import column_index_from_string, get_column_letter
    from openpyxl.utils.datetime import CALENDAR_MAC_1904, CALENDAR_WINDOWS_1900, from_excel
    from xml.sax import SAXException
    from xml.sax.handler import ContentHandler

MEGABYTES, SECONDS = 512, 600      # address space and time of one comparison
MAX_PARTS = 20_000                 # files in the package
MAX_UNPACKED = 3 << 30             # bytes of all parts together
MAX_RATIO, RATIO_FROM = 250, 32 << 20   # packed to unpacked, for parts from this many bytes on
MAX_DEPTH = 100                    # nested XML elements
LAST_COLUMN = 16_384
SHOWN = 20                         # differences told on standard output
DAMAGE = (zipfile.BadZipFile, zlib.error, EOFError, SAXException, ValueError, LookupError, NotImplementedError,
          RuntimeError, OverflowError)

KINDS = {"n": "number", "s": "text", "str": "text", "inlineStr": "text", "b": "boolean", "e": "error", "d": "date"}

# A cell; in streams a plain tuple of the same items, ordered by row and column. Column 0 stands for the row itself,
# when it is hidden. The value is its text in the file, the formula a text, a SharedFormula or None.
Cell = collections.namedtuple("Cell", "row column kind value formula format")
SharedFormula = collections.namedtuple("SharedFormula", "text origin")
Sheet = collections.namedtuple("Sheet", "name state part")
END = (math.inf, math.inf)         # sorts behind all cells


class LocalNames(dict):
    """Maps an XML name to the name without its prefix."""

    def __missing__(self, name):
        self[name] = local = name.rpartition(":")[2]
        return local


LOCAL = LocalNames()


def local(attributes):
    """Attributes by their names without prefixes, declarations of prefixes left out."""
    return {LOCAL[name]: value for name, value in attributes.items() if not name.startswith("xmlns")}


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


class ElementParser(PartParser):
    """Finds (path, attributes, text) of each element at its end; for the small parts of a workbook."""

    def __init__(self):
        super().__init__()
        self.open = []

    def start_element(self, name, attributes):
        if len(self.open) == MAX_DEPTH:
            raise ValueError("XML elements are nested too deeply")
        parent = self.open[-1][0] if self.open else ""
        self.open.append((f"{parent}/{LOCAL[name]}", local(attributes)))
        self.pieces.clear()

    def end_element(self, name):
        self.found.append((*self.open.pop(), "".join(self.pieces)))
        self.pieces.clear()


class TextParser(PartParser):
    """Finds the plain text of each entry of the shared text table, without phonetic hints."""

    def __init__(self):
        super().__init__()
        self.runs = []
        self.phonetic = False

    def start_element(self, name, _attributes):
        name = LOCAL[name]
        if name == "t":
            self.pieces.clear()
        elif name == "rPh":
            self.phonetic = True

    def end_element(self, name):
        name = LOCAL[name]
        if name == "t":
            if not self.phonetic:
                self.runs.append("".join(self.pieces))
        elif name == "rPh":
            self.phonetic = False
        elif name == "si":
            self.found.append("".join(self.runs))
            self.runs.clear()


class SheetParser(TextParser):
    """Finds the Cells of a sheet; what stands around the cells is complete when the stream has ended."""

    def __init__(self, texts, formats):
        super().__init__()
        self.merges = {}           # range -> ""
        self.hidden_columns = {}   # letters -> ""
        self.links = []            # attributes of each hyperlink
        self._texts = texts        # index -> shared text
        self._formats = formats    # style -> number format
        self._columns = {}         # letters -> number
        self._shared = {}          # index -> SharedFormula
        self._row, self._row_text, self._column = 0, "0", 0
        self._cell, self._value, self._formula, self._formula_attributes = {}, None, None, {}
        self._starts = {"c": self._start_cell, "row": self._start_row, "f": self._start_formula,
                        "mergeCell": lambda attributes: self.merges.update({attributes["ref"]: ""}),
                        "hyperlink": lambda attributes: self.links.append(local(attributes)),
                        "col": self._add_hidden_columns}

    def start_element(self, name, attributes):
        name = LOCAL[name]
        if name == "v":
            self.pieces.clear()
        elif name in self._starts:
            self._starts[name](attributes)
        else:
            super().start_element(name, attributes)

    def end_element(self, name):
        name = LOCAL[name]
        if name == "v":
            self._value = "".join(self.pieces)
        elif name == "c":
            self._end_cell()
        elif name == "f":
            self._formula = self._formula_of("".join(self.pieces), self._formula_attributes)
        elif name == "is":
            self._value = "".join(self.runs)
            self.runs.clear()
        elif name == "si":
            raise ValueError("a text table stands in a sheet's place")
        else:
            super().end_element(name)

    def _start_row(self, attributes):
        row = int(attributes.get("r", self._row + 1))
        if row <= self._row:
            raise ValueError(f"row {row} follows row {self._row}")
        self._row, self._row_text, self._column = row, str(row), 0
        if attributes.get("hidden") in ("1", "true"):
            self.found.append((row, 0, "hidden row", "", None, ""))

    def _start_cell(self, attributes):
        place = attributes.get("r")
        column = self._column + 1 if place is None else self._column_of(place)
        if column <= self._column:
            raise ValueError(f"cell {place} is out of order")
        self._column = column
        self._cell, self._value, self._formula = attributes, None, None

    def _column_of(self, place):
        letters = place.removesuffix(self._row_text)
        if letters not in self._columns:
            self._columns[letters] = column_index_from_string(letters)
        return self._columns[letters]

    def _end_cell(self):
        value = self._value
        kind = self._cell.get("t", "n")
        if value is None and self._formula is None:
            return  # styled, but empty
        if kind == "s":
            value = self._texts(int(value or 0))
        self.found.append((self._row, self._column, KINDS[kind] if value or kind != "n" else "empty", value or "",
                           self._formula, self._formats[int(self._cell.get("s", 0))]))

    def _start_formula(self, attributes):
        self.pieces.clear()
        self._formula_attributes = attributes

    def _formula_of(self, text, attributes):
        kind = attributes.get("t", "normal")
        if kind == "shared" and text:
            origin = f"{get_column_letter(self._column)}{self._row}"
            self._shared[attributes["si"]] = SharedFormula(f"={text}", origin)
        elif kind == "shared":
            return self._shared[attributes["si"]]
        elif kind == "array":
            return f"{{={text}}} in {attributes.get('ref')}"
        elif kind == "dataTable":
            return f"data table {sorted(attributes.items())}"
        return f"={text}"

    def _add_hidden_columns(self, attributes):
        if attributes.get("hidden") in ("1", "true"):
            for column in range(int(attributes["min"]), min(int(attributes["max"]), LAST_COLUMN) + 1):
                self.hidden_columns[get_column_letter(column)] = ""


class TextTable:
    """The shared texts of a workbook, kept in the file given: there may be millions of them."""

    def __init__(self, file, texts):
        self._offsets = array.array("Q", [0])
        self._file = file
        for text in texts:
            self._offsets.append(self._offsets[-1] + file.write(text.encode("utf-8")))
        file.flush()
        self.get = functools.lru_cache(4096)(self._get)

    def _get(self, index):
        if index < 0:
            raise IndexError("a negative text index")
        begin = self._offsets[index]
        return os.pread(self._file.fileno(), self._offsets[index + 1] - begin, begin).decode("utf-8")


class Workbook:
    """An open workbook: what stands outside the sheets, and streams of what stands in them."""

    def __init__(self, path, files):
        """Opens the workbook at `path`; the stack `files` is to close what it opens."""
        self.path = path
        self._files = files
        with self.damage_named():
            self._package = self._open_package()
            self._parts = {name.lower(): name for name in self._package.namelist()}
            if len(self._parts) < len(self._package.namelist()):
                raise ValueError("two parts of one name")
            self._part = self._only_related("", "/officeDocument")
            if self._part is None:
                raise ValueError("no workbook inside")
            self._read_structure()
            self.styles_part = self._only_related(self._part, "/styles")
            self.texts_part = self._only_related(self._part, "/sharedStrings")
            self.formats = self._read_formats()

    @contextlib.contextmanager
    def damage_named(self):
        """Tells what goes wrong in the block as damage of this workbook."""
        try:
            yield
        except DAMAGE as error:
            raise tool.CannotCompare(f"{self.path}: damaged or no workbook ({tool.clip(str(error))})") from error

    def _open_package(self):
        """Opens the zip file after a look at what it announces; more than that is never unpacked."""
        file = self._files.enter_context(tool.open_input(self.path))
        if file.read(8) == b"\xd0\xcf\x11\xe0\xa1\xb1\x1a\xe1":
            raise tool.CannotCompare(f"{self.path}: protected by a password, or of the old binary format")
        package = self._files.enter_context(zipfile.ZipFile(file))
        members = package.infolist()
        if len(members) > MAX_PARTS or sum(member.file_size for member in members) > MAX_UNPACKED:
            raise tool.CannotCompare(f"{self.path}: unpacks to more than a workbook may hold")
        for member in members:
            if member.flag_bits & 1:
                raise tool.CannotCompare(f"{self.path}: protected by a password")
            if member.compress_type not in (zipfile.ZIP_STORED, zipfile.ZIP_DEFLATED):
                raise ValueError(f"{member.filename} is packed in a way that workbooks don't use")
            if member.file_size > max(RATIO_FROM, MAX_RATIO * member.compress_size):
                raise tool.CannotCompare(f"{self.path}: {member.filename} unpacks to {member.file_size} bytes")
        return package

    def chunks(self, name):
        """Yields the bytes of a part, piece by piece; upper and lower case of its name don't matter."""
        with self.damage_named(), self._package.open(self._parts[name.lower()]) as part:
            while chunk := part.read(tool.CHUNK):
                yield chunk

    def parsed(self, name, parser):
        """Yields what a PartParser finds in a part."""
        with self.damage_named():
            yield from parser.stream(self.chunks(name))

    def elements(self, name):
        """Yields (path, attributes, text) for the elements of a small part, inner ones first."""
        return self.parsed(name, ElementParser())

    def related(self, part, kind=""):
        """The targets of the relationships that `part` has to parts of a kind, by id."""
        folder, base = posixpath.split(part)
        relations = f"{folder}/_rels/{base}.rels".lstrip("/")
        targets = {}
        with self.damage_named():
            for path, attributes, _ in self.elements(relations) if relations.lower() in self._parts else ():
                if path == "/Relationships/Relationship" and attributes["Type"].endswith(kind):
                    target = attributes["Target"]
                    if attributes.get("TargetMode") != "External":
                        target = posixpath.normpath(posixpath.join("/", folder, target)).lstrip("/")
                    targets[attributes["Id"]] = target
        return targets

    def _only_related(self, part, kind):
        return next(iter(self.related(part, kind).values()), None)

    def _read_structure(self):
        self.sheets, self.names, self.calendar = [], {}, "1900"
        targets = self.related(self._part)
        for path, attributes, text in self.elements(self._part):
            if path == "/workbook/sheets/sheet":
                self.sheets.append(Sheet(attributes["name"], attributes.get("state", "visible"),
                                         targets[attributes["id"]]))
            elif path == "/workbook/definedNames/definedName":
                scope = attributes.get("localSheetId")
                sheet = f" of sheet {quoted(self.sheets[int(scope)].name)}" if scope else ""
                self.names[f"{attributes['name']}{sheet}"] = text
            elif path == "/workbook/workbookPr" and attributes.get("date1904") in ("1", "true"):
                self.calendar = "1904"
        if len({sheet.name for sheet in self.sheets}) < len(self.sheets):
            raise ValueError("two sheets of one name")

    def _read_formats(self):
        """The number format of each cell style."""
        codes, formats = dict(BUILTIN_FORMATS), []
        for path, attributes, _ in self.elements(self.styles_part) if self.styles_part else ():
            if path == "/styleSheet/numFmts/numFmt":
                codes[int(attributes["numFmtId"])] = attributes["formatCode"]
            elif path == "/styleSheet/cellXfs/xf":
                number = int(attributes.get("numFmtId", 0))
                code = codes.get(number, f"built-in format {number}")
                formats.append("General" if code.lower() == "general" else code)
        return formats or ["General"]

    @functools.cached_property
    def texts(self):
        """The shared texts, read when the first sheet asks for them."""
        file = self._files.enter_context(tempfile.TemporaryFile())
        return TextTable(file, self.parsed(self.texts_part, TextParser()) if self.texts_part else ())

    def links(self, part, parser):
        """The hyperlinks of a sheet: range -> target."""
        targets = self.related(part)
        found = {}
        with self.damage_named():
            for link in parser.links:
                target = targets[link["id"]] if "id" in link else ""
                place = f"#{link['location']}" if "location" in link else ""
                tip = f" ({link['tooltip']})" if "tooltip" in link else ""
                found[link["ref"]] = f"{target}{place}{tip}"
        return found

    def charts(self, part):
        """The charts of a sheet as [(place, facts)], in the order of the drawing."""
        charts = []
        with self.damage_named():
            for drawing in self.related(part, "/drawing").values():
                chart_parts = self.related(drawing)
                anchor = {}
                for path, attributes, text in self.elements(drawing):
                    if path.endswith(("/from/col", "/from/row")):
                        anchor[path[-3:]] = int(text)
                    elif path.endswith("/graphicData/chart"):
                        place = f"{get_column_letter(anchor.get('col', 0) + 1)}{anchor.get('row', 0) + 1}"
                        charts.append((place, self._chart_facts(chart_parts[attributes["id"]])))
        return charts

    def _chart_facts(self, part):
        """Flattens a chart into path -> text, without extensions; ids of axes are numbered as they come."""
        facts, axes, seen = {}, {}, collections.Counter()
        for path, attributes, text in self.elements(part):
            if "/extLst" in path:
                continue
            seen[path] += 1
            if path.endswith(("/axId", "/crossAx")):
                attributes = {"val": f"axis {axes.setdefault(attributes.get('val'), len(axes) + 1)}"}
            name = f"{path[1:]} {seen[path]}"
            for key, value in attributes.items():
                if key not in ("id", "embed"):
                    facts[f"{name} {key}"] = value
            if text.strip():
                facts[name] = text
        return facts


def quoted(text):
    """A text as it is shown in a report."""
    return f'"{tool.clip(text)}"'


def same_value(kind, master, actual):
    """Whether two values of a kind, as they stand in the file, are equal."""
    return master == actual or kind == "number" and same_number(master, actual)


def same_number(master, actual):
    """Whether two numbers agree within one unit in the fifteenth significant digit of the larger."""
    try:
        left, right = decimal.Decimal(master), decimal.Decimal(actual)
        larger = max(left, right, key=abs)
        return left == right or abs(left - right) <= decimal.Decimal((0, (1,), larger.adjusted() - 14))
    except (decimal.DecimalException, OverflowError, ValueError):
        return False


def shown_value(cell, calendar):
    """The value of a cell with its type; a number under a date format with its date as well."""
    if cell is None or cell.kind == "empty":
        return "empty"
    if cell.kind == "text":
        return quoted(cell.value)
    date = ""
    if cell.kind == "number" and is_date_format(cell.format):
        epoch = CALENDAR_MAC_1904 if calendar == "1904" else CALENDAR_WINDOWS_1900
        with contextlib.suppress(ValueError, OverflowError, TypeError):
            date = f" ({from_excel(float(cell.value), epoch)})"
    return f"{cell.kind} {tool.clip(cell.value)}{date}"


def shown_formula(cell):
    """The formula of a cell as it reads in that cell."""
    formula = cell.formula if cell else None
    if isinstance(formula, SharedFormula):
        place = f"{get_column_letter(cell.column)}{cell.row}"
        return Translator(formula.text, formula.origin).translate_formula(place)
    return formula or "none"


def unequal_pairs(master, actual):
    """Walks two streams of cells in step; yields the pairs that are not the same, None for a missing cell."""
    left, right = next(master, END), next(actual, END)
    while left is not END or right is not END:
        if left == right:
            left, right = next(master, END), next(actual, END)
        elif left[:2] == right[:2]:
            yield Cell(*left), Cell(*right)
            left, right = next(master, END), next(actual, END)
        elif left[:2] < right[:2]:
            yield Cell(*left), None
            left = next(master, END)
        else:
            yield None, Cell(*right)
            right = next(actual, END)


class Comparison:
    """Compares two open workbooks and tells each difference to a report."""

    def __init__(self, master, actual, report):
        self.master, self.actual, self.report = master, actual, report

    def run(self):
        """Compares everything."""
        left, right = ({sheet.name: sheet for sheet in book.sheets} for book in (self.master, self.actual))
        self._facts("", "sheet", *({name: "" for name in sheets} for sheets in (left, right)))
        common = [name for name in left if name in right]
        order = [name for name in right if name in left]
        if common != order:
            self._differ("", "order of sheets", *(", ".join(map(quoted, names)) for names in (common, order)))
        self._facts("", "visibility of sheet", *({name: sheets[name].state for name in common}
                                                 for sheets in (left, right)))
        self._facts("", "defined name", self.master.names, self.actual.names)
        if self.master.calendar != self.actual.calendar:
            self._differ("", "first year of dates", self.master.calendar, self.actual.calendar)
        for name in common:
            self._sheet(f"sheet {quoted(name)}, ", left[name].part, right[name].part)

    def _differ(self, place, what, master, actual):
        self.report.difference(f"{place}{what}: master {master}, actual {actual}")

    def _facts(self, place, what, master, actual, same=str.__eq__):
        """Compares two mappings of name to text."""
        for name in {**master, **actual}:
            if name not in actual or name not in master:
                side = "actual file" if name in actual else "master"
                text = actual.get(name) or master.get(name)
                self.report.difference(f"{place}{what} {tool.clip(name)} stands only in the {side}"
                                       f"{f': {tool.clip(text)}' if text else ''}")
            elif not same(master[name], actual[name]):
                self._differ(place, f"{what} {tool.clip(name)}", quoted(master[name]), quoted(actual[name]))

    def _same_part(self, master, actual):
        """Whether two parts (or their absence) are the same byte for byte."""
        if master is None or actual is None:
            return master is actual
        chunks = itertools.zip_longest(self.master.chunks(master), self.actual.chunks(actual))
        return all(left == right for left, right in chunks)

    @functools.cached_property
    def _same_tables(self):
        """Whether equal bytes in two sheets mean equal cells."""
        return (self._same_part(self.master.styles_part, self.actual.styles_part)
                and self._same_part(self.master.texts_part, self.actual.texts_part))

    def _sheet(self, place, master_part, actual_part):
        books = ((self.master, master_part), (self.actual, actual_part))
        if not (self._same_tables and self._same_part(master_part, actual_part)
                and self.master.related(master_part) == self.actual.related(actual_part)):
            self._cells_and_around(place, books)
        self._charts(place, *(book.charts(part) for book, part in books))

    def _cells_and_around(self, place, books):
        """Compares what the parts of a sheet hold; `books` are the pairs of workbook and part."""
        parsers = [SheetParser(book.texts.get, book.formats) for book, _ in books]
        streams = [book.parsed(part, parser) for (book, part), parser in zip(books, parsers)]
        for master, actual in unequal_pairs(*streams):
            self._cell(place, master, actual)
        left, right = parsers
        self._facts(place, "merged range", left.merges, right.merges)
        self._facts(place, "hidden column", left.hidden_columns, right.hidden_columns)
        self._facts(place, "hyperlink", *(book.links(part, parser) for (book, part), parser in zip(books, parsers)))

    def _cell(self, place, master, actual):
        cell = master or actual
        if cell.column == 0:
            side = "master" if master else "actual file"
            self.report.difference(f"{place}hidden row {cell.row} stands only in the {side}")
            return
        place = f"{place}cell {get_column_letter(cell.column)}{cell.row}, "
        if not (master and actual and master.kind == actual.kind
                and same_value(cell.kind, master.value, actual.value)):
            self._differ(place, "value", shown_value(master, self.master.calendar),
                         shown_value(actual, self.actual.calendar))
        formulas = shown_formula(master), shown_formula(actual)
        if formulas[0] != formulas[1]:
            self._differ(place, "formula", *map(tool.clip, formulas))
        if master and actual and master.format != actual.format:
            self._differ(place, "number format", quoted(master.format), quoted(actual.format))

    def _charts(self, place, master, actual):
        counts = [{f"{number}": f"at {chart[0]}" for number, chart in enumerate(charts, 1)}
                  for charts in (master, actual)]
        self._facts(place, "chart", *counts)
        for number, (left, right) in enumerate(zip(master, actual), 1):
            self._facts(f"{place}chart {number},", "", left[1], right[1],
                        same=functools.partial(same_value, "number"))


def compare(master, actual, report):
    """Compares the workbooks of two names; the report gets the differences."""
    with contextlib.ExitStack() as files:
        Comparison(Workbook(master, files), Workbook(actual, files), report).run()


def main(arguments):
    """Runs the comparison that the arguments ask for and returns its status."""
    options = tool.parse_arguments("Compares two workbooks.", arguments, ("-o", {
        "metavar": "RESULT", "required": True, "help": "file that gets the list of all differences"}))
    for name in (options.master, options.actual):
        if os.path.exists(options.o) and os.path.samefile(options.o, name):
            raise tool.CannotCompare(f"{name}: to be compared, and to be overwritten by the result")
    with tool.whole_file(options.o) as file:
        report = tool.Report(SHOWN, file)
        report.write("Comparison of two workbooks")
        report.write(f"master: {options.master}")
        report.write(f"actual: {options.actual}")
        compare(options.master, options.actual, report)
        return report.verdict()


if __name__ == "__main__":
    with tool.clean_exit():
        tool.bound(MEGABYTES, SECONDS)
        sys.exit(main(sys.argv[1:]))
