"""Pictures and paths: the little of SVG that the family is drawn with.

Every path function returns path data, so that shapes can be joined with "+" and
stroked as one.
"""

from palette import INK


def number(value):
    return f"{value:.2f}".rstrip("0").rstrip(".")


def path(*parts):
    """Path data from letters and numbers: path("M", 1, 2, "H", 5)."""
    return " ".join(p if isinstance(p, str) else number(p) for p in parts) + " "


def lines(*points):
    head, *tail = points
    return path("M", *head, *(v for p in tail for v in ("L", *p)))


def polygon(*points):
    return lines(*points) + "Z "


def box(x0, y0, x1, y1, r=0):
    """A rectangle between two corners, with rounded corners."""
    if r == 0:
        return path("M", x0, y0, "H", x1, "V", y1, "H", x0, "Z")
    return path("M", x0 + r, y0, "H", x1 - r, "A", r, r, 0, 0, 1, x1, y0 + r,
                "V", y1 - r, "A", r, r, 0, 0, 1, x1 - r, y1,
                "H", x0 + r, "A", r, r, 0, 0, 1, x0, y1 - r,
                "V", y0 + r, "A", r, r, 0, 0, 1, x0 + r, y0, "Z")


def ellipse(x, y, rx, ry):
    return path("M", x - rx, y, "A", rx, ry, 0, 1, 1, x + rx, y,
                "A", rx, ry, 0, 1, 1, x - rx, y, "Z")


def circle(x, y, r):
    return ellipse(x, y, r, r)


def nozzle(x, tip, half, height):
    """A hot end seen from the front: a block, and the tip below it pointing down."""
    top, shoulder = tip - height, tip - half * 1.1
    return polygon((x - half, top), (x + half, top), (x + half, shoulder),
                   (x + half * 0.7, shoulder), (x + half * 0.3, tip), (x - half * 0.3, tip),
                   (x - half * 0.7, shoulder), (x - half, shoulder))


class Picture:
    """One SVG picture: shapes in drawing order above a light rim of their outlines.

    The rim keeps the dark strokes readable on a dark background.
    """

    def __init__(self, size, line, rim, grid=None):
        """
        size: pixels of the 1x picture; grid: units it is drawn in, if not pixels;
        line: width of an outline; rim: how far the light shows outside of it
        """
        self.size = size
        self.line = line
        self._grid = grid or size
        self._rim_width = rim
        self._rims = []
        self._shapes = []

    def outline(self, data, fill="none", ink=INK, width=None):
        """A shape whose outline belongs to the silhouette."""
        width = width or self.line
        self._rims.append(
            f'<path d="{data.strip()}" stroke-width="{number(width + 2 * self._rim_width)}"/>')
        self.shape(data, fill, ink, width)

    def shape(self, data, fill="none", ink=None, width=None):
        """A shape inside the silhouette."""
        stroke = f' stroke="{ink}" stroke-width="{number(width or self.line)}"' if ink else ""
        self._shapes.append(f'<path d="{data.strip()}" fill="{fill}"{stroke}/>')

    def tube(self, data, width, fill, ink=INK):
        """An outlined line; width is that of its inside."""
        self.outline(data, "none", ink, width + 2 * self.line)
        self.shape(data, "none", fill, width)

    def text(self):
        size, grid = number(self.size), number(self._grid)
        return "\n".join([
            f'<svg xmlns="http://www.w3.org/2000/svg" width="{size}" height="{size}"'
            f' viewBox="0 0 {grid} {grid}">',
            '<g fill-rule="evenodd" stroke-linecap="round" stroke-linejoin="round">',
            '<g fill="none" stroke="#ffffff" opacity="0.92">', *self._rims, "</g>",
            *self._shapes, "</g>", "</svg>", ""])
