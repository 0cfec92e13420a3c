"""An open workbook: what stands outside the sheets, and streams of what stands in them."""

import collections
import functools
import tempfile

from modifftools.xlsxcells import quoted
from modifftools.xlsxpackage import Package, is_true, whole
from modifftools.xlsxsheet import TextParser, TextTable
from modifftools.xlsxshift import unquoted
from modifftools.xlsxstyles import Styles

Sheet = collections.namedtuple("Sheet", "name state part")


class Workbook(Package):
    """A workbook, read as far as it is asked for."""

    def __init__(self, path, files):
        """Opens the workbook at `path`; the stack `files` is to close what it opens."""
        super().__init__(path, files)
        self.sheets, self.names, self.calendar = [], {}, "1900"
        with self.damage_named():
            self._part = self.only_related("", "/officeDocument")
            if self._part is None:
                raise ValueError("no workbook inside")
            self._read_structure()

    def _read_structure(self):
        targets = self.related(self._part)
        scoped = []
        for path, element in self.elements(self._part, 2):
            if path == "workbook/sheets" and element.name == "sheet":
                self.sheets.append(Sheet(element.get("name", ""), element.get("state") or "visible",
                                         targets.get(element.get("id"), "")))
            elif element.name == "definedName":
                scoped.append((element.get("name", ""), element.get("localSheetId"), unquoted(element.text)))
        for _, element in self.elements(self._part, 1):
            if element.name == "workbookPr" and is_true(element.get("date1904")):
                self.calendar = "1904"
        for name, scope, text in scoped:
            sheet = f" of sheet {quoted(self.sheets[whole(scope)].name)}" if scope else ""
            self.names[f"{name}{sheet}"] = text
        if len({sheet.name for sheet in self.sheets}) < len(self.sheets):
            raise ValueError("two sheets of one name")

    @functools.cached_property
    def table_parts(self):
        """The parts to which cells and drawings of all sheets refer, or None: styles, texts, theme, persons."""
        return [self.only_related(self._part, kind) for kind in ("/styles", "/sharedStrings", "/theme", "/person")]

    @functools.cached_property
    def styles(self):
        """The looks of cells."""
        with self.damage_named():
            return Styles(self, self.table_parts[0], self.tree(self.table_parts[2] or ""))

    @functools.cached_property
    def texts(self):
        """The shared texts, read when the first sheet asks for them."""
        part = self.table_parts[1]
        file = self.files.enter_context(tempfile.TemporaryFile())
        return TextTable(file, self.parsed(part, TextParser(self.styles)) if part else ())

    @functools.cached_property
    def persons(self):
        """The names of those who comment, by id."""
        return {person.get("id"): person.get("displayName", "")
                for _, person in self.elements(self.table_parts[3] or "", 1)}

    def cells(self, part, parser):
        """Yields the Cells of a sheet; none when its part is missing."""
        return self.parsed(part, parser) if self.holds(part) else iter(())

    def reached(self, part):
        """All parts that a part points to, at whatever distance: name -> relationships."""
        found, waiting = {}, [part]
        while waiting:
            part = waiting.pop()
            if part not in found and self.holds(part):
                found[part] = self.related(part)
                waiting += found[part].values()
        return found
