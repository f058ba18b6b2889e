"""The icons of dialogs and host (24 and 64 pixels), and the application icon."""

from math import sqrt

from palette import AMBER, BLUE, EMBER, GREEN, INK, PAPER, RED, SHADE, STEEL, TILE, mix
from svg import Picture, box, circle, ellipse, lines, nozzle, path, polygon


def icon():
    return Picture(24, 1.5, 0.75)


def extruder(left, right):
    """Two nozzles, the ones that heat lit and laying a strand."""
    p = icon()
    for x, lit in ((6.5, left), (17.5, right)):
        if lit:
            p.outline(box(x - 4.5, 17.5, x + 4.5, 21, 1.7), AMBER)
        p.outline(nozzle(x, 15, 4, 12), AMBER if lit else STEEL)
    return p


def open_file():
    p = icon()
    p.outline(path("M", 3, 19, "V", 6, "A", 1.5, 1.5, 0, 0, 1, 4.5, 4.5, "H", 9, "L", 11.5, 7,
                   "H", 18, "A", 1.5, 1.5, 0, 0, 1, 19.5, 8.5, "V", 19, "Z"), mix(AMBER, INK, 0.25))
    p.outline(polygon((3, 19.5), (6.5, 11), (22, 11), (18.5, 19.5)), AMBER)
    return p


def make():
    """A nozzle that lays strands."""
    p = icon()
    p.outline(nozzle(12, 11.5, 4.5, 9), STEEL)
    p.outline(box(7, 14, 17, 17.5, 1.7), AMBER)
    p.outline(box(3.5, 17.5, 20.5, 21, 1.7), AMBER)
    return p


def cancel():
    p = icon()
    p.outline(circle(12, 12, 9), RED)
    p.shape(lines((8.5, 8.5), (15.5, 15.5)) + lines((15.5, 8.5), (8.5, 15.5)), ink=PAPER, width=2.4)
    return p


def clear():
    """A broom."""
    p = icon()
    p.tube(lines((20.2, 3.8), (14.4, 9.6)), 1.4, STEEL)
    p.outline(polygon((10.6, 8.6), (15.4, 13.4), (12.2, 21), (3, 11.8)), AMBER)
    p.shape(lines((8.9, 12.2), (6.4, 14.2)) + lines((11.8, 15.1), (9.8, 17.6)), ink=INK, width=1.2)
    return p


def link(joined):
    """Two links of a chain, from the lower left to the upper right."""
    p = icon()
    distance, half, colour = (3.3, 2.6, GREEN) if joined else (4.6, 1.5, SHADE)
    for direction in (-1, 1):
        x, y = 12 + direction * distance, 12 - direction * distance
        p.tube(capsule(x, y, half, 2.6), 1.4, colour)
    if not joined:
        p.shape(lines((7.5, 4), (8.7, 6.6)) + lines((4, 7.5), (6.6, 8.7)) +
                lines((16.5, 20), (15.3, 17.4)) + lines((20, 16.5), (17.4, 15.3)),
                ink=RED, width=1.8)
    return p


def capsule(x, y, half, r):
    """A long ring that leans by 45 degrees."""
    a = half * sqrt(0.5)
    b = r * sqrt(0.5)
    return path("M", x - a - b, y + a - b, "L", x + a - b, y - a - b,
                "A", r, r, 0, 0, 1, x + a + b, y - a + b, "L", x - a + b, y + a + b,
                "A", r, r, 0, 0, 1, x - a - b, y + a - b, "Z")


def save():
    p = icon()
    p.outline(path("M", 5, 3.5, "H", 17, "L", 20.5, 7, "V", 19, "A", 1.5, 1.5, 0, 0, 1, 19, 20.5,
                   "H", 5, "A", 1.5, 1.5, 0, 0, 1, 3.5, 19, "V", 5,
                   "A", 1.5, 1.5, 0, 0, 1, 5, 3.5, "Z"), BLUE)
    p.shape(box(7.5, 3.5, 15.5, 9), PAPER, INK, 1.3)
    p.shape(box(12, 5, 13.8, 7.4), INK)
    p.shape(box(6.5, 13, 17.5, 20.5), PAPER, INK, 1.3)
    p.shape(lines((9, 16.8), (15, 16.8)), ink=INK, width=1.3)
    return p


def log():
    """Lines, each with the mark of its weight."""
    p = icon()
    p.outline(box(3.5, 3, 20.5, 21, 2), PAPER)
    for y, colour in ((7.5, BLUE), (12, AMBER), (16.5, RED)):
        p.shape(circle(7.5, y, 1.5), colour)
        p.shape(lines((11, y), (17, y)), ink=INK, width=1.5)
    return p


def jobs():
    """Bars of progress."""
    p = icon()
    for y, share, colour in ((3, 1, GREEN), (10, 0.6, AMBER), (17, 0.3, AMBER)):
        p.outline(box(2.5, y, 21.5, y + 4, 2), PAPER)
        p.shape(box(2.5, y, 2.5 + 19 * share, y + 4, 2), colour)
        p.shape(box(2.5, y, 21.5, y + 4, 2), ink=INK)
    return p


def plug(inwards):
    """A plug on its cable, with the mark for in or out."""
    p = icon()
    p.tube(path("M", 9.5, 15, "V", 17.5, "A", 2.5, 2.5, 0, 0, 1, 7, 20, "H", 3.5), 0.6, STEEL)
    p.tube(lines((7, 3.5), (7, 7)) + lines((12, 3.5), (12, 7)), 0.8, STEEL)
    p.outline(path("M", 3.5, 7.5, "H", 15.5, "V", 10.5, "A", 6, 5, 0, 0, 1, 3.5, 10.5, "Z"), STEEL)
    p.outline(circle(17.3, 16.8, 4.7), GREEN if inwards else RED)
    p.shape(lines((15, 16.8), (19.6, 16.8)), ink=PAPER, width=1.7)
    if inwards:
        p.shape(lines((17.3, 14.5), (17.3, 19.1)), ink=PAPER, width=1.7)
    return p


def page(p, x0, y0, x1, y1, fold):
    p.outline(path("M", x0, y0, "H", x1 - fold, "L", x1, y0 + fold, "V", y1, "H", x0, "Z"), PAPER)
    p.shape(polygon((x1 - fold, y0), (x1 - fold, y0 + fold), (x1, y0 + fold)), SHADE, INK)


def gcode_file():
    """A page with a toolpath."""
    p = icon()
    page(p, 4.5, 2.5, 19.5, 21.5, 5)
    p.shape(path("M", 8, 10, "H", 14.7, "A", 1.35, 1.35, 0, 0, 1, 14.7, 12.7, "H", 9.3,
                 "A", 1.35, 1.35, 0, 0, 0, 9.3, 15.4, "H", 14.7,
                 "A", 1.35, 1.35, 0, 0, 1, 14.7, 18.1, "H", 8), ink=BLUE, width=1.5)
    return p


def model_file():
    """A page with a solid."""
    p = icon()
    page(p, 4.5, 2.5, 19.5, 21.5, 5)
    cube(p, 12, 14.2, 5, 1.1)
    return p


def cube(p, x, y, edge, width):
    """A cube seen from above one of its edges."""
    a, b = edge * sqrt(0.75), edge / 2
    p.shape(polygon((x, y - edge), (x + a, y - b), (x, y), (x - a, y - b)),
            mix(AMBER, "#ffffff", 0.5), INK, width)
    p.shape(polygon((x - a, y - b), (x, y), (x, y + edge), (x - a, y + b)), AMBER, INK, width)
    p.shape(polygon((x + a, y - b), (x, y), (x, y + edge), (x + a, y + b)),
            mix(AMBER, INK, 0.35), INK, width)


def large_page():
    p = Picture(64, 8 / 3, 4 / 3)
    page(p, 11, 5, 53, 59, 14)
    return p


def gcode_file_large():
    """A page with the first layer of a print."""
    p = large_page()
    p.shape(box(18, 25, 46, 53, 5), mix(BLUE, "#ffffff", 0.75), BLUE, 2.4)
    p.shape(lines((23, 36), (29, 30), (35, 30), (23, 42), (23, 48), (41, 30), (41, 36), (29, 48),
                  (35, 48), (41, 42)), ink=BLUE, width=2.2)
    return p


def model_file_large():
    p = large_page()
    cube(p, 32, 38, 15, 2.2)
    return p


def app(size):
    """A nozzle above a ring of strands; the smaller the picture, the fewer the strands."""
    u = size / 64
    count, width, rx, ry = {16: (1, 12, 18, 10), 24: (2, 8.5, 18, 7.5), 32: (2, 8.5, 18, 7.5)}.get(
        size, (3, 6, 18, 7.5))
    p = Picture(size, 0, min(1.5, max(0.5, u)))
    margin = 2 * u if size >= 48 else 1
    p.outline(box(margin, margin, size - margin, size - margin, 14 * u), TILE, TILE, 0.5)
    base = 56 - ry - width / 2
    for i in range(count):
        ring = ellipse(32 * u, (base - i * width) * u, rx * u, ry * u)
        p.shape(ring, ink=TILE, width=(width + 3) * u)
        p.shape(ring, ink=mix(AMBER, EMBER, 0.45 * (count - 1 - i)), width=width * u)
    tip = base - (count - 1) * width - ry + 0.5
    head = nozzle(32 * u, tip * u, 9 * u, (tip - 7) * u)
    p.shape(head, TILE, TILE, 4 * u)
    p.shape(head, PAPER, PAPER, u)
    if size >= 128:
        p.shape(lines((27 * u, 13 * u), (37 * u, 13 * u)), ink=SHADE, width=1.5 * u)
    return p


HOST = {"open": open_file, "make": make, "cancel": cancel, "clear": clear,
        "link_ok": lambda: link(True), "link_broken": lambda: link(False),
        "save": save, "log": log, "jobs": jobs,
        "plug_in": lambda: plug(True), "plug_out": lambda: plug(False),
        "gcode_file": gcode_file, "model_file": model_file,
        "gcode_file_large": gcode_file_large, "model_file_large": model_file_large}
APP_SIZES = (16, 24, 32, 48, 64, 128, 256, 512)


def pictures():
    """Folder and name of each picture, and the picture."""
    yield "make/extruder_left", extruder(True, False)
    yield "make/extruder_right", extruder(False, True)
    yield "make/extruder_dual", extruder(True, True)
    for name, draw in HOST.items():
        yield f"ostrand/{name}", draw()
    for size in APP_SIZES:
        yield f"ostrand/app_{size}", app(size)
