#!/usr/bin/env python3
"""Makes the XLSX, PDF and VMD samples of the finance area anew: samples/make_office_samples.py

LibreOffice (libreoffice-calc-nogui, libreoffice-writer-nogui) renders each master and each actual file in a run of
its own, with a fresh profile, so that dates, ids and document properties differ as they do between two runs of a
report server. Per format one report passes and one has a difference:

    Budget.xlsx     passes    other author and title, rendered later
    Forecast.xlsx   differs   one planned figure, and with it a total, a share and the chart
    Statement.pdf   passes    other author and title, rendered later
    Invoices.pdf    differs   one amount, in the second invoice
    Cube.vmd        passes    CR LF against LF
    Dimensions.vmd  differs   one member renamed, one added

The results are committed; nothing runs this but a person who wants other samples.
"""

import datetime
import pathlib
import subprocess
import tempfile

from openpyxl import Workbook
from openpyxl.chart import BarChart, Reference
from openpyxl.styles import Alignment, Font
from openpyxl.workbook.defined_name import DefinedName

SERVER = pathlib.Path(__file__).resolve().parent / "server"
MASTERS = SERVER / "run" / "reports" / "finance" / "Masters"
ACTUALS = SERVER / "webcontent"
DEPARTMENTS = ("Sales", "Service", "Research", "Production", "Administration")
QUARTERS = ("Q1", "Q2", "Q3", "Q4")


def office(source, folder, *filters):
    """Has LibreOffice render `source` into the folder, as a user who has never started it before."""
    folder.mkdir(parents=True, exist_ok=True)
    with tempfile.TemporaryDirectory() as profile:
        subprocess.run(["soffice", f"-env:UserInstallation=file://{profile}", "--headless", *filters,
                        "--outdir", folder, source], check=True, timeout=180, stdout=subprocess.DEVNULL)


def fill_plan(sheet, figures):
    """Writes a table of departments by quarter with totals, shares, a merged heading and a hidden row."""
    sheet.append([sheet.title])
    sheet.merge_cells("A1:F1")
    sheet["A1"].font = Font(bold=True, size=14)
    sheet["A1"].alignment = Alignment(horizontal="center")
    sheet.append(["Department", *QUARTERS, "Year", "Share"])
    first, last = 3, 2 + len(figures)
    for row, (department, amounts) in enumerate(figures.items(), first):
        sheet.append([department, *amounts, f"=SUM(B{row}:E{row})", f"=F{row}/SUM($F${first}:$F${last})"])
        sheet[f"G{row}"].number_format = "0.0%"
        for letter in "BCDEF":
            sheet[f"{letter}{row}"].number_format = "#,##0.00"
    sheet.append(["Cost centre", *(f"K{number}" for number in (410, 420, 430, 440))])
    sheet.row_dimensions[last + 1].hidden = True
    sheet.column_dimensions["A"].width = 18


def add_chart(sheet, rows):
    """Puts a bar chart of the table's rows below it."""
    chart = BarChart()
    chart.title = sheet.title
    chart.add_data(Reference(sheet, min_col=2, max_col=5, min_row=2, max_row=2 + rows), titles_from_data=True)
    chart.set_categories(Reference(sheet, min_col=1, min_row=3, max_row=2 + rows))
    sheet.add_chart(chart, f"A{rows + 6}")


def workbook(title, author, base, changes=None):
    """A workbook with a plan, the assumptions behind it and hidden notes; `changes` maps (row, quarter) to amounts."""
    book = Workbook()
    book.properties.creator, book.properties.title = author, f"{title} ({author})"
    figures = {department: [base * (row + 2) + 137.25 * quarter * (row + 1) for quarter in range(4)]
               for row, department in enumerate(DEPARTMENTS)}
    for (department, quarter), amount in (changes or {}).items():
        figures[department][quarter] = amount
    plan = book.active
    plan.title = title
    fill_plan(plan, figures)
    add_chart(plan, len(figures))
    assumptions = book.create_sheet("Assumptions")
    for row in (["Rate of exchange", 1.0837], ["Approved", True], ["Valid from", datetime.date(2024, 1, 1)],
                ["Source", "Controlling handbook"]):
        assumptions.append(row)
    assumptions["B4"].hyperlink = "https://controlling.example.com/handbook"
    assumptions.column_dimensions["C"].hidden = True
    notes = book.create_sheet("Notes")
    notes["A1"] = "Figures before the board's decision"
    notes.sheet_state = "hidden"
    book.defined_names.append(DefinedName("ExchangeRate", attr_text="Assumptions!$B$1"))
    return book


def make_workbook(name, folder, book):
    """Renders an XLSX file of the name into the folder."""
    with tempfile.TemporaryDirectory() as scratch:
        source = pathlib.Path(scratch) / name
        book.save(source)
        office(source, folder, "--convert-to", "xlsx:Calc MS Excel 2007 XML")


def letter(title, author, pages):
    """A web page that is printed as a title page and one page for each heading and its rows."""
    sheets = "".join(f"<h2 style='page-break-before: always'>{heading}</h2><table border='1' width='100%'>"
                     + "".join(f"<tr>{''.join(f'<td>{cell}</td>' for cell in row)}</tr>" for row in rows)
                     + "</table>" for heading, rows in pages)
    return (f"<html><head><meta charset='utf-8'><meta name='author' content='{author}'>"
            f"<title>{title} ({author})</title></head><body><h1>{title}</h1>{sheets}</body></html>")


def make_document(name, folder, text):
    """Renders a PDF file of the name into the folder."""
    with tempfile.TemporaryDirectory() as scratch:
        source = (pathlib.Path(scratch) / name).with_suffix(".html")
        source.write_text(text, encoding="utf-8")
        office(source, folder, "--infilter=HTML (StarWriter)", "--convert-to", "pdf:writer_pdf_Export")


def statement_pages():
    """Three pages of bookings on an account."""
    return [(f"Bookings of month {month}", [("Day", "Text", "Amount")] + [
        (f"2024-{month:02}-{day:02}", f"Transfer {month * 100 + day}", f"{day * 31.5 + month:.2f}")
        for day in range(1, 29, 2)]) for month in (1, 2, 3)]


def invoice_pages(amount):
    """Three invoices; the amount stands in the second."""
    amounts = ("1,280.00", amount, "96.40")
    return [(f"Invoice 2024-{number:03}", [("Item", "Quantity", "Amount"), ("Licence, one year", "4", total),
                                           ("Delivery", "1", "0.00"), ("Total due in 30 days", "", total)])
            for number, total in enumerate(amounts, 17)]


def write_model(name, master, actual):
    """Writes the two sides of a VMD sample."""
    for folder, data in ((MASTERS / "vmd", master), (ACTUALS / "v5DebugVMD", actual)):
        folder.mkdir(parents=True, exist_ok=True)
        (folder / name).write_bytes(data)


def main():
    """Makes all masters, then all actual files."""
    for books, papers, author, changed in (
            (MASTERS / "XLS2007", MASTERS / "PDF", "Report server, first run", False),
            (ACTUALS / "v5DebugXLS2007", ACTUALS / "v5DebugPDF", "Report server, second run", True)):
        plan = {("Research", 2): 6275.5} if changed else {}
        make_workbook("Budget.xlsx", books, workbook("Budget", author, 1500))
        make_workbook("Forecast.xlsx", books, workbook("Forecast", author, 1350, plan))
        make_document("Statement.pdf", papers, letter("Account statement", author, statement_pages()))
        make_document("Invoices.pdf", papers,
                      letter("Invoices", author, invoice_pages("742.50" if changed else "724.50")))
    cube = "cube Sales\n  measure Revenue sum EUR\n  measure Units sum\n  axis Time Region Product\nend\n"
    write_model("Cube.vmd", cube.replace("\n", "\r\n").encode(), cube.encode())
    dimensions = "dimension Region\n  member North\n  member South\n  member East\nend\n" \
                 "dimension Time\n  member 2023\n  member 2024\nend\n"
    write_model("Dimensions.vmd", dimensions.encode(),
                dimensions.replace("South", "South-West").replace("2024\n", "2024\n  member 2025\n").encode())


if __name__ == "__main__":
    main()
