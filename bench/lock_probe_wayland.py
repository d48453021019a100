#!/usr/bin/python3
"""One timed start of the program under a Wayland compositor with the layer shell, for
bench_lock_wayland.sh.

  lock_probe_wayland.py --program P --at "YYYY-MM-DD HH:MM:SS" --log DEBUG_LOG --outputs N

Starts P with its clock at the given local time (libfaketime; the monotonic clock stays real)
and the Wayland client library's protocol trace on (WAYLAND_DEBUG=client), and stamps:
  decision  the debug log gains the line "Initiating morning habits." (polled every 1 ms)
  covered   N layer surfaces have each committed their first buffer: the lock is drawn on
            every output as far as the program can tell (the compositor shows it at its
            next frame)
and prints "decision_to_covered_ms=...". The trace itself slows the program a little, so the
figure is an upper bound. Exit 1 when something did not happen in time.
"""

import argparse
import os
import re
import subprocess
import sys
import threading
import time
from datetime import datetime

GATE_LINE = b"Initiating morning habits."
DEADLINE_S = 30

parser = argparse.ArgumentParser()
parser.add_argument("--program", required=True)
parser.add_argument("--at", required=True)
parser.add_argument("--log", required=True)
parser.add_argument("--outputs", type=int, default=2)
args = parser.parse_args()

offset = int(datetime.strptime(args.at, "%Y-%m-%d %H:%M:%S").timestamp() - time.time())
env = dict(os.environ, WAYLAND_DEBUG="client", FAKETIME="%+d" % offset, FAKETIME_DONT_FAKE_MONOTONIC="1",
           LD_PRELOAD="/usr/lib/x86_64-linux-gnu/faketime/libfaketimeMT.so.1")
program = subprocess.Popen([args.program], env=env, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)

covered_at = None
layer_surfaces, attached, drawn = set(), set(), set()
create = re.compile(rb"get_layer_surface\(new id zwlr_layer_surface_v1@\d+, wl_surface@(\d+),")
attach = re.compile(rb"-> wl_surface@(\d+)\.attach\(wl_buffer@")
commit = re.compile(rb"-> wl_surface@(\d+)\.commit\(\)")


def read_trace():
    global covered_at
    for line in program.stderr:
        if covered_at is not None:
            continue
        for pattern, action in ((create, layer_surfaces.add), (attach, attached.add)):
            m = pattern.search(line)
            if m:
                action(m.group(1))
        m = commit.search(line)
        if m and m.group(1) in layer_surfaces and m.group(1) in attached:
            drawn.add(m.group(1))
            if len(drawn) >= args.outputs:
                covered_at = time.monotonic()


threading.Thread(target=read_trace, daemon=True).start()
decision_at = None
deadline = time.monotonic() + DEADLINE_S
try:
    while time.monotonic() < deadline and (decision_at is None or covered_at is None):
        if decision_at is None:
            try:
                with open(args.log, "rb") as f:
                    if GATE_LINE in f.read():
                        decision_at = time.monotonic()
            except FileNotFoundError:
                pass
        time.sleep(0.001)
finally:
    program.terminate()
    program.wait(10)
if decision_at is None or covered_at is None:
    print("decision %s, covered %s" % (decision_at, covered_at), file=sys.stderr)
    sys.exit(1)
print("decision_to_covered_ms=%.1f" % max(0.0, (covered_at - decision_at) * 1000.0))
