"""The machines: buttons of 64 pixels, and the same machines larger and in more detail.

All are drawn on a grid of 64 units, stand on one base line and are turned the same way:
the front is seen straight, the depth runs to the right and upwards.
"""

from dataclasses import dataclass
from math import hypot, sqrt

from palette import AMBER, BLUE, GREEN, GREY, INK, PAPER, RED, STEEL, mix
from svg import Picture, box, circle, lines, nozzle, path, polygon

GRID = 64
FLOOR = 59
DX, DY = 8, -6


@dataclass(frozen=True)
class Light:
    """How a state of a button is lit: a tint over all colours, and the lamp inside."""
    tint: str
    share: float
    lamp: str

    def on(self, colour):
        return mix(colour, self.tint, self.share)


LIGHTS = {
    "up": Light("#ffffff", 0.0, PAPER),
    "over": Light("#ffffff", 0.32, "#fff3b8"),
    "down": Light("#0b1622", 0.30, "#aeb9c4"),
}


def block(x0, y0, x1, y1, r):
    """Outline, top face and inner edges of a block whose rounded front lies between two corners."""
    nx, ny = (v * r / hypot(DX, DY) for v in (DY, -DX))  # where edges into the depth touch a corner
    left, right, high, low = x0 + r, x1 - r, y0 + r, y1 - r
    h = r * sqrt(0.5)
    upper = ["M", left + nx, high + ny, "L", left + nx + DX, high + ny + DY,
             "A", r, r, 0, 0, 1, left + DX, y0 + DY, "H", right + DX]
    hull = path(*upper, "A", r, r, 0, 0, 1, x1 + DX, high + DY, "V", low + DY,
                "A", r, r, 0, 0, 1, right - nx + DX, low - ny + DY, "L", right - nx, low - ny,
                "A", r, r, 0, 0, 1, right, y1, "H", left, "A", r, r, 0, 0, 1, x0, low,
                "V", high, "A", r, r, 0, 0, 1, left + nx, high + ny, "Z")
    lid = path(*upper, "A", r, r, 0, 0, 1, right + h + DX, high - h + DY,
               "L", right + h, high - h, "L", right, high, "H", left, "Z")
    edges = path("M", left + nx, high + ny, "A", r, r, 0, 0, 1, left, y0, "H", right,
                 "A", r, r, 0, 0, 1, x1, high, "V", low,
                 "A", r, r, 0, 0, 1, right - nx, low - ny,
                 "M", right + h, high - h, "L", right + h + DX, high - h + DY)
    return hull, lid, edges


class Machine:
    """A picture of one machine in one light."""

    def __init__(self, size, accent, light):
        self.detailed = size > GRID
        self.light = LIGHTS[light]
        line = 1.8 if self.detailed else 8 / 3
        self.picture = Picture(size, line, 0.8 if self.detailed else 4 / 3, GRID)
        self.thin = line * 0.75
        self.front = self.light.on(accent)
        self.top = self.light.on(mix(accent, "#ffffff", 0.5))
        self.side = self.light.on(mix(accent, INK, 0.35))
        self.steel = self.light.on(STEEL)
        self.lamp = self.light.lamp

    def case(self, x0, y0, x1, y1, r, hole=None):
        """A block with rounded corners; its front lies between the corners given.

        hole: corners of an opening that one looks through, past the inner left wall and floor.
        """
        hull, lid, edges = block(x0, y0, x1, y1, r)
        p = self.picture
        through = opening = ""
        if hole:
            hx0, hy0, hx1, hy1 = hole
            through = box(hx0 + DX, hy0, hx1, hy1 + DY)
            opening = box(*hole, 2)
            p.outline(opening)
        p.outline(hull + through, self.side)
        p.shape(lid, self.top)
        if hole:
            p.shape(polygon((hx0, hy1), (hx0 + DX, hy1 + DY), (hx1, hy1 + DY), (hx1, hy1)),
                    self.top)
            p.shape(through + lines((hx0, hy1), (hx0 + DX, hy1 + DY)), ink=INK, width=self.thin)
        p.shape(box(x0, y0, x1, y1, r) + opening, self.front)
        p.shape(edges, ink=INK, width=self.thin)
        p.shape(hull + opening, ink=INK)

    def hot_end(self, x, tip, half, height):
        p = self.picture
        p.outline(nozzle(x, tip, half, height), self.steel, width=self.thin)
        if self.detailed:
            for share in (0.25, 0.45):
                y = tip - height * (1 - share)
                p.shape(lines((x - half * 0.45, y), (x + half * 0.45, y)), ink=INK, width=0.8)

    def layers(self, x, base, *widths):
        """What is being printed, strand upon strand, from the lowest one up."""
        p = self.picture
        height = 4.2 if self.detailed else 4.6
        for i, width in enumerate(widths):
            y = base - i * height
            p.outline(box(x - width / 2, y - height, x + width / 2, y, 2), self.front,
                      width=self.thin)

    def spool(self, x, y, r):
        self.picture.outline(circle(x, y, r), self.steel)
        self.picture.shape(circle(x, y, r * 0.52), self.front, INK, self.thin)

    def panel(self, x0, y0, x1, y1):
        """A display, and the knob beside it."""
        p = self.picture
        p.shape(box(x0, y0, x1, y1, 1), INK)
        if self.detailed:
            p.shape(box(x0 + 1.2, y0 + 1.2, x1 - 1.2, y1 - 1.2, 0.4), self.lamp)
        p.shape(circle(x1 + 5, (y0 + y1) / 2, (y1 - y0) / 2), INK)
        if self.detailed:
            p.shape(circle(x1 + 5, (y0 + y1) / 2, (y1 - y0) / 2 - 1.2), self.steel)

    def vents(self, x, y):
        """Slits in the right side."""
        if self.detailed:
            for slit in range(y, y + 12, 3):
                self.picture.shape(lines((x, slit), (x + 3.6, slit - 2.7)), ink=INK, width=1)


def fabrino(size, light="up"):
    """An open frame that one looks through, with the gantry above it."""
    m = Machine(size, AMBER, light)
    p = m.picture
    x0, x1, y0 = 6, 50, 23
    hole = (x0 + 5.5, y0 + 5.5, x1 - 5.5, FLOOR - 5.5)
    m.case(x0, y0, x1, FLOOR, 3, hole)
    x = (x0 + x1) / 2 + DX / 2
    m.layers(x, hole[3] - 2.5, 15, 8)
    m.hot_end(x, hole[1] + 9.5, 3.8, 9.5)
    p.shape(lines((hole[0] + 2, hole[1]), (hole[2] - 2, hole[1])), ink=INK)

    foot, rail = y0 + DY / 2, 10
    p.outline(box(x - 2, rail, x + 2, foot), m.steel, width=m.thin)
    for post in (x - 15, x + 15):
        p.outline(box(post - 2, rail, post + 2, foot), m.steel, width=m.thin)
    p.outline(box(x - 22, rail - 2.5, x + 22, rail + 2.5, 2), m.steel)
    p.outline(box(x - 6, rail - 5, x + 6, rail + 5, 2), m.front)
    return p


def arch(x0, x1, spring, base, height):
    """A doorway: upright sides below half an ellipse."""
    return path("M", x0, base, "V", spring, "A", (x1 - x0) / 2, height, 0, 0, 1, x1, spring,
                "V", base, "Z")


def later_fabrino(size, light, nozzles):
    """A closed frame with an arch in front; a spool behind it for each nozzle."""
    m = Machine(size, BLUE, light)
    x0, x1, y0 = 6, 50, 19
    middle = (x0 + x1) / 2
    centres = [middle + (i - (nozzles - 1) / 2) * 20 + DX for i in range(nozzles)]
    for x in centres:
        m.spool(x, y0 + DY, 9)
    m.case(x0, y0, x1, FLOOR, 4)
    door = arch(x0 + 6, x1 - 6, y0 + 13, FLOOR - 11, 9)
    p = m.picture
    p.shape(door, m.lamp)
    for i in range(nozzles):
        m.hot_end(middle + (i - (nozzles - 1) / 2) * 10, y0 + 16, 3.6, 8)
    m.layers(middle, FLOOR - 11, 22, 14)
    p.shape(door, ink=INK, width=m.thin)
    m.panel(middle - 8, FLOOR - 7.5, middle + 4, FLOOR - 3.5)
    m.vents(x1 + 2, y0 + 12)
    return p


def fabrino_2(size, light="up"):
    return later_fabrino(size, light, nozzles=1)


def fabrino_2x(size, light="up"):
    return later_fabrino(size, light, nozzles=2)


def cubio(size, light="up"):
    """A plain cube with a round window."""
    m = Machine(size, GREEN, light)
    x0, x1, y0 = 5, 50, 14
    m.case(x0, y0, x1, FLOOR, 6)
    x, y, r = (x0 + x1) / 2, (y0 + FLOOR) / 2, 15
    p = m.picture
    p.shape(circle(x, y, r), m.lamp)
    m.hot_end(x, y - 3.5, 4, 8.5)
    chord = sqrt(r * r - 8 * 8)
    m.layers(x, y + 8, 16, 9)
    p.shape(path("M", x - chord, y + 8, "A", r, r, 0, 0, 0, x + chord, y + 8, "Z"),
            m.steel, INK, m.thin)
    p.shape(circle(x, y, r), ink=INK)
    m.vents(x1 + 2, y0 + 14)
    return p


def generic(size, light="up"):
    """The outline of some machine."""
    m = Machine(size, GREY, light)
    p = m.picture
    x0, x1, y0 = 6, 50, 16
    ink = m.front
    hull, _, edges = block(x0, y0, x1, FLOOR, 4)
    p.outline(hull, ink=ink)
    p.outline(edges, ink=ink)
    x = (x0 + x1) / 2
    p.outline(nozzle(x, y0 + 20, 5, 13), ink=ink)
    p.outline(lines((x, y0 + 1), (x, y0 + 7)), ink=ink)
    p.outline(box(x - 10, FLOOR - 15, x + 10, FLOOR - 8, 3), ink=ink)
    p.outline(lines((x0 + 7, FLOOR - 8), (x1 - 7, FLOOR - 8)), ink=ink)
    return p


def service_error(size, light="up"):
    """Some machine, and the mark that nobody can be asked about it."""
    p = generic(size, light)
    on = LIGHTS[light].on
    x, y = 47, 46
    p.outline(circle(x, y, 12), on(RED))
    p.shape(lines((x, y - 6), (x, y + 1)) + lines((x, y + 6), (x, y + 6)), ink=on(PAPER), width=4)
    return p


BUTTONS = {"fabrino": fabrino, "fabrino_2": fabrino_2, "fabrino_2x": fabrino_2x,
           "cbo": cubio, "generic": generic, "service_error": service_error}
PICTURES = {"fabrino": fabrino, "fabrino2": fabrino_2, "cubio": cubio}


def pictures():
    """Folder and name of each picture, and the picture."""
    for name, draw in BUTTONS.items():
        for light in LIGHTS:
            yield f"printers/printer_{name}_{light}", draw(64, light)
    for name, draw in PICTURES.items():
        yield f"machines/{name}", draw(160)
