"""Compares the words of two documents as a reader follows them: line by line, over the ends of pages.

On each page, words that stand in place are taken out first. The lines of what remains are aligned over many pages,
so that a line too many is one difference, and not one for each line that it pushes on.
"""

import collections
import difflib
import itertools

import modifftools as tool

TEXT_TOLERANCE = 0.25   # points that each side of a word's box may be off
PIECE_TOLERANCE = 1.5   # the same upwards and downwards, for pieces of tall signs
AROUND = 2              # points around a line that belong to it
WINDOW = 4_000          # lines aligned at a time
LATEST = 8              # groups of words to one of which a word may belong
THOROUGH = 1_000        # lines up to which even very frequent ones are aligned

Line = collections.namedtuple("Line", "page words")


def near(master, actual, tolerance=TEXT_TOLERANCE):
    """Whether two boxes are the same within the tolerance."""
    return all(abs(left - right) <= tolerance for left, right in zip(master, actual))


def without_partners(words, others):
    """The indexes of the words, and of the others, that have no partner of the same text and place."""
    if len(words) == len(others) and all(word.text == other.text and near(word.box, other.box)
                                         for word, other in zip(words, others)):
        return set(), set()
    places = collections.defaultdict(list)   # (text, column, row of a grid of points) -> indexes
    for index, other in enumerate(others):
        places[other.text, int(other.box[0]), int(other.box[1])].append(index)
    alone, left = set(), set(range(len(others)))
    for index, word in enumerate(words):
        cells = ((word.text, int(word.box[0]) + x, int(word.box[1]) + y)
                 for x, y in itertools.product((0, -1, 1), repeat=2))
        partner = next((other for cell in cells for other in places.get(cell, ())
                        if other in left and near(word.box, others[other].box)), None)
        if partner is None:
            alone.add(index)
        else:
            left.remove(partner)
    return alone, left


def split_otherwise(words, alone, others, left):
    """Takes out of both sets of indexes the groups of words that read the same in the same place.

    Where letters stand apart by about the width of a space, or above each other, a thousandth of a point decides what
    is a word; and where a tall bar is made of pieces that overlap, which of them is told. How such a group looks is
    then judged with the drawing.
    """
    places = collections.defaultdict(list)
    for run in groups(others, left):
        places["".join(others[index].text for index in run)].append(run)
    for run in groups(words, alone):
        box, text = around([words[index] for index in run]), "".join(words[index].text for index in run)
        for other in places[text]:
            pieces = len(run) != len(other) or not any(map(str.isalnum, text))
            its_box = around([others[index] for index in other])
            in_place = near(box[::2], its_box[::2]) and near(box[1::2], its_box[1::2],
                                                             PIECE_TOLERANCE if pieces else TEXT_TOLERANCE)
            if in_place and left.issuperset(other):
                alone.difference_update(run)
                left.difference_update(other)
                break


def groups(words, alone):
    """The indexes of words that stand alone, one list for those that follow each other closely."""
    found = []
    for index in sorted(alone):
        group = next((group for group in found[-LATEST:] if touching(words[group[-1]].box, words[index].box)), None)
        if group:
            group.append(index)
        else:
            found.append([index])
    return found


def touching(box, other):
    """Whether two words stand next to each other, or so close above each other that they are no lines of a text."""
    height = min(box[3] - box[1], other[3] - other[1])
    return all(box[axis] - gap <= other[axis + 2] and other[axis] - gap <= box[axis + 2]
               for axis, gap in ((0, height / 2), (1, height / 8)))


def lines(page, words, alone):
    """The lines of a page that hold words which stand alone."""
    found, start = [], 0
    for index in range(1, len(words) + 1):
        if index == len(words) or not beside(words[index - 1].box, words[index].box):
            if not alone.isdisjoint(range(start, index)):
                found.append(Line(page, words[start:index]))
            start = index
    return found


def beside(box, following):
    """Whether a word goes on the line of the word before."""
    shared = min(box[3], following[3]) - max(box[1], following[1])
    return following[0] > box[0] and shared > 0.5 * min(box[3] - box[1], following[3] - following[1])


def text_of(line):
    return " ".join(word.text for word in line.words)


def around(words):
    """The box around words."""
    sides = list(zip(*(word.box for word in words)))
    return min(sides[0]), min(sides[1]), max(sides[2]), max(sides[3])


def at(box):
    """A place on a page for a reader: points from the left and from the top."""
    return f"({box[0]:.1f}, {box[1]:.1f})"


def quoted(words):
    """Words with their number in the sentence, such as: word "a", words "a b"."""
    return f'word{"s" * (len(words) > 1)} "{tool.clip(" ".join(word.text for word in words))}"'


def many(some):
    """Lines for a reader: one with its words, more by their number, first and last."""
    if len(some) == 1:
        words = some[0].words
        return quoted(words) if len(words) == 1 else f'line "{tool.clip(text_of(some[0]))}"'
    return f'{len(some)} lines from "{tool.clip(text_of(some[0]), 60)}" to "{tool.clip(text_of(some[-1]), 60)}"'


def place(line, page):
    """Where a line stands, for a reader who looks at a page."""
    return f"{at(line.words[0].box)}{'' if line.page == page else f' on page {line.page}'}"


def covered(left, right, width):
    """The boxes of one page within which its lines differ: of their words, or of all that moved with them."""
    texts = [{text_of(line) for line in side} for side in (left, right)]
    boxes, moved = [], []
    for line in (*left, *right):
        box = around(line.words)
        pushed = text_of(line) in texts[0] & texts[1]
        (moved if pushed else boxes).append(box)
    if moved:
        boxes.append((0, min(box[1] for box in moved), width, max(box[3] for box in moved)))
    return [(a - AROUND, b - AROUND, c + AROUND, d + AROUND) for a, b, c, d in boxes]


class TextFlow:
    """Takes up the words of page after page and tells `report` how they differ; close() ends that."""

    def __init__(self, report):
        self._report = report
        self._left, self._right = [], []   # lines not aligned yet
        self._pending = None               # a difference that may push lines on: page, text
        self._pushed = 0                   # lines that it has pushed on
        self._last_page = 0                # where the last of them stands
        self.differs = False

    def take(self, page, words, others, width):
        """Takes up a page; gives the boxes within which its words differ."""
        alone, left = without_partners(words, others)
        split_otherwise(words, alone, others, left)
        if not alone and not left:
            return []
        self.differs = True
        some, more = lines(page, words, alone), lines(page, others, left)
        self._left += some
        self._right += more
        if len(self._left) + len(self._right) >= WINDOW:
            self._align(at_end=False)
        return covered(some, more, width)

    def close(self):
        """Tells what is left to tell."""
        self._align(at_end=True)
        self._tell(None)

    def _align(self, at_end):
        texts = [[text_of(line) for line in side] for side in (self._left, self._right)]
        matcher = difflib.SequenceMatcher(None, *texts, autojunk=max(map(len, texts)) > THOROUGH)
        steps = matcher.get_opcodes()
        rest = [], []
        if not at_end and len(steps) > 1 and steps[-1][0] != "equal":   # may go on in the next window
            _, i, _, j, _ = steps.pop()
            rest = self._left[i:], self._right[j:]
            if len(rest[0]) + len(rest[1]) >= WINDOW // 2:              # no, it doesn't
                steps, rest = matcher.get_opcodes(), ([], [])
        moves = Moves(steps, texts)
        for kind, i, i_end, j, j_end in steps:
            if kind == "equal":
                self._same(self._left[i:i_end], self._right[j:j_end])
            else:
                self._moved(moves, range(i, i_end))
                self._hunk([self._left[index] for index in range(i, i_end) if index not in moves.gone],
                           [self._right[index] for index in range(j, j_end) if index not in moves.come])
        self._left, self._right = rest

    def _tell(self, page, text=""):
        """Takes up a difference, and reports the one before with the lines that it pushed on."""
        if self._pending:
            before, line = self._pending
            if self._pushed:
                line += f"; {self._pushed} line{'s' * (self._pushed > 1)} after it moved on"
            self._report.difference(before, line)
        self._pending = (page, text) if page else None
        self._pushed, self._last_page = 0, page or 0

    def _same(self, left, right):
        """Lines of the same text that don't stand in place: pushed on by what comes before, or moved together."""
        pairs = list(zip(left, right))
        while pairs:
            first = pairs[0]
            run = list(itertools.takewhile(lambda pair: offset(*pair) == offset(*first), pairs))
            pairs = pairs[len(run):]
            if self._is_pushed(*first):
                self._pushed += len(run)
                self._last_page = run[-1][1].page
            elif moved_whole(*first):
                self._move([line for line, _ in run], run[0][1])
            else:
                for pair in run:
                    self._words(*([(line.page, word) for word in line.words] for line in pair))

    def _is_pushed(self, left, right):
        upright = abs(left.words[0].box[0] - right.words[0].box[0]) <= TEXT_TOLERANCE
        return self._pending and upright and moved_whole(left, right) and 0 <= right.page - self._last_page <= 1

    def _moved(self, moves, indexes):
        """Tells the blocks that begin at some of the indexes and stand elsewhere in the actual document."""
        for index in indexes:
            if index in moves.blocks:
                start, length = moves.blocks[index]
                self._move(self._left[index:index + length], self._right[start])

    def _move(self, some, to):
        page = some[0].page
        self._tell(page, f"{many(some)} moved from {place(some[0], page)} to {place(to, page)}")

    def _hunk(self, left, right):
        """Lines that stand only in the master, only in the actual document, or in each other's place."""
        if left and right:
            self._words(*([(line.page, word) for line in side for word in line.words] for side in (left, right)))
        elif left or right:
            some = left or right
            state = "missing" if left else "new"
            verb = "is" if len(some) == 1 else "are"
            self._tell(some[0].page, f"{many(some)} at {at(some[0].words[0].box)} {verb} {state}")

    def _words(self, left, right):
        """Compares the words, each with its page, of lines that stand in each other's place."""
        texts = [[word.text for _, word in side] for side in (left, right)]
        matcher = difflib.SequenceMatcher(None, *texts, autojunk=max(map(len, texts)) > THOROUGH)
        steps = [step for step in matcher.get_opcodes() if step[0] != "equal"]
        for _, i, i_end, j, j_end in steps:
            self._change(left[i:i_end], right[j:j_end])
        if not steps:
            moved = [pair for pair in zip(left, right) if not near(pair[0][1].box, pair[1][1].box)]
            if moved:
                (page, first), (_, other) = moved[0]
                self._tell(page, f"{quoted([word for (_, word), _ in moved])} moved from {at(first.box)}"
                                 f" to {at(other.box)}")

    def _change(self, left, right):
        """Tells the change of words into others: one by one when there are as many."""
        if left and len(left) == len(right):
            for (page, word), (_, other) in zip(left, right):
                self._tell(page, f'{quoted([word])} at {at(word.box)} became "{tool.clip(other.text)}"')
            return
        words, others = ([word for _, word in side] for side in (left, right))
        page, first = (left or right)[0]
        if words and others:
            became = tool.clip(" ".join(word.text for word in others))
            self._tell(page, f'{quoted(words)} at {at(first.box)} became "{became}"')
        else:
            some = words or others
            verb = "is" if len(some) == 1 else "are"
            self._tell(page, f"{quoted(some)} at {at(first.box)} {verb} {'missing' if words else 'new'}")


def offset(left, right):
    """By how much a line has moved: pages, and points to the right and down (rounded, as lines move together)."""
    (x, y), (other_x, other_y) = left.words[0].box[:2], right.words[0].box[:2]
    return right.page - left.page, round(other_x - x), round(other_y - y)


def moved_whole(left, right):
    """Whether all words of a line have moved alike, rather than some of them within their line."""
    x, y = (new - old for old, new in zip(left.words[0].box, right.words[0].box[:2]))
    alike = all(near([word.box[0] + x, word.box[1] + y], other.box[:2])
                for word, other in zip(left.words, right.words))
    return alike or left.page != right.page


class Moves:
    """The blocks of lines that an alignment finds missing in one place and new in another."""

    def __init__(self, steps, texts):
        self.blocks = {}                       # index in the master -> (index in the actual document, lines)
        self.gone, self.come = set(), set()    # the indexes of all lines of these blocks
        changed = [step for step in steps if step[0] != "equal"]
        missing = [index for step in changed for index in range(step[1], step[2])]
        new = {index for step in changed for index in range(step[3], step[4])}
        places = collections.defaultdict(list)
        for index in sorted(new):
            places[texts[1][index]].append(index)
        still = set(missing)
        for index in missing:
            start = next((place for place in places[texts[0][index]] if place not in self.come), None)
            if index in self.gone or start is None:
                continue
            length = 0
            while (index + length in still and start + length in new - self.come
                   and texts[0][index + length] == texts[1][start + length]):
                self.gone.add(index + length)
                self.come.add(start + length)
                length += 1
            self.blocks[index] = start, length
