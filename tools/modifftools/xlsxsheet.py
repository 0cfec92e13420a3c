"""Reads the cells of a sheet and the texts they share, as streams: there may be millions of them."""

import array
import collections
import functools
import math
import os

from openpyxl.utils.cell import column_index_from_string, get_column_letter

from modifftools.xlsxpackage import (LOCAL, Element, PartParser, TreeParser, decimal_of, is_true, local, unescaped,
                                      whole)
from modifftools.xlsxstyles import PLAIN

LAST_COLUMN = 16_384
FLAT = 2.0      # a row of so many points or less shows nothing
SLIM = 0.1      # and a column of so many characters
RUNS = "\0"     # parts a text from the looks of its runs

KINDS = {"n": "number", "s": "text", "str": "text", "inlineStr": "text", "b": "boolean", "e": "error", "d": "date"}

# A cell; in streams a plain tuple of the same items, ordered by row and column. Column 0 stands for the row itself,
# when it is hidden or has a look. The value is its text in the file, the formula a text, a SharedFormula or None.
Cell = collections.namedtuple("Cell", "row column kind value formula look")
SharedFormula = collections.namedtuple("SharedFormula", "text origin")
END = (math.inf, math.inf)         # sorts behind all cells


@functools.lru_cache(4096)
def empty_look(look):
    """What is seen of a look where a cell has no value."""
    return PLAIN._replace(fill=look.fill, border=look.border)


class RichText:
    """Puts a text together from its runs, without phonetic hints."""

    def __init__(self, styles):
        self._styles = styles
        self._texts, self._looks, self._run, self._phonetic = [], [], None, False

    def start(self, name, attributes):
        """An element inside the text begins."""
        if name == "rPh":
            self._phonetic = True
        elif name == "rPr":
            self._run = Element(name, {})
        elif self._run is not None and name not in ("r", "t"):
            self._run.add(Element(name, local(attributes)))

    def end(self, name, pieces):
        """An element inside the text ends; `pieces` are its characters."""
        if name == "t" and not self._phonetic:
            self._texts.append(unescaped("".join(pieces)))
        elif name == "rPh":
            self._phonetic = False
        elif name == "r" and self._texts:
            self._end_run(len(self._texts[-1]))

    def _end_run(self, length):
        look = "plain"
        if self._run is not None:
            look = f"{self._styles.font(self._run)} {self._styles.colours.shown(self._run.child('color'))}"
        if self._looks and self._looks[-1][1] == look:
            length += self._looks.pop()[0]
        self._looks.append((length, look))
        self._run = None

    def take(self):
        """The text that is complete; looks of its runs follow when there are several."""
        text = "".join(self._texts)
        if len(self._looks) > 1:
            text += RUNS + ", ".join(f"{length} characters {look}" for length, look in self._looks)
        self._texts.clear()
        self._looks.clear()
        self._run = None
        return text


class TextParser(PartParser):
    """Finds each entry of the shared text table."""

    def __init__(self, styles):
        super().__init__()
        self._text = RichText(styles)

    def start_element(self, name, attributes):
        self.pieces.clear()
        self._text.start(LOCAL[name], attributes)

    def end_element(self, name):
        name = LOCAL[name]
        if name == "si":
            self.found.append(self._text.take())
        else:
            self._text.end(name, self.pieces)


class TextTable:
    """The shared texts of a workbook, kept in the file given."""

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


class Columns:
    """Width, visibility and look of each column; entries that overlap earlier ones count for the rest only."""

    def __init__(self, look):
        self._look_of = look
        self._next = list(range(LAST_COLUMN + 2))     # a column -> the first from there without an entry
        self._widths = {}
        self._hidden = {}
        self._looks = {}
        self.default_width = 8.43

    def _free(self, column):
        """The first column from this one on that no entry has taken; shortens the way for the next search."""
        end = column
        while self._next[end] != end:
            end = self._next[end]
        while self._next[column] != end:
            self._next[column], column = end, self._next[column]
        return end

    def add(self, attributes):
        """Takes up an entry for several columns."""
        width = decimal_of(attributes.get("width"), self.default_width)
        hidden = is_true(attributes.get("hidden")) or width <= SLIM
        look = empty_look(self._look_of(whole(attributes.get("style"))))
        column = self._free(max(whole(attributes.get("min"), 1), 1))
        last = min(whole(attributes.get("max"), column), LAST_COLUMN)
        while column <= last:
            self._widths[column] = width
            if hidden:
                self._hidden[column] = ""
            if look != PLAIN:
                self._looks[column] = look
            self._next[column] = column + 1
            column = self._free(column)

    def width(self, column):
        """The width in characters."""
        return self._widths.get(column, self.default_width)

    def look(self, column):
        """What is seen of a column's look where it has no cells."""
        return self._looks.get(column, PLAIN)

    @property
    def hidden(self):
        """The numbers of the hidden columns, in a mapping to nothing."""
        return self._hidden

    @property
    def looks(self):
        """The columns with a look of their own."""
        return self._looks


class SheetParser(TreeParser):
    """Finds the Cells of a sheet; what stands around the cells is complete when the stream has ended."""

    def __init__(self, texts, styles):
        super().__init__(1)
        self.merges = {}           # range -> ""
        self.links = []            # attributes of each hyperlink
        self.around = []           # all other Elements outside of the cells
        self.columns = Columns(styles.look)
        self._texts = texts        # index -> shared text
        self._look = styles.look   # style -> Look
        self._text = RichText(styles)
        self._letters = {}         # letters -> number of the column
        self._shared = {}          # index -> SharedFormula
        self._in_data = self._in_text = False
        self._row, self._row_text, self._row_look, self._column = 0, "0", None, 0
        self._cell, self._value, self._formula, self._formula_attributes = {}, None, None, {}
        self._starts = {"c": self._start_cell, "row": self._start_row, "f": self._start_formula, "is": self._start_text}

    def start_element(self, name, attributes):
        local_name = LOCAL[name]
        if not self._in_data:
            if local_name == "sheetData":
                self._in_data = True
            else:
                super().start_element(name, attributes)
        elif local_name == "v":
            self.pieces.clear()
        elif local_name in self._starts:
            self._starts[local_name](attributes)
        elif self._in_text:
            self.pieces.clear()
            self._text.start(local_name, attributes)

    def end_element(self, name):
        local_name = LOCAL[name]
        if not self._in_data:
            super().end_element(name)
        elif local_name == "v":
            self._value = "".join(self.pieces)
        elif local_name == "c":
            self._end_cell()
        elif local_name == "f":
            self._formula = self._formula_of("".join(self.pieces), self._formula_attributes)
        elif local_name == "is":
            self._value, self._in_text = self._text.take(), False
        elif local_name == "sheetData":
            self._in_data = False
        elif self._in_text:
            self._text.end(local_name, self.pieces)

    def take(self, path, element):
        if not path.endswith("sheet"):
            raise ValueError(f"{path} stands in a sheet's place")
        if element.name == "sheetFormatPr":
            self.columns.default_width = decimal_of(element.get("defaultColWidth"), self.columns.default_width)
        self.around.append(element)

    def consume(self, element):
        if element.name == "mergeCell":
            self.merges[element.get("ref", "")] = ""
        elif element.name == "hyperlink":
            self.links.append(element.attributes)
        elif element.name == "col":
            self.columns.add(element.attributes)
        else:
            return False
        return True

    def _start_text(self, _attributes):
        self._in_text = True

    def _start_row(self, attributes):
        row = int(attributes.get("r") or self._row + 1)
        if row <= self._row:
            raise ValueError(f"row {row} follows row {self._row}")
        self._row, self._row_text, self._row_look, self._column = row, str(row), None, 0
        hidden = is_true(attributes.get("hidden")) or "ht" in attributes and decimal_of(attributes["ht"], 9) <= FLAT
        if is_true(attributes.get("customFormat")):
            self._row_look = empty_look(self._look(whole(attributes.get("s"))))
        if hidden or self._row_look not in (None, PLAIN):
            self.found.append((row, 0, "row", "hidden" if hidden else "", None, self._row_look or PLAIN))

    def _start_cell(self, attributes):
        place = attributes.get("r")
        column = self._column_of(place) if place else self._column + 1
        if column <= self._column:
            raise ValueError(f"cell {place} is out of order")
        self._column = column
        self._cell, self._value, self._formula = attributes, None, None

    def _column_of(self, place):
        letters = place.removesuffix(self._row_text)
        if letters not in self._letters:
            self._letters[letters] = column_index_from_string(letters)
        return self._letters[letters]

    def _end_cell(self):
        value, style = self._value, self._cell.get("s")
        look = self._look(int(style) if style else 0)
        kind = self._cell.get("t", "n")
        if kind == "s" and value:
            value = self._texts(int(value))
        if value or self._formula is not None:
            self.found.append((self._row, self._column, KINDS[kind or "n"] if value else "empty", value or "",
                               self._formula, look))
            return
        look = empty_look(look)
        if look != (self.columns.look(self._column) if self._row_look is None else self._row_look):
            self.found.append((self._row, self._column, "empty", "", None, look))

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
