"""What a reader sees differ between two images of the same part of a page.

`zoom` says how many times finer than the fine look (FINE_SCALE in pdfpixels) the images are.
"""

import functools
import itertools

from PIL import ImageChops, ImageDraw, ImageFilter

REACH = {1: 1, 2: 3, 4: 2}       # pixels that a drawing may be off, by zoom; lines are rounded to whole ones
MARK, MARK_LEVEL = 3, 28         # side of the square, in pixels, and its mean excess of 255 that is seen
AREA, AREA_LEVEL = 9, 6          # the same for faint differences: each pixel of the square must exceed
LARGER = {1: 1, 2: 1, 4: 4}      # how many times larger both squares are, by zoom
MOVED_ZOOM, STEP = 4, 2          # zoom of images that are moved about, and pixels between the places tried
AROUND = 16                      # pixels around the part looked at that must fit as well


def strongest(image):
    """The greatest of the three colours of each pixel."""
    return functools.reduce(ImageChops.lighter, image.split())


def _spread(image, choose):
    """What `choose` (lighter or darker) makes of each pixel and its eight neighbours."""
    for step in ((1, 0), (0, 1)):
        back = ImageChops.offset(image, -step[0], -step[1])
        image = choose(choose(image, ImageChops.offset(image, *step)), back)
    return image


class Surroundings:
    """An image with the highest and the lowest of what stands within reach of each of its pixels."""

    def __init__(self, image, zoom):
        self._zoom = zoom
        self.layers = image, image, image
        for _ in range(REACH[zoom]):
            self.layers = (image, _spread(self.layers[1], ImageChops.lighter),
                           _spread(self.layers[2], ImageChops.darker))

    def visible(self, other, step=(0, 0)):
        """A mask of what is seen to differ from the other once that is moved by the step: 255 there, else 0."""
        excess, larger = self._excess(other, step), LARGER[self._zoom]
        marks = excess.filter(ImageFilter.BoxBlur(MARK * larger // 2)).point(lambda level: 255 * (level >= MARK_LEVEL))
        faint = excess.point(lambda level: 255 * (level > AREA_LEVEL))
        if faint.getbbox():
            faint = faint.filter(ImageFilter.BoxBlur(AREA * larger // 2)).point(lambda level: 255 * (level == 255))
        return ImageChops.lighter(marks, faint)

    def _excess(self, other, step):
        """How far each pixel of either image lies outside all that stands within reach of its place in the other."""
        mine = self.layers
        its = [ImageChops.offset(layer, *step) for layer in other.layers] if any(step) else other.layers
        pairs = (mine[0], its[1]), (its[2], mine[0]), (its[0], mine[1]), (mine[2], its[0])
        excess = strongest(functools.reduce(ImageChops.lighter, itertools.starmap(ImageChops.subtract, pairs)))
        whole = 0, 0, excess.width - 1, excess.height - 1
        width = REACH[self._zoom] + max(map(abs, step))
        ImageDraw.Draw(excess).rectangle(whole, outline=0, width=width)   # neighbours are missing there
        return excess


class MovedDrawing:
    """Finds whether a small part of a page looks the same once the other page is moved by so many pixels or less."""

    def __init__(self, reach):
        places = range(-reach // STEP * STEP, reach + 1, STEP)
        self._steps = sorted(itertools.product(places, repeat=2), key=lambda step: max(map(abs, step)))
        self._margin = AROUND + AREA * LARGER[MOVED_ZOOM] // 2 + reach + REACH[MOVED_ZOOM]

    def fits(self, master, actual, box, clear):
        """Whether the box of two images looks the same; `clear(mask, left, top)` clears what doesn't count."""
        outer = _grown(box, self._margin, master.size)
        inner = _grown(box, AROUND, master.size)
        inner = [edge - start for edge, start in zip(inner, outer[:2] * 2)]
        left, right = (Surroundings(image.crop(outer), MOVED_ZOOM) for image in (master, actual))
        for index, step in enumerate(self._steps):
            mask = left.visible(right, step)
            clear(mask, *outer[:2])
            if not mask.crop(inner).getbbox():
                self._steps.insert(0, self._steps.pop(index))   # its neighbours are likely to be moved alike
                return True
        return False


def _grown(box, margin, size):
    """The box with a margin, within an image of the size."""
    left, top, right, bottom = box
    return max(0, left - margin), max(0, top - margin), min(size[0], right + margin), min(size[1], bottom + margin)
