#!/usr/bin/env python3
"""Makes the models that the tests and the tour slice.

    make_models.py [OUTDIR]       bracket.stl, two_colors.amf (kept beside this script)
    make_models.py OUTDIR sphere  sphere.stl too: a bumpy ball of 512,000 triangles

Millimetres; everything stands on z = 0.
"""
import math
import os
import struct
import sys


def extrude(outline, y0, y1):
    """The outline in x and z, counter-clockwise seen against y, as a solid from y0 to y1."""
    triangles = []
    n = len(outline)
    front = [(x, y0, z) for x, z in outline]
    back = [(x, y1, z) for x, z in outline]
    for i in range(n):
        j = (i + 1) % n
        triangles += [(front[j], front[i], back[i]), (front[j], back[i], back[j])]
    for a, b, c in ears(outline):
        triangles += [(front[a], front[b], front[c]), (back[c], back[b], back[a])]
    return triangles


def ears(points):
    """Triangles of a simple polygon, as indices of its corners."""
    def turn(a, b, c):
        return (b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0])
    left = list(range(len(points)))
    found = []
    while len(left) > 3:
        for k in range(len(left)):
            i, j, m = left[k - 1], left[k], left[(k + 1) % len(left)]
            if turn(points[i], points[j], points[m]) <= 0:
                continue
            corners = (points[i], points[j], points[m])
            if any(all(turn(corners[e], corners[(e + 1) % 3], points[p]) >= 0 for e in range(3))
                   for p in left if p not in (i, j, m)):
                continue
            found.append((i, j, m))
            left.remove(j)
            break
    return found + [tuple(left)]


def box(x0, y0, z0, x1, y1, z1):
    return extrude([(x0, z0), (x1, z0), (x1, z1), (x0, z1)], y0, y1)


def bracket():
    """A foot, a post and an arm that hangs over: it needs supports."""
    return extrude([(0, 0), (24, 0), (24, 4), (6, 4), (6, 16), (28, 16), (28, 20), (0, 20)], 0, 14)


def bumpy_sphere(radius, nu, nv, waves, depth):
    def point(i, j):
        t, p = math.pi * j / nv, 2 * math.pi * (i % nu) / nu
        r = radius * (1 + depth * math.sin(waves * p) * math.sin(waves * t) * math.sin(t))
        z = radius + r * math.cos(t)
        # Flat where it stands.
        return (r * math.sin(t) * math.cos(p), r * math.sin(t) * math.sin(p),
                max(z, 0.15 * radius) - 0.15 * radius)
    for j in range(nv):
        for i in range(nu):
            a, b, c, d = point(i, j), point(i + 1, j), point(i + 1, j + 1), point(i, j + 1)
            if j < nv - 1:
                yield a, d, c
            if j > 0:
                yield a, c, b


def write_stl(path, triangles):
    triangles = list(triangles)
    with open(path, "wb") as file:
        file.write(b"a model for tests".ljust(80, b"\0"))
        file.write(struct.pack("<I", len(triangles)))
        for a, b, c in triangles:
            file.write(struct.pack("<12fH", 0, 0, 0, *a, *b, *c, 0))


def write_amf(path, parts):
    """One object with a volume for each part; the first is of material 1, and so on."""
    vertices, volumes = {}, []
    for material, triangles in enumerate(parts, 1):
        lines = []
        for triangle in triangles:
            ids = [vertices.setdefault((material, corner), len(vertices)) for corner in triangle]
            lines.append("<triangle><v1>%d</v1><v2>%d</v2><v3>%d</v3></triangle>" % tuple(ids))
        volumes.append('<volume materialid="%d">\n<metadata type="slic3r.extruder">%d</metadata>\n'
                       % (material, material) + "\n".join(lines) + "\n</volume>")
    corners = "\n".join("<vertex><coordinates><x>%g</x><y>%g</y><z>%g</z></coordinates></vertex>"
                        % corner for _, corner in vertices)
    materials = "\n".join('<material id="%d"/>' % (i + 1) for i in range(len(parts)))
    with open(path, "w") as file:
        file.write('<?xml version="1.0" encoding="UTF-8"?>\n<amf unit="millimeter">\n'
                   '<object id="0">\n<mesh>\n<vertices>\n' + corners + "\n</vertices>\n" +
                   "\n".join(volumes) + "\n</mesh>\n</object>\n" + materials + "\n</amf>\n")


def main(arguments):
    out = arguments[0] if arguments else os.path.dirname(os.path.abspath(__file__))
    write_stl(os.path.join(out, "bracket.stl"), bracket())
    write_amf(os.path.join(out, "two_colors.amf"),
              [box(0, 0, 0, 18, 18, 6), box(4, 4, 6, 14, 14, 12)])
    if "sphere" in arguments[1:]:
        write_stl(os.path.join(out, "sphere.stl"), bumpy_sphere(28, 640, 401, 9, 0.05))


main(sys.argv[1:])
