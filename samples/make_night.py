#!/usr/bin/python3
"""Makes the tree that a night leaves behind: 3,000 reports, 12 of them changed on purpose, 18 wrong.

    make_night.py DIR

DIR is the working directory, DIR/../webcontent gets what the server produced. In twelve reports the footer reads
`Page 1/3` instead of `Page 1 of 3`, as somebody wished. The other changes are faults. Seeds are fixed."""

import random
import sys
from pathlib import Path

AREAS = ("sales", "stock", "returns", "margin", "forecast", "costs")
REGIONS = ("Alpen", "Elbe", "Île-de-France", "Jylland", "Süd", "Västra Götaland")
TOOLS = ("Bohrhammer", "Fräse", "Stichsäge", "Winkelschleifer", "Akku-Schrauber")
# word: where masters lie, where the server writes, how files end
FORMATS = {"html": (".", "v5DebugHTML", ".html"), "xls": ("XLS", "v5DebugXLS", ".html"),
           "csv": ("CSV", "v5DebugCSV", ".csv"), "xml": ("XML", "v5DebugXML", ".xml")}


class Report:
    def __init__(self, number):
        rng = random.Random(number)
        self.word = ("html", "html", "html", "xls", "csv", "xml")[number // 36 % 6]
        self.area, self.region = AREAS[number % 6], REGIONS[number // 6 % 6]
        self.name = f"{self.area.capitalize()} {self.region} {number:04}"
        self.rows = [[f"{tool} {size}", rng.randint(100, 9000), round(rng.uniform(10, 90000), 2)]
                     for tool in TOOLS for size in ("Basic", "Pro", "Set")]
        self.total = f"{sum(row[2] for row in self.rows):,.2f}"
        self.footer = "Page 1 of 3"
        self.columns = ["Article", "Units", "Revenue"]

    def write(self, session):
        """The report as the server renders it; each rendering has ids of its own."""
        cells = [[label, f"{units:,}", f"{revenue:,.2f}"] for label, units, revenue in self.rows]
        if self.word == "csv":
            return "\r\n".join(";".join(row) for row in [self.columns, *cells, ["Total", "", self.total]]) + "\r\n"
        if self.word == "xml":
            rows = "".join(f'  <row article="{a}"><units>{u}</units><revenue>{r}</revenue></row>\n' for a, u, r in cells)
            return f'<report name="{self.name}">\n{rows}  <total>{self.total}</total>\n</report>\n'
        end = "\n" if session == 1 or self.word == "xls" else ""
        rows = "".join("<tr>" + "".join(f"<td>{cell}</td>" for cell in row) + f"</tr>{end}" for row in cells)
        head = "".join(f"<th>{column}</th>" for column in self.columns)
        return (f"<html><head><title>{self.name}</title>{end}<script>var session = {session * 7919};</script></head>{end}"
                f"<body><h1>{self.name}</h1>{end}<table border=1><tr>{head}</tr>{end}{rows}"
                f"<tr><td>Total</td><td></td><td>{self.total}</td></tr></table>{end}<p>{self.footer}</p></body></html>{end}")


def wrong_total(report):
    report.total = f"{float(report.total.replace(',', '')) * 1.19:,.2f}"


def wrong_cell(report):
    report.rows[4][2] += 100


def rounded(report):
    report.rows = [[label, units, round(revenue)] for label, units, revenue in report.rows]


def swapped_columns(report):
    report.columns[1:] = report.columns[:0:-1]


FAULTS = [  # (numbers of the reports, what goes wrong with the report, with its text)
    ((37, 82, 121, 2203), wrong_total, None), ((730, 148), wrong_cell, None), ((800,), rounded, None),
    ((1000,), swapped_columns, None),
    ((1301, 1302), lambda report: report.rows.pop(6), None),
    ((1150,), lambda report: report.rows.insert(2, report.rows.pop(9)), None),
    ((1511,), None, lambda text: text.encode("latin-1")),
    ((1622,), None, lambda text: text[:len(text) * 2 // 3]),
    ((2000,), None, lambda text: "<html><body><h1>500</h1><p>Internal error: no connection to OLAP</p></body></html>"),
    ((2120,), None, lambda text: text.replace(",", "\x00").replace(".", ",").replace("\x00", ".")),
    ((2400,), None, lambda text: text.replace("Akku-Schrauber", "AKKU-SCHRAUBER")),
    ((2500, 2501), None, lambda text: None),
]


def main():
    run = Path(sys.argv[1])
    faults = {number: (change, spoil) for numbers, change, spoil in FAULTS for number in numbers}
    reports = [Report(number) for number in range(3000)]
    pages = [report for report in reports if report.word in ("html", "xls")]
    wished = pages[8::161][:12]
    for number, report in enumerate(reports):
        folder, output, extension = FORMATS[report.word]
        master = run / "reports" / report.area / "Masters" / folder / (report.name + extension)
        actual = run.parent / "webcontent" / output / master.name
        for path in (master, actual):
            path.parent.mkdir(parents=True, exist_ok=True)
        master.write_bytes(report.write(1).encode())
        change, spoil = faults.get(number, (None, None))
        if change:
            change(report)
        if report in wished:
            report.footer = "Page 1/3"
        text = report.write(2)
        text = spoil(text) if spoil else text
        if text is not None:
            actual.write_bytes(text if isinstance(text, bytes) else text.encode())


if __name__ == "__main__":
    main()
