"""Judges the renderings of two pages.

The quick look is at small images: what is the same in them to the last bit is taken as the same. Where they differ,
the fine look renders that part of the page anew, so that a hair line has a pixel of its own, and asks two questions:

- Does a pixel differ from everything next to its place on the other page? A glyph that stands off by less than the
  width of a pixel, or whose rim is shaded differently, does not; a comma for a point does. What remains must be dark
  enough within MARK pixels to be seen.
- Does a faint difference fill an area? A grey band that is gone does, the shades around glyphs don't.

What is found must be found again in a second rendering of both pages, as rendering isn't stable for every document.
Where little differs, that one is twice as fine: a hair line that is off by a fraction of a point fills one pixel here
and half of two there. What still remains is rendered four times as fine and moved about by up to a quarter of a
point: where lines stand close, rounding to pixels opens or closes the gap between them.
"""

import collections

from PIL import ImageChops, ImageDraw, ImageFilter

from modifftools.pdfdocument import Tile
from modifftools.pdfexcess import MOVED_ZOOM, MovedDrawing, Surroundings, strongest

QUICK_SCALE, QUICK_SIDE = 1.2, 1_000   # pixels per point of the quick look, and of its longer side at most
FINE_SCALE, FINE_SIDE = 4, 30_000      # the same of the fine look
TILE = 2_048                           # pixels of a side of a tile at most
MARGIN = 8                             # pixels around what differs that the fine look takes in
CELL = 16                              # pixels of the fine look that make one cell of what is told
FEW_CELLS = 200                        # differing cells of a tile up to which the second rendering is finer
FINE_PARTS = 60                        # finer renderings of a document, in vain, after which all are alike
MOVED = 0.25                           # points that a drawing may be moved
UNMOVED_CELLS = 200                    # cells of a document that fit nowhere, after which no more are tried
FINE_TILES = 60                        # differing tiles after which the quick look must do
PAGE_TILES = 6                         # differing tiles after which a page has been looked at enough
COARSE_LEVEL, COARSE_COUNT = 24, 12    # ... which takes so many pixels that differ by so much for a difference


def quick_side(pages):
    """Pixels of the longer side of the quick look's images."""
    largest = max(side for page in pages for side in page[:2])
    return max(1, round(min(QUICK_SIDE, QUICK_SCALE * largest)))


def common(master, actual):
    """Both images, cut to the size that both have."""
    size = tuple(map(min, master.size, actual.size))
    return [image if image.size == size else image.crop((0, 0, *size)) for image in (master, actual)]


def coarse(master, actual):
    """A mask of what differs clearly between two images of the quick look, and the number of such pixels."""
    soft = (image.filter(ImageFilter.BoxBlur(1)) for image in (master, actual))   # a letter's edge may shift a bit
    mask = strongest(ImageChops.difference(*soft)).point(lambda level: 255 * (level > COARSE_LEVEL))
    return mask, mask.histogram()[255]


class PixelComparison:
    """Looks for visible differences between the pages of two documents."""

    def __init__(self, master, actual):
        self._documents = master, actual
        self._tiles = 0   # that differed
        self._parts = 0   # rendered finer, in vain
        self._unmoved = 0   # cells that fitted nowhere

    def look(self, number, images, known):
        """The boxes, in points, in which page `number` differs visibly outside of the known boxes (in points).

        `images` are the quick look's. The second value is a mask of that size, for a picture.
        """
        if images[0].size == images[1].size and images[0].tobytes() == images[1].tobytes():
            return [], None
        left, right = common(*images)
        points = max(max(page[:2]) for page in (document.pages[number - 1] for document in self._documents))
        scale = max(right.size) / max(points, 1)
        differing = strongest(ImageChops.difference(left, right)).point(lambda level: 255 * (level > 0))
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
        """The cells of a tile in which both of two renderings differ."""
        found = self._seen(number, side, tile, known, scale)
        if len(found) > FEW_CELLS or self._parts >= FINE_PARTS:
            return found & self._seen(number, side, tile, known, scale)
        confirmed = set()
        for cells, part in parts(found, 2):
            again = self._seen(number, side, part, known, scale, 2)
            confirmed |= {cell for cell in cells if not again.isdisjoint(around(*cell))}
        differing = set()
        for cells, part in parts(confirmed, MOVED_ZOOM):
            still = self._unmoved_cells(number, side, cells, part, known, scale)
            self._parts += bool(still)
            differing |= still
        return differing

    def _images(self, number, side, tile, zoom):
        """The tile, so many times finer, of both documents, and its place then."""
        finer = Tile(*(edge * zoom for edge in tile))
        return [*common(*(document.tile(number, side * zoom, finer) for document in self._documents)), finer]

    def _seen(self, number, side, tile, known, scale, zoom=1):
        """The cells of a tile in which a rendering that is so many times finer differs."""
        left, right, finer = self._images(number, side, tile, zoom)
        mask = Surroundings(left, zoom).visible(Surroundings(right, zoom))
        blank(mask, known, scale * zoom, finer)
        return {(tile.left // CELL + x, tile.top // CELL + y) for x, y in dark_cells(mask, CELL * zoom)}

    def _unmoved_cells(self, number, side, cells, part, known, scale):
        """Those of the cells of a part that differ wherever the other page is moved to, by MOVED points or less."""
        if self._unmoved >= UNMOVED_CELLS:
            return set(cells)
        left, right, finer = self._images(number, side, part, MOVED_ZOOM)
        drawing, size = MovedDrawing(round(MOVED * scale * MOVED_ZOOM)), CELL * MOVED_ZOOM

        def clear(mask, x, y):
            blank(mask, known, scale * MOVED_ZOOM, Tile(finer.left + x, finer.top + y, 0, 0))

        still = set()
        for column, row in cells:
            x, y = column * size - finer.left, row * size - finer.top
            if not drawing.fits(left, right, (x, y, x + size, y + size), clear):
                still.add((column, row))
        self._unmoved += len(still)
        return still


def parts(cells, zoom):
    """Yields cells that lie together, and the tile, a cell wider each way, around them.

    So many times finer, that is no larger than a whole one.
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
