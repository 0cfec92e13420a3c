#!/usr/bin/python3
"""Writes the sample report tree for the text and byte formats.

Every sample is one report model rendered twice, as the stored master and as the file that the
server produced later. The two renderings differ in what legitimately changes from run to run
(sessions, generated names, coordinates, line ends ...); some actual files also carry a fault that
a person would care about. expected.txt tells the outcome of each pair. Seeds are fixed: a rerun
leaves the tree as it is. Lines of expected.txt for formats made elsewhere are kept.
"""

import base64
import binascii
import copy
import csv
import io
import math
import random
import struct
import zlib
from collections import namedtuple
from dataclasses import dataclass
from email.header import Header
from functools import partial
from html import escape
from pathlib import Path
from types import SimpleNamespace

HERE = Path(__file__).resolve().parent
RUN = HERE / "server" / "run"
WEB = HERE / "server" / "webcontent"


# ---- report model --------------------------------------------------------------------------

# A department: its columns (caption, decimals), how one row's base figures, which may be added up, are
# drawn from a random generator, and how the displayed figures are derived from the base figures.
Area = namedtuple("Area", "columns groups labels draw finish")


AREAS = {
    "sales": Area(
        [("Units", 0), ("Avg. price", 2), ("Revenue", 2), ("Plan", 2), ("Deviation %", 1)],
        ["Region Nord", "Region Süd", "Österreich", "Suisse romande", "Zürich & Basel", "Île-de-France",
         "Jylland", "Västra Götaland", "Benelux", "Lombardia"],
        [f"{tool} {size}" for tool in ("Bohrhammer", "Winkelschleifer", "Stichsäge", "Fräse", "Akku-Schrauber")
         for size in ("Basic", "Pro", "Pro XL", "Set")],
        lambda g: (lambda units, price: [units, units * price, units * price * g.uniform(0.82, 1.16)])(
            g.randint(140, 4200), g.uniform(28, 640)),
        lambda b: [b[0], b[1] / b[0], b[1], b[2], (b[1] / b[2] - 1) * 100]),
    "finance": Area(
        [("Q1", 2), ("Q2", 2), ("Q3", 2), ("Q4", 2), ("Year", 2)],
        ["Operating income", "Cost of goods sold", "Personnel", "Premises & energy", "Vehicle fleet",
         "Marketing", "Research", "Depreciation", "Financial result", "Taxes"],
        [f"{4000 + 135 * i} {name}" for i, name in enumerate(
            ["Erlöse Inland", "Erlöse EU", "Erlöse Drittland", "Skonti", "Löhne", "Gehälter", "Soziale Abgaben",
             "Miete", "Strom, Gas, Wasser", "Leasing", "Kraftstoff", "Messen", "Büromaterial", "Porto & Telefon",
             "Beratung", "Zinsen", "Währungsdifferenzen", "Rückstellungen"])],
        lambda g: [g.uniform(-9000, 260000) for _ in range(4)],
        lambda b: [*b, math.fsum(b)]),
    "logistics": Area(
        [("Shipments", 0), ("On time %", 1), ("Weight t", 2), ("Cost", 2), ("Cost / shipment", 3)],
        ["Hub Hamburg", "Hub Wrocław", "Hub Plzeň", "Hub Győr", "Hub Malmö", "Hub Liège", "Hub Linz", "Hub Brno"],
        ["Aalborg", "Łódź", "Brașov", "České Budějovice", "Düsseldorf", "Göteborg", "Kraków", "Linköping", "Münster",
         "Nîmes", "Orléans", "Poznań", "Rzeszów", "Székesfehérvár", "Tromsø", "Ústí nad Labem", "Würzburg",
         "Zielona Góra"],
        lambda g: (lambda n: [n, round(n * g.uniform(0.86, 0.995)), n * g.uniform(0.2, 2.4), n * g.uniform(11, 60)])(
            g.randint(60, 2600)),
        lambda b: [b[0], b[1] / b[0] * 100, b[2], b[3], b[3] / b[0]]),
}


def added(bases):
    return [math.fsum(column) for column in zip(*bases)]


def build(stem, title, area, groups, rows):
    rng = random.Random(f"model {stem}")
    made = []
    for name in area.groups[:groups]:
        bases = {label: area.draw(rng) for label in sorted(rng.sample(area.labels, rows))}
        ranked = sorted(bases, key=lambda label: bases[label][-1])
        note = (f"{ranked[-1]} leads with {bases[ranked[-1]][-1]:,.0f}, {ranked[0]} comes last with "
                f"{bases[ranked[0]][-1]:,.0f}; {rows} lines in all.")
        base = added(bases.values())
        shown_rows = [(label, area.finish(figures)) for label, figures in bases.items()]
        made.append(SimpleNamespace(name=name, rows=shown_rows, base=base, figures=area.finish(base), note=note))
    return SimpleNamespace(stem=stem, title=title, area=area, groups=made, total=area.finish(added(g.base for g in made)))


def spoil(report, fault):
    """The report as a faulty server would render it."""
    bad = copy.deepcopy(report)
    if fault == "title":  # last year's caption
        bad.title = bad.title.replace("2025", "2024")
    elif fault == "row":  # a line is dropped, the totals still count it
        rows = bad.groups[len(bad.groups) // 2].rows
        del rows[len(rows) // 2]
    elif fault == "total":  # the last group is left out of the total
        bad.total = bad.area.finish(added(g.base for g in bad.groups[:-1]))
    return bad


def shown(report, figures):
    return [f"{figure:,.{decimals}f}" for figure, (_, decimals) in zip(figures, report.area.columns)]


class Volatile:
    """What one rendering draws anew: side is "master" or "actual"."""

    def __init__(self, stem, side):
        self.side = side
        self.rng = random.Random(f"{side} {stem}")

    def number(self, digits=7):
        return self.rng.randrange(10 ** (digits - 1), 10 ** digits)

    def ident(self):
        return "".join(self.rng.choices("ABCDEFGHJKMNPQRSTUVWXYZ23456789", k=self.rng.randint(8, 14)))

    def box(self, separator=","):
        x, y = self.rng.randint(4, 300), self.rng.randint(4, 700)
        return separator.join(map(str, (x, y, x + self.rng.randint(20, 90), y + self.rng.randint(8, 24))))

    def directory(self):
        return f"http://node{self.rng.randint(1, 48)}.reports.example/s{self.number(5)}/cgi-bin"

    def br(self):
        """A line break that only some renderings have, for formats whose line structure does not count."""
        return self.rng.choice(["\n", "\n", ""])

    def script(self, opening="", closing=""):
        offsets = ", ".join(str(self.number(3)) for _ in range(self.rng.randint(8, 14)))
        return (f'<script type="text/javascript">{opening}\nvar serverSession = "{self.ident()}", '
                f'renderedAt = "2026-0{self.number(1)}-1{self.number(1)}", renderMillis = {self.number(4)};\n'
                f"var pageOffsets = [{offsets}];\n"
                "function drill(key) { location.href = 'drill?session=' + serverSession + '&key=' + key; }\n"
                "function initReport() { for (var i = 0; i < pageOffsets.length; ++i) { place(i, pageOffsets[i]); } }\n"
                f"{closing}</script>")


# ---- HTML family ---------------------------------------------------------------------------

STYLE = """<style type="text/css">
body { font: 9pt Helvetica, Arial, sans-serif; } table { border-collapse: collapse; }
td, th { border: 1px solid #b8b8b8; padding: 2px 6px; } .figure { text-align: right; }
tr.subtotal td { background: #eef2f7; } tr.total td { background: #d5e0ee; font-weight: bold; }
</style>"""


# How a format of the HTML family writes what changes from run to run, each a function that gives attributes:
# mark of a kind of element, image and anchor of a page number, spot (image-map area) of a label; br gives the
# line break between elements, end ends an empty element.
Markup = namedtuple("Markup", "mark image spot anchor br end", defaults=[">"])


def line(report, m, kind, label, figures):
    cells = m.br().join(f'<td{m.mark("cell")} class="figure">{cell}</td>' for cell in shown(report, figures))
    return f'<tr class="{kind}">{m.br()}<td{m.mark("label")}>{escape(label)}</td>{cells}</tr>\n'


def pages(report, m):
    heads = "".join(f"<th>{caption}</th>" for caption, _ in report.area.columns)
    out = [f'<h1{m.mark("title")}>{escape(report.title)}</h1>\n']
    for i, group in enumerate(report.groups, 1):
        spots = m.br().join(f'<area shape="rect"{m.spot(label)}{m.end}' for label, _ in group.rows)
        rows = "".join(line(report, m, "detail", *row) for row in group.rows)
        out.append(f"""<div class="page"{m.mark("page")}><a{m.anchor(i)}></a>{m.br()}<h2>{escape(group.name)}</h2>
<p class="note">{escape(group.note)}</p>
<img {m.image(i)} width="420" height="180" usemap="#map{i}" alt="{escape(group.name)}"{m.end}
<map name="map{i}">{m.br()}{spots}{m.br()}</map>
<table{m.mark("table")} class="list"><tr><th>&#160;</th>{heads}</tr>
{rows}{line(report, m, "subtotal", "Sum " + group.name, group.figures)}</table></div>
""")
    return "".join(out) + f"""<table{m.mark("table")} class="list">
{line(report, m, "total", "Total", report.total)}</table>
<p class="footer">Halvorsen Tools, {escape(report.title)}, {len(report.groups)} pages</p>
"""


def render_html(report, v, charset):
    marks = {"label": lambda: f' onclick="drill({v.number()})" oncontextmenu="menu(\'{v.ident()}\', event)"',
             "title": lambda: f' ondblclick="info({v.number(5)})"', "table": lambda: f' id="PRMT_{v.ident()}_{v.number(3)}"'}
    m = Markup(lambda kind: marks.get(kind, str)(),
               lambda i: f'src="../charts/{report.stem.replace(" & ", "_")}_{i}.png" name="chart{v.number()}"',
               lambda label: f' coords="{v.box()}" href="drill?k={v.number()}" alt="{escape(label)}" onmousemove="tip()"',
               lambda i: f' name="next{v.number(5)}" id="next{v.number(5)}"', v.br)
    options = "".join(f"<option>{escape(g.name)}</option>{v.br()}" for g in report.groups)
    return f"""<!DOCTYPE html PUBLIC "-//W3C//DTD HTML 4.01 Transitional//EN" "http://www.w3.org/TR/html4/loose.dtd">
<html lang="de"><head>
<meta http-equiv="Content-Type" content="text/html; charset={charset}">
<meta name="Copyright" content="(c) Halvorsen Tools 2019-{2000 + v.rng.randint(24, 99)}, build {v.number(6)}">
<meta name="Trademark" content="Halvorsen is a registered mark, notice {v.number(4)}">
<title>{escape(report.title)}</title>
{STYLE}
{v.script()}
</head>{v.br()}<body onload="initReport('{v.ident()}')" onkeypress="hotKey(event, {v.number(4)})">
<form action="prompt"><label>Selection</label> <select id="PRMT_{v.ident()}" size="1">{options}</select></form>
<map name="toolbar"><a shape="rect" coords="{v.box()}" href="#top">Top</a>{v.br()}
<a shape="rect" coords="{v.box()}" href="#end">End</a></map>
{pages(report, m)}{v.script()}
</body></html>
"""


def render_xhtml(report, v, charset):
    m = Markup(lambda kind: "", lambda i: f'src="charts/{i}.png" name="chart_{v.ident()}"',
               lambda label: f' coords="{v.box()}" href="#{escape(label)}" alt="{escape(label)}"',
               lambda i: f' id="page{i}"', lambda: "\n", " />")
    return f"""<?xml version="1.0" encoding="{charset}"?>
<!DOCTYPE html PUBLIC "-//W3C//DTD XHTML 1.0 Transitional//EN" "http://www.w3.org/TR/xhtml1/DTD/xhtml1-transitional.dtd">
<html xmlns="http://www.w3.org/1999/xhtml" xml:lang="de"><head><title>{escape(report.title)}</title>
{STYLE}
{v.script("//<![CDATA[", "//]]>")}
</head><body>
{pages(report, m)}</body></html>
"""


def render_nao(report, v, charset):
    def mark(kind):  # an id takes the blanks behind it along, so the name comes first
        return f' ctx="{v.number(2)}:{v.number(3)}:{v.number(2)}" name="{kind}_{v.ident()}" id="N{v.number()}"'

    m = Markup(mark, lambda i: f'src="charts/{i}.png" name="chart-{v.number()}"',
               lambda label: f' coords="{v.box()}" alt="{escape(label)}" onmousemove="tip({v.number(4)})"',
               lambda i: f' name="next-{v.number(5)}" id="next-{v.number(5)}"', lambda: "\n")
    return f"""<nao version="2" charset="{charset}"><head><title>{escape(report.title)}</title>
<meta name="Copyright" content="(c) Halvorsen Tools, build {v.number(6)}">
<meta name="Trademark" content="notice {v.number(4)}">
{v.script()}
</head><body onload="initReport('{v.ident()}')">
{pages(report, m)}</body></nao>
"""


# ---- web archives and spreadsheets ---------------------------------------------------------

def png(heights):
    """A bar chart of one bit per pixel and one byte per bar, stored uncompressed to be the same with every zlib."""
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    lines = [b"\0" + bytes(3 if (60 - y) * max(heights) < 60 * h else 255 for h in heights) for y in range(60)]
    head = struct.pack(">IIBBBBB", 8 * len(heights), 60, 1, 0, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", head) + chunk(b"IDAT", zlib.compress(b"".join(lines), 0))
            + chunk(b"IEND", b""))


BOUNDARY = "------=_ReportPart_0001"


def archive(report, encoding, charset, body, name):
    """A multipart archive; name gives the file name that the part header of chart i shows."""
    parts = [f"""From: <Saved by the report server>
Subject: {Header(report.title, charset, header_name="Subject").encode()}
MIME-Version: 1.0
Content-Type: multipart/related; boundary="{BOUNDARY[2:]}"; type="text/html"

This is a multi-part message in MIME format.

""", f"""Content-Type: text/html; charset="{charset}"
Content-Transfer-Encoding: {encoding}
Content-Location: http://reports.example/{report.stem}.html

{body}"""]
    for i, group in enumerate(report.groups, 1):
        image = base64.encodebytes(png([abs(row[1][0]) for row in group.rows])).decode()
        parts.append(f"""Content-Transfer-Encoding: base64
Content-Location: http://reports.example/bin/images/{i}.png
Content-Type: image/png; name="{name(i)}"

{image}""")
    return f"\n{BOUNDARY}\n".join(parts) + f"\n{BOUNDARY}--\n"


def render_mht(report, v, charset):
    m = Markup(lambda kind: "", lambda i: f'src="{v.directory()}/images/{i}.png" name="chart_{v.ident()}_{v.number()}"',
               lambda label: f' coords="{v.box()}" href="{v.directory()}/drill" alt="{escape(label)}"',
               lambda i: f' id="page{i}"', v.br)
    body = f"""<html><head><title>{escape(report.title)}</title>
<meta name="Copyright" content="(c) Halvorsen Tools">
{STYLE}
{v.script()}
</head>{v.br()}<body><img src="{v.directory()}/images/logo.png" alt="Halvorsen Tools">
{pages(report, m)}</body></html>
"""
    quoted = binascii.b2a_qp(body.encode(charset)).decode("ascii")
    notice = f"""
{BOUNDARY}
Content-Type: text/html
Content-Transfer-Encoding: 7bit
Content-Location: http://reports.example/notice.html

<html><head><title>Notice</title>
<meta name="Copyright" content="(c) Halvorsen Tools, build {v.number(6)}">
<meta name="Trademark" content="Halvorsen is a registered mark, notice {v.number(4)}">
</head><body>Confidential, for internal use only.</body></html>
"""
    return archive(report, "quoted-printable", charset, quoted + notice, lambda i: f"chart_{v.ident()}.png")


def render_sheet(report, v, charset, br=lambda: "\n"):
    def cell(text, figure):
        digits = 6 if v.side == "master" else v.rng.choice([6, 9])
        return f'<td class="figure" x:num="{figure:.{digits}E}">{text}</td>'

    def row(label, figures):
        cells = br().join(map(cell, shown(report, figures), figures))
        return f"<tr>{br()}<td>{escape(label)}</td>{cells}</tr>\n"

    out = [f"""<html xmlns:x="urn:report-server:spreadsheet"><head>
<meta http-equiv="Content-Type" content="text/html; charset={charset}"><title>{escape(report.title)}</title>
{STYLE}
{v.script()}
</head><body><img src="{v.directory()}/images/logo.gif" alt="Halvorsen Tools">
<h1>{escape(report.title)}</h1>
"""]
    for i, group in enumerate(report.groups, 1):
        columns = "".join(f'<col style="width:{v.number(3)}px;">' for _ in report.area.columns)
        data = br().join(f"<x:Caption>{escape(label)}</x:Caption><x:Data>{figures[0] + v.rng.uniform(-0.01, 0.01):.9f}</x:Data>"
                         for label, figures in group.rows)
        out.append(f"""<xml><x:Worksheet><x:Name>{escape(group.name)}</x:Name><x:Chart>{data}</x:Chart></x:Worksheet></xml>
<h2>{escape(group.name)}</h2><p>{escape(group.note)}</p>
<div style="width:{v.number(3)}px;"><img src="{v.directory()}/images/{i}.png" alt="chart"></div>
<table><col>{columns}
<tr><th></th>{"".join(f"<th>{caption}</th>" for caption, _ in report.area.columns)}</tr>
{"".join(row(*detail) for detail in group.rows)}{row("Sum " + group.name, group.figures)}</table>
""")
    return "".join(out) + f"<table>{row('Total', report.total)}</table>\n</body></html>\n"


def render_xlwa(report, v, charset):
    return archive(report, "8bit", charset, render_sheet(report, v, charset, v.br), lambda i: f"chart{i}.png")


# ---- XML forms -----------------------------------------------------------------------------

def render_xml(report, v, charset):
    items = "".join(f'    <item name="{caption}" type="xs:decimal" scale="{scale}"/>\n' for caption, scale in report.area.columns)

    def row(kind, group, label, figures):
        values = "".join(f"<value>{text.replace(',', '')}</value>" for text in shown(report, figures))
        return f'    <row kind="{kind}" group="{escape(group)}"><value>{escape(label)}</value>{values}</row>\n'

    rows = "".join("".join(row("detail", g.name, *r) for r in g.rows) + row("subtotal", g.name, "", g.figures)
                   for g in report.groups)
    return f"""<?xml version="1.0" encoding="{charset}"?>
<dataset xmlns="urn:report-server:dataset">
  <metadata>
    <title>{escape(report.title)}</title>
{items}  </metadata>
  <data>
{rows}{row("total", "", "", report.total)}  </data>
</dataset>
"""


def render_layout(report, v, charset, paged=False):
    root = "pagedLayoutData" if paged else "layoutData"

    def text(tag, content):
        return f"<{tag}><coord>{v.box()}</coord><text>{escape(content)}</text></{tag}>\n"

    def row(kind, label, figures):
        return f'<row kind="{kind}">\n{text("label", label)}{"".join(text("cell", t) for t in shown(report, figures))}</row>\n'

    out = []
    for i, group in enumerate(report.groups, 1):
        block = (text("heading", group.name) + text("note", group.note) + "".join(row("detail", *r) for r in group.rows)
                 + row("subtotal", "Sum " + group.name, group.figures))
        footer = text("footer", f"Page {i} of {len(report.groups)}")
        out.append(f'<page number="{i}">\n{text("header", report.title)}<body>\n{block}</body>\n{footer}</page>\n' if paged
                   else f"<block>\n{block}</block>\n")
    return f"""<?xml version="1.0" encoding="{charset}"?>
<{root} xmlns="urn:report-server:layout">
{text("title", report.title)}{"".join(out)}{row("total", "Total", report.total)}</{root}>
"""


def render_raw(report, v, charset):
    def row(style, label, figures):
        texts = [escape(label), *shown(report, figures)]
        cells = "".join(f'<t coords="{v.box(" ")}" style="{style}">{text}</t>\n' for text in texts)
        return f'<line coords="{v.box(" ")}">\n{cells}</line>\n'

    regions = "".join(
        f'<region coords="{v.box(" ")}" caption="{escape(g.name)}">\n'
        f'<polygon fill="#8fb3d9" coords="{v.box(" ")} {v.box(" ")}"/>\n'
        f'{"".join(row("detail", *r) for r in g.rows)}{row("subtotal", "Sum " + g.name, g.figures)}</region>\n'
        for g in report.groups)
    return f"""<?xml version="1.0" encoding="{charset}"?>
<raw title="{escape(report.title)}">
{regions}{row("total", "Total", report.total)}</raw>
"""


# ---- plain text, chart and property files --------------------------------------------------

def render_csv(report, v, charset):
    out = io.StringIO()
    writer = csv.writer(out, lineterminator="\n")
    writer.writerow([report.title])
    writer.writerow(["Group", "Line", *(caption for caption, _ in report.area.columns), "Remark"])
    for group in report.groups:
        writer.writerows([group.name, label, *shown(report, figures), ""] for label, figures in group.rows)
        writer.writerow([group.name, "Sum", *shown(report, group.figures), f'"{group.name}": {group.note}'])
    writer.writerow(["", "Total", *shown(report, report.total), ""])
    return out.getvalue()


def render_csi(report, v, charset):
    def row(label, cells):
        return f"{label:<30.30}" + "".join(f"{cell:>18}" for cell in cells) + "\n"

    heads, rule = [caption for caption, _ in report.area.columns], "-" * (30 + 18 * 5) + "\n"
    out = []
    for i, g in enumerate(report.groups, 1):
        rows = "".join(row(label, shown(report, figures)) for label, figures in g.rows)
        out.append(f"{report.title:<100}Page {i:>3} of {len(report.groups):>3}\n{g.name}\n{rule}{row('', heads)}{rule}{rows}"
                   f"{rule}{row('Sum', shown(report, g.figures))}{g.note}\n\f\n")
    return "".join(out) + row("Total", shown(report, report.total)) + "*** end of report ***\n"


def render_tvd(report, v, charset):
    out = [f'chart "{report.title}" encoding {charset}\n']
    for i, g in enumerate(report.groups, 1):
        slash, step = ("/", "bin") if v.side == "master" else ("\\", "bind")
        points = "".join(f'  category {n} "{label}" at ({v.rng.uniform(4, 400):.4f}, {v.rng.uniform(-90, 200):.3f}) '
                         f"share {v.rng.uniform(0, 1):.5e} error {v.number(1)}e-0{v.number(1)}\n"
                         for n, (label, _) in enumerate(g.rows, 1))
        out.append(f"""panel {i} caption "{g.name}"
  output "/srv/render/{v.ident()}/chart_tmp_{v.number()}" format png
  marker "images{slash}{step}{slash}marker{i}.gif" scale {v.rng.uniform(0.9, 1.1):.6f}
  axis value from {v.rng.uniform(-1, 0):.2f} to {v.rng.uniform(900, 999):.2f} ticks 10 caption "{report.area.columns[0][0]}"
{points}  on close c{v.number(3)}.removeReference("{g.name}")
""")
    return "".join(out)


def render_prp(report, v, charset):
    def plain(text):
        return "".join(c if ord(c) < 128 else f"\\u{ord(c):04x}" for c in text)

    out = [f"# Chart properties of {report.stem}\nchart.title={plain(report.title)}\nchart.panels={len(report.groups)}\n"]
    for i, g in enumerate(report.groups, 1):
        key = f"panel.{i}"
        colours = "".join(f"{key}.series.{n}.caption={plain(label)}\n"
                          f"{key}.series.{n}.colour=#{zlib.crc32(label.encode()) & 0xFFFFFF:06x}\n"
                          f"{key}.series.{n}.labels={'inside' if n % 3 else 'outside'}\n"
                          for n, (label, _) in enumerate(g.rows, 1))
        out.append(f"\n# {plain(g.name)}\n{key}.caption={plain(g.name)}\n{key}.kind={'bar' if i % 2 else 'line'}\n"
                   f"{key}.axis.value={report.area.columns[2][0]}\n{colours}")
    return "".join(out)


# ---- the tree ------------------------------------------------------------------------------

Format = namedtuple("Format", "render type_name folder extension")  # folder: of the masters, below their directory

# In the order of expected.txt.
FORMATS = {
    "html": Format(render_html, "v5DebugHTML", "", ".html"),
    "mht": Format(render_mht, "v5DebugMHT", "", ".mht"),
    "xhtml": Format(render_xhtml, "v5DebugXHTML", "", ".xml"),
    "xml": Format(render_xml, "v5DebugXML", "XML", ".xml"),
    "dataxml": Format(render_layout, "v5DebugDataXml", "DataXML", ".xml"),
    "pageddataxml": Format(partial(render_layout, paged=True), "v5DebugPagedDataXml", "PagedDataXML", ".xml"),
    "rawxml": Format(render_raw, "v5DebugRawXml", "RawXML", ".xml"),
    "nao": Format(render_nao, "v5DebugNAO", "", ".nao"),
    "xls": Format(render_sheet, "v5DebugXLS", "XLS", ".html"),
    "xlwa": Format(render_xlwa, "v5DebugXLWA", "XLWA", ".mht"),
    "singlexls": Format(render_sheet, "v5DebugSingleXLS", "singleXLS", ".html"),
    "csv": Format(render_csv, "v5DebugCSV", "CSV", ".csv"),
    "csi": Format(render_csi, "v5DebugROM", "", ".csi"),
    "tvd": Format(render_tvd, "v5DebugTVD", "charts", ".tvd"),
    "prp": Format(render_prp, "v5DebugPRP", "props", ".prp"),
}
UNNORMALIZED = ("xml", "csv", "csi", "prp")  # a difference of these carries no normalized texts

UNIX, DOS, MIXED = ("\n", "\n"), ("\r\n", "\r\n"), ("\r\n", "\n")  # line ends of master and actual


@dataclass
class Sample:
    format: str
    sub: str      # engine sub-directory
    area: str
    stem: str     # a name with "_page" is a further page of the report before it
    title: str
    groups: int
    rows: int
    ends: tuple
    outcome: str  # "pass", "missing" or the fault that makes the difference
    suffix: str = ""
    charset: str = "utf-8"

    def master(self):
        folder = RUN / "reports" / self.area / "Masters" / self.sub / FORMATS[self.format].folder
        return folder / (self.stem + ("_" + self.suffix if self.suffix else "") + FORMATS[self.format].extension)

    def actual(self):
        return WEB / FORMATS[self.format].type_name / self.sub / self.master().name

    def word(self):
        if self.outcome in ("pass", "missing"):
            return self.outcome
        return "different" if self.format in UNNORMALIZED else "normalized"

    def options(self):
        chosen = [f"--sub-directory {self.sub}"] if self.sub else []
        if self.format in ("tvd", "prp"):
            form = FORMATS[self.format]
            chosen.append(f"--type-name {form.type_name} --master-sub-directory {form.folder}")
        if self.suffix:
            chosen.append(f"--master-suffix {self.suffix}")
        return " ".join(chosen) or "-"

    def rendering(self, side, fault):
        report = build(self.stem, self.title, AREAS[self.area], self.groups, self.rows)
        text = FORMATS[self.format].render(spoil(report, fault), Volatile(self.stem, side), self.charset)
        return text.replace("\n", self.ends[side == "actual"]).encode(self.charset)

    def write(self):
        put(self.master(), self.rendering("master", ""))
        if self.outcome == "missing":
            self.actual().unlink(missing_ok=True)
        else:
            put(self.actual(), self.rendering("actual", self.outcome))


def put(path, content):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(content)


def expected():
    """One line per result; a report also finds the masters of reports whose names begin like its own."""
    for name in FORMATS:
        for report in (s for s in SAMPLES if s.format == name and "_page" not in s.stem):
            found = [s for s in SAMPLES if s.master().parent == report.master().parent and s.format == name
                     and s.suffix == report.suffix and s.stem.startswith(report.stem)]
            for sample in sorted(found, key=lambda s: s.master().name.encode()):
                path = f"reports/{report.area}/{report.stem}{FORMATS[name].extension}"
                yield "\t".join([name, report.options(), path, sample.word(), str(sample.master().relative_to(RUN))])


def main():
    assert len({s.actual() for s in SAMPLES}) == len(SAMPLES), "two samples share an actual file"
    for sample in SAMPLES:
        sample.write()
    listing = HERE / "expected.txt"
    old = listing.read_text(encoding="utf-8").splitlines() if listing.exists() else []
    others = [entry for entry in old if entry.split("\t")[0] not in FORMATS]
    put(listing, "".join(entry + "\n" for entry in [*expected(), *others]).encode())


# format, engine sub-directory, area, report, title, groups, rows per group, line ends, outcome
SAMPLES = [Sample(*row) for row in [
    ("html", "", "sales", "RegionalSales", "Regional sales, year 2025", 9, 14, MIXED, "pass"),
    ("html", "", "sales", "Sales", "Sales by product, 2025", 3, 12, UNIX, "pass"),
    ("html", "", "sales", "Sales_page2", "Sales by product, 2025 (continued)", 3, 14, DOS, "pass"),
    ("html", "", "sales", "Sales_page3", "Sales by product, 2025 (summary)", 2, 10, UNIX, "missing"),
    ("html", "", "sales", "SalesTargets", "Sales targets 2025", 3, 9, UNIX, "pass"),
    ("html", "", "sales", "Händlerliste", "Händlerliste 2025", 4, 12, UNIX, "pass", "", "iso-8859-1"),
    ("html", "", "finance", "Profit & Loss", "Profit & loss statement 2025", 8, 12, UNIX, "total"),
    ("html", "en-us", "logistics", "DeliveryTimes", "Delivery times, autumn 2025", 6, 12, MIXED, "pass"),
    ("mht", "", "finance", "BalanceSheet", "Balance sheet 2025", 6, 10, DOS, "pass"),
    ("mht", "", "logistics", "Warehouse", "Warehouse turnover 2025 (Überblick)", 6, 11, MIXED, "row"),
    ("xhtml", "", "sales", "CustomerSurvey", "Customer survey 2025", 5, 12, MIXED, "pass"),
    ("xhtml", "", "logistics", "CarrierScorecard", "Carrier scorecard 2025", 6, 11, UNIX, "row"),
    ("xml", "", "sales", "OrderExport", "Order export 2025", 8, 16, MIXED, "pass"),
    ("xml", "", "finance", "Ledger", "General ledger 2025", 10, 15, UNIX, "total"),
    ("dataxml", "", "finance", "CostCentres", "Cost centres 2025", 5, 10, DOS, "pass"),
    ("dataxml", "", "logistics", "Routes", "Routes and tariffs 2025", 5, 10, UNIX, "title"),
    ("pageddataxml", "", "sales", "PriceList", "Price list 2025", 6, 10, MIXED, "pass"),
    ("pageddataxml", "", "finance", "CashFlow", "Cash flow 2025", 6, 9, UNIX, "row"),
    ("rawxml", "", "logistics", "FleetUsage", "Fleet usage 2025", 6, 10, MIXED, "pass"),
    ("rawxml", "", "sales", "Returns", "Returns and credits 2025", 5, 9, UNIX, "total"),
    ("nao", "", "sales", "Dashboard", "Sales dashboard 2025", 4, 9, MIXED, "pass"),
    ("nao", "", "finance", "Budget", "Budget against actuals 2025", 4, 8, UNIX, "title"),
    ("xls", "", "finance", "Forecast", "Rolling forecast 2025", 6, 11, MIXED, "pass"),
    ("xls", "de-de", "sales", "Umsatz", "Umsatz nach Region und Gerät 2025", 5, 10, UNIX, "pass"),
    ("xls", "", "logistics", "FreightCost", "Freight cost 2025", 5, 10, UNIX, "total"),
    ("xlwa", "", "sales", "Workbook", "Sales workbook 2025", 4, 10, MIXED, "pass"),
    ("xlwa", "", "finance", "YearEnd", "Year-end workbook 2025", 4, 9, UNIX, "row"),
    ("singlexls", "", "logistics", "StockTaking", "Stock-taking 2025", 5, 11, MIXED, "pass"),
    ("singlexls", "", "sales", "Commissions", "Commissions 2025", 4, 10, UNIX, "total"),
    ("csv", "", "finance", "Journal", "Journal 2025", 10, 16, DOS, "pass"),
    ("csv", "en-us", "sales", "summary", "Summary 2025", 5, 10, UNIX, "pass"),
    ("csv", "", "logistics", "Consignments", "Consignments 2025", 8, 15, DOS, "total"),
    ("csi", "", "logistics", "LoadingList", "Loading list 2025", 8, 14, MIXED, "pass"),
    ("csi", "", "finance", "OpenItems", "Open items 2025", 7, 12, UNIX, "row"),
    ("tvd", "", "sales", "Trend", "Sales trend 2025", 9, 14, MIXED, "pass", "en"),
    ("tvd", "", "sales", "Trend", "Umsatzverlauf 2025", 9, 14, UNIX, "pass", "de"),
    ("tvd", "", "logistics", "Punctuality", "Punctuality 2025", 8, 12, UNIX, "row", "en"),
    ("prp", "", "sales", "Trend", "Sales trend 2025", 9, 14, MIXED, "pass"),
    ("prp", "", "logistics", "Punctuality", "Punctuality 2025", 8, 12, UNIX, "title"),
]]

if __name__ == "__main__":
    main()
