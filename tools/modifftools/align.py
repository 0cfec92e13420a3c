"""Finds which lines of one text, rows of one sheet, belong to which of another: what was put in, taken out, moved.

Lines are given by signatures (integers, equal for equal lines) and by labels, which stay when other parts of a line
change. The work is bounded: nearly linear, but for gaps of at most MAX_GAP lines a side.
"""

import bisect
import collections
import itertools

MAX_GAP = 300

# Lines of one side: their numbers (ascending), signatures and labels, each a sequence of integers.
Lines = collections.namedtuple("Lines", "numbers signatures labels")
# `length` lines from `master` on that stand from `actual` on in the other text.
Block = collections.namedtuple("Block", "master actual length")


def matched(left, right):
    """Pairs of indexes of equal items, ascending on both sides: the frame that two sequences share."""
    pairs, open_parts = [], [(0, len(left), 0, len(right))]
    while open_parts:
        low, high, other_low, other_high = open_parts.pop()
        while low < high and other_low < other_high and left[low] == right[other_low]:
            pairs.append((low, other_low))
            low, other_low = low + 1, other_low + 1
        while low < high and other_low < other_high and left[high - 1] == right[other_high - 1]:
            high, other_high = high - 1, other_high - 1
            pairs.append((high, other_high))
        if low < high and other_low < other_high:
            anchors = _anchors(left, right, range(low, high), range(other_low, other_high))
            if anchors:
                pairs += anchors
                bounds = [(low - 1, other_low - 1), *anchors, (high, other_high)]
                open_parts += [(first[0] + 1, then[0], first[1] + 1, then[1])
                               for first, then in zip(bounds, bounds[1:])]
            elif max(high - low, other_high - other_low) <= MAX_GAP:
                pairs += _longest(left[low:high], right[other_low:other_high], low, other_low)
    return sorted(pairs)


def _anchors(left, right, left_range, right_range):
    """Pairs of items that occur once on each side, as many as stand in the same order."""
    counts = collections.Counter(left[index] for index in left_range)
    other_counts = collections.Counter(right[index] for index in right_range)
    places = {right[index]: index for index in right_range if other_counts[right[index]] == 1}
    candidates = [(index, places[left[index]]) for index in left_range
                  if counts[left[index]] == 1 and left[index] in places]
    return _ascending(candidates)


def _ascending(pairs):
    """The longest choice of pairs, ascending by their first item, whose second items ascend as well."""
    tails, ends, before = [], [], [None] * len(pairs)
    for at, (_, place) in enumerate(pairs):
        length = bisect.bisect_left(tails, place)
        before[at] = ends[length - 1] if length else None
        tails[length:length + 1] = [place]
        ends[length:length + 1] = [at]
    chosen, at = [], ends[-1] if ends else None
    while at is not None:
        chosen.append(pairs[at])
        at = before[at]
    return chosen[::-1]


def _longest(left, right, low, other_low):
    """The longest common subsequence of two short sequences, as pairs of indexes from `low` and `other_low` on."""
    lengths = [[0] * (len(right) + 1) for _ in range(len(left) + 1)]
    for row, column in itertools.product(reversed(range(len(left))), reversed(range(len(right)))):
        lengths[row][column] = (lengths[row + 1][column + 1] + 1 if left[row] == right[column]
                                else max(lengths[row + 1][column], lengths[row][column + 1]))
    pairs, row, column = [], 0, 0
    while row < len(left) and column < len(right):
        if left[row] == right[column]:
            pairs.append((low + row, other_low + column))
            row, column = row + 1, column + 1
        elif lengths[row + 1][column] >= lengths[row][column + 1]:
            row += 1
        else:
            column += 1
    return pairs


def _gaps(pairs, length, other_length):
    """The ranges of indexes between pairs, as (range, range)."""
    bounds = [(-1, -1), *pairs, (length, other_length)]
    for first, then in zip(bounds, bounds[1:]):
        yield range(first[0] + 1, then[0]), range(first[1] + 1, then[1])


class Alignment:
    """Which lines of the master belong to which of the actual text.

    `pairs` ascend by both numbers; `moved`, `removed` and `added` are blocks of the lines that stand outside of them.
    """

    def __init__(self, master, actual):
        pairs = matched(master.signatures, actual.signatures)
        self.share = len(pairs) / max(len(master.numbers), len(actual.numbers), 1)   # of lines that are equal
        moved = self._find_moved(master.signatures, actual.signatures, pairs)
        gone, came = {left for left, _ in moved}, {right for _, right in moved}
        pairs = self._fill(pairs, master, actual, gone, came)
        self.pairs = [(master.numbers[left], actual.numbers[right]) for left, right in pairs]
        self._starts = [left for left, _ in self.pairs]
        self._actual_starts = [right for _, right in self.pairs]
        self.moved = _blocks([(master.numbers[left], actual.numbers[right]) for left, right in moved])
        gone.update(left for left, _ in pairs)
        came.update(right for _, right in pairs)
        self.removed = _runs(number for index, number in enumerate(master.numbers) if index not in gone)
        self.added = _runs(number for index, number in enumerate(actual.numbers) if index not in came)
        self._left_out = [_numbers(blocks) for blocks in (
            [*self.removed, *self.moved],
            [*self.added, *(Block(block.actual, block.actual, block.length) for block in self.moved)])]
        self._moves = {block.master + step: block.actual + step for block in self.moved for step in range(block.length)}
        self.blanks = list(self._blank_changes())
        self.is_identity = not (self.moved or self.removed or self.added or self.blanks)

    @staticmethod
    def _find_moved(left, right, pairs):
        """Lines outside of the pairs that occur once on each side."""
        paired, other_paired = {pair[0] for pair in pairs}, {pair[1] for pair in pairs}
        rest = [index for index in range(len(left)) if index not in paired]
        other_rest = [index for index in range(len(right)) if index not in other_paired]
        counts = collections.Counter(left[index] for index in rest)
        other_counts = collections.Counter(right[index] for index in other_rest)
        places = {right[index]: index for index in other_rest if other_counts[right[index]] == 1}
        return [(index, places[left[index]]) for index in rest if counts[left[index]] == 1 and left[index] in places]

    @staticmethod
    def _fill(pairs, master, actual, gone, came):
        """Pairs the lines of the gaps as well: by labels, then as they stand."""
        filled = list(pairs)
        for left, right in _gaps(pairs, len(master.numbers), len(actual.numbers)):
            left = [index for index in left if index not in gone]
            right = [index for index in right if index not in came]
            if not left or not right:
                continue
            labelled = matched([master.labels[index] for index in left], [actual.labels[index] for index in right])
            filled += [(left[first], right[then]) for first, then in labelled]
            for rest, other_rest in _gaps(labelled, len(left), len(right)):
                filled += [(left[first], right[then]) for first, then in zip(rest, other_rest)]
        return sorted(filled)

    def _blank_changes(self):
        """Yields (master's number, count) where blank lines were put in before a line, or taken out (below 0)."""
        last, other_last = 0, 0
        for left, right in self.pairs:
            if left - last != right - other_last:
                blanks = left - last - 1 - self._count(0, last, left)
                other_blanks = right - other_last - 1 - self._count(1, other_last, right)
                if blanks != other_blanks:
                    yield left, other_blanks - blanks
            last, other_last = left, right

    def _count(self, side, low, high):
        """How many lines outside of the pairs stand between two numbers of a side."""
        numbers = self._left_out[side]
        return bisect.bisect_left(numbers, high) - bisect.bisect_right(numbers, low)

    def is_left_out(self, side, number):
        """Whether a line of the master (side 0) or the actual text (1) was moved, removed or added."""
        numbers = self._left_out[side]
        at = bisect.bisect_left(numbers, number)
        return at < len(numbers) and numbers[at] == number

    def to_actual(self, number):
        """Where a line of the master stands in the actual text; lines outside keep their distance to the last pair."""
        if number in self._moves:
            return self._moves[number]
        at = bisect.bisect_right(self._starts, number) - 1
        if at < 0:
            return number
        place = self._actual_starts[at] + number - self._starts[at]
        is_inside = at + 1 < len(self._starts) and number != self._starts[at]
        return min(place, self._actual_starts[at + 1] - 1) if is_inside else place

    def is_end(self, number, other):
        """Whether a range that ends with a line of the master may end with the other's: only added ones between."""
        place = self.to_actual(number)
        low, high = sorted((place, other))
        return low == high or high - low == self._count(1, low - (other < place), high + (other > place))


def _runs(numbers):
    """Blocks of consecutive numbers."""
    return _blocks([(number, number) for number in numbers])


def _blocks(pairs):
    """Blocks of pairs that follow each other on both sides."""
    blocks = []
    for left, right in pairs:
        if blocks and (blocks[-1].master + blocks[-1].length, blocks[-1].actual + blocks[-1].length) == (left, right):
            blocks[-1] = blocks[-1]._replace(length=blocks[-1].length + 1)
        else:
            blocks.append(Block(left, right, 1))
    return blocks


def _numbers(blocks):
    return sorted(block.master + step for block in blocks for step in range(block.length))
