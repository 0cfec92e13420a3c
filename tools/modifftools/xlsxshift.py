"""Where rows and columns of a sheet stand after some were put in, taken out or moved, and how references follow."""

import re

from openpyxl.utils.cell import column_index_from_string, get_column_letter

from modifftools.align import Alignment, Lines

MAX_ROWS = 300_000    # of sheets with more, for the memory's sake, cells are compared at their places

_CELL = r"\$?[A-Z]{1,3}\$?[0-9]+"
_REFERENCE = re.compile(
    r'(?P<text>"(?:[^"]|"")*")|'
    r"(?:(?P<sheet>'(?:[^']|'')+'|[A-Za-z_][\w.]*)!)?(?<![A-Za-z0-9_.$])"
    rf"(?P<range>{_CELL}(?::{_CELL})?|\$?[A-Z]{{1,3}}:\$?[A-Z]{{1,3}}|\$?[0-9]+:\$?[0-9]+)(?![\w(.!])")
_END = re.compile(r"(\$?)([A-Z]*)(\$?)([0-9]*)")
_PLAIN_SHEET = re.compile(r"'([A-Za-z_][A-Za-z0-9_]*)'!")


def unquoted(text):
    """A reference without quotes around names of sheets that need none."""
    return _PLAIN_SHEET.sub(r"\1!", text)


class Outline:
    """What the rows and columns of a sheet hold, in short: to find out which belong together."""

    def __init__(self, cells, places=None):
        """`places` maps the numbers of columns to those to be used; columns outside of it are passed over."""
        rows, columns, current, content, label = ([], [], []), {}, None, 0, None
        for row, column, kind, value, formula, _look in cells:
            column = places.get(column) if places is not None else column
            if not column or not value and formula is None:
                continue
            if row != current:
                self._end_row(rows, current, content, label)
                current, content, label = row, 0, None
            item = hash((kind, value))
            content = hash((content, column, item))
            if label is None or label[0] != "text" and kind == "text":
                label = kind, item
            known = columns.get(column)
            if known is None:
                columns[column] = [hash((row, item)), item, kind]
            else:
                known[0] = hash((known[0], row, item))
                if known[2] != "text" and kind == "text":
                    known[1:] = item, kind
        self._end_row(rows, current, content, label)
        self.rows = Lines(*rows)
        self.columns = Lines(sorted(columns), [columns[number][0] for number in sorted(columns)],
                             [columns[number][1] for number in sorted(columns)])

    @staticmethod
    def _end_row(rows, number, content, label):
        if number is not None:
            for items, item in zip(rows, (number, content, label[1])):
                items.append(item)


class Shift:
    """How the rows and columns of one sheet have moved; without alignments they stand where they stood."""

    def __init__(self, rows=None, columns=None):
        self.rows, self.columns = rows or _STILL, columns or _STILL
        self.is_identity = self.rows.is_identity and self.columns.is_identity


_STILL = Alignment(Lines([], [], []), Lines([], [], []))
UNMOVED = Shift()


def found_shift(master, actual):
    """The Shift between two sheets, given as functions that yield their cells anew at each call."""
    outlines = Outline(master()), Outline(actual())
    if max(len(outline.rows.numbers) for outline in outlines) > MAX_ROWS:
        return UNMOVED
    rows = Alignment(outlines[0].rows, outlines[1].rows)
    if rows.share > 0.5:
        return Shift(rows)
    columns = Alignment(outlines[0].columns, outlines[1].columns)
    if columns.is_identity:
        return Shift(rows)
    places = dict(columns.pairs)
    kept = {place: place for place in places.values()}
    again = Alignment(Outline(master(), places).rows, Outline(actual(), kept).rows)
    return Shift(again, columns) if again.share > rows.share else Shift(rows)


class References:
    """Compares texts with references of master and actual file where rows or columns have moved."""

    def __init__(self, shifts):
        """`shifts` maps the names of sheets to Shifts."""
        self._shifts = {name.lower(): shift for name, shift in shifts.items() if not shift.is_identity}

    def _shift(self, match, sheet):
        name = match["sheet"]
        name = name.strip("'").replace("''", "'") if name else sheet
        return self._shifts.get(name.lower(), UNMOVED)

    def moved(self, text, sheet):
        """A text of the master as it reads when all its references follow their cells."""
        if not self._shifts:
            return text
        return _REFERENCE.sub(lambda match: self._moved_range(match, self._shift(match, sheet)), text)

    @staticmethod
    def _moved_range(match, shift):
        if match["text"] or shift.is_identity:
            return match[0]
        ends = []
        for end in match["range"].split(":"):
            fixed, column, also, row = _END.fullmatch(end).groups()
            if column:
                number = shift.columns.to_actual(column_index_from_string(column))
                column = get_column_letter(min(max(number, 1), 16_384))
            ends.append(f"{fixed}{column}{also}{shift.rows.to_actual(int(row)) if row else ''}")
        return f"{match['sheet']}!{':'.join(ends)}" if match["sheet"] else ":".join(ends)

    def same(self, master, actual, sheet):
        """Whether two texts are the same but for references that follow their cells, or take in what was added."""
        if not self._shifts:
            return master == actual
        left, right = list(_REFERENCE.finditer(master)), list(_REFERENCE.finditer(actual))
        return (len(left) == len(right) and _REFERENCE.sub(_skeleton, master) == _REFERENCE.sub(_skeleton, actual)
                and all(self._same_range(first, then, self._shift(first, sheet)) for first, then in zip(left, right)))

    @staticmethod
    def _same_range(first, then, shift):
        if first["text"]:
            return first[0] == then[0]
        ends = [[_END.fullmatch(end).groups() for end in match["range"].split(":")] for match in (first, then)]
        for (fixed, column, also, row), (other_fixed, other_column, other_also, other_row) in zip(*ends):
            if (fixed, also) != (other_fixed, other_also):
                return False
            if column and not shift.columns.is_end(column_index_from_string(column),
                                                   column_index_from_string(other_column)):
                return False
            if row and not shift.rows.is_end(int(row), int(other_row)):
                return False
        return True


def _skeleton(match):
    """What stays of a reference when its numbers are left out."""
    if match["text"]:
        return match[0]
    return f"{match['sheet'] or ''}!{re.sub('[A-Z]+', 'A', re.sub('[0-9]+', '1', match['range']))}"
