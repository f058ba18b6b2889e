#!/usr/bin/env python3
"""Makes the sliced files that the benchmarks of the toolpath view read.

    make_testset.py OUTDIR [name ...]      names: small medium dual large huge,
                                           or small.stl and so on: the mesh alone

The meshes are computed; an installed prusa-slicer, or the program that
PRUSA_SLICER names, slices them.  The slicer is pinned to one processor: on
several it writes a few hundred lines differently each time, on one only the
line with the date.
"""
import math
import os
import struct
import subprocess
import sys


# ---------------------------------------------------------------- meshes
def write_stl(path, triangles):
    """Triangles are triples of (x, y, z); normals are left to the reader."""
    body = bytearray()
    count = 0
    pack = struct.Struct("<12fH").pack
    for a, b, c in triangles:
        body += pack(0.0, 0.0, 0.0, *a, *b, *c, 0)
        count += 1
    with open(path, "wb") as f:
        f.write(b"toolpath bench mesh".ljust(80, b"\0"))
        f.write(struct.pack("<I", count))
        f.write(body)
    return count


def bumpy_sphere(cx, cy, r, nu, nv, waves, depth):
    """A sphere whose radius waves, so that no two neighbouring facets are coplanar,
    with its lowest tenth cut off flat (clamped) so that it stands on the bed."""
    cut = 0.1 * 2 * r
    def point(i, j):
        t = math.pi * j / nv
        p = 2 * math.pi * (i % nu) / nu
        rr = r * (1 + depth * math.sin(waves * p) * math.sin(waves * t))
        return (cx + rr * math.sin(t) * math.cos(p),
                cy + rr * math.sin(t) * math.sin(p),
                max(r + rr * math.cos(t), cut) - cut)
    top, bottom = point(0, 0), point(0, nv)
    for j in range(nv):
        for i in range(nu):
            a, b = point(i, j), point(i + 1, j)
            c, d = point(i + 1, j + 1), point(i, j + 1)
            if j == 0:
                yield top, d, c
            elif j == nv - 1:
                yield a, bottom, b
            else:
                yield a, d, c
                yield a, c, b


def gear(cx, cy, teeth, r, h, twist, layers=24):
    """A toothed, twisted column."""
    n = teeth * 8
    def point(k, z):
        a = 2 * math.pi * (k % n) / n
        rr = r * (1 + 0.12 * math.cos(teeth * a))
        b = a + twist * z / layers
        return (cx + rr * math.cos(b), cy + rr * math.sin(b), h * z / layers)
    for z in range(layers):
        for k in range(n):
            a, b, c, d = point(k, z), point(k + 1, z), point(k + 1, z + 1), point(k, z + 1)
            yield a, b, c
            yield a, c, d
    lo, hi = (cx, cy, 0.0), (cx, cy, float(h))
    for k in range(n):
        yield lo, point(k + 1, 0), point(k, 0)
        yield hi, point(k, layers), point(k + 1, layers)


def plate(nx, ny, step, *a, **kw):
    for i in range(nx):
        for j in range(ny):
            yield from gear(i * step, j * step, *a, **kw)


# ---------------------------------------------------------------- the set
COMMON = {
    "bed-shape": "0x0,280x0,280x280,0x280", "max-print-height": "320",
    "gcode-flavor": "marlin", "nozzle-diameter": "0.4", "filament-diameter": "1.75",
    "first-layer-height": "0.2", "perimeters": "2", "skirts": "1",
    "gcode-resolution": "0", "resolution": "0", "center": "140,140",
}
SETS = {
    # name: (mesh, slicer options)
    "small": (lambda: gear(0, 0, 16, 16, 12, 0.8),
              {"layer-height": "0.2", "fill-pattern": "rectilinear", "fill-density": "20%"}),
    "medium": (lambda: plate(3, 3, 50, 14, 15, 20, 0.7),
               {"layer-height": "0.15", "fill-pattern": "grid", "fill-density": "20%"}),
    "dual": (lambda: plate(2, 2, 60, 20, 24, 20, 0.7),
             {"layer-height": "0.2", "fill-pattern": "gyroid", "fill-density": "15%",
              "nozzle-diameter": "0.4,0.4", "filament-diameter": "1.75,1.75",
              "perimeter-extruder": "1", "infill-extruder": "2",
              "solid-infill-extruder": "2", "temperature": "200,210",
              "first-layer-temperature": "200,210", "layer-gcode": "G92 E0",
              "use-relative-e-distances": None}),
    "large": (lambda: (t for cx in (0, 100)
                       for t in bumpy_sphere(cx, 0, 40, 240, 120, 18, 0.04)),
              {"layer-height": "0.15", "fill-pattern": "gyroid", "fill-density": "20%",
               "perimeters": "3"}),
    "huge": (lambda: (t for cx in (0, 100) for cy in (0, 100)
                      for t in bumpy_sphere(cx, cy, 40, 240, 120, 18, 0.04)),
             {"layer-height": "0.15", "fill-pattern": "gyroid", "fill-density": "20%",
              "perimeters": "3"}),
}


def pin():
    os.sched_setaffinity(0, {min(os.sched_getaffinity(0))})


def slice_mesh(out, name):
    mesh, options = SETS[name]
    stl = os.path.join(out, name + ".stl")
    write_stl(stl, mesh())
    # Under its own name only once it is whole: a run that was stopped leaves nothing that looks right.
    partial = os.path.join(out, name + ".partial.gcode")
    command = [os.environ.get("PRUSA_SLICER", "prusa-slicer"), "--export-gcode",
               "--loglevel", "1", "--output", partial]
    for key, value in {**COMMON, **options}.items():
        command.append("--" + key)
        if value is not None:
            command.append(value)
    command.append(stl)
    with open(os.path.join(out, name + ".log"), "w") as log:
        subprocess.run(command, stdout=log, stderr=subprocess.STDOUT, preexec_fn=pin, check=True)
    os.replace(partial, os.path.join(out, name + ".gcode"))
    os.remove(stl)


def main(arguments):
    if len(arguments) < 2:
        sys.exit(__doc__)
    out = arguments[0]
    os.makedirs(out, exist_ok=True)
    for name in arguments[1:]:
        if name.endswith(".stl"):
            write_stl(os.path.join(out, name), SETS[name[:-4]][0]())
        else:
            slice_mesh(out, name)


if __name__ == "__main__":
    main(sys.argv[1:])
