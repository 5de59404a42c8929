#!/usr/bin/env python3
"""Draws AppIcon.icns: a page that comes up out of a window. Run it after a change of the drawing.

An .icns file is a list of PNG files, each behind four letters for its size and its length.
"""
import pathlib
import struct
import zlib

SIZES = {b"ic11": 32, b"ic12": 64, b"ic07": 128, b"ic08": 256, b"ic09": 512, b"ic10": 1024}

GROUND = (28, 92, 168)
WINDOW = (148, 190, 236)
PAGE = (255, 255, 255)
LINE = (28, 92, 168)

# Left, top, right, bottom and radius of the corners, in 1024ths; later ones lie on top.
SHAPES = [
    (GROUND, (100, 100, 924, 924, 185)),
    (WINDOW, (230, 470, 794, 800, 40)),
    (PAGE, (330, 220, 694, 690, 36)),
    (LINE, (400, 320, 624, 352, 16)),
    (LINE, (400, 420, 624, 452, 16)),
    (LINE, (400, 520, 540, 552, 16)),
]


def coverage(x, y, shape, pixel):
    """How much of the pixel around a point lies in a rounded rectangle."""
    left, top, right, bottom, radius = shape
    dx = abs(x - (left + right) / 2) - (right - left) / 2 + radius
    dy = abs(y - (top + bottom) / 2) - (bottom - top) / 2 + radius
    outside = (max(dx, 0) ** 2 + max(dy, 0) ** 2) ** 0.5
    distance = outside + min(max(dx, dy), 0) - radius
    return min(max(0.5 - distance / pixel, 0), 1)


def row(y, size):
    pixel = 1024 / size
    cells = bytearray()
    for i in range(size):
        colour, alpha = (0, 0, 0), 0.0
        for shade, shape in SHAPES:
            part = coverage((i + 0.5) * pixel, (y + 0.5) * pixel, shape, pixel)
            if part > 0:
                base = colour if alpha else shade
                colour = tuple(b + (s - b) * part for b, s in zip(base, shade))
                alpha += (1 - alpha) * part
        cells += bytes(round(c) for c in colour) + bytes([round(alpha * 255)])
    return bytes(cells)


def chunk(name, content):
    return (struct.pack(">I", len(content)) + name + content
            + struct.pack(">I", zlib.crc32(name + content)))


def png(size):
    header = struct.pack(">IIBBBBB", size, size, 8, 6, 0, 0, 0)
    pixels = b"".join(b"\0" + row(y, size) for y in range(size))
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header)
            + chunk(b"IDAT", zlib.compress(pixels, 9)) + chunk(b"IEND", b""))


def main():
    parts = b""
    for name, size in SIZES.items():
        image = png(size)
        parts += name + struct.pack(">I", len(image) + 8) + image
    path = pathlib.Path(__file__).with_name("AppIcon.icns")
    path.write_bytes(b"icns" + struct.pack(">I", len(parts) + 8) + parts)


if __name__ == "__main__":
    main()
