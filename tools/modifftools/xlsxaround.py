"""Reads what stands around the cells of a sheet: ranges with a meaning, comments, drawings with charts and pictures.

Everything becomes facts, mappings of a name to a text, that compare item by item.
"""

import collections
import hashlib
import io
import re

from PIL import Image, ImageChops

from openpyxl.utils.cell import get_column_letter

from modifftools.xlsxpackage import decimal_of, flatten, is_true, whole
from modifftools.xlsxshift import unquoted
from modifftools.xlsxstyles import shown_format

MAX_PICTURE = 64 << 20             # bytes of a picture that is looked at pixel by pixel
MAX_PIXELS = 25_000_000
ENCODED = re.compile("%[0-9A-Fa-f]{2}")   # character of a link

# Elements and attributes that nobody sees.
_UNSEEN = frozenset(("lang", "printSettings", "extLst", "externalData", "nvCxnSpPr", "cNvGraphicFramePr", "cNvSpPr",
                     "cNvPicPr", "clientData", "hlinkClick", "hlinkHover"))
_UNSEEN_ATTRIBUTES = frozenset(("id", "embed", "link", "name", "descr", "title", "uid", "lang", "altLang", "dirty",
                                "err", "noProof", "smtClean", "uri", "macro", "textlink", "Requires", "fPublished",
                                "edited"))
_VIEW = {"rightToLeft": "0", "showGridLines": "1", "showZeros": "1", "showFormulas": "0", "showRowColHeaders": "1"}
# What a data validation is without saying so.
_VALIDATION = {"allowBlank": "0", "showDropDown": "0", "showInputMessage": "0", "showErrorMessage": "0",
               "errorStyle": "stop", "imeMode": "noControl", "operator": "between"}
_TABLE_ATTRIBUTES = frozenset(("id", "uid", "name", "displayName", "headerRowDxfId", "dataDxfId", "totalsRowDxfId",
                               "headerRowCellStyle", "dataCellStyle", "totalsRowCellStyle", "headerRowBorderDxfId",
                               "tableBorderDxfId", "totalsRowBorderDxfId", "queryTableFieldId", "connectionId",
                               "insertRowShift", "published", "tableType"))
_PIVOT_ATTRIBUTES = frozenset(("uid", "cacheId", "updatedVersion", "minRefreshableVersion", "createdVersion", "indent",
                               "applyNumberFormats", "applyBorderFormats", "applyFontFormats", "applyPatternFormats",
                               "applyAlignmentFormats", "applyWidthHeightFormats", "refreshedBy", "refreshedDate",
                               "refreshedVersion", "recordCount", "refreshOnLoad", "saveData", "invalid", "id"))
_PIVOT_UNSEEN = frozenset(("extLst", "formats", "chartFormats", "sharedItems"))

# Where labels of a chart stand unless it says otherwise.
_LABEL_POSITIONS = {"pieChart": "bestFit", "barChart": "outEnd", "lineChart": "r", "scatterChart": "r"}

# What a drawing holds: kind (see the script), what it is called, where it stands, its facts.
Item = collections.namedtuple("Item", "kind what place facts")


class Picture(str):
    """What tells one picture from another at sight of its bytes; the bytes can be had."""

    def __new__(cls, package, part):
        digest = hashlib.blake2b(digest_size=8)
        for chunk in package.chunks(part) if package.holds(part) else ():
            digest.update(chunk)
        self = super().__new__(cls, f"picture {digest.hexdigest()}")
        self._package, self._part = package, part
        return self

    def pixels(self):
        """The picture as it shows on white, or None when it can't be read or is too large."""
        if not self._package.holds(self._part) or self._package.size(self._part) > MAX_PICTURE:
            return None
        try:
            picture = Image.open(io.BytesIO(b"".join(self._package.chunks(self._part))))
            if picture.width * picture.height > MAX_PIXELS:
                return None
            picture = picture.convert("RGBA")
            return Image.alpha_composite(Image.new("RGBA", picture.size, "white"), picture).convert("RGB")
        except (OSError, ValueError, SyntaxError, Image.DecompressionBombError):
            return None

    def same(self, other):
        """Whether both show the same."""
        return self == other or self.difference(other) == ""

    def difference(self, other):
        """In what the other picture differs, in words; "" when it doesn't."""
        left, right = self.pixels(), other.pixels()
        if left is None or right is None:
            return "other bytes"
        if left.size != right.size:
            return f"master {left.width} x {left.height}, actual {right.width} x {right.height} pixels"
        box = ImageChops.difference(left, right).getbbox()
        return f"pixels differ between {box[:2]} and {box[2:]}" if box else ""


def _facts(element, skipped=_UNSEEN, without=_UNSEEN_ATTRIBUTES):
    return {path: text for path, text, _ in flatten(element, skipped, without)}


def _words(facts):
    return ", ".join(f"{name} {text}".strip() for name, text in facts.items())


def _numbered(pairs):
    """A mapping of the pairs; a name that has come before gets a number."""
    facts, seen = {}, collections.Counter()
    for name, text in pairs:
        seen[name] += 1
        facts[name if seen[name] == 1 else f"{name} ({seen[name]})"] = text
    return facts


class Around:
    """What stands around the cells of one sheet of an open package."""

    def __init__(self, book, part, parser):
        """`book` is the open workbook and `parser` the SheetParser that has read the sheet's part."""
        self._package, self._part, self._parser = book, part, parser
        self._styles, self._persons = book.styles, book.persons
        self._elements = collections.defaultdict(list)
        for element in parser.around:
            self._elements[element.name].append(element)

    def _extended(self, name):
        """Elements of a name in the extensions of the sheet."""
        return [found for extension in self._elements["extLst"] for found in extension.all(name)]

    def groups(self):
        """Yields (kind, what, facts)."""
        columns = self._parser.columns
        yield "merges", "merged range", self._parser.merges
        yield "hidden", "hidden column", {get_column_letter(column): "" for column in columns.hidden}
        yield "hidden", "rows without an entry", self._hidden_by_default()
        yield "fills", "fill of column", {get_column_letter(column): look.fill for column, look in columns.looks.items()
                                          if look.fill}
        yield "borders", "borders of column", {get_column_letter(column): look.border
                                               for column, look in columns.looks.items() if look.border}
        yield "links", "hyperlink", self._links()
        yield "comments", "comment", self._comments()
        yield "conditions", "conditional format", self._conditions()
        yield "validations", "data validation", self._validations()
        yield "filters", "filter", self._filters()
        yield "tables", "table", self._tables()
        yield "pivots", "pivot table", self._pivots()
        yield "headers", "header or footer", self._headers()
        yield "view", "view", self._view()
        yield "sparklines", "sparklines", self._sparklines()
        yield "colours", "colour of the tab", self._tab()
        yield "pictures", "picture", self._other_pictures()

    def _hidden_by_default(self):
        return {"": "hidden" for element in self._elements["sheetFormatPr"] if is_true(element.get("zeroHeight"))}

    def _links(self):
        targets = self._package.related(self._part, "/hyperlink")
        facts = {}
        for link in self._parser.links:
            place = f"#{link['location']}" if link.get("location") else ""
            tip = f" ({link['tooltip']})" if link.get("tooltip") else ""
            target = ENCODED.sub(lambda code: code[0].upper(), targets.get(link.get("id"), ""))
            facts[link.get("ref", "")] = f"{target}{place}{tip}"
        return facts

    def _comments(self):
        threads = collections.defaultdict(list)
        for part in self._package.related(self._part, "/threadedComment").values():
            for _, comment in self._package.elements(part, 1):
                done = " (resolved)" if is_true(comment.get("done")) else ""
                text = comment.child("text")
                threads[comment.get("ref", "")].append(
                    f"{self._persons.get(comment.get('personId'), '')}: {text.text if text is not None else ''}{done}")
        facts = {place: "\n".join(texts) for place, texts in threads.items()}
        for part in self._package.related(self._part, "/comments").values():
            authors = []
            for path, element in self._package.elements(part, 2):
                if path.endswith("authors"):
                    authors.append(element.text)
                elif path.endswith("commentList") and element.get("ref", "") not in threads:
                    author = authors[whole(element.get("authorId"))] if authors else ""
                    facts[element.get("ref", "")] = f"{author.strip()}: {element.plain_text()}"
        return facts

    def _conditions(self):
        found = []
        for area in self._elements["conditionalFormatting"]:
            found += [(whole(rule.get("priority")), area.get("sqref", ""), self._condition(rule))
                      for rule in area.all("cfRule")]
        for area in self._extended("conditionalFormatting"):
            places = " ".join(element.text for element in area.all("sqref"))
            found += [(whole(rule.get("priority")), places, self._condition(rule)) for rule in area.all("cfRule")]
        return _numbered(item[1:] for item in sorted(found, key=lambda item: item[0]))

    def _condition(self, rule):
        facts = _facts(rule, frozenset(("extLst",)), frozenset(("id", "priority", "dxfId", "uid")))
        for color in rule.all("color", "fillColor", "negativeFillColor", "borderColor", "axisColor"):
            facts[f"{color.name} {len(facts)}"] = self._styles.colours.shown(color)
        colours = ("rgb", "theme", "indexed", "tint", "auto")
        facts = {name: text for name, text in facts.items() if name.rpartition(" ")[2] not in colours}
        return _words({**facts, "shows": self._styles.addition(rule.get("dxfId"))})

    def _validations(self):
        found = [element for group in self._elements["dataValidations"] for element in group.all("dataValidation")]
        pairs = [(element.get("sqref", ""), element) for element in found]
        pairs += [(" ".join(inner.text for inner in element.all("sqref")), element)
                  for element in self._extended("dataValidation")]
        return _numbered((place, self._validation(element)) for place, element in pairs)

    @staticmethod
    def _validation(element):
        facts = _facts(element, frozenset(("sqref",)), frozenset(("sqref", "uid")))
        return _words({name: text for name, text in facts.items() if text != _VALIDATION.get(name)})

    def _filters(self):
        facts = {}
        for element in self._elements["autoFilter"] + self._elements["sortState"]:
            facts[element.name] = _words(_facts(element, frozenset(("extLst",)), frozenset(("uid",))))
        return facts

    def _tables(self):
        facts = {}
        for part in self._package.related(self._part, "/table").values():
            table = self._package.tree(part)
            name = table.get("displayName") or table.get("name", "")
            columns = [column.get("name", "") for column in table.all("tableColumn")]
            style = "".join(element.get("name", "") for element in table.all("tableStyleInfo"))
            facts[name] = _words({**_facts(table, frozenset(("extLst", "tableColumns")), _TABLE_ATTRIBUTES),
                                  "style": style})
            facts[f"{name}, columns"] = ", ".join(columns)
        return facts

    def _pivots(self):
        facts = {}
        for part in self._package.related(self._part, "/pivotTable").values():
            pivot = self._package.tree(part)
            name = pivot.get("name", "")
            for path, text in _facts(pivot, _PIVOT_UNSEEN, _PIVOT_ATTRIBUTES).items():
                facts[f"{name}, {path}"] = text
            cache = self._package.only_related(part, "/pivotCacheDefinition")
            for path, text in _facts(self._package.tree(cache or ""), _PIVOT_UNSEEN, _PIVOT_ATTRIBUTES).items():
                facts[f"{name}, source {path}"] = text
        return facts

    def _headers(self):
        return {path: text for element in self._elements["headerFooter"]
                for path, text in _facts(element).items()}

    def _view(self):
        facts = {}
        for view in [view for group in self._elements["sheetViews"] for view in group.children][:1]:
            for name, usual in _VIEW.items():
                if is_true(view.get(name, usual)) != is_true(usual):
                    facts[name] = view.get(name)
            for pane in view.all("pane"):
                facts["panes"] = (f"{pane.get('state', 'split')} after {decimal_of(pane.get('xSplit')):g} columns"
                                  f" and {decimal_of(pane.get('ySplit')):g} rows")
        return facts

    def _sparklines(self):
        facts = []
        for group in self._extended("sparklineGroup"):
            looks = _words(_facts(group, frozenset(("sparklines",)), frozenset(("uid",))))
            for sparkline in group.all("sparkline"):
                places = {child.name: child.text for child in sparkline.children}
                facts.append((places.get("sqref", ""), f"{places.get('f', '')} {looks}"))
        return _numbered(facts)

    def _tab(self):
        return {"": self._styles.colours.shown(colour) for element in self._elements["sheetPr"]
                for colour in element.all("tabColor")}

    def _other_pictures(self):
        """The background, and pictures in headers and old objects."""
        targets = self._package.related(self._part)
        facts = {"background": Picture(self._package, targets.get(element.get("id"), ""))
                 for element in self._elements["picture"]}
        for drawing in self._package.related(self._part, "/vmlDrawing").values():
            for number, image in enumerate(self._package.related(drawing, "/image").values(), 1):
                facts[f"{number} of a header or object"] = Picture(self._package, image)
        return facts

    def items(self):
        """The Items of the sheet's drawings."""
        found = []
        for drawing in self._package.related(self._part, "/drawing").values():
            targets = self._package.related(drawing)
            for _, anchor in self._package.elements(drawing, 1):
                found += Anchor(self._package, anchor, targets).items()
        return found


class Anchor:
    """One entry of a drawing: charts, pictures and shapes at a place."""

    def __init__(self, package, anchor, targets):
        self._package, self._anchor, self._targets = package, anchor, targets

    def items(self):
        """The Items at this place; a group counts as the things inside."""
        place = self._place()
        found = []
        for element in self._anchor.all("sp", "pic", "cxnSp", "graphicFrame", "contentPart", "relSizeAnchor"):
            if element.name == "pic":
                found.append(Item("pictures", "picture", place, self._picture(element)))
            elif element.name == "graphicFrame" and element.all("chart"):
                for chart in element.all("chart"):
                    found.append(Item("charts", "chart", place, self._chart(chart.get("id"))))
            else:
                what = "text box" if element.child("txBody") is not None else "shape"
                found.append(Item("shapes", what, place, self._shape(element)))
        return found

    def _place(self):
        corners = [self._corner(self._anchor.child(name)) for name in ("from", "to")]
        if any(corners):
            return ":".join(filter(None, corners))
        return " ".join(f"{key} {value}" for child in self._anchor.children if child.name in ("pos", "ext")
                        for key, value in child.attributes.items())

    @staticmethod
    def _corner(element):
        if element is None:
            return ""
        column, row = (whole(getattr(element.child(name), "text", "0")) for name in ("col", "row"))
        return f"{get_column_letter(min(column + 1, 16_384))}{row + 1}"

    def _picture(self, element):
        facts = _facts(element)
        for blip in element.all("blip"):
            facts[""] = Picture(self._package, self._targets.get(blip.get("embed"), ""))
        return self._without_size(facts)

    def _shape(self, element):
        facts = {path: text for path, text in _facts(element).items() if not path.endswith("/t")}
        for body in element.all("txBody"):
            facts["text"] = body.plain_text().rstrip("\n")
        return self._without_size(facts)

    @staticmethod
    def _without_size(facts):
        """Leaves out the size in length units, which follows from the cells that the place names."""
        return {path: text for path, text in facts.items() if "/xfrm/off" not in path and "/xfrm/ext" not in path}

    def _chart(self, relation):
        part = self._targets.get(relation, "")
        facts = chart_facts(self._package.tree(part))
        for number, shapes in enumerate(self._package.related(part, "/chartUserShapes").values(), 1):
            for _, anchor in self._package.elements(shapes, 1):
                inner = Anchor(self._package, anchor, self._package.related(shapes))
                for item in inner.items():
                    facts.update({f"{item.what} {number} in the chart, {path}": text
                                  for path, text in item.facts.items()})
        for image in self._package.related(part, "/image").values():
            facts[f"picture {image.rpartition('/')[2]}"] = Picture(self._package, image)
        return facts


def _shows_labels(labels):
    """Whether an element of data labels shows anything."""
    return any(is_true(element.get("val")) for element in labels.walk() if element.name.startswith("show")
               and element.name != "showLeaderLines")


def _drop_unseen(chart):
    """Takes out of a chart what doesn't show: labels that are off, positions that are the usual ones."""
    for element in chart.walk():
        if element.children:
            element.children = [child for child in element.children
                                if child.name != "dLbls" or _shows_labels(child)]
    for kind, usual in _LABEL_POSITIONS.items():
        for inner in [inner for plot in chart.all(kind) for inner in plot.all("dLbls", "dLbl")]:
            inner.children = [child for child in inner.children if (child.name, child.get("val")) != ("dLblPos", usual)
                              and (child.name, child.get("formatCode")) != ("numFmt", "General")]
    for axis in chart.all("catAx"):
        for format in axis.all("numFmt"):
            format.attributes.pop("sourceLinked", None)    # categories are texts


def chart_facts(chart):
    """The facts of a chart; ids of axes are numbered as they come."""
    _drop_unseen(chart)
    facts, axes = {}, {}
    for path, text, element in flatten(chart, _UNSEEN, _UNSEEN_ATTRIBUTES):
        if element.name in ("axId", "crossAx"):
            text = f"axis {axes.setdefault(text, len(axes) + 1)}"
        elif path.endswith("formatCode"):
            text = shown_format(text)
        elif element.name == "f":
            text = unquoted(text)
        facts[path.removeprefix("chartSpace/").removeprefix("chart/")] = text
    for cache in chart.all("dlblRangeCache"):
        facts.update({f"labels from cells/{path}": text for path, text, _ in flatten(cache)})
    return facts


def paired(master, actual):
    """Pairs of Items: equal ones first, then those at one place, then those in order; None for what is left."""
    pairs = []
    for same in (lambda left, right: left == right, lambda left, right: left.place == right.place,
                 lambda _left, _right: len(master) == len(actual)):
        for left in list(master):
            right = next((item for item in actual if same(left, item)), None)
            if right is not None:
                pairs.append((left, right))
                master, actual = ([item for item in items if item is not chosen]
                                  for items, chosen in ((master, left), (actual, right)))
    return pairs + [(left, None) for left in master] + [(None, right) for right in actual]
