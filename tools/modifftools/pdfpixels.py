"""Judges the renderings of two pages.

The quick look is at small images: what is the same in them to the last bit is taken as the same. Where they differ,
the fine look renders that part of the page anew, so that a hair line has a pixel of its own, and asks two questions:

- Does a pixel differ from everything next to its place on the other page? A glyph that stands off by less than the
  width of a pixel, or whose rim is shaded differently, does not; a comma for a point does. What remains must be dark
  enough within MARK pixels to be seen.
- Does a faint difference fill an area? A grey band that is gone does, the shades around glyphs don't.

What is found must be found again in other renderings of both pages, as rendering isn't stable for every document.
These are twice and four times as fine: a hair line that is off by a fraction of a point fills one pixel here and half
of two there, and where lines stand close, rounding to pixels opens or closes the gap between them.
"""

import collections
import functools

from PIL import Image, ImageChops, ImageDraw, ImageFilter

from modifftools.pdfdocument import Tile

QUICK_SCALE, QUICK_SIDE = 1.2, 1_000   # pixels per point of the quick look, and of its longer side at most
FINE_SCALE, FINE_SIDE = 4, 30_000      # the same of the fine look
TILE = 2_048                           # pixels of a side of a tile at most
MARGIN = 8                             # pixels around what differs that the fine look takes in
STEPS = {1: (1,), 2: (1, 2), 4: (1, 2, 3)}   # their sum: pixels that a drawing may be off, by fineness
MARK, MARK_LEVEL = {1: 3, 2: 3, 4: 7}, 28    # side of the square, in pixels, and its mean excess of 255 that is seen
AREA, AREA_LEVEL = 9, 6                # the same for faint differences: each pixel of the square must exceed
CELL = 16                              # pixels of the fine look that make one cell of what is told
FEW_CELLS = 200                        # differing cells of a tile of which all parts are rendered finer
FINER_TILES, MANY_TILES = 20, 2        # differing tiles after which no such tile, or none of more cells, is
FINE_TILES = 60                        # differing tiles after which the quick look must do
PAGE_TILES = 6                         # differing tiles after which a page has been looked at enough
COARSE_LEVEL, COARSE_COUNT = 24, 12    # ... which takes so many pixels that differ by so much for a difference


def quick_side(pages):
    """Pixels of the longer side of the quick look's images."""
    largest = max(side for page in pages for side in page[:2])
    return max(1, round(min(QUICK_SIDE, QUICK_SCALE * largest)))


def _strongest(image):
    """The greatest of the three colours of each pixel."""
    return functools.reduce(ImageChops.lighter, image.split())


def _spread(image, choose, pixels):
    """What `choose` (lighter or darker) makes of each pixel and of those so many pixels beside, above and below it."""
    for step in ((pixels, 0), (0, pixels)):
        back = ImageChops.offset(image, -step[0], -step[1])
        image = choose(choose(image, ImageChops.offset(image, *step)), back)
    return image


def _outside(image, other, steps):
    """How far each pixel of the image lies outside all that stands near its place in the other."""
    highest = lowest = other
    for step in steps:
        highest, lowest = _spread(highest, ImageChops.lighter, step), _spread(lowest, ImageChops.darker, step)
    above, below = ImageChops.subtract(image, highest), ImageChops.subtract(lowest, image)
    return ImageChops.lighter(above, below)


def visible(master, actual, zoom=1):
    """A mask of what a reader sees differ between two fine images: 255 there, else 0.

    `zoom` says how many times finer than the fine look they are.
    """
    steps = STEPS[zoom]
    excess = _strongest(ImageChops.lighter(_outside(master, actual, steps), _outside(actual, master, steps)))
    whole = 0, 0, excess.width - 1, excess.height - 1
    ImageDraw.Draw(excess).rectangle(whole, outline=0, width=sum(steps))   # neighbours are missing there
    marks = excess.filter(ImageFilter.BoxBlur(MARK[zoom] // 2)).point(lambda level: 255 * (level >= MARK_LEVEL))
    faint = excess.point(lambda level: 255 * (level > AREA_LEVEL))
    if faint.getbbox():
        faint = faint.filter(ImageFilter.BoxBlur(AREA // 2)).point(lambda level: 255 * (level == 255))
    return ImageChops.lighter(marks, faint)


def common(master, actual):
    """Both images, cut to the size that both have."""
    size = tuple(map(min, master.size, actual.size))
    return [image if image.size == size else image.crop((0, 0, *size)) for image in (master, actual)]


def coarse(master, actual):
    """A mask of what differs clearly between two images of the quick look, and the number of such pixels."""
    soft = (image.filter(ImageFilter.BoxBlur(1)) for image in (master, actual))   # a letter's edge may shift a bit
    mask = _strongest(ImageChops.difference(*soft)).point(lambda level: 255 * (level > COARSE_LEVEL))
    return mask, mask.histogram()[255]


class PixelComparison:
    """Looks for visible differences between the pages of two documents."""

    def __init__(self, master, actual):
        self._documents = master, actual
        self._tiles = 0   # that differed

    def look(self, number, images, known):
        """The boxes, in points, in which page `number` differs visibly outside of the known boxes (in points).

        `images` are the quick look's. The second value is a mask of that size, for a picture.
        """
        if images[0].size == images[1].size and images[0].tobytes() == images[1].tobytes():
            return [], None
        left, right = common(*images)
        points = max(max(page[:2]) for page in (document.pages[number - 1] for document in self._documents))
        scale = max(right.size) / max(points, 1)
        differing = _strongest(ImageChops.difference(left, right)).point(lambda level: 255 * (level > 0))
        blank(differing, known, scale)
        clear, count = coarse(left, right)
        blank(clear, known, scale)
        if self._tiles >= FINE_TILES:
            box = clear.getbbox() if count > COARSE_COUNT else None
            return ([tuple(side / scale for side in box)] if box else []), clear
        return self._fine(number, differing, known, points), clear

    def _fine(self, number, differing, known, points):
        """What the fine look finds where the quick look's images differ."""
        quick = max(differing.size)
        side = max(quick, round(min(FINE_SIDE, FINE_SCALE * points)))
        found, enough = set(), min(self._tiles + PAGE_TILES, FINE_TILES)
        for tile in tiles(differing, side / quick):
            cells = self._cells(number, side, tile, known, side / max(points, 1))
            self._tiles += bool(cells)
            found |= cells
            if self._tiles >= enough:
                break
        scale = CELL * points / side
        return [tuple(edge * scale for edge in box) for box in clusters(found)]

    def _cells(self, number, side, tile, known, scale):
        """The cells of a tile that differ in each of the renderings."""
        look = functools.partial(self._seen, number, side, known, scale)
        found = look(tile)
        many = len(found) > FEW_CELLS
        finer = self._tiles < (MANY_TILES if many else FINER_TILES)
        for zoom in (2, 4) if finer else ():
            found = still_seen(found, zoom, look)
        return found & look(tile) if found and (many or not finer) else found

    def _seen(self, number, side, known, scale, tile, zoom=1):
        """The cells of a tile in which a rendering that is so many times finer differs."""
        part = Tile(*(edge * zoom for edge in tile))
        mask = visible(*common(*(document.tile(number, side * zoom, part) for document in self._documents)), zoom)
        blank(mask, known, scale * zoom, part)
        return {(tile.left // CELL + x, tile.top // CELL + y) for x, y in dark_cells(mask, CELL * zoom)}


def still_seen(cells, zoom, look):
    """Those of the cells in which a rendering that is so many times finer differs; `look` gives those of a tile.

    When there are many and some still differ, the rest is taken to do so as well.
    """
    still = set()
    for group, part in parts(cells, zoom):
        if still and len(cells) > FEW_CELLS:
            still.update(group)
        else:
            again = look(part, zoom)
            still.update(cell for cell in group if not again.isdisjoint(around(*cell)))
    return still


def parts(cells, zoom):
    """Yields groups of cells and the tiles, a cell wider each way, around them.

    Rendered so many times finer, these are about as large as a whole tile.
    """
    groups, side = collections.defaultdict(list), TILE // CELL // zoom
    for column, row in cells:
        groups[column // side, row // side].append((column, row))
    for group in groups.values():
        columns, rows = zip(*group)
        corner = max(0, min(columns) - 1), max(0, min(rows) - 1)
        yield group, Tile(*(CELL * edge for edge in (*corner, max(columns) + 2 - corner[0], max(rows) + 2 - corner[1])))


def around(column, row):
    """A cell and those next to it."""
    return {(column + x, row + y) for x in (-1, 0, 1) for y in (-1, 0, 1)}


def blank(mask, boxes, scale, tile=Tile(0, 0, 0, 0)):
    """Clears the boxes (in points) of a mask of so many pixels a point that begins where the tile does."""
    draw = ImageDraw.Draw(mask)
    for left, top, right, bottom in boxes:
        draw.rectangle((left * scale - 1 - tile.left, top * scale - 1 - tile.top,
                        right * scale + 1 - tile.left, bottom * scale + 1 - tile.top), fill=0)


def tiles(differing, scale):
    """Yields the tiles of the fine look, whose pixels are so many times smaller, that hold the differing pixels."""
    step = max(1, int(TILE / scale))
    for top in range(0, differing.height, step):
        for left in range(0, differing.width, step):
            box = differing.crop((left, top, left + step, top + step)).getbbox()
            if box:
                corner = [max(0, int((edge + start) * scale) - MARGIN) // CELL * CELL
                          for edge, start in zip(box, (left, top))]
                end = [int((edge + start) * scale) + MARGIN for edge, start in zip(box[2:], (left, top))]
                yield Tile(*corner, *(last - first for first, last in zip(corner, end)))


def dark_cells(mask, cell):
    """The column and row of each cell of so many pixels that holds a pixel of the mask."""
    small = mask.reduce(cell)
    return {(index % small.width, index // small.width) for index, level in enumerate(small.tobytes()) if level}


def clusters(cells):
    """The boxes (left, top, right, bottom, in cells) around cells that lie together, from top to bottom."""
    boxes, rest = [], set(cells)
    while rest:
        group, border = set(), [rest.pop()]
        while border:
            column, row = border.pop()
            group.add((column, row))
            near = {(column + x, row + y) for x in (-2, -1, 0, 1, 2) for y in (-2, -1, 0, 1, 2)} & rest
            rest -= near
            border.extend(near)
        columns, rows = zip(*group)
        boxes.append((min(columns), min(rows), max(columns) + 1, max(rows) + 1))
    return sorted(boxes, key=lambda box: (box[1], box[0]))


def marked(image, mask, boxes, points):
    """The image with the pixels of the mask (if any) in red and a red frame around each box (in points)."""
    picture, scale = image.copy(), max(image.size) / max(points, 1)
    if mask:
        picture.paste((255, 0, 0), (0, 0, *mask.size), mask)
    draw = ImageDraw.Draw(picture)
    for box in boxes:
        left, top, right, bottom = (side * scale for side in box)
        draw.rectangle((left - 3, top - 3, right + 3, bottom + 3), outline=(255, 0, 0))
    return picture
