"""Tells which numbers are too wide for their columns, so that #### is shown in their place."""

import re

from openpyxl.styles.numbers import is_date_format
from openpyxl.utils.cell import get_column_letter

PADDING = 0.7    # characters of a column's width that stay blank
_LITERAL = re.compile(r'"([^"]*)"|([$€£%() -])')


def _section(format, number):
    """The part of a number format that applies to a number."""
    sections = format.split(";")
    return sections[1] if number < 0 and len(sections) > 1 else sections[0]


def _text(value, format):
    """About the text that shows for a number; "" when it always finds room."""
    number = float(value)
    if format == "General":
        return f"{number:.0f}"[:5]
    section = _section(format, number)
    literal = "".join(quoted or plain for quoted, plain in _LITERAL.findall(section))
    code = re.sub(r'"[^"]*"|\[[^\]]*\]|[_*].|\\.', "", section)
    if is_date_format(format):
        return code
    if not re.search("[0#?]", code):
        return ""
    if "E" in code:
        return code
    decimals = len(re.findall("[0?]", code.partition(".")[2]))
    number *= 100 if "%" in code else 1
    number /= 1000 ** len(re.search(r",*$", code.rstrip("%) -"))[0])
    sign = "-" if number < 0 and section == format else ""
    return f"{sign}{literal}{abs(number):{',' if ',' in code else ''}.{decimals}f}"


def is_too_wide(value, format, width):
    """Whether a number under a format shows as #### in a column of a width in characters."""
    try:
        text = _text(value, format)
    except (ValueError, OverflowError):
        return False
    return sum(0.5 if character in ",. " else 1 for character in text) > width - PADDING


def narrow_columns(cells, columns, chosen):
    """The columns among those chosen that have numbers too wide for them: letters -> the first such cell."""
    found = {}
    for row, column, kind, value, _formula, look in cells:
        if column not in chosen or column in columns.hidden or kind != "number":
            continue
        if is_too_wide(value, look.format, columns.width(column)):
            letters = get_column_letter(column)
            found.setdefault(letters, f"{value} in {letters}{row}")
    return found
