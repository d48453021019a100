#!/usr/bin/python3
"""One timed start of the program for bench_lock.sh (Debian's /usr/bin/python3 with
python3-xlib, and python3-pyatspi for --title).

  lock_probe.py --program P --at "YYYY-MM-DD HH:MM:SS" --log DEBUG_LOG [--output FILE]
                [--title TEXT]

Starts P with its clock at the given local time (libfaketime; the monotonic clock stays
real), then watches, polling every 5 ms (1 ms for the log):
  decision  the debug log gains the line "Initiating morning habits."
  mapped    both "Velmora lock" and "Velmora blank" are viewable top-level windows
  title     (with --title) a showing label on AT-SPI reads TEXT
and prints "start_to_decision_ms=... start_to_mapped_ms=... decision_to_mapped_ms=..." and,
with --title, "decision_to_title_ms=... title_walk_ms=..." (one AT-SPI walk of the tree,
the resolution of that figure). The program's output goes to FILE.
The program is ended before returning. Exit 1 when something did not happen in time.
"""

import argparse
import glob
import os
import signal
import subprocess
import sys
import time
from datetime import datetime

from Xlib import X, display, error

GATE_LINE = b"Initiating morning habits."
DEADLINE_S = 30


def ms(a, b):
    return "%.1f" % ((b - a) * 1000.0)


class Windows:
    def __init__(self):
        self.d = display.Display()
        self.root = self.d.screen().root
        self.client_list = self.d.intern_atom("_NET_CLIENT_LIST")
        self.net_wm_name = self.d.intern_atom("_NET_WM_NAME")
        self.utf8 = self.d.intern_atom("UTF8_STRING")

    def title(self, win):
        prop = win.get_full_property(self.net_wm_name, self.utf8)
        if prop is not None:
            return prop.value.decode("utf-8", "replace")
        name = win.get_wm_name()
        return name if isinstance(name, str) else None

    def viewable_titles(self):
        prop = self.root.get_full_property(self.client_list, X.AnyPropertyType)
        titles = set()
        for wid in (prop.value if prop is not None else []):
            win = self.d.create_resource_object("window", wid)
            try:
                if win.get_attributes().map_state == X.IsViewable:
                    titles.add(self.title(win))
            except error.XError:
                continue
        return titles

    def lock_up(self):
        return {"Velmora lock", "Velmora blank"} <= self.viewable_titles()


def log_has_gate(path, state):
    try:
        with open(path, "rb") as f:
            f.seek(state["offset"])
            chunk = f.read()
    except FileNotFoundError:
        return False
    state["offset"] += len(chunk)
    seen = state["tail"] + chunk
    state["tail"] = seen[-len(GATE_LINE):]
    return GATE_LINE in seen


def title_showing(pid, text):
    import pyatspi

    desktop = pyatspi.Registry.getDesktop(0)
    stack = []
    for i in range(desktop.childCount):
        app = desktop.getChildAtIndex(i)
        try:
            if app is not None and app.get_process_id() == pid:
                stack.append(app)
        except Exception:
            continue
    while stack:
        node = stack.pop()
        for i in range(node.childCount):
            try:
                child = node.getChildAtIndex(i)
                if child is None or not child.getState().contains(pyatspi.STATE_SHOWING):
                    continue
                if child.getRole() == pyatspi.ROLE_LABEL and child.name == text:
                    return True
            except Exception:
                continue
            stack.append(child)
    return False


def faked_env(at):
    libs = glob.glob("/usr/lib/*/faketime/libfaketimeMT.so.1")
    if not libs:
        sys.exit("lock_probe: libfaketime is not installed (package faketime)")
    offset = int(datetime.strptime(at, "%Y-%m-%d %H:%M:%S").timestamp() - time.time())
    env = dict(os.environ)
    env.update(LD_PRELOAD=libs[0], FAKETIME="%+d" % offset, FAKETIME_DONT_FAKE_MONOTONIC="1")
    return env


def wait_for(what, condition, interval, child):
    deadline = time.monotonic() + DEADLINE_S
    while not condition():
        if child.poll() is not None:
            sys.exit("lock_probe: the program exited (status %s) before: %s" % (child.returncode, what))
        if time.monotonic() > deadline:
            sys.exit("lock_probe: after %d s still not: %s" % (DEADLINE_S, what))
        time.sleep(interval)
    return time.monotonic()


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--program", required=True)
    parser.add_argument("--at", required=True)
    parser.add_argument("--log", required=True)
    parser.add_argument("--output", default=os.devnull)
    parser.add_argument("--title")
    args = parser.parse_args()

    windows = Windows()
    if windows.lock_up():
        sys.exit("lock_probe: lock windows are up before the program starts")
    env = faked_env(args.at)
    log_state = {"offset": 0, "tail": b""}
    with open(args.output, "ab") as out:
        started = time.monotonic()
        child = subprocess.Popen([args.program], env=env, stdout=out, stderr=subprocess.STDOUT)
    try:
        decided = wait_for("the gate's line in the debug log", lambda: log_has_gate(args.log, log_state),
                           0.001, child)
        mapped = wait_for("both lock windows viewable", windows.lock_up, 0.005, child)
        result = "start_to_decision_ms=%s start_to_mapped_ms=%s decision_to_mapped_ms=%s" % (
            ms(started, decided), ms(started, mapped), ms(decided, mapped))
        if args.title:
            shown = wait_for("the overview title on AT-SPI", lambda: title_showing(child.pid, args.title),
                             0.005, child)
            walk = time.monotonic()
            title_showing(child.pid, args.title)
            # how coarse the title figure is: one walk of the widget tree
            result += " decision_to_title_ms=%s title_walk_ms=%s" % (ms(decided, shown), ms(walk, time.monotonic()))
        print(result, flush=True)
    finally:
        child.send_signal(signal.SIGTERM)
        try:
            child.wait(10)
        except subprocess.TimeoutExpired:
            child.kill()
            child.wait()
        # the lock windows must be gone before the next run measures
        deadline = time.monotonic() + 10
        while windows.lock_up() and time.monotonic() < deadline:
            time.sleep(0.05)
    return 0


if __name__ == "__main__":
    sys.exit(main())
