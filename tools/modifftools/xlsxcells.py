"""Compares cells in step and tells them in words."""

import contextlib
import decimal

from openpyxl.formula.translate import Translator
from openpyxl.styles.numbers import is_date_format
from openpyxl.utils.cell import get_column_letter
from openpyxl.utils.datetime import CALENDAR_MAC_1904, CALENDAR_WINDOWS_1900, from_excel

import modifftools as tool
from modifftools.xlsxsheet import END, RUNS, Cell, SharedFormula

MAX_OPEN = 1_000    # areas that may still grow


def is_same_cell(left, right):
    """Whether two cells at one place, as plain tuples, differ at most in how a number is written."""
    return left == right or (left[2] == right[2] == "number" and left[4:] == right[4:] and left[:2] == right[:2]
                             and same_number(left[3], right[3]))


def is_same_plain(left, right):
    """The same for cells without a formula: an equal one may mean other cells after rows have moved."""
    return left[4:5] == (None,) and is_same_cell(left, right)


def unequal_pairs(master, actual, same=is_same_cell):
    """Walks two streams of cells in step; yields the pairs that are not the same, None for a missing cell."""
    left, right = next(master, END), next(actual, END)
    while left is not END or right is not END:
        if left is not END and right is not END and same(left, right):
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


def placed(cells, shift):
    """Cells of the master at their places in the actual file, without rows and columns that have left theirs."""
    for cell in cells:
        row, column = cell[:2]
        if not shift.rows.is_left_out(0, row) and not (column and shift.columns.is_left_out(0, column)):
            yield shift.rows.to_actual(row), column and shift.columns.to_actual(column), *cell[2:]


def kept_cells(cells, shift):
    """Cells of the actual file without the rows and columns that were put in or moved."""
    for cell in cells:
        if not shift.rows.is_left_out(1, cell[0]) and not (cell[1] and shift.columns.is_left_out(1, cell[1])):
            yield cell


def told_shift(what, alignment, name):
    """Yields what became of rows or columns, in words; `name` turns their numbers into text."""

    def blocks(number, length):
        return f"{what} {name(number)}" if length == 1 else f"{what}s {name(number)} to {name(number + length - 1)}"

    for block in alignment.moved:
        yield f"{blocks(block.master, block.length)} moved to {blocks(block.actual, block.length)}"
    for block in alignment.removed:
        yield f"{blocks(block.master, block.length)} of the master taken out"
    for block in alignment.added:
        yield f"{blocks(block.actual, block.length)} of the actual file put in"
    for number, count in alignment.blanks:
        words = f"{abs(count)} blank {what}{'' if abs(count) == 1 else 's'}"
        yield f"{words} {'put in' if count > 0 else 'taken out'} before {what} {name(number)} of the master"


def quoted(text):
    """A text as it is shown in a report."""
    return f'"{tool.clip(text)}"'


def is_filled_cell(cell):
    """Whether a cell holds a value or a formula."""
    return bool(cell and (cell.value or cell.formula is not None))


def is_same_value(master, actual):
    """Whether the values of two cells are equal; a missing cell is one without a value."""
    left, right = ((cell.kind, cell.value) if cell and cell.value else ("empty", "") for cell in (master, actual))
    if left[0] != right[0]:
        return False
    if left[0] == "number":
        return same_number(left[1], right[1])
    return left[1].partition(RUNS)[0] == right[1].partition(RUNS)[0]


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
    if cell is None or not cell.value:
        return "empty"
    if cell.kind == "text":
        return quoted(cell.value.partition(RUNS)[0])
    date = ""
    if cell.kind == "number" and is_date_format(cell.look.format):
        epoch = CALENDAR_MAC_1904 if calendar == "1904" else CALENDAR_WINDOWS_1900
        with contextlib.suppress(ValueError, OverflowError, TypeError):
            date = f" ({from_excel(float(cell.value), epoch)})"
    return f"{cell.kind} {tool.clip(cell.value)}{date}"


def shown_runs(cell):
    """How the words of a cell look."""
    return tool.clip(cell.value.partition(RUNS)[2] or "in one look")


def shown_formula(cell):
    """The formula of a cell as it reads in that cell."""
    formula = cell.formula if cell else None
    if isinstance(formula, SharedFormula):
        return Translator(formula.text, formula.origin).translate_formula(f"{get_column_letter(cell.column)}{cell.row}")
    return formula or "none"


class Areas:
    """Gathers cells, given row by row, that differ in the same way, so that an area is one difference."""

    def __init__(self, report, group):
        self._report, self._group = report, group
        self._open = {}    # what differs and the columns -> [first row, last row]
        self._run = {}     # what differs -> [row, first column, last column]

    def add(self, kind, what, row, column, master, actual):
        """Takes up a cell that differs in what is named."""
        key = kind, what, master, actual
        run = self._run.get(key)
        if run and run[0] == row and run[2] == column - 1:
            run[2] = column
            return
        if run:
            self._end_run(key, run)
        self._run[key] = [row, column, column]

    def _end_run(self, key, run):
        row, first, last = run
        area = self._open.get((key, first, last))
        if area and area[1] == row - 1:
            area[1] = row
            return
        if area:
            self._tell(key, first, last, area)
        elif len(self._open) >= MAX_OPEN:
            self._tell_all()
        self._open[key, first, last] = [row, row]

    def _tell(self, key, first, last, rows):
        kind, what, master, actual = key
        corners = [f"{get_column_letter(column)}{row}" for column, row in zip((first, last), rows)]
        place = f"cell {corners[0]}" if corners[0] == corners[1] else f"cells {':'.join(corners)}"
        self._report.difference(kind, self._group, f"{place}, {what}: master {quoted(master or 'none')},"
                                                   f" actual {quoted(actual or 'none')}")

    def _tell_all(self):
        for (key, first, last), rows in sorted(self._open.items(), key=lambda item: item[1]):
            self._tell(key, first, last, rows)
        self._open.clear()

    def close(self):
        """Tells what hasn't been told yet."""
        for key, run in self._run.items():
            self._end_run(key, run)
        self._run.clear()
        self._tell_all()
