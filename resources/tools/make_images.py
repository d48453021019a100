#!/usr/bin/env python3
"""Draws Velmora's clock-face images and writes them as PNG files.

    logo.png                 256x256, white hands and ticks on a dark slate disc
    images/icon-130.png      the same clock at 130x130, for the welcome screen
    images/clock22.png       22x22 black glyph on transparent ground, for the tray
    images/clock22@2x.png    the same glyph at 44x44

With --icons FOLDER it writes the desktop icon into a hicolor theme tree
instead: FOLDER/scalable/apps/velmora.svg (the same shapes as vector paths) and
FOLDER/<n>x<n>/apps/velmora.png for the usual sizes. The build runs this.

Only the standard library is used. Every shape is a signed-distance test, and
each pixel is sampled on a grid of sub-pixels, which gives smooth edges at any
size. Run from anywhere; the files land in the resources folder above this
script's folder.
"""

import math
import struct
import sys
import zlib
from pathlib import Path

RESOURCES = Path(__file__).resolve().parent.parent

SLATE = (0x2F, 0x3E, 0x4C)
WHITE = (0xFF, 0xFF, 0xFF)
BLACK = (0x00, 0x00, 0x00)

# Hands at ten past ten, measured clockwise from twelve o'clock.
HOUR_ANGLE = math.radians(305.0)
MINUTE_ANGLE = math.radians(60.0)


def disc(cx, cy, r):
    def inside(x, y):
        return math.hypot(x - cx, y - cy) <= r
    return inside


def ring(cx, cy, r_outer, width):
    def inside(x, y):
        d = math.hypot(x - cx, y - cy)
        return r_outer - width <= d <= r_outer
    return inside


def stroke(x0, y0, x1, y1, width):
    """A line segment with round caps."""
    dx, dy = x1 - x0, y1 - y0
    length_sq = dx * dx + dy * dy
    half = width / 2.0

    def inside(x, y):
        t = 0.0 if length_sq == 0 else ((x - x0) * dx + (y - y0) * dy) / length_sq
        t = max(0.0, min(1.0, t))
        return math.hypot(x - (x0 + t * dx), y - (y0 + t * dy)) <= half
    return inside


def hand(cx, cy, angle, length, width):
    return stroke(cx, cy, cx + length * math.sin(angle), cy - length * math.cos(angle), width)


def render(size, layers, samples):
    """layers: list of (colour, opacity, shape). Returns RGBA rows."""
    step = 1.0 / samples
    offsets = [(i + 0.5) * step for i in range(samples)]
    total = samples * samples
    rows = []
    for py in range(size):
        row = bytearray()
        for px in range(size):
            r = g = b = a = 0.0
            for colour, opacity, shape in layers:
                hits = 0
                for oy in offsets:
                    for ox in offsets:
                        if shape(px + ox, py + oy):
                            hits += 1
                if hits == 0:
                    continue
                src_a = opacity * hits / total
                # Porter-Duff "over" on premultiplied components.
                r = colour[0] * src_a + r * (1.0 - src_a)
                g = colour[1] * src_a + g * (1.0 - src_a)
                b = colour[2] * src_a + b * (1.0 - src_a)
                a = src_a + a * (1.0 - src_a)
            if a > 0.0:
                row += bytes((round(r / a), round(g / a), round(b / a), round(a * 255)))
            else:
                row += b"\x00\x00\x00\x00"
        rows.append(bytes(row))
    return rows


def write_png(path, size, rows):
    def chunk(kind, data):
        body = kind + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body) & 0xFFFFFFFF)

    # Colour type 6 (RGBA), 8 bits per channel; each scan line has filter type 0.
    header = struct.pack(">IIBBBBB", size, size, 8, 6, 0, 0, 0)
    raw = b"".join(b"\x00" + row for row in rows)
    png = (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header)
           + chunk(b"IDAT", zlib.compress(raw, 9)) + chunk(b"IEND", b""))
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(png)


def logo_shapes(size):
    """The logo as (colour, opacity, kind, geometry): kind "disc" is (cx, cy, r),
    "stroke" is (x0, y0, x1, y1, width) with round caps."""
    c = size / 2.0
    radius = size * 0.47
    shapes = [(SLATE, 1.0, "disc", (c, c, radius))]
    for hour in range(12):
        angle = math.radians(hour * 30.0)
        major = hour % 3 == 0
        inner = radius * (0.74 if major else 0.80)
        outer = radius * 0.88
        width = size * (0.035 if major else 0.022)
        shapes.append((WHITE, 0.9, "stroke", (c + inner * math.sin(angle), c - inner * math.cos(angle),
                                              c + outer * math.sin(angle), c - outer * math.cos(angle),
                                              width)))
    for angle, length, width in ((HOUR_ANGLE, 0.48, 0.055), (MINUTE_ANGLE, 0.68, 0.04)):
        shapes.append((WHITE, 1.0, "stroke", (c, c, c + radius * length * math.sin(angle),
                                              c - radius * length * math.cos(angle), size * width)))
    shapes.append((WHITE, 1.0, "disc", (c, c, size * 0.045)))
    shapes.append((SLATE, 1.0, "disc", (c, c, size * 0.018)))
    return shapes


def logo(size):
    layers = [(colour, opacity, disc(*geometry) if kind == "disc" else stroke(*geometry))
              for colour, opacity, kind, geometry in logo_shapes(size)]
    return render(size, layers, samples=4)


def logo_svg(size):
    def hex_colour(colour):
        return "#%02x%02x%02x" % colour

    lines = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{size}" height="{size}" '
             f'viewBox="0 0 {size} {size}">']
    for colour, opacity, kind, g in logo_shapes(size):
        paint = f'opacity="{opacity:g}"' if opacity < 1.0 else ""
        if kind == "disc":
            lines.append(f'  <circle cx="{g[0]:.3f}" cy="{g[1]:.3f}" r="{g[2]:.3f}" '
                         f'fill="{hex_colour(colour)}" {paint}/>')
        else:
            lines.append(f'  <line x1="{g[0]:.3f}" y1="{g[1]:.3f}" x2="{g[2]:.3f}" y2="{g[3]:.3f}" '
                         f'stroke="{hex_colour(colour)}" stroke-width="{g[4]:.3f}" '
                         f'stroke-linecap="round" {paint}/>')
    lines.append("</svg>")
    return "\n".join(lines) + "\n"


def write_icons(folder):
    svg = folder / "scalable" / "apps" / "velmora.svg"
    svg.parent.mkdir(parents=True, exist_ok=True)
    svg.write_text(logo_svg(256))
    for size in (16, 22, 24, 32, 48, 64, 128, 256):
        write_png(folder / f"{size}x{size}" / "apps" / "velmora.png", size, logo(size))


def tray_glyph(size):
    # Drawn on a 22-unit grid and scaled, so both sizes are the same picture.
    u = size / 22.0
    c = size / 2.0
    layers = [
        (BLACK, 1.0, ring(c, c, 10.0 * u, 1.8 * u)),
        (BLACK, 1.0, hand(c, c, HOUR_ANGLE, 4.6 * u, 1.9 * u)),
        (BLACK, 1.0, hand(c, c, MINUTE_ANGLE, 6.4 * u, 1.5 * u)),
        (BLACK, 1.0, disc(c, c, 1.4 * u)),
    ]
    return render(size, layers, samples=8)


def main():
    if len(sys.argv) == 3 and sys.argv[1] == "--icons":
        write_icons(Path(sys.argv[2]))
        return
    outputs = [
        (RESOURCES / "logo.png", 256, logo),
        (RESOURCES / "images" / "icon-130.png", 130, logo),
        (RESOURCES / "images" / "clock22.png", 22, tray_glyph),
        (RESOURCES / "images" / "clock22@2x.png", 44, tray_glyph),
    ]
    for path, size, draw in outputs:
        write_png(path, size, draw(size))
        print(f"wrote {path} ({size}x{size})")


if __name__ == "__main__":
    main()
