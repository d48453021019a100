#!/usr/bin/env python3
"""Synthesises Velmora's event sounds and writes them as WAV files.

    sounds/afterMorningRoutine.wav   a rising three-note chime, the morning routine is done
    sounds/everyActivity.wav         a soft double ding, one habit or activity is done

16-bit mono PCM at 44.1 kHz. Every note is a small bell: a few harmonic
partials, each dying away exponentially, the higher ones sooner, after an
attack of a few milliseconds that keeps the start free of clicks. Only the
standard library is used; the output is the same on every run. Run from
anywhere; the files land in the resources folder above this script's folder.
"""

import math
import struct
import wave
from pathlib import Path

SOUNDS = Path(__file__).resolve().parent.parent / "sounds"

RATE = 44100
ATTACK = 0.004
FADE_OUT = 0.15

# (frequency ratio, amplitude, decay time in seconds) of a bell-like note.
PARTIALS = [(1.0, 1.0, 0.50), (2.0, 0.40, 0.28), (3.0, 0.16, 0.16), (4.2, 0.06, 0.09)]

C5, E5, G5, C6 = 523.25, 659.26, 783.99, 1046.50


def chime(notes, duration, peak):
    """notes: (start in seconds, frequency, loudness). Returns samples in [-peak, peak]."""
    count = int(duration * RATE)
    mix = [0.0] * count
    for start, frequency, loudness in notes:
        first = int(start * RATE)
        for ratio, amplitude, decay in PARTIALS:
            step = 2.0 * math.pi * frequency * ratio / RATE
            for i in range(count - first):
                t = i / RATE
                envelope = math.exp(-t / decay) * min(1.0, t / ATTACK)
                mix[first + i] += loudness * amplitude * envelope * math.sin(step * i)
    # Silence at the very end, whatever the notes still ring.
    fade = int(FADE_OUT * RATE)
    for i in range(fade):
        mix[count - fade + i] *= 1.0 - (i + 1) / fade
    scale = peak / max(abs(s) for s in mix)
    return [s * scale for s in mix]


def write_wav(path, samples):
    path.parent.mkdir(parents=True, exist_ok=True)
    data = struct.pack(f"<{len(samples)}h", *(round(s * 32767) for s in samples))
    with wave.open(str(path), "wb") as out:
        out.setnchannels(1)
        out.setsampwidth(2)
        out.setframerate(RATE)
        out.writeframes(data)


def main():
    sounds = {
        "afterMorningRoutine.wav": chime([(0.0, C5, 0.8), (0.16, E5, 0.85), (0.32, G5, 1.0)], 1.3, 0.55),
        "everyActivity.wav": chime([(0.0, G5, 0.7), (0.12, C6, 1.0)], 0.8, 0.4),
    }
    for name, samples in sounds.items():
        path = SOUNDS / name
        write_wav(path, samples)
        print(f"wrote {path} ({len(samples) / RATE:.2f} s)")


if __name__ == "__main__":
    main()
