"""The choices of raft and supports (24 pixels): what is laid, and by which extruder."""

from icons import icon
from palette import AMBER, BLUE, GREY, INK, STEEL
from svg import box, lines, nozzle, polygon

MODEL = box(6.5, 5, 17.5, 17, 1)
RAFT = box(2.5, 17, 21.5, 21, 1.7)
OVERHANG = polygon((2.5, 3), (21.5, 3), (21.5, 8), (14.5, 8), (14.5, 20.5), (9.5, 20.5), (9.5, 8),
                   (2.5, 8))


def on_the_ground(model):
    p = icon()
    p.outline(lines((2.5, 20.5), (21.5, 20.5)), ink=GREY)
    p.outline(model, STEEL)
    return p


def in_two_colours(p, data, right_half):
    p.outline(data, AMBER)
    p.shape(right_half, BLUE)
    p.shape(data, ink=INK)


def pillar(p, x, colour):
    p.outline(box(x - 1.75, 8, x + 1.75, 20.5), colour)


def raft_off():
    return on_the_ground(box(6.5, 8.5, 17.5, 20.5, 1))


def raft_color_matched():
    p = icon()
    in_two_colours(p, MODEL, box(12, 5, 17.5, 17, 1))
    in_two_colours(p, RAFT, box(12, 17, 21.5, 21, 1.7))
    return p


def raft_by_extruder(side):
    """side: -1 left, 1 right"""
    p = icon()
    near, far = 12 - side * 2, 12 - side * 9
    p.outline(box(min(near, far), 6, max(near, far), 17, 1), STEEL)
    p.outline(RAFT, AMBER)
    p.outline(nozzle(12 + side * 6.5, 15, 3, 12), AMBER)
    return p


def supports_off():
    return on_the_ground(OVERHANG)


def supports_color_matched():
    p = icon()
    pillar(p, 5, AMBER)
    pillar(p, 19, BLUE)
    in_two_colours(p, OVERHANG, polygon((12, 3), (21.5, 3), (21.5, 8), (14.5, 8), (14.5, 20.5),
                                        (12, 20.5)))
    return p


def supports_by_extruder(side):
    """side: -1 left, 1 right"""
    p = icon()

    def x(distance):
        return 12 + side * distance

    pillar(p, x(0.5), AMBER)
    p.outline(polygon((x(2.5), 3), (x(-9), 3), (x(-9), 20.5), (x(-4), 20.5), (x(-4), 8),
                      (x(2.5), 8)), STEEL)
    p.outline(nozzle(x(7), 15, 2.75, 12), AMBER)
    return p


def pictures():
    """Folder and name of each picture, and the picture."""
    yield "make/raft_off", raft_off()
    yield "make/raft_color_matched", raft_color_matched()
    yield "make/raft_left", raft_by_extruder(-1)
    yield "make/raft_right", raft_by_extruder(1)
    yield "make/supports_off", supports_off()
    yield "make/supports_color_matched", supports_color_matched()
    yield "make/supports_left", supports_by_extruder(-1)
    yield "make/supports_right", supports_by_extruder(1)
