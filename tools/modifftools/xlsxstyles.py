"""Looks of cells: fonts, colours, fills, borders, alignment and number formats, in words that compare.

Two ways of writing what shows the same give the same words.
"""

import collections
import colorsys
import functools
import re

from openpyxl.styles.colors import COLOR_INDEX
from openpyxl.styles.numbers import BUILTIN_FORMATS

from modifftools.xlsxpackage import flatten, is_true, whole, decimal_of

# How a cell looks, item by item in words; "" stands for plain.
Look = collections.namedtuple("Look", "format font colour fill border alignment")
PLAIN = Look("General", "", "", "", "", "")
THEME_ORDER = ("lt1", "dk1", "lt2", "dk2", "accent1", "accent2", "accent3", "accent4", "accent5", "accent6", "hlink",
               "folHlink")
BLACK = "000000"
_SWITCHES = {"b": "bold", "i": "italic", "strike": "struck out", "outline": "outline", "shadow": "shadow"}
_SIDES = ("left", "right", "top", "bottom", "start", "end")
_PLAIN_ALIGNMENT = {"horizontal": "general", "vertical": "bottom", "textRotation": "0", "wrapText": "0", "indent": "0",
                    "shrinkToFit": "0", "readingOrder": "0", "justifyLastLine": "0", "relativeIndent": "0"}

# Tokens of a number format that are more than the characters they hold.
_TOKEN = re.compile(r'"(?P<quoted>[^"]*)"?|\\(?P<escaped>.)|(?P<fill>[_*].)|\[\$(?P<currency>[^\]-]+)(?:-[^\]]*)?\]'
                    r'|\[(?P<bracket>[^\]]*)\]|(?P<plain>[-$+/():!^&\'~{}<>= ])|(?P<code>.)', re.DOTALL)


@functools.lru_cache(4096)
def shown_format(code):
    """A number format in the one form that all formats that show the same have."""
    words, literal = [], []
    for match in _TOKEN.finditer(code):
        kind = match.lastgroup
        if kind in ("quoted", "escaped", "currency", "plain"):
            literal.append(match[kind])
            continue
        if literal:
            words.append(_literal("".join(literal)))
            literal.clear()
        words.append(f"[{match[kind].upper()}]" if kind == "bracket" else
                     match[kind] if kind == "fill" else match[kind].lower())
    words.append(_literal("".join(literal)))
    shown = "".join(words)
    return "General" if shown in ("", "general") else shown.replace("general", "General").replace("e+", "E+")


def _literal(text):
    """Literal characters, quoted where they could be taken for a code; fraction bars and blanks stay as they are."""
    return text if re.fullmatch(r"[-$+/():!^&'~{}<>= ]*", text) else f'"{text}"'


class Colours:
    """The colours of a workbook by theme and palette."""

    def __init__(self, theme):
        """`theme` is the root of the theme's part."""
        self._palette = [colour[-6:].upper() for colour in COLOR_INDEX[:64]]
        self._theme = []
        for scheme in theme.all("clrScheme")[:1]:
            named = {child.name: child.children[0] for child in scheme.children if child.children}
            self._theme = [(named[name].get("lastClr") or named[name].get("val", BLACK)).upper() if name in named
                           else BLACK for name in THEME_ORDER]

    def set_palette(self, colours):
        """Takes the colours of a palette of the workbook's own."""
        self._palette = [colour.get("rgb", BLACK)[-6:].upper() for colour in colours] or self._palette

    def shown(self, element, automatic=BLACK):
        """The red, green and blue of a colour element in six digits."""
        if element is None or is_true(element.get("auto")):
            return automatic
        colour = automatic
        if element.get("rgb"):
            colour = element.get("rgb")[-6:].upper()
        elif element.get("theme") is not None:
            colour = self._at(self._theme, element.get("theme"), f"theme {element.get('theme')}")
        elif element.get("indexed") is not None:
            colour = self._at(self._palette, element.get("indexed"), automatic)
        tint = decimal_of(element.get("tint"))
        return _tinted(colour, tint) if tint else colour

    @staticmethod
    def _at(colours, index, otherwise):
        index = whole(index, -1)
        return colours[index] if 0 <= index < len(colours) else otherwise


@functools.lru_cache(1024)
def _tinted(colour, tint):
    """A colour made lighter (tint above 0) or darker."""
    if not re.fullmatch("[0-9A-F]{6}", colour):
        return f"{colour} tint {tint:.2f}"
    hue, light, saturation = colorsys.rgb_to_hls(*(int(colour[at:at + 2], 16) / 255 for at in (0, 2, 4)))
    light = light * (1 + tint) if tint < 0 else light * (1 - tint) + tint
    return "".join(f"{min(max(round(part * 255), 0), 255):02X}"
                   for part in colorsys.hls_to_rgb(hue, min(max(light, 0), 1), saturation))


class Styles:
    """The looks that cells refer to by number, and those that conditions and tables add."""

    def __init__(self, package, part, theme):
        self.colours = Colours(theme)
        self.added = []            # looks of conditions and tables, in words
        self._looks = []
        parts = collections.defaultdict(list)
        interned = {}
        self._read_palette(package, part)
        for path, element in package.elements(part, 2) if part else ():
            self._take(path.rpartition("/")[2], element, parts, interned)
        self._looks = self._looks or [PLAIN]

    def _read_palette(self, package, part):
        """The palette stands behind what refers to it, so that it needs a look of its own."""
        if part and b"indexedColors" in b"".join(package.chunks(part)):
            for _, element in package.elements(part, 2):
                if element.name == "indexedColors":
                    self.colours.set_palette(element.children)

    def _take(self, group, element, parts, interned):
        """Takes an entry of a group; numbers refer to groups that stand before theirs."""
        if group == "numFmts":
            parts["codes"].append((whole(element.get("numFmtId"), -1), element.get("formatCode", "")))
        elif group == "fonts":
            parts[group].append((self.font(element), self.colours.shown(element.child("color"))))
        elif group == "fills":
            parts[group].append(self._fill(element))
        elif group == "borders":
            parts[group].append(self._border(element))
        elif group == "dxfs":
            self.added.append(self._addition(element))
        elif group == "cellXfs":
            look = self._look(element, parts)
            self._looks.append(interned.setdefault(look, look))

    def look(self, number):
        """The look of a style number; numbers that don't exist mean the first, as spreadsheet programs read them."""
        return self._looks[number] if 0 <= number < len(self._looks) else self._looks[0]

    def addition(self, number):
        """The look that a condition or table adds, in words."""
        number = whole(number, -1)
        return self.added[number] if 0 <= number < len(self.added) else ""

    @staticmethod
    def font(element):
        """A font without its colour, in words; of a cell or of a run of text."""
        name = element.value("name") or element.value("rFont") or ""
        words = [name, f"{decimal_of(element.value('sz'), 11):g} pt"]
        words += [word for key, word in _SWITCHES.items()
                  if element.child(key) is not None and is_true(element.value(key, "1"))]
        if element.child("u") is not None and element.value("u") != "none":
            words.append(f"underlined {element.value('u', 'single')}")
        if element.value("vertAlign", "baseline") != "baseline":
            words.append(element.value("vertAlign"))
        return " ".join(words)

    def _fill(self, element):
        gradient, pattern = element.child("gradientFill"), element.child("patternFill")
        if gradient is not None:
            stops = [f"{stop.get('position')} {self.colours.shown(stop.child('color'))}"
                     for stop in gradient.children]
            return f"gradient {sorted(gradient.attributes.items())} {', '.join(stops)}"
        kind = pattern.get("patternType", "none") if pattern is not None else "none"
        if kind == "none":
            return ""
        front = self.colours.shown(pattern.child("fgColor"))
        back = self.colours.shown(pattern.child("bgColor"), "FFFFFF")
        return front if kind == "solid" else f"{kind} {front} on {back}"

    def _border(self, element):
        words = [self._line(element, side) for side in _SIDES]
        if is_true(element.get("diagonalUp")) or is_true(element.get("diagonalDown")):
            ways = [way.lower() for way in ("Up", "Down") if is_true(element.get(f"diagonal{way}"))]
            line = self._line(element, "diagonal")
            words.append(line and f"{line} {' '.join(ways)}")
        return ", ".join(filter(None, words))

    def _line(self, element, side):
        line = element.child(side)
        if line is None or line.get("style", "none") == "none":
            return ""
        side = {"start": "left", "end": "right"}.get(side, side)
        return f"{side} {line.get('style')} {self.colours.shown(line.child('color'))}"

    @staticmethod
    def _alignment(xf):
        alignment = xf.child("alignment")
        words = {} if alignment is None else {path: value for path, value, _ in flatten(alignment)}
        return ", ".join(f"{key} {value}" for key, value in words.items() if _PLAIN_ALIGNMENT.get(key) != value)

    def _look(self, xf, parts):
        number = whole(xf.get("numFmtId"))
        codes = parts.get("table")
        if codes is None:
            codes = parts["table"] = {**BUILTIN_FORMATS, **dict(parts["codes"])}
        font, colour = _entry(parts["fonts"], xf.get("fontId"), ("", BLACK))
        return Look(shown_format(codes.get(number, f"built-in format {number}")), font, colour,
                    _entry(parts["fills"], xf.get("fillId"), ""), _entry(parts["borders"], xf.get("borderId"), ""),
                    self._alignment(xf))

    def _addition(self, element):
        """What a condition or table adds, in words; a solid fill stands in its background there."""
        words = []
        for child in element.children:
            if child.name == "numFmt":
                words.append(f"format {shown_format(child.get('formatCode', ''))}")
            elif child.name == "border":
                words.append(f"border {self._border(child)}")
            elif child.name in ("font", "fill"):
                words.append(f"{child.name} {self._facts(child)}")
        return "; ".join(sorted(words))

    def _facts(self, element):
        facts = []
        for child in element.walk():
            if child.name in ("color", "fgColor", "bgColor"):
                facts.append(f"{child.name} {self.colours.shown(child)}")
            elif child is not element:
                facts += [f"{child.name} {value}" for _, value in sorted(child.attributes.items())] or [child.name]
        return ", ".join(facts)


def _entry(entries, number, otherwise):
    number = whole(number)
    return entries[number] if 0 <= number < len(entries) else otherwise
