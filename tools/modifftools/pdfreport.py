"""Tells the differences of two documents, page by page."""

import modifftools as tool

EACH, SHOWN = 20, 200   # differences shown of one page, and of all


class PageReport:
    """Counts differences by page and tells, when closed, the first of each page, the document's own ones first.

    A file, when there is one, gets all of them as they are found.
    """

    def __init__(self, file=None):
        self.count = 0
        self._pages = {}   # number -> [count, first lines]; 0 stands for the document
        self._file = file

    def difference(self, page, line):
        """Takes up a difference of a page, or of the document when `page` is 0."""
        self.count += 1
        text = f"page {page}: {line}" if page else line
        group = self._pages.setdefault(page, [0, []])
        group[0] += 1
        if group[0] <= EACH:
            group[1].append(text)
        self._write(text)

    def _write(self, line):
        if self._file:
            self._file.write(f"{tool.escape(line)}\n".encode("utf-8"))

    def close(self, notes=()):
        """Prints the account, then the notes and the closing line, and returns the status of the comparison."""
        left = SHOWN
        for page, (count, lines) in sorted(self._pages.items()):
            shown = lines[:left]
            left -= len(shown)
            for line in shown:
                tool.say(line)
            if shown and count > len(shown):
                tool.say(f"{f'page {page}' if page else 'document'}: {count - len(shown)} more; {self._rest()}")
        if left == 0 and self.count > SHOWN:
            tool.say(f"differing pages: {pages_in_words([page for page in self._pages if page])}; {self._rest()}")
        total = f"{self.count} difference{'' if self.count == 1 else 's'}" if self.count else "no difference"
        for line in (*notes, total):
            self._write(line)
            tool.say(line)
        return tool.DIFFERENT if self.count else tool.EQUIVALENT

    def _rest(self):
        return f"all are in {self._file.name}" if self._file else "--report FILE writes all"


def pages_in_words(numbers):
    """Numbers of pages for a reader, such as "2-5, 9"."""
    runs = []
    for number in sorted(numbers):
        if runs and runs[-1][1] == number - 1:
            runs[-1][1] = number
        else:
            runs.append([number, number])
    return tool.clip(", ".join(f"{first}-{last}" if last > first else f"{first}" for first, last in runs))
