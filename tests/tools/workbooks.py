"""Makes the workbooks that the tests compare."""

import datetime
import functools
import io
import zipfile

from openpyxl import Workbook
from openpyxl.chart import BarChart, Reference
from openpyxl.workbook.defined_name import DefinedName

SHEET = "xl/worksheets/sheet1.xml"
TEXTS_RELATION = b'<Relationship Id="texts" Type="x/sharedStrings" Target="sharedStrings.xml"/>'


def unchanged(_book, _data):
    """A change that is none."""


@functools.lru_cache
def workbook(change=unchanged):
    """The bytes of a workbook that `change` has been applied to."""
    book = Workbook()
    data = book.active
    data.title = "Data"
    for row in (["Name", "Amount"], ["North", 1.5], ["South", 123456.789012345], ["Sum", "=SUM(B2:B3)"],
                ["Day", datetime.date(2024, 2, 29)], ["Paid", True]):
        data.append(row)
    data.merge_cells("A8:C8")
    data["A2"].hyperlink = "https://example.com/north"
    chart = BarChart()
    chart.add_data(Reference(data, min_col=2, min_row=1, max_row=3), titles_from_data=True)
    data.add_chart(chart, "D9")
    book.create_sheet("Notes")["A1"] = "note"
    book.defined_names.append(DefinedName("Rate", attr_text="Data!$B$2"))
    change(book, data)
    stream = io.BytesIO()
    book.save(stream)
    return stream.getvalue()


def put(cell, **attributes):
    """A change that sets attributes of one cell."""
    return lambda book, data: [setattr(data[cell], name, value) for name, value in attributes.items()]


def repacked(edits, method=zipfile.ZIP_DEFLATED):
    """A workbook in which each part named in `edits` holds the bytes, or what the function makes of its bytes.

    A shared text table stands ready for sheets that use it.
    """
    edits = {"xl/_rels/workbook.xml.rels": lambda data: data.replace(b"</Rel", TEXTS_RELATION + b"</Rel"),
             "xl/sharedStrings.xml": b"<sst><si><t>Name</t></si></sst>", **edits}
    stream = io.BytesIO()
    with zipfile.ZipFile(io.BytesIO(workbook())) as old, zipfile.ZipFile(stream, "w", method) as new:
        for name in [*old.namelist(), "xl/sharedStrings.xml"]:
            edit = edits.get(name, lambda data: data)
            new.writestr(name, edit(old.read(name)) if callable(edit) else edit)
    return stream.getvalue()


def in_sheet(old, new, count=1):
    """A workbook with a text of the first sheet's XML replaced."""
    return repacked({SHEET: lambda data: data.replace(old, new, count)})
