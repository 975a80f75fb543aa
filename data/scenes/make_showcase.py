#!/usr/bin/env python3
"""Builds showcase.glb, the scene that the studio opens with.

The scene is a round garden on a walnut base: a raised plaza paved in rings,
a half circle of fluted columns, an orrery above a pool, lamps, trees and a
floating glass sphere.  Everything in it - geometry, textures, motion - is
computed here with the standard library alone, and two runs of this script
write the same bytes.

The file is laid out from the bottom up:

    vectors        the little linear algebra that the rest needs
    textures       tileable noise fields, colour ramps, a PNG writer
    geometry       lathes, patches, tubes and rounded boxes
    Gltf           collects nodes, meshes, images and writes the .glb
    materials      one function that makes all of them
    scene parts    one function for each group of the scene
    animations     the clockwork of the orrery and the breeze in the garden

Units are metres, y points up, the open side of the plaza faces +z.
"""

import argparse
import json
import math
import os
import random
import struct
import zlib

TAU = 2.0 * math.pi

# ---------------------------------------------------------------- vectors


def add(a, b):
    return (a[0] + b[0], a[1] + b[1], a[2] + b[2])


def sub(a, b):
    return (a[0] - b[0], a[1] - b[1], a[2] - b[2])


def scaled(a, s):
    return (a[0] * s, a[1] * s, a[2] * s)


def dot(a, b):
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]


def cross(a, b):
    return (a[1] * b[2] - a[2] * b[1],
            a[2] * b[0] - a[0] * b[2],
            a[0] * b[1] - a[1] * b[0])


def unit(a):
    length = math.sqrt(dot(a, a))
    return scaled(a, 1.0 / length) if length > 1e-12 else (0.0, 1.0, 0.0)


def lerp(a, b, t):
    return a + (b - a) * t


def smoothstep(low, high, x):
    t = min(1.0, max(0.0, (x - low) / (high - low)))
    return t * t * (3.0 - 2.0 * t)


def quaternion(axis, degrees):
    """Rotation about a unit axis as x, y, z, w."""
    half = math.radians(degrees) / 2.0
    s = math.sin(half)
    return (axis[0] * s, axis[1] * s, axis[2] * s, math.cos(half))


def around_y(degrees, radius, height=0.0):
    """A point on a circle; 0 degrees is +z, 90 degrees is +x."""
    a = math.radians(degrees)
    return (radius * math.sin(a), height, radius * math.cos(a))


def view_frame(eye, target, up):
    """Axes of something that looks along its own -z from eye to target."""
    back = unit(sub(eye, target))
    right = unit(cross(up, back))
    return right, cross(back, right), back


def view_matrix(eye, target, up=(0.0, 1.0, 0.0)):
    """The column-major matrix that places such a thing in the world."""
    right, true_up, back = view_frame(eye, target, up)
    return [*right, 0.0, *true_up, 0.0, *back, 0.0, *eye, 1.0]


X_AXIS, Y_AXIS, Z_AXIS = (1.0, 0.0, 0.0), (0.0, 1.0, 0.0), (0.0, 0.0, 1.0)

# --------------------------------------------------------------- textures
#
# A field is a square image of floats, row by row, that repeats seamlessly.


def value_noise(size, cells_x, cells_y, seed):
    """Smooth noise in 0..1 on a lattice that wraps around."""
    rng = random.Random(seed)
    lattice = [[rng.random() for _ in range(cells_x)] for _ in range(cells_y)]

    def steps(cells):
        result = []
        for i in range(size):
            position = i * cells / size
            cell = int(position)
            t = position - cell
            result.append((cell % cells, (cell + 1) % cells,
                           t * t * t * (t * (t * 6.0 - 15.0) + 10.0)))
        return result

    columns = steps(cells_x)
    field = []
    for y0, y1, ty in steps(cells_y):
        row = [lerp(a, b, ty) for a, b in zip(lattice[y0], lattice[y1])]
        field.extend(row[x0] + (row[x1] - row[x0]) * tx
                     for x0, x1, tx in columns)
    return field


def fbm(size, cells_x, cells_y, octaves, seed):
    """Sum of noises, each twice as fine and half as strong; about 0..1."""
    total = [0.0] * (size * size)
    weight, sum_of_weights = 1.0, 0.0
    for octave in range(octaves):
        noise = value_noise(size, min(size, cells_x << octave),
                            min(size, cells_y << octave), seed + octave)
        total = [t + weight * n for t, n in zip(total, noise)]
        sum_of_weights += weight
        weight *= 0.5
    return [t / sum_of_weights for t in total]


def warped(field, size, dx, dy, amount):
    """The field read at places moved by two other fields."""
    result = []
    for y in range(size):
        for x in range(size):
            i = y * size + x
            sx = int(x + (dx[i] - 0.5) * amount) % size
            sy = int(y + (dy[i] - 0.5) * amount) % size
            result.append(field[sy * size + sx])
    return result


def ramp(stops, t):
    """Colour at t on a list of (position, (r, g, b)) stops."""
    if t <= stops[0][0]:
        return stops[0][1]
    for (p0, c0), (p1, c1) in zip(stops, stops[1:]):
        if t <= p1:
            k = (t - p0) / (p1 - p0)
            return tuple(lerp(a, b, k) for a, b in zip(c0, c1))
    return stops[-1][1]


def scatter(size, count, length, width, shades, seed):
    """Covers a wrapping square with overlapping leaves, the last on top.

    Returns the colours and a height field of the pile.
    """
    rng = random.Random(seed)
    colours = [shades[0]] * (size * size)
    heights = [0.0] * (size * size)
    for n in range(count):
        depth = n / count
        cx, cy = rng.random() * size, rng.random() * size
        angle = rng.random() * TAU
        c, s = math.cos(angle), math.sin(angle)
        half_length = length * rng.uniform(0.75, 1.2)
        half_width = width * rng.uniform(0.8, 1.15)
        tone = min(len(shades) - 1.001,
                   max(0.0, (0.25 + 0.75 * depth) * rng.uniform(0.45, 1.05)
                       * (len(shades) - 1)))
        low = int(tone)
        colour = [lerp(a, b, tone - low)
                  for a, b in zip(shades[low], shades[low + 1])]
        reach = int(max(half_length, half_width)) + 1
        for oy in range(-reach, reach + 1):
            for ox in range(-reach, reach + 1):
                along = (ox * c + oy * s) / half_length
                across = (oy * c - ox * s) / half_width
                # Pointed at both ends, like a leaf.
                edge = abs(across) + along * along
                if edge > 1.0:
                    continue
                shade = 1.06 - 0.34 * edge * edge + 0.10 * along
                if abs(across) < 0.12:
                    shade *= 0.92
                i = (int(cy + oy) % size) * size + int(cx + ox) % size
                colours[i] = tuple(v * shade for v in colour)
                heights[i] = depth + 0.5 * (1.0 - edge)
    return colours, heights


def to_bytes(pixels, step=2):
    """Colours in 0..1 to bytes, coarsened by step so that they pack well."""
    return [bytes(max(0, min(255, int(v * 255.0 / step + 0.5) * step))
                  for v in pixel) for pixel in pixels]


def normal_pixels(heights, size, strength):
    """Tangent space normals of a height field, +y towards the image's top."""
    pixels = []
    for y in range(size):
        above, below = (y - 1) % size * size, (y + 1) % size * size
        row = y * size
        for x in range(size):
            dx = heights[row + (x + 1) % size] - heights[row + (x - 1) % size]
            dy = heights[above + x] - heights[below + x]
            n = unit((-dx * strength, -dy * strength, 1.0))
            pixels.append(tuple(0.5 + 0.5 * v for v in n))
    return pixels


def metal_rough_pixels(metal, rough):
    """Roughness in green, metalness in blue, as glTF reads them."""
    return [(0.0, r, m) for m, r in zip(metal, rough)]


def png(pixels, size):
    """A square PNG; pixels are byte triples or quadruples, top row first.

    Each row is stored with whichever of two filters leaves the smaller
    differences.
    """
    channels = len(pixels[0])
    stride = size * channels
    raw = bytearray()
    previous = bytes(stride)
    for y in range(size):
        line = b"".join(pixels[y * size:(y + 1) * size])
        left = bytes(channels) + line[:-channels]
        by_left = bytes((a - b) & 255 for a, b in zip(line, left))
        by_above = bytes((a - b) & 255 for a, b in zip(line, previous))
        kind, best = min(((1, by_left), (2, by_above)),
                         key=lambda c: sum(min(v, 256 - v) for v in c[1]))
        raw.append(kind)
        raw += best
        previous = line

    def chunk(tag, data):
        return (struct.pack(">I", len(data)) + tag + data
                + struct.pack(">I", zlib.crc32(tag + data)))

    header = struct.pack(">IIBBBBB", size, size, 8,
                         2 if channels == 3 else 6, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header)
            + chunk(b"IDAT", zlib.compress(bytes(raw), 9))
            + chunk(b"IEND", b""))


def marble_texture(size):
    cloud = fbm(size, 3, 3, 5, 11)
    bend_x, bend_y = fbm(size, 2, 2, 4, 21), fbm(size, 2, 2, 4, 31)
    vein_base = warped(fbm(size, 2, 3, 4, 41), size, bend_x, bend_y,
                       size * 0.5)
    stops = [(0.0, (0.95, 0.93, 0.89)), (0.45, (0.90, 0.87, 0.83)),
             (0.8, (0.73, 0.69, 0.69)), (1.0, (0.58, 0.53, 0.56))]
    pixels = []
    for c, v in zip(cloud, vein_base):
        vein = max(0.0, 1.0 - abs(v - 0.5) * 14.0) ** 2
        pixels.append(ramp(stops, 0.55 * smoothstep(0.35, 0.75, c)
                           + 0.62 * vein * smoothstep(0.35, 0.6, c)))
    return png(to_bytes(pixels, 3), size)


def tile_textures(size):
    """Base colour, normal and metal/roughness of a 4 by 4 paving pattern."""
    rows = 4
    cell = size // rows
    rng = random.Random(5)
    palette = [(0.86, 0.76, 0.61), (0.80, 0.66, 0.50), (0.90, 0.83, 0.71),
               (0.74, 0.53, 0.41), (0.79, 0.70, 0.58), (0.63, 0.60, 0.57)]
    picks = [[0, 2, 1, 4], [3, 0, 2, 1], [1, 4, 0, 5], [2, 1, 3, 0]]
    gains = [[rng.uniform(0.93, 1.05) for _ in range(rows)]
             for _ in range(rows)]
    tilts = [[(rng.uniform(-1, 1), rng.uniform(-1, 1)) for _ in range(rows)]
             for _ in range(rows)]
    grain = fbm(size, 16, 16, 4, 51)
    blotch = fbm(size, 4, 4, 3, 61)
    grout = (0.47, 0.42, 0.37)
    colours, heights, rough = [], [], []
    for y in range(size):
        row = y // cell
        shift = cell // 2 if row % 2 else 0
        for x in range(size):
            i = y * size + x
            column = (x + shift) % size // cell
            fx = (x + shift) % cell / cell
            fy = y % cell / cell
            border = min(fx, 1.0 - fx, fy, 1.0 - fy) + (blotch[i] - 0.5) * 0.02
            face = smoothstep(0.018, 0.05, border)
            tone = gains[row][column] * (0.80 + 0.22 * grain[i]
                                         + 0.18 * blotch[i])
            stone = palette[picks[row][column]]
            colours.append(tuple(lerp(g, s * tone, face)
                                 for g, s in zip(grout, stone)))
            tilt = tilts[row][column]
            heights.append(face * (1.0 + 0.15 * (tilt[0] * fx + tilt[1] * fy))
                           + 0.12 * grain[i])
            rough.append(lerp(0.95, 0.42 + 0.35 * blotch[i], face))
    half = size // 2

    def halved(field):
        return [field[2 * y * size + 2 * x]
                for y in range(half) for x in range(half)]

    return (png(to_bytes(colours, 4), size),
            png(to_bytes(normal_pixels(halved(heights), half, 1.1)), half),
            png(to_bytes(metal_rough_pixels([0.0] * half * half,
                                            halved(rough)), 6), half))


def brass_textures(size):
    streaks = fbm(size, 2, 64, 2, 71)
    patches = fbm(size, 3, 3, 3, 81)
    stops = [(0.0, (0.55, 0.36, 0.15)), (0.5, (0.84, 0.62, 0.30)),
             (1.0, (0.98, 0.83, 0.52))]
    mix = [0.55 * s + 0.45 * p for s, p in zip(streaks, patches)]
    colours = [ramp(stops, smoothstep(0.12, 0.85, m)) for m in mix]
    # Not quite metal everywhere: some diffuse reflection keeps the brass
    # readable for renderers that have no surroundings to mirror.
    metal = [0.55 + 0.25 * p for p in patches]
    rough = [0.22 + 0.30 * s for s in streaks]
    return (png(to_bytes(colours, 3), size),
            png(to_bytes(metal_rough_pixels(metal, rough), 4), size))


def walnut_textures(size):
    """Grain runs along v."""
    bend = fbm(size, 3, 2, 3, 91)
    fibre = fbm(size, 64, 4, 2, 101)
    stops = [(0.0, (0.36, 0.21, 0.12)), (0.55, (0.53, 0.33, 0.19)),
             (1.0, (0.70, 0.48, 0.29))]
    colours, heights = [], []
    for i in range(size * size):
        x = i % size / size
        ring = 0.5 + 0.5 * math.sin(TAU * (5.0 * x + 2.2 * bend[i]))
        t = 0.55 * ring ** 1.5 + 0.5 * fibre[i]
        colours.append(ramp(stops, t))
        heights.append(t)
    return (png(to_bytes(colours, 3), size),
            png(to_bytes(normal_pixels(heights, size, 0.4), 4), size))


def glow_textures(size):
    """Frosted lamp glass and the light that shines through it."""
    cloud = fbm(size, 4, 4, 4, 111)
    base = [(0.98, 0.91 + 0.05 * c, 0.76 + 0.12 * c) for c in cloud]
    light = [ramp([(0.0, (0.85, 0.46, 0.14)), (0.5, (1.0, 0.72, 0.34)),
                   (1.0, (1.0, 0.93, 0.70))], smoothstep(0.2, 0.8, c))
             for c in cloud]
    return png(to_bytes(base, 3), size), png(to_bytes(light, 3), size)


def glass_texture(size):
    """Pale aqua, more opaque along the swirls."""
    bend_x, bend_y = fbm(size, 2, 2, 3, 121), fbm(size, 2, 2, 3, 131)
    swirl = warped(fbm(size, 3, 3, 3, 141), size, bend_x, bend_y, size * 0.6)
    pixels = []
    for s in swirl:
        band = 0.5 + 0.5 * math.sin(TAU * 3.0 * s)
        pixels.append((0.50 + 0.30 * band, 0.78 + 0.14 * band,
                       0.84 + 0.12 * band, 0.32 + 0.30 * band))
    return png(to_bytes(pixels, 4), size)


def foliage_textures(size):
    shades = [(0.13, 0.24, 0.11), (0.26, 0.44, 0.18), (0.42, 0.61, 0.25),
              (0.63, 0.76, 0.36)]
    colours, heights = scatter(size, 900, size / 20.0, size / 46.0, shades, 7)
    return (png(to_bytes(colours, 6), size),
            png(to_bytes(normal_pixels(heights, size, 0.7), 8), size))


def lawn_texture(size):
    shades = [(0.25, 0.36, 0.13), (0.38, 0.51, 0.20), (0.49, 0.61, 0.27),
              (0.62, 0.70, 0.36)]
    colours, _ = scatter(size, 2600, size / 26.0, size / 150.0, shades, 8)
    patches = fbm(size, 3, 3, 3, 151)
    return png(to_bytes([tuple(v * (0.82 + 0.36 * p) for v in c)
                         for c, p in zip(colours, patches)], 8), size)


def blossom_texture(size):
    shades = [(0.55, 0.24, 0.33), (0.86, 0.50, 0.60), (0.96, 0.71, 0.77),
              (1.0, 0.89, 0.90)]
    colours, _ = scatter(size, 560, size / 18.0, size / 24.0, shades, 9)
    return png(to_bytes(colours, 6), size)


# --------------------------------------------------------------- geometry


class Geometry:
    """Positions, normals, texture coordinates and triangles."""

    def __init__(self):
        self.positions, self.normals, self.uvs = [], [], []
        self.indices = []

    def vertex(self, position, normal, uv):
        self.positions.append(position)
        self.normals.append(normal)
        self.uvs.append(uv)
        return len(self.positions) - 1

    def merge(self, other, offset=(0.0, 0.0, 0.0), scale=1.0):
        """Adds a moved and evenly scaled copy of another geometry."""
        base = len(self.positions)
        self.positions += [add(scaled(p, scale), offset)
                           for p in other.positions]
        self.normals += other.normals
        self.uvs += other.uvs
        self.indices += [base + i for i in other.indices]
        return self

    def grid(self, columns, rows, point, uv):
        """A grid of quads over point(i, j) -> (position, normal)."""
        base = len(self.positions)
        for j in range(rows + 1):
            for i in range(columns + 1):
                position, normal = point(i, j)
                self.vertex(position, normal, uv(i, j))
        for j in range(rows):
            for i in range(columns):
                a = base + j * (columns + 1) + i
                b, c, d = a + 1, a + columns + 2, a + columns + 1
                self.triangle(a, b, c)
                self.triangle(a, c, d)

    def triangle(self, a, b, c):
        """Leaves out triangles that have no area, as at a pole."""
        p, q, r = (self.positions[i] for i in (a, b, c))
        doubled_area = cross(sub(q, p), sub(r, p))
        if dot(doubled_area, doubled_area) > 1e-16:
            self.indices += [a, b, c]


def patch(surface, columns, rows, repeat=(1.0, 1.0)):
    """A smooth piece of surface(u, v), u and v in 0..1.

    Normals are surface derivatives, measured a little inside of the border
    in v so that poles do not degenerate.
    """
    step = 1e-4

    def point(i, j):
        u, v = i / columns, j / rows
        inner = min(1.0 - 2.0 * step, max(2.0 * step, v))
        du = sub(surface(u + step, inner), surface(u - step, inner))
        dv = sub(surface(u, inner + step), surface(u, inner - step))
        return surface(u, v), unit(cross(du, dv))

    geometry = Geometry()
    geometry.grid(columns, rows, point,
                  lambda i, j: (repeat[0] * i / columns,
                                repeat[1] * (1.0 - j / rows)))
    return geometry


def arc(r, y, radius, start, end, steps):
    """Points on a quarter circle or so of a profile; degrees from +r to +y."""
    return [(r + radius * math.cos(math.radians(lerp(start, end, k / steps))),
             y + radius * math.sin(math.radians(lerp(start, end, k / steps))))
            for k in range(steps + 1)]


def smooth_runs(profile, crease):
    """Cuts a profile at its sharp corners; yields (point, normal, length).

    A profile goes upwards on the outside, so that its normals point to the
    right of the way it goes.
    """
    segments = []
    for (r0, y0), (r1, y1) in zip(profile, profile[1:]):
        length = math.hypot(r1 - r0, y1 - y0)
        if length > 1e-9:
            segments.append(((r0, y0), (r1, y1), length,
                             ((y1 - y0) / length, (r0 - r1) / length)))
    limit = math.cos(math.radians(crease))
    runs, travelled = [], 0.0
    for k, (start, end, length, normal) in enumerate(segments):
        before = segments[k - 1][3] if k else None
        if before is None or (before[0] * normal[0]
                              + before[1] * normal[1]) < limit:
            runs.append([(start, normal, travelled)])
        else:
            point, _, at = runs[-1][-1]
            runs[-1][-1] = (point, (before[0] + normal[0],
                                    before[1] + normal[1]), at)
        travelled += length
        runs[-1].append((end, normal, travelled))
    return runs


def lathe(profile, segments, repeat=(1.0, 1.0), start=0.0, sweep=360.0,
          crease=32.0, grain_around=False):
    """Turns a profile of (radius, height) points around the y axis.

    repeat[0] counts textures around, repeat[1] textures per metre along the
    profile.  A sweep under 360 degrees leaves an open wedge, which closed
    profiles get capped.
    """
    geometry = Geometry()

    def direction(i):
        a = math.radians(start + sweep * i / segments)
        return math.sin(a), math.cos(a)

    for run in smooth_runs(profile, crease):
        def point(i, j):
            (r, y), (nr, ny), _ = run[j]
            s, c = direction(i)
            return (r * s, y, r * c), unit((nr * s, ny, nr * c))

        def uv(i, j):
            around, along = repeat[0] * i / segments, repeat[1] * run[j][2]
            return (along, around) if grain_around else (around, -along)

        geometry.grid(segments, len(run) - 1, point, uv)
    if sweep < 360.0:
        corners = profile[:-1]
        middle = (sum(r for r, _ in corners) / len(corners),
                  sum(y for _, y in corners) / len(corners))
        for i, side in ((0, -1.0), (segments, 1.0)):
            s, c = direction(i)
            normal = (side * c, 0.0, -side * s)
            hub = len(geometry.positions)
            for r, y in [middle] + corners:
                geometry.vertex((r * s, y, r * c), normal, (r, -y))
            for k in range(len(corners)):
                rim = [hub + 1 + k, hub + 1 + (k + 1) % len(corners)]
                geometry.triangle(hub, *(rim if side < 0.0 else rim[::-1]))
    return geometry


def ring_section(inner, outer, low, high, bevel):
    """The closed profile of a ring with chamfered edges."""
    return [(inner + bevel, low), (outer - bevel, low), (outer, low + bevel),
            (outer, high - bevel), (outer - bevel, high),
            (inner + bevel, high), (inner, high - bevel), (inner, low + bevel),
            (inner + bevel, low)]


def disc(radius_in, radius_out, height, segments, rows, repeat):
    """A flat ring that faces up, textured along its circles."""
    steps = [(lerp(radius_out, radius_in, k / rows), height)
             for k in range(rows + 1)]
    return lathe(steps, segments, repeat)


def sphere(radius, columns=28, rows=18, repeat=(2.0, 1.0)):
    def surface(u, v):
        a, b = TAU * u, math.pi * (v - 0.5)
        return (radius * math.cos(b) * math.sin(a), radius * math.sin(b),
                radius * math.cos(b) * math.cos(a))
    return patch(surface, columns, rows, repeat)


def blob(radius, seed, columns=22, rows=14, bump=0.11, squash=1.0,
         repeat=(3.0, 1.5)):
    """A sphere with soft bulges: a bush or a part of a crown."""
    rng = random.Random(seed)
    waves = [([rng.uniform(-1, 1) for _ in range(3)], rng.uniform(3.5, 6.5),
              rng.uniform(0, TAU)) for _ in range(7)]

    def surface(u, v):
        a, b = TAU * u, math.pi * (v - 0.5)
        d = (math.cos(b) * math.sin(a), math.sin(b), math.cos(b) * math.cos(a))
        swell = sum(math.sin(f * dot(unit(tuple(w)), d) + p)
                    for w, f, p in waves)
        r = radius * (1.0 + bump * swell / 2.5)
        return (r * d[0], r * d[1] * squash, r * d[2])
    return patch(surface, columns, rows, repeat)


def tube(centre, radius, columns, rows, repeat=(1.0, 1.0)):
    """A round tube along centre(v) with radius(v); grain runs along it."""
    def surface(u, v):
        tangent = unit(sub(centre(v + 1e-3), centre(v - 1e-3)))
        side = unit(cross(tangent, Z_AXIS if abs(tangent[2]) < 0.9
                          else X_AXIS))
        other = cross(side, tangent)
        a, r = TAU * u, radius(v)
        return add(centre(v), add(scaled(side, r * math.sin(a)),
                                  scaled(other, r * math.cos(a))))
    return patch(surface, columns, rows, repeat)


def rounded_box(size, radius, centre=(0.0, 0.0, 0.0), density=1.0):
    """A box with rounded edges; textures repeat density times per metre."""
    half = scaled(size, 0.5)
    geometry = Geometry()
    for axis in range(3):
        u_axis, v_axis = (axis + 1) % 3, (axis + 2) % 3
        for side in (-1.0, 1.0):
            def place(i, j):
                p = [0.0, 0.0, 0.0]
                p[axis] = side * half[axis]
                for a, k in ((u_axis, i), (v_axis, j)):
                    h = half[a]
                    p[a] = (-h, -h + radius, h - radius, h)[k]
                core = tuple(max(-(h - radius), min(h - radius, v))
                             for v, h in zip(p, half))
                normal = unit(sub(tuple(p), core))
                return add(core, scaled(normal, radius)), normal

            def point(i, j):
                position, normal = place(i if side > 0 else 3 - i, j)
                return add(position, centre), normal

            def uv(i, j):
                p, _ = point(i, j)
                # Grain (v) follows x on flat faces and y on upright ones.
                if axis == 1:
                    return (p[2] * density, p[0] * density)
                return (p[0 if axis == 2 else 2] * density, -p[1] * density)

            geometry.grid(3, 3, point, uv)
    return geometry


# ------------------------------------------------------------------- glTF


class Gltf:
    """Collects a scene and writes it as one binary file."""

    FLOAT, USHORT, UINT = 5126, 5123, 5125
    ARRAY, ELEMENTS = 34962, 34963

    def __init__(self, scene_name):
        self.binary = bytearray()
        self.lights = []
        self.primitives = {}
        self.names = set()
        self.document = {
            "asset": {"version": "2.0", "generator": "make_showcase.py"},
            "extensionsUsed": ["KHR_lights_punctual"],
            "extensions": {"KHR_lights_punctual": {"lights": self.lights}},
            "scene": 0,
            "scenes": [{"name": scene_name, "nodes": []}],
            "samplers": [{"magFilter": 9729, "minFilter": 9987,
                          "wrapS": 10497, "wrapT": 10497}],
        }
        for key in ("nodes", "meshes", "materials", "textures", "images",
                    "cameras", "animations", "accessors", "bufferViews"):
            self.document[key] = []

    def append(self, key, item):
        self.document[key].append(item)
        return len(self.document[key]) - 1

    def view(self, data, target=None):
        self.binary += bytes(-len(self.binary) % 4)
        view = {"buffer": 0, "byteOffset": len(self.binary),
                "byteLength": len(data)}
        if target:
            view["target"] = target
        self.binary += data
        return self.append("bufferViews", view)

    def accessor(self, values, kind, component=FLOAT, target=None,
                 bounds=False):
        """Stores scalars or tuples; bounds are those of the stored floats."""
        width = {"SCALAR": 1, "VEC2": 2, "VEC3": 3, "VEC4": 4}[kind]
        flat = ([float(v) for v in values] if width == 1 else
                [v for value in values for v in value])
        code = {self.FLOAT: "f", self.USHORT: "H", self.UINT: "I"}[component]
        if code != "f":
            flat = [int(v) for v in flat]
        data = struct.pack("<%d%s" % (len(flat), code), *flat)
        accessor = {"bufferView": self.view(data, target),
                    "componentType": component,
                    "count": len(values), "type": kind}
        if bounds:
            stored = struct.unpack("<%d%s" % (len(flat), code), data)
            columns = [stored[c::width] for c in range(width)]
            accessor["min"] = [min(c) for c in columns]
            accessor["max"] = [max(c) for c in columns]
        return self.append("accessors", accessor)

    def texture(self, name, data):
        image = self.append("images", {"name": name, "mimeType": "image/png",
                                       "bufferView": self.view(data)})
        return {"index": self.append("textures", {"name": name, "sampler": 0,
                                                  "source": image})}

    def material(self, name, base, metal=0.0, rough=0.8, metal_rough=None,
                 normal=None, emissive=None, blend=False):
        surface = {"baseColorTexture": base,
                   "metallicFactor": metal, "roughnessFactor": rough}
        if metal_rough:
            surface["metallicRoughnessTexture"] = metal_rough
        material = {"name": name, "pbrMetallicRoughness": surface}
        if normal:
            material["normalTexture"] = normal
        if emissive:
            material["emissiveTexture"] = emissive
            material["emissiveFactor"] = [1.0, 1.0, 1.0]
        if blend:
            material["alphaMode"] = "BLEND"
        return self.append("materials", material)

    def primitive(self, geometry, material):
        """Meshes that show one geometry in two materials share its data."""
        key = id(geometry)
        if key not in self.primitives:
            short = len(geometry.positions) < 65536
            attributes = {
                "POSITION": self.accessor(geometry.positions, "VEC3",
                                          target=self.ARRAY, bounds=True),
                "NORMAL": self.accessor(geometry.normals, "VEC3",
                                        target=self.ARRAY),
                "TEXCOORD_0": self.accessor(geometry.uvs, "VEC2",
                                            target=self.ARRAY)}
            indices = self.accessor(geometry.indices, "SCALAR",
                                    self.USHORT if short else self.UINT,
                                    self.ELEMENTS)
            # The geometry is kept so that its id stays taken.
            self.primitives[key] = (attributes, indices, geometry)
        attributes, indices, _ = self.primitives[key]
        return {"attributes": attributes, "indices": indices,
                "material": material}

    def mesh(self, name, *parts):
        return self.append("meshes", {
            "name": name,
            "primitives": [self.primitive(*part) for part in parts]})

    def node(self, name, parent=None, mesh=None, at=None, turn=None,
             scale=None, matrix=None, layers=None, light=None, camera=None):
        if name in self.names or "," in name:
            raise ValueError("bad or repeated node name: " + name)
        self.names.add(name)
        node = {"name": name}
        for key, value in (("translation", at), ("rotation", turn),
                           ("scale", scale), ("matrix", matrix)):
            if value is not None:
                node[key] = [round(v, 6) for v in value]
        if mesh is not None:
            node["mesh"] = mesh
        if camera is not None:
            node["camera"] = camera
        if light is not None:
            self.lights.append(light)
            node["extensions"] = {
                "KHR_lights_punctual": {"light": len(self.lights) - 1}}
        if layers:
            node["extras"] = {"layers": layers}
        index = self.append("nodes", node)
        if parent is None:
            self.document["scenes"][0]["nodes"].append(index)
        else:
            self.document["nodes"][parent].setdefault("children",
                                                      []).append(index)
        return index

    def camera(self, name, parent, eye, target, yfov, up=Y_AXIS):
        """A camera node is placed by a matrix alone.

        Readers that copy the translation of a camera's node into the camera
        itself then have none to apply twice.
        """
        lens = {"aspectRatio": 1.6, "yfov": round(math.radians(yfov), 6),
                "znear": 0.1, "zfar": 120.0}
        index = self.append("cameras", {"name": name, "type": "perspective",
                                        "perspective": lens})
        return self.node(name, parent, camera=index,
                         matrix=view_matrix(eye, target, up))

    def animation(self, name, tracks):
        """tracks: (node, path, times, values), played with straight steps."""
        channels, samplers = [], []
        clocks = {}
        for node, path, times, values in tracks:
            key = tuple(times)
            if key not in clocks:
                clocks[key] = self.accessor(times, "SCALAR", bounds=True)
            kind = "VEC4" if path == "rotation" else "VEC3"
            samplers.append({"input": clocks[key], "interpolation": "LINEAR",
                             "output": self.accessor(values, kind)})
            channels.append({"sampler": len(samplers) - 1,
                             "target": {"node": node, "path": path}})
        self.append("animations", {"name": name, "channels": channels,
                                   "samplers": samplers})

    def write(self, path):
        self.binary += bytes(-len(self.binary) % 4)
        self.document["buffers"] = [{"byteLength": len(self.binary)}]
        text = json.dumps(self.document, separators=(",", ":")).encode()
        text += b" " * (-len(text) % 4)
        size = 12 + 8 + len(text) + 8 + len(self.binary)
        with open(path, "wb") as out:
            out.write(struct.pack("<4sII", b"glTF", 2, size))
            out.write(struct.pack("<I4s", len(text), b"JSON") + text)
            out.write(struct.pack("<I4s", len(self.binary), b"BIN\0"))
            out.write(self.binary)
        return size


# -------------------------------------------------------------- materials


class Materials:
    """Indices of all materials of the scene."""

    def __init__(self, gltf):
        texture = gltf.texture
        self.marble = gltf.material(
            "Marble", texture("Marble Color", marble_texture(256)), rough=0.45)
        colour, normal, surface = tile_textures(512)
        self.tiles = gltf.material(
            "Plaza Tiles", texture("Tiles Color", colour), metal=1.0,
            rough=1.0, metal_rough=texture("Tiles Surface", surface),
            normal=texture("Tiles Normal", normal))
        colour, surface = brass_textures(256)
        self.brass = gltf.material(
            "Brushed Brass", texture("Brass Color", colour), metal=1.0,
            rough=1.0, metal_rough=texture("Brass Surface", surface))
        colour, normal = walnut_textures(256)
        self.walnut = gltf.material(
            "Walnut", texture("Walnut Color", colour), rough=0.55,
            normal=texture("Walnut Normal", normal))
        colour, normal = foliage_textures(256)
        self.foliage = gltf.material(
            "Foliage", texture("Foliage Color", colour), rough=0.85,
            normal=texture("Foliage Normal", normal))
        self.lawn = gltf.material(
            "Lawn", texture("Lawn Color", lawn_texture(256)), rough=0.95)
        self.blossom = gltf.material(
            "Blossom", texture("Blossom Color", blossom_texture(128)),
            rough=0.8)
        colour, light = glow_textures(128)
        self.glow = gltf.material(
            "Lamp Glow", texture("Glow Color", colour), rough=0.6,
            emissive=texture("Glow Light", light))
        self.glass = gltf.material(
            "Glass", texture("Glass Color", glass_texture(128)), rough=0.06,
            blend=True)


# ------------------------------------------------------------ scene parts

CASTS = "cast_shadow"
PLAZA_HEIGHT = 0.36
PLAZA_RADIUS = 5.0
LAWN_RADIUS = 7.8
POOL_RADIUS = 1.75
ORRERY_HEIGHT = 3.2
CRYSTAL_REST = (0.0, 1.50, 0.0)


def add_ground(gltf, mat, parent):
    """Base, lawn, plaza and steps: they take shadows and cast none."""
    ground = gltf.node("Ground", parent)

    base = Geometry().merge(lathe(
        [(0.0, -0.95), (LAWN_RADIUS - 0.3, -0.95)]
        + arc(LAWN_RADIUS - 0.12, -0.77, 0.18, -90, 0, 4)
        + [(LAWN_RADIUS + 0.06, -0.66)]
        + arc(LAWN_RADIUS + 0.06, -0.50, 0.14, -90, 90, 6)
        + [(LAWN_RADIUS + 0.0, -0.34), (LAWN_RADIUS + 0.0, -0.22)]
        + arc(LAWN_RADIUS + 0.10, -0.08, 0.12, -70, 100, 6)
        + [(LAWN_RADIUS - 0.06, 0.0), (LAWN_RADIUS - 0.06, -0.08)],
        72, (24.0, 0.8), grain_around=True))
    gltf.node("Walnut Base", ground,
              gltf.mesh("Walnut Base", (base, mat.walnut)))

    def turf(u, v):
        a, r = TAU * u, lerp(LAWN_RADIUS, PLAZA_RADIUS - 0.3, v)
        rise = 0.07 * math.sin(math.pi * v)
        wave = 0.03 * math.sin(3 * a + 1.0) * math.sin(math.pi * v)
        return (r * math.sin(a), rise + wave - 0.02, r * math.cos(a))

    lawn = patch(turf, 72, 6)
    lawn.uvs = [(p[0] / 2.6, p[2] / 2.6) for p in lawn.positions]
    gltf.node("Lawn", ground, gltf.mesh("Lawn", (lawn, mat.lawn)))

    plaza = gltf.node("Plaza", ground)
    # Rings of pavers, one row of stones each.  The number of textures around
    # follows the length of a ring, so that stones keep their size, and each
    # ring starts at another place of the texture.
    paving = Geometry()
    edges = ((4.70, 4.30), (4.30, 3.90), (3.90, 3.50),
             (3.30, 2.90), (2.90, 2.50), (2.50, 2.10), (2.10, 1.70))
    for k, (outer, inner) in enumerate(edges):
        ring = disc(inner, outer, PLAZA_HEIGHT, 72, 1,
                    (round(TAU * outer / 1.7), 1.0 / 1.6))
        ring.uvs = [(u + 0.37 * k, v - 0.25 * (3 * k % 4))
                    for u, v in ring.uvs]
        paving.merge(ring)
    gltf.node("Paving", plaza, gltf.mesh("Paving", (paving, mat.tiles)))

    # Band and inlay lie flush in the gap that the pavers leave.
    band = disc(3.34, 3.46, PLAZA_HEIGHT, 72, 1, (14.0, 0.6))
    gltf.node("Marble Band", plaza, gltf.mesh("Marble Band",
                                              (band, mat.marble)))
    inlay = Geometry()
    for inner, outer in ((3.30, 3.34), (3.46, 3.50)):
        inlay.merge(disc(inner, outer, PLAZA_HEIGHT, 72, 1, (12.0, 1.0)))
    gltf.node("Brass Inlay", plaza, gltf.mesh("Brass Inlay",
                                              (inlay, mat.brass)))
    kerb = lathe([(PLAZA_RADIUS + 0.05, -0.1), (PLAZA_RADIUS + 0.05, 0.08),
                  (PLAZA_RADIUS, 0.12), (PLAZA_RADIUS, PLAZA_HEIGHT - 0.08)]
                 + arc(PLAZA_RADIUS + 0.02, PLAZA_HEIGHT - 0.02, 0.05,
                       -60, 90, 5)
                 + [(PLAZA_RADIUS - 0.31, PLAZA_HEIGHT + 0.03),
                    (PLAZA_RADIUS - 0.33, PLAZA_HEIGHT + 0.01),
                    (PLAZA_RADIUS - 0.33, PLAZA_HEIGHT - 0.03)],
                 72, (20.0, 0.6))
    gltf.node("Kerb", plaza, gltf.mesh("Kerb", (kerb, mat.marble)))

    steps = gltf.node("Steps", ground)
    for k, (reach, height, width) in enumerate(((0.42, 0.245, 36.0),
                                                (0.84, 0.125, 42.0)), 1):
        step = lathe(ring_section(PLAZA_RADIUS - 0.1, PLAZA_RADIUS + reach,
                                  -0.1, height, 0.02),
                     14, (3.0, 0.6), -width / 2.0, width)
        gltf.node("Step %d" % k, steps,
                  gltf.mesh("Step %d" % k, (step, mat.marble)))

    path = gltf.node("Path", ground)
    stone = lathe([(0.40, -0.1), (0.42, 0.02), (0.36, 0.06), (0.0, 0.07)],
                  20, (2.0, 1.0), crease=60.0)
    stone.uvs = [(p[0] * 0.6, p[2] * 0.6) for p in stone.positions]
    slab = gltf.mesh("Stepping Stone", (stone, mat.marble))
    for k, (x, z, size) in enumerate(((0.10, 6.36, 0.90),
                                      (-0.12, 7.12, 0.76)), 1):
        gltf.node("Stepping Stone %d" % k, path, slab, at=(x, 0.03, z),
                  turn=quaternion(Y_AXIS, 70.0 * k), scale=(size, 1.0, size))


def column_meshes(gltf, mat):
    """Fluted shaft on its base, and capital, with the foot at y = 0."""
    base = Geometry()
    base.merge(rounded_box((0.62, 0.12, 0.62), 0.015, (0.0, 0.06, 0.0)))
    base.merge(lathe([(0.29, 0.12)] + arc(0.255, 0.165, 0.045, -90, 90, 5)
                     + [(0.235, 0.22), (0.225, 0.25)]
                     + arc(0.232, 0.28, 0.03, -90, 90, 4)
                     + [(0.215, 0.312)], 28, (2.0, 0.8)))
    flutes, bottom, top = 14, 0.31, 2.86

    def shaft(u, v):
        a = TAU * u
        taper = lerp(0.215, 0.172, v) + 0.010 * math.sin(math.pi * v)
        ends = smoothstep(0.0, 0.04, v) * (1.0 - smoothstep(0.96, 1.0, v))
        cut = 0.022 * ends * (0.5 - 0.5 * math.cos(flutes * a)) ** 0.7
        r = taper - cut
        return (r * math.sin(a), lerp(bottom, top, v), r * math.cos(a))

    # Rows gather at both ends, where the flutes run out.
    rows = [0.0, 0.02, 0.04, 0.25, 0.5, 0.75, 0.96, 0.98, 1.0]

    def row(v):
        k = min(len(rows) - 2, int(v * (len(rows) - 1)))
        return lerp(rows[k], rows[k + 1], v * (len(rows) - 1) - k)

    fluted = patch(lambda u, v: shaft(u, row(min(1.0, max(0.0, v)))),
                   flutes * 4, len(rows) - 1, (2.0, 3.0))

    capital = lathe([(0.172, 2.86)] + arc(0.178, 2.885, 0.025, -90, 90, 4)
                    + [(0.176, 2.915), (0.180, 2.97), (0.205, 3.05),
                       (0.255, 3.11)] + arc(0.26, 3.135, 0.025, -90, 90, 4)
                    + [(0.20, 3.165)], 28, (2.0, 0.8))
    capital.merge(rounded_box((0.60, 0.11, 0.60), 0.015, (0.0, 3.215, 0.0)))
    collar = lathe(ring_section(0.165, 0.196, 2.80, 2.835, 0.008), 28,
                   (2.0, 1.0))
    return (gltf.mesh("Column Shaft", (base.merge(fluted), mat.marble)),
            gltf.mesh("Column Capital", (capital, mat.marble),
                      (collar, mat.brass)))


def add_colonnade(gltf, mat, parent):
    """Seven columns in a half circle that carry a curved beam."""
    colonnade = gltf.node("Colonnade", parent, at=(0.0, PLAZA_HEIGHT, 0.0),
                          layers=CASTS)
    shaft, capital = column_meshes(gltf, mat)
    radius, first, spread = 4.12, 98.0, 164.0
    for k in range(7):
        angle = first + spread * k / 6.0
        name = "Column %d" % (k + 1)
        column = gltf.node(name, colonnade, at=around_y(angle, radius),
                           turn=quaternion(Y_AXIS, angle))
        gltf.node(name + " Shaft", column, shaft)
        gltf.node(name + " Capital", column, capital)
    beam_profile = [(radius - 0.22, 3.27), (radius + 0.22, 3.27),
                    (radius + 0.22, 3.42), (radius + 0.25, 3.44),
                    (radius + 0.25, 3.58), (radius + 0.36, 3.66),
                    (radius + 0.36, 3.73), (radius - 0.36, 3.73),
                    (radius - 0.36, 3.66), (radius - 0.25, 3.58),
                    (radius - 0.25, 3.44), (radius - 0.22, 3.42),
                    (radius - 0.22, 3.27)]
    beam = lathe(beam_profile, 48, (9.0, 0.6), first - 5.0, spread + 10.0)
    gltf.node("Architrave", colonnade, gltf.mesh("Architrave",
                                                 (beam, mat.marble)))
    finial = lathe([(0.11, 0.0), (0.11, 0.05), (0.05, 0.09), (0.04, 0.13)]
                   + arc(0.0, 0.26, 0.14, -72, 60, 9)
                   + [(0.03, 0.42), (0.0, 0.50)], 20, (2.0, 1.0))
    urn = gltf.mesh("Finial", (finial, mat.brass))
    for k, index in enumerate((0, 3, 6), 1):
        gltf.node("Finial %d" % k, colonnade, urn,
                  at=around_y(first + spread * index / 6.0, radius, 3.73))


def add_monument(gltf, mat, parent):
    """The pool, the plinth and the orrery; returns what moves."""
    monument = gltf.node("Monument", parent, at=(0.0, PLAZA_HEIGHT, 0.0))
    pool = gltf.node("Pool", monument)
    rim = lathe(ring_section(POOL_RADIUS - 0.24, POOL_RADIUS, -0.05, 0.36,
                             0.025), 64, (10.0, 0.8))
    gltf.node("Pool Rim", pool, gltf.mesh("Pool Rim", (rim, mat.marble)),
              layers=CASTS)
    floor = disc(0.4, POOL_RADIUS - 0.2, 0.06, 48, 1, (6.0, 0.6))
    gltf.node("Pool Floor", pool, gltf.mesh("Pool Floor", (floor, mat.tiles)))
    water = disc(0.4, POOL_RADIUS - 0.22, 0.27, 48, 3, (1.0, 1.0))
    water.uvs = [(p[0] * 0.45, p[2] * 0.45) for p in water.positions]
    gltf.node("Pool Water", pool, gltf.mesh("Pool Water", (water, mat.glass)),
              layers="transparent")

    sculpture = gltf.node("Sculpture", monument, layers=CASTS)
    plinth = lathe(
        [(0.86, 0.0), (0.86, 0.42), (0.83, 0.45), (0.72, 0.45)]
        + arc(0.66, 0.51, 0.06, -90, 90, 4)
        + [(0.62, 0.58), (0.56, 0.64), (0.54, 0.70), (0.52, 1.18),
           (0.54, 1.24), (0.60, 1.29)]
        + arc(0.62, 1.33, 0.04, -90, 90, 4) + [(0.56, 1.37), (0.0, 1.37)],
        48, (4.0, 0.7))
    gltf.node("Plinth", sculpture, gltf.mesh("Plinth", (plinth, mat.marble)))

    ring_radius = 1.30
    stem = lathe([(0.40, 1.37), (0.40, 1.41), (0.30, 1.45), (0.14, 1.50),
                  (0.09, 1.56), (0.13, 1.60), (0.07, 1.66), (0.045, 1.80),
                  (0.04, ORRERY_HEIGHT - PLAZA_HEIGHT - 0.25)], 24,
                 (2.0, 1.5), crease=50.0)
    gltf.node("Stem", sculpture, gltf.mesh("Stem", (stem, mat.brass)))

    orrery = gltf.node("Orrery", sculpture,
                       at=(0.0, ORRERY_HEIGHT - PLAZA_HEIGHT, 0.0))
    band = lathe(ring_section(0.955, 1.0, -0.045, 0.045, 0.008), 72,
                 (10.0, 1.0))
    hoop = gltf.mesh("Ring", (band, mat.brass))

    def ring(name, owner, size, turn):
        return gltf.node(name, owner, hoop, scale=(size, size, size),
                         turn=turn)

    ring("Meridian Ring", orrery, ring_radius, quaternion(Z_AXIS, 90.0))
    ring("Horizon Ring", orrery, ring_radius * 1.07, quaternion(X_AXIS, 14.0))
    gimbal = gltf.node("Gimbal", orrery)
    ring("Gimbal Ring", gimbal, ring_radius * 0.93, quaternion(X_AXIS, 62.0))

    core = gltf.node("Sun Core", orrery,
                     gltf.mesh("Sun Core", (sphere(0.27), mat.glow)))
    ball = sphere(1.0)
    bodies = {name: gltf.mesh(name + " Body", (ball, material))
              for name, material in (("Ember", mat.brass),
                                     ("Verdant", mat.foliage),
                                     ("Pearl", mat.marble),
                                     ("Rose", mat.blossom))}
    rod = gltf.mesh("Rod", (lathe(
        [(0.0, 0.0), (0.016, 0.0), (0.016, 0.97), (0.03, 0.98), (0.03, 1.0),
         (0.0, 1.0)], 12, (1.0, 2.0)), mat.brass))
    along_x = quaternion(Z_AXIS, -90.0)

    def planet(name, owner, reach, height, size, start):
        """An arm that turns on the stem, and the planet at its end."""
        turn = quaternion(Y_AXIS, start)
        arm = gltf.node(name + " Arm", owner, at=(0.0, height, 0.0),
                        turn=turn)
        gltf.node(name + " Rod", arm, rod, turn=along_x,
                  scale=(1.0, reach, 1.0))
        gltf.node(name, arm, bodies[name], at=(reach, 0.0, 0.0),
                  scale=(size, size, size))
        return arm

    hub = gltf.node("Hub", orrery)
    ember = planet("Ember", hub, 0.50, 0.02, 0.085, 35.0)
    verdant = planet("Verdant", hub, 0.76, -0.06, 0.15, 200.0)
    pearl = planet("Pearl", hub, 0.96, 0.08, 0.115, 320.0)
    # A moon's arm turns about the end of the arm of its planet.
    pearl_end = gltf.node("Pearl Pivot", pearl, at=(0.96, 0.0, 0.0))
    rose = planet("Rose", pearl_end, 0.20, 0.02, 0.05, 90.0)
    return {"core": core, "gimbal": gimbal,
            "arms": ((ember, 35.0, 3), (verdant, 200.0, 2),
                     (pearl, 320.0, 1), (rose, 90.0, 6))}


def add_lamps(gltf, mat, parent):
    """Four lamp posts; the two in front carry light of their own."""
    lamps = gltf.node("Lamps", parent, at=(0.0, PLAZA_HEIGHT, 0.0))
    frame = lathe(
        [(0.17, 0.0), (0.17, 0.06), (0.13, 0.10), (0.12, 0.26), (0.075, 0.34),
         (0.055, 0.42), (0.042, 1.30), (0.060, 1.33), (0.060, 1.37),
         (0.040, 1.40), (0.034, 1.92), (0.09, 2.0), (0.13, 2.03),
         (0.13, 2.06), (0.0, 2.06)], 18, (1.0, 1.0))
    cap = lathe([(0.15, -0.01), (0.20, 0.0), (0.20, 0.02), (0.13, 0.07),
                 (0.05, 0.14), (0.03, 0.16)]
                + arc(0.0, 0.19, 0.035, -50, 90, 4), 18, (1.0, 1.0))
    post = gltf.mesh("Lamp Post", (frame.merge(cap, (0.0, 2.37, 0.0)),
                                   mat.brass))
    globe = gltf.mesh("Lamp Globe", (sphere(0.19, 22, 14), mat.glow))
    glows = {"Amber": ([1.0, 0.70, 0.36], 2.6),
             "Azure": ([0.46, 0.70, 1.0], 2.4)}
    for name, angle in (("Amber", 47.0), ("Azure", -47.0), ("East", 88.0),
                        ("West", -88.0)):
        lamp = gltf.node(name + " Lamp", lamps, at=around_y(angle, 4.05))
        # The globe casts no shadow: it would keep the light inside.
        gltf.node(name + " Post", lamp, post, layers=CASTS)
        lantern = gltf.node(name + " Globe", lamp, globe, at=(0.0, 2.22, 0.0))
        if name in glows:
            colour, intensity = glows[name]
            gltf.node(name + " Light", lantern, light={
                "type": "point", "name": name + " Light", "range": 12.0,
                "color": colour, "intensity": intensity})


def add_crystal(gltf, mat, parent):
    """A glass sphere that floats above a small plinth."""
    stand = gltf.node("Crystal Stand", parent,
                      at=around_y(-19.0, 2.85, PLAZA_HEIGHT),
                      turn=quaternion(Y_AXIS, -19.0), layers=CASTS)
    pillar = Geometry()
    pillar.merge(rounded_box((0.62, 0.14, 0.62), 0.02, (0.0, 0.07, 0.0)))
    pillar.merge(rounded_box((0.46, 0.62, 0.46), 0.02, (0.0, 0.45, 0.0)))
    pillar.merge(rounded_box((0.58, 0.10, 0.58), 0.02, (0.0, 0.80, 0.0)))
    cup = lathe([(0.17, 0.85), (0.17, 0.87), (0.06, 0.90), (0.05, 0.94),
                 (0.16, 1.00), (0.20, 1.05), (0.185, 1.05), (0.0, 0.98)],
                24, (2.0, 1.0))
    gltf.node("Crystal Plinth", stand,
              gltf.mesh("Crystal Plinth", (pillar, mat.marble),
                        (cup, mat.brass)))
    return gltf.node("Crystal", stand,
                     gltf.mesh("Crystal", (sphere(0.34, 36, 22, (2.0, 1.0)),
                                           mat.glass)),
                     at=CRYSTAL_REST, layers=CASTS + " transparent")


def add_benches(gltf, mat, parent):
    seat = Geometry()
    for k in range(4):
        seat.merge(rounded_box((1.30, 0.045, 0.095), 0.012,
                               (0.0, 0.44, -0.165 + 0.11 * k), 1.5))
    for k in range(3):
        seat.merge(rounded_box((1.30, 0.085, 0.035), 0.012,
                               (0.0, 0.58 + 0.11 * k, -0.23 - 0.02 * k), 1.5))
    legs = Geometry()
    for x in (-0.48, 0.48):
        legs.merge(rounded_box((0.09, 0.42, 0.42), 0.015, (x, 0.21, 0.0)))
        legs.merge(rounded_box((0.05, 0.44, 0.04), 0.012, (x, 0.64, -0.27)))
    bench = gltf.mesh("Bench", (seat, mat.walnut), (legs, mat.marble))
    benches = gltf.node("Benches", parent, layers=CASTS)
    for name, angle in (("East Bench", 112.0), ("West Bench", -112.0)):
        gltf.node(name, benches, bench, turn=quaternion(Y_AXIS, angle + 180.0),
                  at=around_y(angle, 2.95, PLAZA_HEIGHT))


def tree_meshes(gltf, mat):
    """A leaning trunk with two boughs, and crowns to put on it."""
    def bole(v):
        return (0.10 * math.sin(2.2 * v), 1.55 * v, 0.06 * math.sin(3.0 * v))

    wood = tube(bole, lambda v: 0.17 * (1.0 - 0.55 * v) + 0.10 * (1 - v) ** 8,
                12, 10, (2.0, 2.0))
    for dx, dz, lift in ((0.55, 0.1, 0.62), (-0.48, -0.2, 0.5)):
        start = bole(0.68)
        wood.merge(tube(
            lambda v: add(start, (dx * v, 0.9 * v * (0.6 + lift * v),
                                  dz * v)),
            lambda v: 0.075 * (1.0 - 0.6 * v), 10, 6, (1.0, 1.5)))
    puffs = (((0.0, 0.62, 0.0), 0.72), ((0.62, 0.28, 0.12), 0.56),
             ((-0.58, 0.22, -0.14), 0.58), ((0.08, 0.16, 0.56), 0.50),
             ((-0.08, 0.20, -0.58), 0.50), ((0.30, 0.85, -0.25), 0.46))
    crown = Geometry()
    for k, (place, size) in enumerate(puffs):
        crown.merge(blob(1.0, 200 + k, 18, 12), place, size)

    def flame(u, v):
        a = TAU * u
        r = 0.46 * math.sin(math.pi * v ** 0.62) ** 0.8
        r *= 1.0 + 0.05 * math.sin(5 * a + 9 * v) + 0.04 * math.sin(
            3 * a - 14 * v)
        return (r * math.sin(a), 0.25 + 3.6 * v, r * math.cos(a))

    cypress = patch(lambda u, v: flame(u, min(1.0, max(0.0, v))), 24, 20,
                    (4.0, 5.0))
    stub = lathe([(0.10, -0.05), (0.085, 0.5)], 10, (1.0, 1.0))
    return {"trunk": gltf.mesh("Trunk", (wood, mat.walnut)),
            "crown": gltf.mesh("Leaf Crown", (crown, mat.foliage)),
            "blossom": gltf.mesh("Blossom Crown", (crown, mat.blossom)),
            "cypress": gltf.mesh("Cypress", (cypress, mat.foliage),
                                 (stub, mat.walnut))}


def add_plants(gltf, mat, parent):
    """Trees behind the columns and beside them, shrubs along the kerb."""
    plants = gltf.node("Plants", parent, layers=CASTS)
    meshes = tree_meshes(gltf, mat)
    trees = gltf.node("Trees", plants)
    crowns = []
    for name, kind, angle, radius, size in (
            ("Cherry Tree", "blossom", -74.0, 6.35, 1.12),
            ("Little Cherry", "blossom", -53.0, 6.5, 0.74),
            ("Linden", "crown", 100.0, 6.45, 1.08)):
        tree = gltf.node(name, trees, meshes["trunk"],
                         at=around_y(angle, radius, 0.02),
                         turn=quaternion(Y_AXIS, angle * 2.0),
                         scale=(size, size, size))
        crowns.append(gltf.node(name + " Crown", tree, meshes[kind],
                                at=(0.08, 1.72, 0.0)))
    cypresses = gltf.node("Cypresses", plants)
    for k, (angle, size) in enumerate(((124.0, 1.06), (150.0, 1.26),
                                       (174.0, 1.38), (200.0, 1.30),
                                       (228.0, 1.08)), 1):
        gltf.node("Cypress %d" % k, cypresses, meshes["cypress"],
                  at=around_y(angle, 6.3), turn=quaternion(Y_AXIS, 61.0 * k),
                  scale=(1.0, size, 1.0))
    shrub = Geometry()
    for k, (place, size) in enumerate((((0.0, 0.30, 0.0), 0.42),
                                       ((0.42, 0.20, 0.10), 0.30),
                                       ((-0.36, 0.18, 0.14), 0.28))):
        shrub.merge(blob(1.0, 300 + k, 18, 12, squash=0.88,
                         repeat=(2.0, 1.0)), place, size)
    green = gltf.mesh("Shrub", (shrub, mat.foliage))
    pink = gltf.mesh("Rose Bush", (shrub, mat.blossom))
    shrubs = gltf.node("Shrubs", plants)
    for k, (angle, radius, size, mesh) in enumerate((
            (29.0, 5.75, 0.95, green), (41.0, 5.9, 0.70, pink),
            (57.0, 5.75, 1.05, green), (74.0, 6.1, 0.8, pink),
            (-29.0, 5.75, 0.95, green), (-40.0, 5.8, 0.66, pink),
            (-100.0, 5.9, 1.0, green), (140.0, 6.9, 1.0, green)), 1):
        gltf.node("Shrub %d" % k, shrubs, mesh,
                  at=around_y(angle, radius, 0.03),
                  turn=quaternion(Y_AXIS, angle + 40.0 * k),
                  scale=(size, size, size))
    return crowns


def add_lights(gltf, parent):
    lights = gltf.node("Lights", parent)
    # Far away, for viewers that shine a sun from where its node is.
    eye = (-28.0, 50.0, 44.0)
    gltf.node("Sun", lights, matrix=view_matrix(eye, (0.0, 0.0, 0.0)), light={
        "type": "directional", "name": "Sun",
        "color": [1.0, 0.92, 0.78], "intensity": 1.6})
    eye = (5.2, 6.4, 4.2)
    target = (0.0, ORRERY_HEIGHT - 0.5, 0.0)
    gltf.node("Orrery Spot", lights, matrix=view_matrix(eye, target), light={
        "type": "spot", "name": "Orrery Spot", "range": 20.0,
        "color": [1.0, 0.76, 0.74], "intensity": 28.0,
        "spot": {"innerConeAngle": 0.14, "outerConeAngle": 0.25}})


def add_cameras(gltf, parent):
    """The first is the view that the studio opens with."""
    cameras = gltf.node("Cameras", parent)
    gltf.camera("Overview", cameras, (10.2, 8.4, 20.4), (0.1, 0.75, 0.0),
                28.0)
    gltf.camera("Detail", cameras, (2.2, 3.75, 5.5), (-0.35, 2.6, 0.0), 42.0)
    gltf.camera("Top", cameras, (0.0, 23.0, 0.0), (0.0, 0.0, 0.0), 42.0,
                up=(0.0, 0.0, -1.0))


# ------------------------------------------------------------- animations


def times(length, steps):
    return [length * k / steps for k in range(steps + 1)]


def spin(node, axis, start, turns, length):
    """Whole turns, in steps small enough to have one shortest way."""
    steps = abs(turns) * 6
    return (node, "rotation", times(length, steps),
            [quaternion(axis, start + 360.0 * turns * k / steps)
             for k in range(steps + 1)])


def wave(steps=24):
    """One period of a sine that ends exactly where it begins."""
    return [math.sin(TAU * (k % steps) / steps) for k in range(steps + 1)]


def add_animations(gltf, moving, crystal, crowns):
    length = 16.0
    tracks = [spin(arm, Y_AXIS, start, turns, length)
              for arm, start, turns in moving["arms"]]
    tracks.append(spin(moving["gimbal"], Y_AXIS, 0.0, -1, length))
    gltf.animation("Orrery Clockwork", tracks)

    length, beat = 6.0, times(6.0, 24)
    tracks = [
        (crystal, "translation", beat,
         [add(CRYSTAL_REST, (0.0, 0.09 * s, 0.0)) for s in wave()]),
        (moving["core"], "scale", beat,
         [(1.0 + 0.10 * s,) * 3 for s in wave()])]
    for k, crown in enumerate(crowns):
        axis = unit((1.0, 0.0, 0.4 * k))
        tracks.append((crown, "rotation", beat,
                       [quaternion(axis, 2.2 * s) for s in wave()]))
    gltf.animation("Garden Breeze", tracks)


# ------------------------------------------------------------------- main


def build():
    gltf = Gltf("Showcase")
    mat = Materials(gltf)
    root = gltf.node("Showcase")
    add_cameras(gltf, root)
    add_lights(gltf, root)
    garden = gltf.node("Garden", root)
    add_ground(gltf, mat, garden)
    add_colonnade(gltf, mat, garden)
    moving = add_monument(gltf, mat, garden)
    add_lamps(gltf, mat, garden)
    add_benches(gltf, mat, garden)
    crowns = add_plants(gltf, mat, garden)
    crystal = add_crystal(gltf, mat, garden)
    add_animations(gltf, moving, crystal, crowns)
    return gltf


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    parser = argparse.ArgumentParser(
        description="Writes the scene that the studio opens with as a binary "
                    "glTF 2.0 file. The result is the same on every run.")
    parser.add_argument("-o", "--output", metavar="FILE",
                        default=os.path.join(here, "showcase.glb"),
                        help="file to write (default: %(default)s)")
    arguments = parser.parse_args()
    gltf = build()
    size = gltf.write(arguments.output)
    count = {key: len(value) for key, value in gltf.document.items()
             if isinstance(value, list)}
    print("%s: %d KiB, %d nodes, %d meshes, %d materials, %d images, "
          "%d cameras, %d lights, %d animations"
          % (arguments.output, size // 1024, count["nodes"], count["meshes"],
             count["materials"], count["images"], count["cameras"],
             len(gltf.lights), count["animations"]))


if __name__ == "__main__":
    main()
