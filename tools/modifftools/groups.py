"""Reports of differences in groups (sheets, pages), for people: counted, the first of each shown."""

import collections

import modifftools as tool

MAX_LINES = 200_000    # differences written to the file of a report


class GroupReport:
    """Prints the first `shown` differences of each group and writes all, up to MAX_LINES, to `file`.

    `rest` says where those stand that are not printed; differences of the kinds in `ignored` don't count.
    """

    def __init__(self, shown, file, rest, ignored=()):
        self.count = 0
        self._shown, self._file, self._rest, self._ignored = shown, file, rest, frozenset(ignored)
        self._kinds = collections.Counter()
        self._group, self._group_kinds = "", collections.Counter()

    def write(self, line):
        """Writes a line to the file alone."""
        self._file.write(f"{tool.escape(line)}\n".encode("utf-8"))

    def counts(self, kind):
        """Whether differences of a kind count."""
        return kind not in self._ignored

    def difference(self, kind, group, text):
        """Takes up a difference of a kind, told in one line; those of a group come one after the other."""
        if kind in self._ignored:
            return
        if group != self._group:
            self._end_group()
            self._group = group
        self.count += 1
        self._kinds[kind] += 1
        self._group_kinds[kind] += 1
        line = f"{group}, {text}" if group else text
        if self.count <= MAX_LINES:
            self.write(line)
        if self._group_kinds.total() <= self._shown:
            tool.say(line)

    def _end_group(self):
        count = self._group_kinds.total()
        if count > self._shown:
            tool.say(f"{self._group or 'workbook'}: {count} differences ({_told(self._group_kinds)}), the first"
                     f" {self._shown} of them shown, all in {self._rest}")
        self._group_kinds.clear()

    def verdict(self):
        """Closes the account and returns the status of the comparison."""
        self._end_group()
        if self.count > MAX_LINES:
            self.write(f"{self.count - MAX_LINES} more differences")
        total = f"{self.count} difference{'' if self.count == 1 else 's'} ({_told(self._kinds)})"
        total = total if self.count else "no difference"
        self.write(total)
        tool.say(total)
        return tool.DIFFERENT if self.count else tool.EQUIVALENT


def _told(kinds):
    return ", ".join(f"{kind} {count}" for kind, count in kinds.items())
