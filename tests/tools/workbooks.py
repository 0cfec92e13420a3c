"""Makes the workbooks that the tests compare."""

import datetime
import functools
import io
import zipfile

from PIL import Image
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


def picture(colour=(200, 30, 30), mark=None, form="PNG", **options):
    """The bytes of a picture with a mark of 3 by 3 pixels in a colour."""
    image = Image.new("RGB", (40, 20), colour)
    if mark:
        image.paste(mark, (5, 5, 8, 8))
    stream = io.BytesIO()
    image.save(stream, form, **options)
    return stream.getvalue()


def relations(*targets):
    """A part of relationships r1, r2, ...; the last word of a target's type and its place."""
    return "<Relationships>" + "".join(f'<Relationship Id="r{number}" Type="x/{kind}" Target="{target}"/>'
                                       for number, (kind, target) in enumerate(targets, 1)) + "</Relationships>"


# Parts of a workbook that holds one thing of each kind.
PARTS = {
    "_rels/.rels": relations(("officeDocument", "xl/workbook.xml")),
    "xl/_rels/workbook.xml.rels": relations(("worksheet", "worksheets/sheet1.xml"), ("styles", "styles.xml"),
                                            ("sharedStrings", "texts.xml"), ("theme", "theme.xml"),
                                            ("person", "persons.xml")),
    "xl/workbook.xml": '<workbook><sheets><sheet name="Data" r:id="r1"/></sheets><definedNames>'
                       '<definedName name="_xlnm._FilterDatabase" localSheetId="0">\'Data\'!$A$1:$B$4</definedName>'
                       "</definedNames></workbook>",
    "xl/theme.xml": "<a:theme><a:clrScheme>" + "".join(
        f'<a:{name}><a:srgbClr val="{colour}"/></a:{name}>' for name, colour in
        (("dk1", "000000"), ("lt1", "FFFFFF"), ("dk2", "1F497D"), ("lt2", "EEECE1"), ("accent1", "4F81BD")))
        + "</a:clrScheme></a:theme>",
    "xl/persons.xml": '<personList><person displayName="Ann" id="{1}"/></personList>',
    "xl/texts.xml": "<sst><si><t>Name</t></si><si><r><t>two </t></r><r><rPr><b/><sz val=\"11\"/>"
                    "<color rgb=\"FFFF0000\"/></rPr><t>words</t></r></si></sst>",
    "xl/styles.xml": "<styleSheet>"
        '<numFmts><numFmt numFmtId="170" formatCode="&quot;$&quot;#,##0;[Red]-0"/></numFmts>'
        '<fonts><font><sz val="11"/><name val="Arial"/></font>'
        '<font><b/><sz val="11"/><color rgb="FFFF0000"/><name val="Arial"/></font></fonts>'
        '<fills><fill><patternFill patternType="none"/></fill><fill><patternFill patternType="solid">'
        '<fgColor rgb="FF4F81BD"/></patternFill></fill></fills>'
        '<borders><border/><border><left style="thin"><color auto="1"/></left></border></borders>'
        '<cellXfs><xf/><xf numFmtId="170" fontId="1" borderId="1"><alignment horizontal="right"/></xf>'
        '<xf fillId="1"/></cellXfs>'
        '<dxfs><dxf><font><color rgb="FF00FF00"/></font></dxf></dxfs></styleSheet>',
    "xl/worksheets/sheet1.xml": '<worksheet><sheetPr><tabColor rgb="FF00FF00"/></sheetPr><sheetViews>'
        '<sheetView zoomScale="80"><pane xSplit="1" ySplit="2" state="frozen"/></sheetView></sheetViews>'
        '<sheetFormatPr defaultColWidth="9" defaultRowHeight="15"/><cols><col min="2" max="2" width="12"/></cols>'
        '<sheetData><row r="1"><c r="A1" t="s"><v>0</v></c><c r="B1" t="s"><v>1</v></c></row>'
        '<row r="2"><c r="A2"><v>1</v></c><c r="B2" s="1"><v>1234567</v></c></row>'
        '<row r="3" ht="20"><c r="A3"><v>2</v></c><c r="D3" s="2"/></row>'
        '<row r="4"><c r="A4"><v>3</v></c></row></sheetData>'
        '<autoFilter ref="A1:B4"><filterColumn colId="0"><filters><filter val="1"/></filters></filterColumn>'
        '</autoFilter>'
        '<mergeCells><mergeCell ref="A8:C8"/></mergeCells>'
        '<conditionalFormatting sqref="A2:A4"><cfRule type="cellIs" dxfId="0" priority="3" operator="lessThan">'
        '<formula>2</formula></cfRule></conditionalFormatting>'
        '<dataValidations><dataValidation type="list" sqref="B2" prompt="choose"><formula1>"a,b"</formula1>'
        '</dataValidation></dataValidations><headerFooter><oddHeader>&amp;CSecret</oddHeader></headerFooter>'
        '<drawing r:id="r1"/><extLst><ext><x14:sparklineGroups><x14:sparklineGroup type="line"><x14:sparklines>'
        '<x14:sparkline><xm:f>Data!A2:A4</xm:f><xm:sqref>E2</xm:sqref></x14:sparkline></x14:sparklines>'
        '</x14:sparklineGroup></x14:sparklineGroups></ext></extLst></worksheet>',
    "xl/worksheets/_rels/sheet1.xml.rels": relations(
        ("drawing", "../drawing.xml"), ("comments", "../comments.xml"), ("threadedComment", "../threads.xml"),
        ("table", "../table.xml"), ("pivotTable", "../pivot.xml")),
    "xl/_rels/drawing.xml.rels": relations(("image", "media/picture.png"), ("chart", "chart.xml")),
    "xl/drawing.xml": "<wsDr><twoCellAnchor><from><col>5</col><colOff>7</colOff><row>1</row></from><to><col>7</col>"
        '<row>4</row></to><pic><nvPicPr><cNvPr id="1" name="p"/></nvPicPr><blipFill><blip r:embed="r1"/></blipFill>'
        "</pic></twoCellAnchor><oneCellAnchor><from><col>5</col><row>9</row></from><graphicFrame><graphic><graphicData>"
        '<c:chart r:id="r2"/></graphicData></graphic></graphicFrame></oneCellAnchor><oneCellAnchor><from><col>1</col>'
        '<row>20</row></from><sp><spPr><solidFill><srgbClr val="FFFF00"/></solidFill></spPr><txBody><a:p><a:r>'
        '<a:rPr lang="en-US"/><a:t>Approved</a:t></a:r></a:p></txBody></sp></oneCellAnchor></wsDr>',
    "xl/media/picture.png": picture(),
    "xl/chart.xml": '<c:chartSpace><c:lang val="en-US"/><c:chart><c:plotArea><c:barChart><c:ser><c:cat><c:strRef>'
        "<c:f>Data!$A$2</c:f><c:strCache><c:pt><c:v>007</c:v></c:pt></c:strCache></c:strRef></c:cat><c:val><c:numRef>"
        "<c:f>Data!$B$2</c:f><c:numCache><c:formatCode>\"$\"#,##0</c:formatCode><c:pt><c:v>12</c:v></c:pt></c:numCache>"
        "</c:numRef></c:val></c:ser><c:axId val=\"5\"/></c:barChart></c:plotArea></c:chart></c:chartSpace>",
    "xl/comments.xml": "<comments><authors><author>Bob</author></authors><commentList>"
        "<comment ref=\"A2\" authorId=\"0\"><text><r><t>low </t></r><r><t>value</t></r></text></comment>"
        "</commentList></comments>",
    "xl/threads.xml": '<ThreadedComments><threadedComment ref="A3" dT="2024" personId="{1}" id="x"><text>why?</text>'
        "</threadedComment></ThreadedComments>",
    "xl/table.xml": '<table id="1" displayName="Sales" ref="A1:B4"><tableColumns><tableColumn id="1" name="Name"/>'
        '</tableColumns><tableStyleInfo name="TableStyleMedium2" showRowStripes="1"/></table>',
    "xl/pivot.xml": '<pivotTableDefinition name="Pivot" cacheId="1"><location ref="H1:I4"/><rowFields><field x="0"/>'
        '</rowFields><dataFields><dataField name="Sum" fld="1" subtotal="sum"/></dataFields></pivotTableDefinition>',
}


def package(*edits, **parts):
    """A workbook of PARTS; an edit (name, old, new) replaces a text of the part whose name contains the first word."""
    contents = {**PARTS, **parts}
    for part, old, new in edits:
        name = next(name for name in contents if part in name)
        if old not in contents[name]:
            raise AssertionError(f"{old} isn't in {name}")
        contents[name] = contents[name].replace(old, new, 1)
    stream = io.BytesIO()
    with zipfile.ZipFile(stream, "w", zipfile.ZIP_DEFLATED) as file:
        for name, content in contents.items():
            file.writestr(name, content)
    return stream.getvalue()


def table(rows, *cells):
    """A workbook of plain values by rows; `cells` are (place, value) put in afterwards."""
    book = Workbook()
    sheet = book.active
    sheet.title = "Data"
    for row in rows:
        sheet.append(row)
    for place, value in cells:
        sheet[place] = value
    stream = io.BytesIO()
    book.save(stream)
    return stream.getvalue()
