"""What a document offers its readers beside the pages' looks: links, notes, outline, attachments, form fields.

All of it comes from qpdf's account of the document's objects.
"""

import difflib
import hashlib
import re

import modifftools as tool

SKIPPED = ("/StructElem", "/FontDescriptor", "/Font", "/ObjStm")   # types of objects without any of that
DEEP = 50                                            # levels of form fields and name trees that are read
NUMBER = r"-?\d+(?:\.\d+)?"
PLACE = re.compile(rf"(?<=at [(\[]){NUMBER}(?:, {NUMBER})*(?=[)\]])")   # in an entry's texts
TOLERANCE = 0.35                                     # points that a place, rounded to tenths, may be off
STYLES = {"/D": " in digits", "/R": " in Roman capitals", "/r": " in small Roman numerals", "/A": " in capital letters",
          "/a": " in small letters"}                 # of page labels
NO_NOTES = ("/Link", "/Popup", "/Widget")            # annotations that are told elsewhere


def _keep(item):
    """A dictionary of the account, or nothing when it can't matter."""
    return None if item.get("/Type") in SKIPPED else item


def _text(value):
    """A string of the account, without its mark of how it is written down."""
    return value[2:] if isinstance(value, str) and value[:2] in ("u:", "b:") else "" if value is None else str(value)


class Structure:
    """Lists of what one document offers; each entry is (page or 0, kind of thing, name or place, content)."""

    def __init__(self, document, places):
        account = document.objects(_keep)
        self._document = document
        self._objects = account["qpdf"][1]
        self._pages = {page["object"]: page["pageposfrom1"] for page in account["pages"]}
        self._places = places   # whether the places of things on their pages count
        self.units = [self._unit(page["object"]) for page in account["pages"]]
        catalog = self._dictionary((self._find("trailer") or {}).get("/Root"))
        self._destinations = {**self._dictionary(catalog.get("/Dests")),
                              **self._names(self._dictionary(catalog.get("/Names")).get("/Dests"))}
        self.outline = list(self._outline(account["outlines"], 1))
        self.links, self.notes, self.attachments = [], [], []
        for name, file in self._names(self._dictionary(catalog.get("/Names")).get("/EmbeddedFiles")).items():
            self.attachments.append((0, "attachment", name, self._digest(file)))
        for page in account["pages"]:
            self._annotations(self._pages[page["object"]], self._dictionary(page["object"]))
        self.fields = [(field.get("pageposfrom1") or 0, "form field", _text(field.get("fullname")),
                        f"{field.get('fieldtype')} {_text(self.value(field.get('value')))}")
                       for field in (account.get("acroform") or {}).get("fields", ())]
        self.labels = [(page["pageposfrom1"], "page label", "", self._label(page.get("label")))
                       for page in account["pages"]]

    def _find(self, reference):
        found = self._objects.get(reference if reference == "trailer" else f"obj:{reference}") or {}
        return found.get("value", found.get("stream", {}).get("dict") if found.get("stream") else None)

    def value(self, item):
        """The item, or the object it refers to."""
        for _ in range(DEEP):
            if not (isinstance(item, str) and item.endswith(" R") and f"obj:{item}" in self._objects):
                return item
            item = self._find(item)
        return None

    def _label(self, item):
        """How a page is numbered, for a reader."""
        label = self._dictionary(item)
        style = STYLES.get(self.value(label.get("/S")), "")
        number = f"{self.value(label.get('/St', 1))}{style}" if style else ""
        return f"{_text(self.value(label.get('/P')))}{number}" or "none"

    def _dictionary(self, item):
        found = self.value(item)
        return found if isinstance(found, dict) else {}

    def _list(self, item):
        found = self.value(item)
        return found if isinstance(found, list) else []

    def _unit(self, page):
        unit = self.value(self._dictionary(page).get("/UserUnit"))
        return unit if isinstance(unit, (int, float)) else 1

    def _names(self, tree, depth=0):
        """The entries of a name tree."""
        node = self._dictionary(tree)
        flat = self._list(node.get("/Names"))
        found = {_text(self.value(name)): item for name, item in zip(flat[::2], flat[1::2])}
        if depth < DEEP:
            for kid in self._list(node.get("/Kids")):
                found.update(self._names(kid, depth + 1))
        return found

    def _outline(self, items, level):
        for item in items or ():
            page = item.get("destpageposfrom1")
            action = self._target(self._dictionary(item.get("object")))
            target = f"page {page}" if page else action
            yield 0, "outline entry", f"{'  ' * level}{_text(item.get('title'))}".strip(), f"level {level}, {target}"
            if level < DEEP:
                yield from self._outline(item.get("kids"), level + 1)

    def _target(self, item):
        """Where a link or an entry of the outline leads, in words."""
        action = self._dictionary(item.get("/A"))
        if "/Dest" in item or action.get("/S") == "/GoTo":
            return self._destination(item.get("/Dest", action.get("/D")))
        if not action:
            return "nowhere"
        shown = (self._shown(action[key]) for key in ("/URI", "/F", "/D", "/N", "/JS", "/T", "/Fields")
                 if key in action)
        return " ".join([str(action.get("/S")), *shown])

    def _shown(self, item):
        """An item of an action in words."""
        found = self.value(item)
        if isinstance(found, dict):
            return _text(self.value(found.get("/UF", found.get("/F", ""))))
        if isinstance(found, list):
            return " ".join(_text(self.value(part)) for part in found)
        return _text(found)

    def _destination(self, item):
        name = self.value(item)
        if isinstance(name, str):
            item = self._destinations.get(_text(name), self._destinations.get(name))
            if item is None:
                return f"unknown place {_text(name)}"
        target = self._dictionary(item).get("/D", item)
        place = self._list(target)
        page = self._pages.get(place[0]) if place and isinstance(place[0], str) else None
        top = [point(part) for part in map(self.value, place[2:4]) if isinstance(part, (int, float))]
        where = f" at [{', '.join(top)}]" if self._places and top else ""
        return f"page {page}{where}" if page else "nowhere"

    def _annotations(self, number, page):
        """Takes up the annotations of a page."""
        for reference in self._list(page.get("/Annots")):
            item = self._dictionary(reference)
            kind = item.get("/Subtype")
            corners = [part for part in map(self.value, self._list(item.get("/Rect")))
                       if isinstance(part, (int, float))]
            where = f"at ({point(corners[0])}, {point(corners[1])})" if self._places and len(corners) == 4 else ""
            if kind == "/Link":
                self.links.append((number, "link", where, self._target(item)))
            elif kind not in NO_NOTES and kind:
                texts = (_text(self.value(item.get(key))) for key in ("/Contents", "/T", "/Subj"))
                self.notes.append((number, f"annotation {kind[1:]}", where, " | ".join(filter(None, texts))))
            if kind == "/FileAttachment":
                name = _text(self.value(self._dictionary(item.get("/FS")).get("/UF")))
                self.attachments.append((number, "attachment", name, self._digest(item.get("/FS"))))

    def _digest(self, file):
        """What tells the content of an attached file from others."""
        streams = self._dictionary(self._dictionary(file).get("/EF"))
        reference = streams.get("/F", streams.get("/UF"))
        if not isinstance(reference, str) or f"obj:{reference}" not in self._objects:
            return "no content"
        digest, length = hashlib.sha256(), 0
        for chunk in self._document.stream(reference):
            digest.update(chunk)
            length += len(chunk)
        return f"{length} bytes, SHA-256 {digest.hexdigest()[:16]}"


def point(number):
    """A measure in points for a reader."""
    return f"{round(number, 1):.12g}"


def same_but_for_places(master, actual):
    """Whether two entries differ in nothing but places that are off by less than a reader sees."""
    texts = [" ".join(entry[1:]) for entry in (master, actual)]
    numbers = [[float(number) for found in PLACE.findall(text) for number in found.split(",")] for text in texts]
    return (PLACE.sub("", texts[0]) == PLACE.sub("", texts[1]) and len(numbers[0]) == len(numbers[1])
            and all(abs(left - right) <= TOLERANCE for left, right in zip(*numbers)))


def compare(left, right, report):
    """Tells the report how two lists of one kind differ."""
    keys = [[entry[1:] for entry in entries] for entries in (left, right)]
    if keys[0] == keys[1]:
        return
    for step, i, i_end, j, j_end in difflib.SequenceMatcher(None, *keys, autojunk=False).get_opcodes():
        if step == "equal":
            continue
        gone, come = left[i:i_end], right[j:j_end]
        for master, actual in zip(gone, come):
            if same_but_for_places(master, actual):
                continue
            contents = f"master {_content(master)}, actual {_content(actual, master)}"
            report.difference(master[0], f"{_name(master)}: {contents}")
        for entry in gone[len(come):]:
            report.difference(entry[0], f"{_name(entry)}, {_content(entry)}, is missing")
        for entry in come[len(gone):]:
            report.difference(entry[0], f"{_name(entry)}, {_content(entry)}, is new")


def _name(entry):
    return " ".join(filter(None, (entry[1], entry[2] if entry[2].startswith("at (") else tool.clip(entry[2], 80))))


def _content(entry, beside=None):
    """The content for a reader, with the name where it isn't that of the entry beside."""
    named = "" if beside is None or entry[1:3] == beside[1:3] else f"{_name(entry)}: "
    return f'{named}"{tool.clip(entry[3])}"'
