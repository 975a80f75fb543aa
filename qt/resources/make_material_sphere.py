#!/usr/bin/env python3
"""Renders material_sphere.jpg, the picture on every tile of the material panel.

A glazed ball in a photographer's studio: a warm soft box from the upper left,
a cool strip from behind on the right, a dim room round it, a floor that runs
into the backdrop.  Everything is computed here with the standard library; two
runs write the same picture.  ImageMagick's convert packs it as JPEG.

    python3 qt/resources/make_material_sphere.py
"""

import argparse
import math
import os
import random
import subprocess

# y points up, the camera looks along -z; the ball has radius 1 and lies on the floor y = 0.
EYE = (0.0, 1.62, 6.4)
TARGET = (0.0, 0.93, 0.0)
VIEW_HEIGHT = 0.415  # of the picture, at distance 1
CENTER = (0.0, 1.0, 0.0)

GLAZE = (0.36, 0.42, 0.50)
FLOOR = (0.27, 0.285, 0.31)
ROOM_ABOVE = (0.150, 0.170, 0.205)
ROOM_BELOW = (0.045, 0.050, 0.060)
BACKDROP_GLOW = (0.200, 0.225, 0.262)
BACKDROP_RIM = (0.036, 0.042, 0.053)


def add(a, b):
    return (a[0] + b[0], a[1] + b[1], a[2] + b[2])


def sub(a, b):
    return (a[0] - b[0], a[1] - b[1], a[2] - b[2])


def scaled(a, s):
    return (a[0] * s, a[1] * s, a[2] * s)


def times(a, b):
    return (a[0] * b[0], a[1] * b[1], a[2] * b[2])


def dot(a, b):
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]


def cross(a, b):
    return (a[1] * b[2] - a[2] * b[1],
            a[2] * b[0] - a[0] * b[2],
            a[0] * b[1] - a[1] * b[0])


def unit(a):
    return scaled(a, 1.0 / math.sqrt(dot(a, a)))


def mix(a, b, t):
    return (a[0] + (b[0] - a[0]) * t, a[1] + (b[1] - a[1]) * t, a[2] + (b[2] - a[2]) * t)


def smoothstep(low, high, x):
    t = min(1.0, max(0.0, (x - low) / (high - low)))
    return t * t * (3.0 - 2.0 * t)


class SoftBox:
    """A rectangle that shines towards the ball, dimmer at its rim."""

    def __init__(self, position, width, height, radiance):
        self.position = position
        self.radiance = radiance
        self.width = width
        self.height = height
        self.normal = unit(sub(CENTER, position))
        self.right = unit(cross((0.0, 1.0, 0.0), self.normal))
        self.up = cross(self.normal, self.right)

    def point(self, u, v):
        return add(self.position, add(scaled(self.right, (u - 0.5) * self.width),
                                      scaled(self.up, (v - 0.5) * self.height)))

    def seen_along(self, origin, direction):
        """The radiance that a ray meets, black beside the box."""
        towards = dot(direction, self.normal)
        if towards >= -1e-6:
            return None
        distance = dot(sub(self.position, origin), self.normal) / towards
        if distance <= 0.0:
            return None
        offset = sub(add(origin, scaled(direction, distance)), self.position)
        across = abs(dot(offset, self.right)) / (0.5 * self.width)
        along = abs(dot(offset, self.up)) / (0.5 * self.height)
        edge = (1.0 - smoothstep(0.82, 1.0, across)) * (1.0 - smoothstep(0.82, 1.0, along))
        return scaled(self.radiance, edge) if edge > 0.0 else None

    def light_at(self, point, normal, u, v, shadowed):
        """The light that one spot of the box casts on a surface, for a white one."""
        ray = sub(self.point(u, v), point)
        squared = dot(ray, ray)
        direction = scaled(ray, 1.0 / math.sqrt(squared))
        facing = dot(direction, normal)
        shining = -dot(direction, self.normal)
        if facing <= 0.0 or shining <= 0.0 or (shadowed and hit_ball(point, direction)):
            return (0.0, 0.0, 0.0)
        return scaled(self.radiance, facing * shining * self.width * self.height / (math.pi * squared))


KEY = SoftBox((-4.2, 5.2, 3.1), 3.4, 3.4, (15.0, 13.8, 12.2))
STRIP = SoftBox((4.0, 2.9, -2.6), 1.6, 4.8, (8.0, 10.0, 13.0))
BOXES = (KEY, STRIP)


def hit_ball(origin, direction):
    """Distance along the ray to the ball, or None."""
    offset = sub(origin, CENTER)
    b = dot(offset, direction)
    inside = b * b - dot(offset, offset) + 1.0
    if inside <= 0.0:
        return None
    distance = -b - math.sqrt(inside)
    return distance if distance > 1e-4 else None


def ball_over_floor(point):
    """The share of the room that the ball hides from a point of the floor."""
    offset = sub(CENTER, point)
    squared = dot(offset, offset)
    return offset[1] / math.sqrt(squared) / squared


def backdrop(direction):
    """What stands behind: a lamp glows on it, low behind the ball."""
    across = direction[0] / 0.24
    along = (direction[1] + 0.13) / 0.20
    return mix(BACKDROP_RIM, BACKDROP_GLOW, math.exp(-(across * across + along * along)))


def shade_floor(point, spots):
    light = scaled(mix(ROOM_BELOW, ROOM_ABOVE, 0.8), 1.0 - ball_over_floor(point))
    for box, (u, v) in zip(BOXES, spots):
        light = add(light, box.light_at(point, (0.0, 1.0, 0.0), u, v, True))
    return times(FLOOR, light)


def room(direction):
    return mix(ROOM_BELOW, ROOM_ABOVE, smoothstep(-0.3, 1.0, direction[1]))


def look(origin, direction, spots):
    """The radiance that arrives along a ray that does not meet the ball."""
    for box in BOXES:
        seen = box.seen_along(origin, direction)
        if seen:
            return add(seen, room(direction))
    if direction[1] >= -1e-3:
        return room(direction)
    point = add(origin, scaled(direction, -origin[1] / direction[1]))
    return mix(shade_floor(point, spots), room(direction), smoothstep(4.0, 16.0, math.hypot(point[0], point[2])))


def shade_ball(point, direction, spots, jitter):
    normal = sub(point, CENTER)
    sky = 0.5 + 0.5 * normal[1]
    near_floor = 0.25 + 0.75 * smoothstep(0.0, 1.0, point[1])
    light = add(scaled(ROOM_ABOVE, sky), scaled(FLOOR, 0.85 * (1.0 - sky) * near_floor))
    for box, (u, v) in zip(BOXES, spots):
        light = add(light, box.light_at(point, normal, u, v, False))
    facing = -dot(direction, normal)
    fresnel = 0.04 + 0.96 * (1.0 - facing) ** 5
    mirrored = unit(add(add(direction, scaled(normal, 2.0 * facing)), jitter))
    if dot(mirrored, normal) < 0.0:
        mirrored = unit(sub(mirrored, scaled(normal, 2.0 * dot(mirrored, normal))))
    return mix(times(GLAZE, light), look(point, mirrored, spots), min(1.0, fresnel))


def trace(direction, spots, jitter):
    distance = hit_ball(EYE, direction)
    if distance:
        return shade_ball(add(EYE, scaled(direction, distance)), direction, spots, jitter)
    if direction[1] >= -1e-3:
        return backdrop(direction)
    point = add(EYE, scaled(direction, -EYE[1] / direction[1]))
    return mix(shade_floor(point, spots), backdrop(direction), smoothstep(-1.5, 9.0, -point[2]))


def tone(value):
    """A film curve, then sRGB."""
    value *= 0.8
    value = value * (2.51 * value + 0.03) / (value * (2.43 * value + 0.59) + 0.14)
    value = min(1.0, max(0.0, value))
    value = 12.92 * value if value <= 0.0031308 else 1.055 * value ** (1 / 2.4) - 0.055
    return int(255.0 * value + 0.5)


def stratified(generator, side):
    """side * side points of the unit square, one in each of its cells, in random order."""
    points = [((x + generator.random()) / side, (y + generator.random()) / side)
              for y in range(side) for x in range(side)]
    generator.shuffle(points)
    return points


def render(size, side):
    """RGB bytes, the top row first; side * side rays for each pixel."""
    generator = random.Random(1)
    forward = unit(sub(TARGET, EYE))
    right = unit(cross(forward, (0.0, 1.0, 0.0)))
    up = cross(right, forward)
    count = side * side
    pixels = bytearray()
    for y in range(size):
        for x in range(size):
            color = (0.0, 0.0, 0.0)
            samples = zip(*(stratified(generator, side) for _ in range(4)))
            for place, key, strip, rough in samples:
                across = ((x + place[0]) / size - 0.5) * VIEW_HEIGHT
                along = (0.5 - (y + place[1]) / size) * VIEW_HEIGHT
                direction = unit(add(forward, add(scaled(right, across), scaled(up, along))))
                jitter = (0.02 * (rough[0] - 0.5), 0.02 * (rough[1] - 0.5), 0.0)
                color = add(color, trace(direction, (key, strip), jitter))
            pixels += bytes(tone(channel / count) for channel in color)
    return bytes(pixels)


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--size", type=int, default=256, help="pixels in a row")
    parser.add_argument("--rays", type=int, default=7, help="the rays of a pixel are the square of this")
    parser.add_argument("--output", default=os.path.join(here, "material_sphere.jpg"))
    options = parser.parse_args()
    header = "P6 %d %d 255\n" % (options.size, options.size)
    subprocess.run(["convert", "ppm:-", "-quality", "92", "-sampling-factor", "1x1", "-strip", options.output],
                   input=header.encode() + render(options.size, options.rays), check=True)


if __name__ == "__main__":
    main()
