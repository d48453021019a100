#!/usr/bin/env python3
"""Draws Velmora's animated pictures and writes them as looping GIF files.

    images/smile-small.gif                   160x160  smiling face, after the last morning habit
    images/waking-up-small.gif               240x160  the sun rising and waking, morning overview
    images/yawn-small.gif                    160x160  a sleepy moon yawning, night lock screen
    images/glasses-otter-250-px-v3.gif       250x250  the otters of the running-item screen
    images/cheer-250px-trans-centered.gif
    images/finger-and-sign-otter-250px.gif
    images/weight-otter-250-px-v2.gif
    images/whistle-otter-250-px.gif

Each file is named after its asset name: lower case, every run of other
characters than letters and digits turned into one "-".

Only the standard library is used. Shapes are signed-distance functions in
pixel units; a pixel's coverage is read off the distance at its centre, which
gives smooth edges at one evaluation per pixel. GIF knows only fully
transparent or fully opaque pixels, so partly covered edge pixels are mixed
with the dark outline colour every figure is drawn with: on the lock screen's
dark ground that is invisible, on a light one it reads as part of the outline.
Run from anywhere; the files land in the resources folder above this script's
folder.
"""

import math
import re
import struct
from pathlib import Path

IMAGES = Path(__file__).resolve().parent.parent / "images"

OUTLINE = (0x3A, 0x27, 0x1D)
INK = (0x2B, 0x1D, 0x16)
WHITE = (0xFF, 0xFF, 0xFF)
FUR = (0xA0, 0x6A, 0x3F)
FUR_DARK = (0x7B, 0x4E, 0x2C)
CREAM = (0xF3, 0xDC, 0xB8)
BLUSH = (0xF4, 0x9A, 0x93)
MOUTH = (0x6A, 0x26, 0x24)
TONGUE = (0xE8, 0x6F, 0x6F)
SUN = (0xFF, 0xC8, 0x3D)
SUN_RAY = (0xFF, 0xA7, 0x26)
FACE = (0xFF, 0xD1, 0x4A)
GRASS = (0x7C, 0xC5, 0x6B)
GRASS_BACK = (0x5F, 0xA8, 0x55)
GLASS_FRAME = (0x2C, 0x4A, 0x7A)
LENS = (0xCF, 0xE8, 0xF7)
POM_POM = (0xFF, 0xC8, 0x3D)
BOARD = (0xE9, 0xC0, 0x7F)
STICK = (0xB9, 0x87, 0x4C)
CHECK = (0x3F, 0xA3, 0x5B)
IRON = (0x4A, 0x55, 0x63)
STEEL = (0x9A, 0xA3, 0xAD)
SWEAT = (0x8C, 0xCF, 0xF2)
WHISTLE = (0xF5, 0xC5, 0x42)
LANYARD = (0xD9, 0x4F, 0x4F)
SOUND = (0x4F, 0xA3, 0xE0)
MOON = (0xF6, 0xE8, 0xB0)
CRATER = (0xE2, 0xCE, 0x8C)
STAR = (0xFF, 0xF1, 0xB3)
SNORE = (0xB9, 0xD3, 0xF2)
CONFETTI = [(0xE5, 0x4B, 0x4B), (0x4F, 0xA3, 0xE0), (0x3F, 0xA3, 0x5B), (0xB0, 0x6B, 0xD9), (0xFF, 0xB3, 0x1A)]

OUTLINE_WIDTH = 3.5
# Below this coverage an edge pixel is left transparent rather than darkened.
MIN_ALPHA = 0.3
FAR = 1e9


# ---------------------------------------------------------------------------
# Shapes: a distance function (negative inside) and a bounding box.

class Shape:
    __slots__ = ("dist", "box")

    def __init__(self, dist, box):
        self.dist = dist
        self.box = box


def circle(cx, cy, r):
    return Shape(lambda x, y: math.hypot(x - cx, y - cy) - r, (cx - r, cy - r, cx + r, cy + r))


def ring(cx, cy, r, width):
    half = width / 2.0
    return Shape(lambda x, y: abs(math.hypot(x - cx, y - cy) - r) - half,
                 (cx - r - half, cy - r - half, cx + r + half, cy + r + half))


def ellipse(cx, cy, rx, ry):
    def dist(x, y):
        px, py = x - cx, y - cy
        k0 = math.hypot(px / rx, py / ry)
        if k0 == 0.0:
            return -min(rx, ry)
        k1 = math.hypot(px / (rx * rx), py / (ry * ry))
        return k0 * (k0 - 1.0) / k1
    return Shape(dist, (cx - rx, cy - ry, cx + rx, cy + ry))


def rounded_box(cx, cy, hw, hh, r=0.0):
    def dist(x, y):
        qx = abs(x - cx) - hw + r
        qy = abs(y - cy) - hh + r
        return math.hypot(max(qx, 0.0), max(qy, 0.0)) + min(max(qx, qy), 0.0) - r
    return Shape(dist, (cx - hw, cy - hh, cx + hw, cy + hh))


def path(points, width):
    """A polyline with round joins and caps."""
    half = width / 2.0
    segments = []
    for (x0, y0), (x1, y1) in zip(points, points[1:] or points):
        dx, dy = x1 - x0, y1 - y0
        segments.append((x0, y0, dx, dy, dx * dx + dy * dy))

    def dist(x, y):
        best = FAR
        for x0, y0, dx, dy, length_sq in segments:
            t = 0.0 if length_sq == 0.0 else ((x - x0) * dx + (y - y0) * dy) / length_sq
            t = 0.0 if t < 0.0 else 1.0 if t > 1.0 else t
            d = math.hypot(x - x0 - t * dx, y - y0 - t * dy)
            if d < best:
                best = d
        return best - half
    xs = [p[0] for p in points]
    ys = [p[1] for p in points]
    return Shape(dist, (min(xs) - half, min(ys) - half, max(xs) + half, max(ys) + half))


def arc(cx, cy, r, start_deg, end_deg, width, steps=16):
    """A stroked circular arc; angles in degrees, clockwise on screen from three o'clock."""
    points = []
    for i in range(steps + 1):
        a = math.radians(start_deg + (end_deg - start_deg) * i / steps)
        points.append((cx + r * math.cos(a), cy + r * math.sin(a)))
    return path(points, width)


def polygon(points):
    n = len(points)

    def dist(x, y):
        d = (x - points[0][0]) ** 2 + (y - points[0][1]) ** 2
        sign = 1.0
        j = n - 1
        for i in range(n):
            vx, vy = points[i]
            ex, ey = points[j][0] - vx, points[j][1] - vy
            wx, wy = x - vx, y - vy
            t = (wx * ex + wy * ey) / (ex * ex + ey * ey)
            t = 0.0 if t < 0.0 else 1.0 if t > 1.0 else t
            bx, by = wx - ex * t, wy - ey * t
            d = min(d, bx * bx + by * by)
            c1, c2, c3 = y >= vy, y < points[j][1], ex * wy > ey * wx
            if (c1 and c2 and c3) or not (c1 or c2 or c3):
                sign = -sign
            j = i
        return sign * math.sqrt(d)
    xs = [p[0] for p in points]
    ys = [p[1] for p in points]
    return Shape(dist, (min(xs), min(ys), max(xs), max(ys)))


def star(cx, cy, r, points=4, inner=0.38, turn=0.0):
    corners = []
    for i in range(points * 2):
        a = math.radians(turn) + math.pi * i / points - math.pi / 2
        radius = r if i % 2 == 0 else r * inner
        corners.append((cx + radius * math.cos(a), cy + radius * math.sin(a)))
    return polygon(corners)


def below(y0):
    """Everything below the line y = y0."""
    return Shape(lambda x, y: y0 - y, (-FAR, y0, FAR, FAR))


def union(*shapes):
    dists = [s.dist for s in shapes]
    box = (min(s.box[0] for s in shapes), min(s.box[1] for s in shapes),
           max(s.box[2] for s in shapes), max(s.box[3] for s in shapes))
    return Shape(lambda x, y: min(d(x, y) for d in dists), box)


def intersect(a, b):
    da, db = a.dist, b.dist
    box = (max(a.box[0], b.box[0]), max(a.box[1], b.box[1]), min(a.box[2], b.box[2]), min(a.box[3], b.box[3]))
    return Shape(lambda x, y: max(da(x, y), db(x, y)), box)


def grown(shape, width):
    d = shape.dist
    x0, y0, x1, y1 = shape.box
    return Shape(lambda x, y: d(x, y) - width, (x0 - width, y0 - width, x1 + width, y1 + width))


def moved(shape, dx, dy):
    if dx == 0 and dy == 0:
        return shape
    d = shape.dist
    x0, y0, x1, y1 = shape.box
    return Shape(lambda x, y: d(x - dx, y - dy), (x0 + dx, y0 + dy, x1 + dx, y1 + dy))


def rotated(shape, cx, cy, degrees):
    """The shape turned clockwise on screen about (cx, cy)."""
    if degrees == 0:
        return shape
    a = math.radians(degrees)
    c, s = math.cos(a), math.sin(a)
    d = shape.dist

    def dist(x, y):
        px, py = x - cx, y - cy
        return d(cx + c * px + s * py, cy - s * px + c * py)
    x0, y0, x1, y1 = shape.box
    corners = [(x, y) for x in (x0, x1) for y in (y0, y1)]
    turned = [(cx + c * (x - cx) - s * (y - cy), cy + s * (x - cx) + c * (y - cy)) for x, y in corners]
    return Shape(dist, (min(p[0] for p in turned), min(p[1] for p in turned),
                        max(p[0] for p in turned), max(p[1] for p in turned)))


# A layer is (colour, opacity, shape); a figure is a list of layers.

def part(shape, colour):
    """A filled shape with the dark cartoon outline around it."""
    return [(OUTLINE, 1.0, grown(shape, OUTLINE_WIDTH)), (colour, 1.0, shape)]


def fill(shape, colour, opacity=1.0):
    return [(colour, opacity, shape)]


def transform(layers, fn):
    return [(colour, opacity, fn(shape)) for colour, opacity, shape in layers]


# ---------------------------------------------------------------------------
# Rendering

def render(width, height, layers):
    """Returns premultiplied (r, g, b, a) channel lists."""
    n = width * height
    red, green, blue, alpha = [0.0] * n, [0.0] * n, [0.0] * n, [0.0] * n
    for colour, opacity, shape in layers:
        x0, y0, x1, y1 = shape.box
        ix0, iy0 = max(0, int(math.floor(x0 - 1))), max(0, int(math.floor(y0 - 1)))
        ix1, iy1 = min(width, int(math.ceil(x1 + 1))), min(height, int(math.ceil(y1 + 1)))
        dist = shape.dist
        cr, cg, cb = colour
        for py in range(iy0, iy1):
            yc = py + 0.5
            row = py * width
            for px in range(ix0, ix1):
                d = dist(px + 0.5, yc)
                if d >= 0.5:
                    continue
                # Coverage in eighths keeps the number of edge colours small.
                cover = 1.0 if d <= -0.5 else round((0.5 - d) * 8) / 8.0
                a = cover * opacity
                if a <= 0.0:
                    continue
                i = row + px
                keep = 1.0 - a
                red[i] = cr * a + red[i] * keep
                green[i] = cg * a + green[i] * keep
                blue[i] = cb * a + blue[i] * keep
                alpha[i] = a + alpha[i] * keep
    return red, green, blue, alpha


def flatten(channels):
    """Opaque colours mixed onto the outline colour, or None for transparent pixels."""
    red, green, blue, alpha = channels
    out = []
    mr, mg, mb = OUTLINE
    for r, g, b, a in zip(red, green, blue, alpha):
        if a < MIN_ALPHA:
            out.append(None)
        else:
            keep = 1.0 - a
            out.append((round(r + mr * keep), round(g + mg * keep), round(b + mb * keep)))
    return out


def build_palette(frames):
    """Index 0 is transparent; at most 255 colours follow. Returns (palette, frames as indices)."""
    counts = {}
    for frame in frames:
        for colour in frame:
            if colour is not None:
                counts[colour] = counts.get(colour, 0) + 1
    kept = sorted(counts, key=lambda c: -counts[c])[:255]
    index = {colour: i + 1 for i, colour in enumerate(kept)}
    for colour in counts:
        if colour not in index:
            nearest = min(kept, key=lambda k: (k[0] - colour[0]) ** 2 + (k[1] - colour[1]) ** 2
                          + (k[2] - colour[2]) ** 2)
            index[colour] = index[nearest]
    palette = [OUTLINE] + kept
    return palette, [[0 if c is None else index[c] for c in frame] for frame in frames]


# ---------------------------------------------------------------------------
# GIF writing

def lzw_compress(indices, min_code_size):
    """GIF's variable-length LZW, codes packed from the least significant bit."""
    clear = 1 << min_code_size
    end = clear + 1
    out = bytearray()
    acc = 0
    nbits = 0

    code_size = min_code_size + 1
    next_code = end + 1
    table = {}
    acc |= clear << nbits
    nbits += code_size
    prefix = indices[0]
    for k in indices[1:]:
        key = (prefix << 8) | k
        code = table.get(key)
        if code is not None:
            prefix = code
            continue
        acc |= prefix << nbits
        nbits += code_size
        while nbits >= 8:
            out.append(acc & 0xFF)
            acc >>= 8
            nbits -= 8
        if next_code < 4096:
            # The decoder widens its codes as soon as its table, one entry behind
            # ours, reaches the current width.
            if next_code >= (1 << code_size):
                code_size += 1
            table[key] = next_code
            next_code += 1
        else:
            acc |= clear << nbits
            nbits += code_size
            table.clear()
            code_size = min_code_size + 1
            next_code = end + 1
        prefix = k
    acc |= prefix << nbits
    nbits += code_size
    if next_code < 4096 and next_code >= (1 << code_size):
        code_size += 1
    acc |= end << nbits
    nbits += code_size
    while nbits > 0:
        out.append(acc & 0xFF)
        acc >>= 8
        nbits -= 8
    return bytes(out)


def changed_box(base, target, width, height):
    """The bounding box (x, y, w, h) of the pixels that differ, or False when a
    pixel would have to turn from opaque to transparent (drawing cannot do that)."""
    x0, y0, x1, y1 = width, height, -1, -1
    for i, (old, new) in enumerate(zip(base, target)):
        if old != new:
            if new == 0:
                return False
            x, y = i % width, i // width
            x0, y0, x1, y1 = min(x0, x), min(y0, y), max(x1, x), max(y1, y)
    if x1 < 0:
        return (0, 0, 1, 1)
    return (x0, y0, x1 - x0 + 1, y1 - y0 + 1)


def plan_frames(frames, width, height):
    """Chooses for every frame the smallest rectangle to redraw and how the frame
    before it is disposed of. Returns [base, target, box, disposal] per frame."""
    full = (0, 0, width, height)
    blank = [0] * (width * height)
    plan = []
    shown = blank
    for target in frames:
        if not plan:
            plan.append([blank, target, full, 1])
            shown = target
            continue
        prev = plan[-1]
        box = changed_box(shown, target, width, height)
        base = shown
        if box is False:
            # Restore the previous frame's rectangle to transparent first.
            px, py, pw, ph = prev[2]
            base = list(shown)
            for y in range(py, py + ph):
                base[y * width + px:y * width + px + pw] = [0] * pw
            box = changed_box(base, target, width, height)
            if box is False:
                prev[2] = full
                base = blank
                box = changed_box(base, target, width, height)
            prev[3] = 2
        plan.append([base, target, box, 1])
        shown = target
    # The last frame is cleared entirely, so that the first one starts again on
    # an empty canvas when the animation loops.
    last = plan[-1]
    last[2] = full
    last[3] = 2
    return plan


def write_gif(path, width, height, palette, frames, delays):
    bits = max(1, (len(palette) - 1).bit_length())
    table = list(palette) + [(0, 0, 0)] * ((1 << bits) - len(palette))
    out = bytearray(b"GIF89a")
    out += struct.pack("<HHBBB", width, height, 0x80 | ((bits - 1) << 4) | (bits - 1), 0, 0)
    out += b"".join(bytes(c) for c in table)
    # Loop for ever.
    out += b"\x21\xff\x0bNETSCAPE2.0\x03\x01\x00\x00\x00"
    min_code_size = max(2, bits)
    for (base, target, (x, y, w, h), disposal), delay in zip(plan_frames(frames, width, height), delays):
        pixels = []
        for row in range(y, y + h):
            start = row * width + x
            for old, new in zip(base[start:start + w], target[start:start + w]):
                pixels.append(0 if old == new else new)
        # Index 0 is transparent: it leaves what the canvas shows.
        out += struct.pack("<BBBBHBB", 0x21, 0xF9, 4, (disposal << 2) | 1, delay, 0, 0)
        out += struct.pack("<BHHHHB", 0x2C, x, y, w, h, 0)
        out.append(min_code_size)
        data = lzw_compress(pixels, min_code_size)
        for i in range(0, len(data), 255):
            chunk = data[i:i + 255]
            out.append(len(chunk))
            out += chunk
        out.append(0)
    out.append(0x3B)
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(bytes(out))
    return len(out)


# ---------------------------------------------------------------------------
# The otter, sitting upright and facing the viewer, on a 250x250 canvas.

NECK = (125.0, 132.0)
LEFT_SHOULDER = (90.0, 140.0)
RIGHT_SHOULDER = (160.0, 140.0)
EYES = ((104.0, 86.0), (146.0, 86.0))


def eyes(style):
    layers = []
    for ex, ey in EYES:
        if style == "open":
            layers += fill(circle(ex, ey, 7.5), INK)
            layers += fill(circle(ex + 2.6, ey - 2.6, 2.6), WHITE)
        elif style == "closed":
            layers += fill(path([(ex - 8, ey), (ex - 4, ey + 3.5), (ex + 4, ey + 3.5), (ex + 8, ey)], 3.5), INK)
        elif style == "happy":
            layers += fill(path([(ex - 8, ey + 4), (ex, ey - 4), (ex + 8, ey + 4)], 3.8), INK)
    return layers


def mouth(style):
    if style == "smile":
        return fill(union(path([(115, 115), (120, 120), (125, 116.5), (130, 120), (135, 115)], 3.2),
                          path([(125, 108), (125, 116.5)], 3.2)), INK)
    if style == "open":
        shape = intersect(ellipse(125, 114, 13, 14), below(114))
        return (fill(grown(shape, 2.0), INK) + fill(shape, MOUTH)
                + fill(intersect(circle(125, 128, 7), shape), TONGUE))
    if style == "grin":
        shape = intersect(ellipse(125, 115, 12, 8), below(115))
        return (fill(grown(shape, 2.0), INK) + fill(shape, WHITE)
                + fill(path([(114, 115), (136, 115)], 2.0), INK))
    return []


def head(eye_style="open", mouth_style="smile", cheeks=7.0, extra=()):
    layers = []
    for ex in (83.0, 167.0):
        layers += part(circle(ex, 63, 10), FUR)
        layers += fill(circle(ex, 63, 5), FUR_DARK)
    layers += part(ellipse(125, 90, 50, 43), FUR)
    layers += fill(union(circle(112, 111, 19), circle(138, 111, 19)), CREAM)
    layers += fill(circle(92, 106, cheeks), BLUSH, 0.6)
    layers += fill(circle(158, 106, cheeks), BLUSH, 0.6)
    layers += eyes(eye_style)
    layers += mouth(mouth_style)
    layers += fill(ellipse(125, 103, 9, 6.5), INK)
    layers += fill(ellipse(122, 101, 3, 1.8), WHITE, 0.7)
    for sx in (-1, 1):
        for y0, y1 in ((108, 104), (114, 116)):
            layers += fill(path([(125 + sx * 26, y0), (125 + sx * 44, y1)], 1.8), OUTLINE, 0.8)
    layers += list(extra)
    return layers


def arm(points, paw=None, paw_colour=FUR_DARK):
    """An arm from the shoulder through its joints; the paw sits at the last point."""
    x, y = points[-1]
    layers = part(path(points, 15), FUR)
    if paw is None:
        paw = circle(x, y, 9)
    return layers + part(paw, paw_colour)


def otter(head_layers, arms=(), behind=(), front=(), dx=0.0, dy=0.0, tilt=0.0):
    """head_layers are turned by tilt degrees about the neck; everything moves by (dx, dy)."""
    layers = []
    layers += part(path([(158, 212), (190, 216), (213, 197)], 20), FUR_DARK)
    layers += part(ellipse(125, 170, 48, 56), FUR)
    layers += fill(ellipse(125, 178, 31, 40), CREAM)
    layers += part(ellipse(101, 226, 17, 9), FUR_DARK)
    layers += part(ellipse(149, 226, 17, 9), FUR_DARK)
    layers += list(behind)
    layers += transform(head_layers, lambda s: rotated(s, NECK[0], NECK[1], tilt))
    for a in arms:
        layers += a
    layers += list(front)
    return transform(layers, lambda s: moved(s, dx, dy))


RESTING_ARMS = (
    arm([LEFT_SHOULDER, (82, 170), (100, 188)]),
    arm([RIGHT_SHOULDER, (168, 170), (150, 188)]),
)


def wave(frame, count, phase=0.0):
    return math.sin(2 * math.pi * (frame / count + phase))


# ---------------------------------------------------------------------------
# The eight animations. Each returns (width, height, figures, delays in 1/100 s).

def glasses_otter():
    count = 10
    figures = []
    for f in range(count):
        tilt = 4.0 * wave(f, count)
        glasses = []
        for ex, ey in EYES:
            glasses += fill(circle(ex, ey, 15), LENS, 0.35)
            sweep = -24 + 12 * f  # the glint crosses the lenses in the first frames
            if f <= 4:
                glint = path([(ex + sweep - 8, ey + 12), (ex + sweep + 8, ey - 12)], 5)
                glasses += fill(intersect(glint, circle(ex, ey, 13)), WHITE, 0.85)
            glasses += fill(ring(ex, ey, 15, 4), GLASS_FRAME)
        glasses += fill(path([(119, 84), (125, 80.5), (131, 84)], 3.5), GLASS_FRAME)
        glasses += fill(path([(89, 83), (76, 79)], 3.5), GLASS_FRAME)
        glasses += fill(path([(161, 83), (174, 79)], 3.5), GLASS_FRAME)
        eye_style = "closed" if f == 7 else "open"
        figures.append(otter(head(eye_style, "smile", extra=glasses), RESTING_ARMS, tilt=tilt))
    return 250, 250, figures, [12] * count


def pom_pom(x, y, turn):
    tufts = [circle(x + 11 * math.cos(math.radians(turn + 60 * i)),
                    y + 11 * math.sin(math.radians(turn + 60 * i)), 8) for i in range(6)]
    return union(circle(x, y, 11), *tufts)


def cheer_otter():
    count = 8
    figures = []
    pieces = [(20, 10, 0), (52, 70, 1), (200, 25, 2), (228, 90, 3), (36, 140, 4),
              (214, 150, 0), (70, 5, 2), (180, 60, 1), (16, 190, 3), (236, 200, 4)]
    for f in range(count):
        hop = -10.0 * max(0.0, wave(f, count))
        arms = []
        for side, shoulder in ((-1, LEFT_SHOULDER), (1, RIGHT_SHOULDER)):
            swing = wave(f, count, 0.25 if side < 0 else 0.75)
            px = shoulder[0] + side * (38 + 6 * swing)
            py = 58 + 10 * swing
            elbow = (shoulder[0] + side * 30, shoulder[1] - 34)
            arms.append(arm([shoulder, elbow, (px, py)], paw=pom_pom(px, py, 15 * f), paw_colour=POM_POM))
        confetti = []
        for x, y, c in pieces:
            fy = (y + f * 240 / count) % 240
            spin = 45 * f + 37 * c
            confetti += fill(rotated(rounded_box(x, fy, 4, 2, 0.5), x, fy, spin), CONFETTI[c])
        figures.append(otter(head("happy", "open"), arms, dy=hop) + confetti)
    return 250, 250, figures, [10] * count


def finger_and_sign_otter():
    count = 8
    figures = []
    for f in range(count):
        bob = 3.0 * wave(f, count)
        sign = []
        sign += part(path([(52, 92 + bob), (52, 178 + bob)], 8), STICK)
        sign += part(rounded_box(52, 62 + bob, 42, 28, 6), BOARD)
        sign += fill(path([(34, 63 + bob), (47, 76 + bob), (71, 48 + bob)], 8), CHECK)
        left = arm([(108, 140), (82, 168), (54, 158 + bob)])
        wag = 12.0 * wave(f, count)
        elbow = (198.0, 128.0)
        raised = part(path([(178, 140), elbow, (204, 92)], 15), FUR)
        raised += part(path([(204, 92), (206, 70)], 7), FUR_DARK)
        raised += part(circle(204, 92, 9), FUR_DARK)
        raised = transform(raised, lambda s: rotated(s, elbow[0], elbow[1], wag))
        eye_style = "closed" if f == 5 else "open"
        body = otter(head(eye_style, "smile"), dx=18)
        figures.append(body + sign + left + raised)
    return 250, 250, figures, [11] * count


def dumbbell(x, y):
    return (part(path([(x - 15, y), (x + 15, y)], 6), STEEL)
            + part(rounded_box(x - 15, y, 5, 12, 2), IRON)
            + part(rounded_box(x + 15, y, 5, 12, 2), IRON))


def weight_otter():
    count = 8
    figures = []
    for f in range(count):
        arms = []
        for side, shoulder, phase in ((-1, LEFT_SHOULDER, 0.0), (1, RIGHT_SHOULDER, 0.5)):
            lift = (1 - math.cos(2 * math.pi * (f / count + phase))) / 2  # 0 down, 1 up
            px = 125 + side * (63 - 2 * lift)
            py = 118 - 80 * lift
            elbow = (125 + side * (72 - 4 * lift), 150 - 60 * lift)
            arms.append(dumbbell(px, py) + arm([shoulder, elbow, (px, py)]))
        sweat = []
        if 2 <= f <= 5:
            drop_y = 52 + 6 * (f - 2)
            sweat = part(union(circle(180, drop_y + 4, 5), polygon([(180, drop_y - 8), (175.5, drop_y + 2),
                                                                    (184.5, drop_y + 2)])), SWEAT)
        figures.append(otter(head("open", "grin"), arms, front=sweat))
    return 250, 250, figures, [11] * count


def whistle_otter():
    count = 8
    figures = []
    # Frames 1..5 blow, 6, 7 and 0 breathe in.
    waves = {1: (1,), 2: (1, 2), 3: (1, 2, 3), 4: (2, 3), 5: (3,)}
    for f in range(count):
        blowing = f in waves
        lanyard = fill(path([(98, 128), (125, 152), (152, 128)], 3), LANYARD)
        whistle = []
        whistle += fill(path([(125, 152), (132, 126)], 2.5), LANYARD)
        whistle += part(rounded_box(130, 120, 7, 4, 1.5), WHISTLE)
        whistle += part(rounded_box(149, 121, 14, 9, 6), WHISTLE)
        whistle += fill(circle(152, 121, 3.5), OUTLINE)
        sounds = []
        for k in waves.get(f, ()):
            sounds += fill(arc(166, 121, 10 + 11 * k, -40, 40, 4), SOUND)
        raised = arm([RIGHT_SHOULDER, (178, 165), (160, 132)])
        puff = 9.5 if blowing else 7.0
        eye_style = "happy" if blowing else "open"
        figures.append(otter(head(eye_style, "none", cheeks=puff, extra=whistle),
                             (RESTING_ARMS[0], raised), behind=lanyard, front=sounds))
    return 250, 250, figures, [12] * count


def smile_small():
    count = 8
    figures = []
    sparkles = [(22, 26, 0.0), (140, 32, 0.33), (136, 138, 0.66), (18, 128, 0.5)]
    for f in range(count):
        dy = -5.0 * max(0.0, wave(f, count))
        layers = part(circle(80, 84, 56), FACE)
        layers += fill(circle(50, 100, 9), BLUSH, 0.6)
        layers += fill(circle(110, 100, 9), BLUSH, 0.6)
        for ex in (60.0, 100.0):
            if f == 6:
                layers += fill(path([(ex - 8, 72), (ex, 76), (ex + 8, 72)], 4), INK)
            else:
                layers += fill(ellipse(ex, 72, 6.5, 9), INK)
                layers += fill(circle(ex + 2.2, 68, 2.4), WHITE)
        smile = intersect(ellipse(80, 96, 26, 22), below(96))
        layers += fill(grown(smile, 2.0), INK) + fill(smile, MOUTH)
        layers += fill(intersect(ellipse(80, 116, 14, 8), smile), TONGUE)
        layers = transform(layers, lambda s: moved(s, 0, dy))
        for x, y, phase in sparkles:
            size = 9.0 * (0.5 + 0.5 * wave(f, count, phase))
            if size > 1.5:
                layers += part(star(x, y, size), SUN)
        figures.append(layers)
    return 160, 160, figures, [11] * count


def waking_up_small():
    count = 10
    figures = []
    delays = [15] * (count - 1) + [150]
    for f in range(count):
        rise = min(1.0, f / 6.0)
        ease = 0.5 - 0.5 * math.cos(math.pi * rise)
        cx, cy = 120.0, 132.0 - 70.0 * ease
        layers = []
        for i in range(10):
            length = 18.0 * ease
            if length < 2:
                continue
            a = math.radians(36 * i + 8 * f)
            r0 = 42.0
            layers += part(path([(cx + r0 * math.cos(a), cy + r0 * math.sin(a)),
                                 (cx + (r0 + length) * math.cos(a), cy + (r0 + length) * math.sin(a))], 6),
                           SUN_RAY)
        layers += part(circle(cx, cy, 34), SUN)
        layers += fill(circle(cx - 20, cy + 8, 6), BLUSH, 0.6)
        layers += fill(circle(cx + 20, cy + 8, 6), BLUSH, 0.6)
        for ex in (cx - 12, cx + 12):
            if f < 5:
                layers += fill(path([(ex - 6, cy - 3), (ex, cy + 1), (ex + 6, cy - 3)], 3), INK)
            else:
                layers += fill(circle(ex, cy - 3, 4.5), INK)
                layers += fill(circle(ex + 1.6, cy - 4.8, 1.5), WHITE)
        if 3 <= f <= 5:
            layers += fill(grown(ellipse(cx, cy + 14, 5, 6), 1.5), INK) + fill(ellipse(cx, cy + 14, 5, 6), MOUTH)
        elif f > 5:
            layers += fill(arc(cx, cy + 6, 10, 20, 160, 3), INK)
        layers += part(ellipse(40, 176, 110, 50), GRASS_BACK)
        layers += part(ellipse(170, 184, 130, 54), GRASS)
        if f == count - 1:
            for x, y in ((44, 34), (200, 44)):
                layers += part(star(x, y, 8), SUN)
        figures.append(layers)
    return 240, 160, figures, delays


def yawn_small():
    count = 10
    figures = []
    # How far the mouth is open in each frame: a slow yawn, then a quiet doze.
    opening = [0.0, 0.2, 0.55, 0.9, 1.0, 0.85, 0.5, 0.2, 0.0, 0.0]
    stars = [(20, 24, 0.0), (148, 88, 0.4), (146, 140, 0.7), (14, 140, 0.2)]
    for f in range(count):
        o = opening[f]
        layers = part(circle(80, 86, 52), MOON)
        layers += fill(circle(56, 54, 7), CRATER)
        layers += fill(circle(111, 64, 4.5), CRATER)
        layers += fill(circle(110, 122, 5.5), CRATER)
        layers += fill(circle(48, 100, 8), BLUSH, 0.5)
        layers += fill(circle(112, 100, 8), BLUSH, 0.5)
        for side, ex in ((-1, 62.0), (1, 98.0)):
            ey = 84.0
            if o >= 0.5:
                # Squeezed shut at the height of the yawn.
                tip = ex - side * 5
                lid = [(ex + side * 6, ey - 4), (tip, ey), (ex + side * 6, ey + 4)]
            else:
                lid = [(ex - 8, ey), (ex - 4, ey + 3.5), (ex + 4, ey + 3.5), (ex + 8, ey)]
            layers += fill(path(lid, 3.2), INK)
        if o < 0.1:
            layers += fill(arc(80, 100, 8, 35, 145, 3), INK)
        else:
            mouth_shape = ellipse(80, 110, 6 + 4 * o, 3 + 12 * o)
            layers += fill(grown(mouth_shape, 2.0), INK) + fill(mouth_shape, MOUTH)
            if o > 0.4:
                layers += fill(intersect(circle(80, 110 + 12 * o, 6), mouth_shape), TONGUE)
        layers = transform(layers, lambda s: moved(rotated(s, 80, 140, -5.0 * o), 0, -3.0 * o))
        # Two z's drift up once the yawn is over.
        for k in range(2):
            rise = f - 5 - 2 * k
            if rise < 0:
                continue
            size = 4.5 + 1.5 * rise - 1.5 * k
            zx, zy = 124 + 5 * rise, 60 - 9 * rise + 8 * k
            layers += part(path([(zx - size, zy - size), (zx + size, zy - size),
                                 (zx - size, zy + size), (zx + size, zy + size)], 3), SNORE)
        for x, y, phase in stars:
            size = 7.0 * (0.5 + 0.5 * wave(f, count, phase))
            if size > 1.5:
                layers += part(star(x, y, size), STAR)
        figures.append(layers)
    return 160, 160, figures, [14] * (count - 1) + [60]


ANIMATIONS = {
    "Smile _Small": smile_small,
    "Waking up _ SMall": waking_up_small,
    "Glasses-Otter-250-px_V3": glasses_otter,
    "cheer_250px_trans_centered": cheer_otter,
    "Finger-and-Sign-Otter-250px": finger_and_sign_otter,
    "Weight-otter-250-px_V2": weight_otter,
    "Whistle-otter-250-px": whistle_otter,
    "Yawn_small": yawn_small,
}


def file_name(asset):
    return re.sub(r"[^a-z0-9]+", "-", asset.lower()).strip("-") + ".gif"


def main():
    for asset, draw in ANIMATIONS.items():
        width, height, figures, delays = draw()
        frames = [flatten(render(width, height, figure)) for figure in figures]
        palette, indexed = build_palette(frames)
        path = IMAGES / file_name(asset)
        size = write_gif(path, width, height, palette, indexed, delays)
        print(f"wrote {path} ({width}x{height}, {len(frames)} frames, {len(palette)} colours, {size} bytes)")


if __name__ == "__main__":
    main()
