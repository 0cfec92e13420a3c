#!/usr/bin/env python3
"""Compares two workbooks as their readers see them: DiffXlsx.py -o RESULT [--ignore KIND,...] MASTER ACTUAL

What is compared stands in the table KINDS, what is not in UNSEEN; --help lists both. Rows and columns are aligned
before their cells are compared, so that one put in is one difference. Files of the same bytes are the same.

RESULT lists all differences; it is replaced as a whole when the comparison is complete and stays as it was when the
files cannot be compared. Differences of another pair that it holds are kept beside it. Sheets are read as streams, so
memory doesn't grow with the cells.
"""

import contextlib
import functools
import itertools
import os
import sys

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.dirname(os.path.dirname(os.path.realpath(__file__))))
try:
    import modifftools as tool
except ImportError as missing:
    print(f"DiffXlsx.py: {missing}; the folder modifftools belongs beside this script's folder", file=sys.stderr)
    sys.exit(2)

with tool.clean_exit():
    from openpyxl.utils.cell import get_column_letter

    from modifftools import ignore
    from modifftools.groups import GroupReport
    from modifftools.kept import kept_result
    from modifftools.xlsxaround import Around, Picture, paired
    from modifftools.xlsxbook import Workbook
    from modifftools.xlsxcells import (Areas, is_filled_cell, is_same_plain, is_same_value, kept_cells, placed, quoted,
                                       same_number, shown_formula, shown_runs, shown_value, told_shift, unequal_pairs)
    from modifftools.xlsxsheet import SheetParser
    from modifftools.xlsxshift import UNMOVED, References, found_shift
    from modifftools.xlsxwidth import narrow_columns

MEGABYTES, SECONDS = 512, 600      # address space and time of one comparison
SHOWN = 20                         # differences of a sheet told on standard output
MAX_KEPT = 5_000                   # differing cells remembered before rows are aligned
MAX_ROWS_IN_PLACE = 3              # differing rows one after the other that don't ask for an alignment

KINDS = (
    ignore.Kind("sheets", "names, order and visibility of sheets, the first year of dates"),
    ignore.Kind("rows", "rows and columns put in, taken out or moved, each block as one difference"),
    ignore.Kind("values", "values of cells by type, numbers within one unit in the fifteenth significant digit"),
    ignore.Kind("formulas", "formulas; references that follow moved cells are the same"),
    ignore.Kind("formats", "number formats of filled cells, as they show"),
    ignore.Kind("fonts", "fonts of filled cells (name, size, bold, ...), looks of single words in a cell"),
    ignore.Kind("colours", "colours of the text of filled cells and of tabs"),
    ignore.Kind("fills", "fills of cells, rows and columns"),
    ignore.Kind("borders", "borders of cells, rows and columns"),
    ignore.Kind("alignment", "alignment, wrapping and rotation in filled cells"),
    ignore.Kind("merges", "merged ranges"),
    ignore.Kind("hidden", "rows and columns that are hidden or of no height or width, by default as well"),
    ignore.Kind("narrow", "columns in which numbers are too wide and show as ####"),
    ignore.Kind("names", "defined names"),
    ignore.Kind("links", "hyperlinks of cells"),
    ignore.Kind("comments", "comments, old and threaded, with their authors"),
    ignore.Kind("charts", "charts: place, texts, numbers, formats, looks"),
    ignore.Kind("pictures", "pictures: place, cropping and pixels; backgrounds, pictures in headers"),
    ignore.Kind("shapes", "text boxes and shapes: place, text, looks"),
    ignore.Kind("tables", "tables: range, columns, style"),
    ignore.Kind("pivots", "pivot tables: place, fields, source"),
    ignore.Kind("conditions", "conditional formats with their looks"),
    ignore.Kind("validations", "data validation with its messages"),
    ignore.Kind("filters", "filters and sort orders"),
    ignore.Kind("headers", "headers and footers"),
    ignore.Kind("view", "right-to-left, panes, grid lines, zeros, formulas and headings shown or not"),
    ignore.Kind("sparklines", "sparklines"),
)
UNSEEN = (
    "document properties, calculation chains, ids, the order of style and text tables, revision marks",
    "heights of rows and widths of columns above nothing, where no number turns into ####",
    "zoom, selection, scrolling, the sheet that opens first",
    "paper, margins, page breaks; print areas and titles count as names",
    "number formats, fonts and alignment of empty cells",
    "shifts of drawings within a cell, alternative texts, links of shapes",
    "slicers, SmartArt, embedded objects, captions of form controls, macros, protection",
    "dates of comments, phonetic hints, the language of charts",
)
CELL_KINDS = (("formats", "format", "number format"), ("fonts", "font", "font"), ("colours", "colour", "colour"),
              ("fills", "fill", "fill"), ("borders", "border", "borders"), ("alignment", "alignment", "alignment"))


def same_fact(master, actual):
    """Whether two facts are the same; pictures by their pixels."""
    return master == actual or isinstance(master, Picture) and isinstance(actual, Picture) and master.same(actual)


def compare_facts(report, kind, group, what, sides, same=None):
    """Compares two mappings of name to text; `same` gets a name and both texts when they aren't equal."""
    master, actual = sides
    for name in {**master, **actual}:
        full = f"{what} {tool.clip(name)}".strip()
        if name not in actual or name not in master:
            side = "actual file" if name in actual else "master"
            text = actual.get(name) or master.get(name)
            report.difference(kind, group, f"{full} stands only in the {side}{f': {tool.clip(text)}' if text else ''}")
        elif not same_fact(master[name], actual[name]) and not (same and same(name, master[name], actual[name])):
            report.difference(kind, group, f"{full}: {shown_facts(master[name], actual[name])}")


def shown_facts(master, actual):
    """In what two facts differ."""
    if isinstance(master, Picture) and isinstance(actual, Picture):
        return f"another picture, {master.difference(actual)}"
    return f"master {quoted(master)}, actual {quoted(actual)}"


class Comparison:
    """Compares two open workbooks and tells each difference to a report."""

    def __init__(self, master, actual, report):
        self.master, self.actual, self.report = master, actual, report
        self._references = References({})

    def run(self):
        """Compares everything."""
        left, right = ({sheet.name: sheet for sheet in book.sheets} for book in (self.master, self.actual))
        self._facts("sheets", "", "sheet", *({name: "" for name in sheets} for sheets in (left, right)))
        common = [name for name in left if name in right]
        order = [name for name in right if name in left]
        if common != order:
            self._differ("sheets", "", "order of sheets",
                         *(", ".join(map(quoted, names)) for names in (common, order)))
        self._facts("sheets", "", "visibility of sheet", *({name: sheets[name].state for name in common}
                                                           for sheets in (left, right)))
        if self.master.calendar != self.actual.calendar:
            self._differ("sheets", "", "first year of dates", self.master.calendar, self.actual.calendar)
        pairs = [SheetPair(self, left[name], right[name]) for name in common]
        self._references = References({pair.name: pair.prepare() for pair in pairs})
        self._facts("names", "", "defined name", self.master.names, self.actual.names, self._same_reference)
        for pair in pairs:
            pair.compare(self._references)

    def _same_reference(self, _name, master, actual):
        return self._references.same(master, actual, "")

    def _differ(self, kind, group, what, master, actual):
        self.report.difference(kind, group, f"{what}: master {master}, actual {actual}")

    def _facts(self, kind, group, what, master, actual, same=None):
        compare_facts(self.report, kind, group, what, (master, actual), same)

    @functools.cached_property
    def has_same_tables(self):
        """Whether equal bytes in two sheets mean equal cells."""
        parts = zip(self.master.table_parts, self.actual.table_parts)
        return all(self.is_same_part(*pair) for pair in parts)

    def is_same_part(self, master, actual):
        """Whether two parts (or their absence) are the same byte for byte."""
        if not self.master.holds(master) or not self.actual.holds(actual):
            return self.master.holds(master) == self.actual.holds(actual)
        chunks = itertools.zip_longest(self.master.chunks(master), self.actual.chunks(actual))
        return all(left == right for left, right in chunks)


class SheetPair:
    """Compares two sheets of one name, in two steps: first how their rows and columns moved, then what they hold."""

    def __init__(self, comparison, master, actual):
        self.name = master.name
        self._report = comparison.report
        self._group = f"sheet {quoted(master.name)}"
        self._books = (comparison.master, master.part), (comparison.actual, actual.part)
        self._is_same = comparison.has_same_tables and self._reach_the_same(comparison)
        self._parsers, self._kept, self._shift, self._references = (), [], UNMOVED, None
        self._areas = Areas(self._report, self._group)

    def _reach_the_same(self, comparison):
        """Whether the sheets and all that they point to are the same byte for byte."""
        left, right = (book.reached(part) for book, part in self._books)
        return left == right and all(comparison.is_same_part(part, part) for part in left)

    def prepare(self):
        """Finds the Shift of the sheets. Where few cells differ in place, those are kept for the second step."""
        if not self._is_same:
            self._kept = self._in_place()
            if self._kept is None:
                self._shift = found_shift(*(functools.partial(self._cells, *book) for book in self._books))
        return self._shift

    @staticmethod
    def _cells(book, part):
        return book.cells(part, SheetParser(book.texts.get, book.styles))

    def _streams(self):
        """The cells of both sheets; what stands around them is complete at their ends."""
        self._parsers = [SheetParser(book.texts.get, book.styles) for book, _ in self._books]
        return [book.cells(part, parser) for (book, part), parser in zip(self._books, self._parsers)]

    def _in_place(self):
        """The pairs of cells that differ, or None when the rows have to be aligned first.

        They have to when several rows differ one after the other, or a row has all its cells on one side.
        """
        kept, rows, last, sides = [], 0, 0, set()
        for master, actual in unequal_pairs(*self._streams()):
            row, column = (master or actual)[:2]
            if row != last:
                if sides in ({"master"}, {"actual"}):
                    return None
                rows, last, sides = rows + 1 if row == last + 1 else 1, row, set()
            if column:
                sides.add("actual" if master is None else "master" if actual is None else "both")
            kept.append((master, actual))
            if rows > MAX_ROWS_IN_PLACE or len(kept) > MAX_KEPT:
                return None
        return None if sides in ({"master"}, {"actual"}) else kept

    def compare(self, references):
        """Tells what differs; `references` know the Shifts of all sheets."""
        if self._is_same:
            return
        self._references = references
        self._tell_shift()
        for master, actual in self._unequal() if self._kept is None else self._kept:
            self._cell(master, actual)
        self._areas.close()
        groups, items = zip(*(self._around(*side) for side in zip(self._books, self._parsers)))
        for (kind, what, master), (_, _, actual) in zip(*groups):
            if self._report.counts(kind):
                self._facts(kind, what, self._followed(master), actual)
        self._items(*items)
        self._narrow()

    @staticmethod
    def _around(side, parser):
        book, part = side
        with book.damage_named():
            around = Around(book, part, parser)
            return list(around.groups()), around.items()

    def _tell_shift(self):
        axes = ("row", self._shift.rows, str), ("column", self._shift.columns, get_column_letter)
        for axis in axes:
            for text in told_shift(*axis):
                self._report.difference("rows", self._group, text)

    def _unequal(self):
        """The pairs of cells that differ where rows and columns have been aligned."""
        master, actual = self._streams()
        return unequal_pairs(placed(master, self._shift), kept_cells(actual, self._shift), is_same_plain)

    def _cell(self, master, actual):
        cell = actual or master
        if cell.column == 0:
            self._row(cell.row, master, actual)
            return
        place = f"cell {get_column_letter(cell.column)}{cell.row}"
        calendars = [book.calendar for book, _ in self._books]
        if not is_same_value(master, actual):
            self._differ("values", f"{place}, value", *map(shown_value, (master, actual), calendars))
        elif master and actual and master.value != actual.value and not same_number(master.value, actual.value):
            self._differ("fonts", f"{place}, words in it", *map(shown_runs, (master, actual)))
        formulas = shown_formula(master), shown_formula(actual)
        if not self._references.same(*formulas, self.name):
            self._differ("formulas", f"{place}, formula", *map(tool.clip, formulas))
        self._looks(cell, master, actual)

    def _looks(self, cell, master, actual):
        looks = [item.look if item else None for item in (master, actual)]
        is_filled = is_filled_cell(master) and is_filled_cell(actual)
        for kind, item, what in CELL_KINDS:
            if is_filled or item in ("fill", "border"):
                left, right = (getattr(look, item) if look else "" for look in looks)
                if left != right:
                    self._areas.add(kind, what, cell.row, cell.column, left, right)

    def _row(self, row, master, actual):
        states = [cell.value if cell else "" for cell in (master, actual)]
        if states[0] != states[1]:
            side = "master" if states[0] else "actual file"
            self._report.difference("hidden", self._group, f"hidden row {row} stands only in the {side}")
        for kind, item in (("fills", "fill"), ("borders", "border")):
            left, right = (getattr(cell.look, item) if cell else "" for cell in (master, actual))
            if left != right:
                self._differ(kind, f"row {row}, {item}", quoted(left), quoted(right))

    def _differ(self, kind, what, master, actual):
        self._report.difference(kind, self._group, f"{what}: master {master}, actual {actual}")

    def _facts(self, kind, what, master, actual, same=None):
        compare_facts(self._report, kind, self._group, what, (master, actual), same or self._same_reference)

    def _same_reference(self, _name, master, actual):
        return self._references.same(master, actual, self.name)

    def _followed(self, facts):
        """Facts of the master with references in their names as the actual file has them."""
        return {self._references.moved(name, self.name): text for name, text in facts.items()}

    def _items(self, master, actual):
        """Compares what drawings hold: equal things belong together, then those at one place, then those in order."""
        master = [item._replace(place=self._references.moved(item.place, self.name)) for item in master]
        for kind, what in sorted({(item.kind, item.what) for item in (*master, *actual)}):
            if self._report.counts(kind):
                sides = [[item for item in items if item.what == what] for items in (master, actual)]
                self._items_of(kind, what, *sides)

    def _items_of(self, kind, what, master, actual):
        numbers = {id(item): number for items in (master, actual) for number, item in enumerate(items, 1)}
        for left, right in paired(master, actual):
            item = left or right
            name = f"{what} {numbers[id(item)]} at {item.place}"
            if left is None or right is None:
                side = "actual file" if left is None else "master"
                text = item.facts.get("text", "")
                self._report.difference(kind, self._group, f"{name} stands only in the {side}"
                                                           f"{f': {tool.clip(text)}' if text else ''}")
                continue
            if left.place != right.place:
                self._differ(kind, f"{name}, place", left.place, right.place)
            self._facts(kind, f"{name},", left.facts, right.facts, self._same_in_drawing)

    def _same_in_drawing(self, name, master, actual):
        """Texts of charts are texts; everything else may be a number or a reference."""
        if name == "text" or "/strCache/" in name or "/strLit/" in name or name.endswith("/t"):
            return False
        return same_number(master, actual) or self._references.same(master, actual, self.name)

    def _narrow(self):
        """Compares which columns show numbers as ####; a look at the cells is needed only where widths differ."""
        left, right = (parser.columns for parser in self._parsers)
        columns = {column for column in range(1, 16_385)
                   if left.width(column) != right.width(self._shift.columns.to_actual(column))}
        if columns and self._report.counts("narrow"):
            others = {self._shift.columns.to_actual(column) for column in columns}
            narrow = [narrow_columns(self._cells(*book), parser.columns, chosen)
                      for book, parser, chosen in zip(self._books, self._parsers, (columns, others))]
            self._facts("narrow", "numbers show as #### in column", self._followed_columns(narrow[0]), narrow[1],
                        lambda *_: True)

    def _followed_columns(self, columns):
        return {self._references.moved(f"{name}:{name}", self.name).partition(":")[0]: text
                for name, text in columns.items()}


def compare(master, actual, report):
    """Compares the workbooks of two names; the report gets the differences."""
    with contextlib.ExitStack() as files:
        Comparison(Workbook(master, files), Workbook(actual, files), report).run()


def parse(arguments):
    """The options, and the kinds to be left out."""
    options = tool.parse_arguments(
        f"Compares two workbooks as their readers see them.\n\n{ignore.table(KINDS, UNSEEN)}", arguments,
        ("-o", {"metavar": "RESULT", "required": True, "help": "file that gets the list of all differences"}),
        ignore.OPTION)
    return options, ignore.ignored("xlsx", KINDS, options.ignore)


def main(arguments):
    """Runs the comparison that the arguments ask for and returns its status."""
    options, ignored = parse(arguments)
    for name in (options.master, options.actual):
        if os.path.exists(options.o) and os.path.samefile(options.o, name):
            raise tool.CannotCompare(f"{name}: to be compared, and to be overwritten by the result")
    with kept_result(options.o, options.master, options.actual) as file:
        report = GroupReport(SHOWN, file, options.o, ignored)
        for line in ("Comparison of two workbooks", f"master: {options.master}", f"actual: {options.actual}"):
            report.write(line)
        for line in ignore.said(ignored):
            report.write(line)
            tool.say(line)
        if not tool.same_files(options.master, options.actual):
            compare(options.master, options.actual, report)
        return report.verdict()


if __name__ == "__main__":
    with tool.clean_exit():
        tool.bound(MEGABYTES, SECONDS)
        sys.exit(main(sys.argv[1:]))
