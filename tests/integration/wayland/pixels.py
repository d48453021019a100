#!/usr/bin/python3
"""Judges a screenshot (binary PPM on stdin, as `grim -t ppm` writes it) by its colours.

  pixels.py [--lock MIN] [--absent HEX...] [--present HEX...]
Exit 0 when at least MIN of the pixels have the lock's background, no pixel has an --absent
colour and at least 5000 pixels have each --present colour; prints what it counted.
"""
import collections
import sys

LOCK = "1e242b"
data = sys.stdin.buffer.read()
magic, width, height, maximum, pixels = data.split(maxsplit=4)[:4] + [None]
# One whitespace byte ends the header; the pixels may start with any byte.
pixels = data[data.index(maximum, len(magic) + len(width) + len(height)) + len(maximum) + 1:]
count = collections.Counter(pixels[i:i + 3].hex() for i in range(0, int(width) * int(height) * 3, 3))
lock_min, absent, present, mode = 0.0, [], [], None
for arg in sys.argv[1:]:
    if arg.startswith("--"):
        mode = arg
    elif mode == "--lock":
        lock_min = float(arg)
    else:
        (absent if mode == "--absent" else present).append(arg.lower())
share = count[LOCK] / (int(width) * int(height))
seen = [c for c in absent if count[c]]
missing = [c for c in present if count[c] < 5000]
print(f"{width.decode()}x{height.decode()} lock {share:.2f}, desktop colours seen {seen}, missing {missing}")
sys.exit(0 if share >= lock_min and not seen and not missing else 1)
