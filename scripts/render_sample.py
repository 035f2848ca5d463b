#!/usr/bin/env python3
"""Renders examples/pictures/sample.png, the RGBA picture that scripts/demo.sh encodes by default.

A lower-third style graphic over nothing: a card with a gradient and a soft shadow, discs, a ring and letters drawn as
strokes. All edges come from signed distances, so they are antialiased, and alpha takes every value from 0 to 255.
Colours are not multiplied by alpha. Needs Python 3 alone, and gives the same samples each time.

Usage: scripts/render_sample.py [OUT.png]
"""

import math
import os
import struct
import sys
import zlib

WIDTH, HEIGHT = 640, 360


def clamp(value, low=0.0, high=1.0):
    return min(max(value, low), high)


def smoothstep(value):
    value = clamp(value)
    return value * value * (3.0 - 2.0 * value)


# Distances in pixels, negative inside.


def disc(x, y, cx, cy, radius):
    return math.hypot(x - cx, y - cy) - radius


def ring(x, y, cx, cy, radius, thickness):
    return abs(disc(x, y, cx, cy, radius)) - thickness / 2.0


def rounded_box(x, y, cx, cy, half_width, half_height, radius):
    dx = abs(x - cx) - half_width + radius
    dy = abs(y - cy) - half_height + radius
    return math.hypot(max(dx, 0.0), max(dy, 0.0)) + min(max(dx, dy), 0.0) - radius


def segment(x, y, ax, ay, bx, by):
    dx, dy = bx - ax, by - ay
    along = clamp(((x - ax) * dx + (y - ay) * dy) / (dx * dx + dy * dy))
    return math.hypot(x - ax - along * dx, y - ay - along * dy)


def half_circle(cx, cy, radius, start, end, steps=10):
    """Points of an arc from start to end degrees, clockwise on screen."""
    angles = [math.radians(start + (end - start) * i / steps) for i in range(steps + 1)]
    return [(cx + radius * math.cos(a), cy + radius * math.sin(a)) for a in angles]


# Letters as polylines in a cell 60 wide and 100 high, y downwards.
LETTERS = {
    "P": [[(8, 100), (8, 4), (28, 4)] + half_circle(28, 29, 25, -90, 90) + [(8, 54)]],
    "L": [[(8, 4), (8, 96), (50, 96)]],
    "E": [[(50, 4), (8, 4), (8, 96), (50, 96)], [(8, 50), (42, 50)]],
    "N": [[(8, 96), (8, 4), (50, 96), (50, 4)]],
    "A": [[(4, 96), (29, 4), (54, 96)], [(13, 64), (45, 64)]],
    "R": [[(8, 96), (8, 4), (28, 4)] + half_circle(28, 29, 25, -90, 90) + [(8, 54)], [(28, 54), (50, 96)]],
}


def word_segments(word, left, top, scale, advance):
    segments = []
    for index, letter in enumerate(word):
        x0 = left + index * advance
        for line in LETTERS[letter]:
            points = [(x0 + px * scale, top + py * scale) for px, py in line]
            segments += [a + b for a, b in zip(points, points[1:]) if a != b]
    return segments


TEXT = word_segments("PLENAR", left=206.0, top=188.0, scale=0.62, advance=54.0)
TEXT_BOX = (200.0, 180.0, 540.0, 258.0)


def text_distance(x, y):
    left, top, right, bottom = TEXT_BOX
    if not (left <= x <= right and top <= y <= bottom):
        return 100.0
    return min(segment(x, y, *s) for s in TEXT) - 3.6


def coverage(distance, softness=1.0):
    """The share of a pixel that lies inside; a softness above 1 blurs the edge over that many pixels."""
    return clamp(0.5 - distance / softness)


def mix(a, b, t):
    return tuple(p + (q - p) * t for p, q in zip(a, b))


def layers(x, y):
    """(colour, alpha) from back to front."""
    # A glow that fades out over most of the picture.
    yield (0.30, 0.45, 0.95), 0.55 * smoothstep(1.0 - math.hypot((x - 470.0) / 300.0, (y - 110.0) / 150.0))
    # The shadow of the card, then the card.
    yield (0.02, 0.02, 0.06), 0.75 * smoothstep(0.5 - rounded_box(x, y, 330.0, 236.0, 250.0, 62.0, 28.0) / 46.0)
    card = rounded_box(x, y, 320.0, 220.0, 250.0, 62.0, 28.0)
    yield mix((0.10, 0.16, 0.34), (0.16, 0.52, 0.62), (x - 70.0) / 500.0), 0.92 * coverage(card)
    yield (0.75, 0.90, 1.00), 0.85 * coverage(abs(card + 5.0) - 0.9)
    # Discs: a badge on the card, soft ones behind it, small ones in a row that get more and more transparent.
    badge = mix((1.00, 0.78, 0.25), (0.93, 0.33, 0.27), clamp((y - 170.0) / 100.0))
    yield badge, coverage(disc(x, y, 136.0, 220.0, 40.0))
    yield (1.0, 1.0, 1.0), 0.9 * coverage(ring(x, y, 136.0, 220.0, 29.0, 5.0))
    yield (0.95, 0.35, 0.55), 0.8 * coverage(disc(x, y, 108.0, 84.0, 44.0), 26.0)
    yield (0.98, 0.82, 0.30), 0.7 * coverage(disc(x, y, 170.0, 104.0, 34.0), 12.0)
    for i in range(8):
        yield (0.55, 0.95, 0.75), (1.0 - i / 8.0) * coverage(disc(x, y, 290.0 + 38.0 * i, 118.0, 11.0))
    # A hairline and a thick stroke with a fading end.
    yield (1.0, 1.0, 1.0), coverage(segment(x, y, 250.0, 64.0, 590.0, 36.0) - 0.35)
    yield (0.40, 0.85, 1.00), clamp((x - 250.0) / 320.0) * coverage(segment(x, y, 256.0, 86.0, 588.0, 70.0) - 5.0)
    # The letters, with a shadow of their own.
    yield (0.0, 0.0, 0.0), 0.5 * coverage(text_distance(x - 2.0, y - 3.0), 5.0)
    yield (1.0, 1.0, 1.0), coverage(text_distance(x, y))


def pixel(x, y):
    """One pixel as four bytes, colour not multiplied by alpha."""
    red = green = blue = alpha = 0.0
    for colour, opacity in layers(x, y):
        opacity = clamp(opacity)
        red = red * (1.0 - opacity) + colour[0] * opacity
        green = green * (1.0 - opacity) + colour[1] * opacity
        blue = blue * (1.0 - opacity) + colour[2] * opacity
        alpha = alpha * (1.0 - opacity) + opacity
    alpha8 = round(255.0 * alpha)
    if alpha8 == 0:
        return bytes(4)
    return bytes([round(255.0 * clamp(c / alpha)) for c in (red, green, blue)] + [alpha8])


def png_chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def filter_cost(candidate):
    return sum(min(value, 256 - value) for value in candidate[1])


def filtered(rows):
    """Each row with the PNG filter, out of Sub, Up and none, whose bytes have the smallest sum."""
    previous = bytes(4 * WIDTH)
    for row in rows:
        sub = bytes((v - (row[i - 4] if i >= 4 else 0)) & 255 for i, v in enumerate(row))
        up = bytes((v - p) & 255 for v, p in zip(row, previous))
        kind, data = min(((0, row), (1, sub), (2, up)), key=filter_cost)
        yield bytes([kind]) + data
        previous = row


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    out = sys.argv[1] if len(sys.argv) > 1 else os.path.join(here, "..", "examples", "pictures", "sample.png")
    rows = [b"".join(pixel(x + 0.5, y + 0.5) for x in range(WIDTH)) for y in range(HEIGHT)]
    header = struct.pack(">IIBBBBB", WIDTH, HEIGHT, 8, 6, 0, 0, 0)
    data = zlib.compress(b"".join(filtered(rows)), 9)
    with open(out, "wb") as file:
        file.write(b"\x89PNG\r\n\x1a\n")
        for kind, content in ((b"IHDR", header), (b"IDAT", data), (b"IEND", b"")):
            file.write(png_chunk(kind, content))


if __name__ == "__main__":
    main()
