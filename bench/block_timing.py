#!/usr/bin/python3
"""Times the blockers from outside the program, on the real desktop.

  block_timing.py iconify WINDOW TRIALS
      asks the window manager to activate WINDOW (as a pager or a click would), then
      waits for its WM_STATE to turn Iconic; TRIALS times, from the request.
  block_timing.py redirect DEVTOOLS-PORT URL PREFIX TRIALS
      opens URL in a new Chromium tab through DevTools and polls the tab every 2 ms
      until its address starts with PREFIX; TRIALS times, from the request.

Prints "median=… worst=… trials=…" in milliseconds."""
import json
import statistics
import sys
import time
import urllib.parse
import urllib.request


def report(name, times):
    print("%s: median=%.1f ms worst=%.1f ms trials=%d" % (name, statistics.median(times), max(times), len(times)))


def iconify(window_id, trials):
    from Xlib import X, display, protocol

    d = display.Display()
    root = d.screen().root
    window = d.create_resource_object("window", window_id)
    window.change_attributes(event_mask=X.PropertyChangeMask)
    active = d.intern_atom("_NET_ACTIVE_WINDOW")
    wm_state = d.intern_atom("WM_STATE")

    def is_iconic():
        prop = window.get_property(wm_state, wm_state, 0, 2)
        return prop is not None and len(prop.value) > 0 and prop.value[0] == 3

    times = []
    for _ in range(trials):
        event = protocol.event.ClientMessage(window=window, client_type=active, data=(32, [2, X.CurrentTime, 0, 0, 0]))
        start = time.monotonic()
        root.send_event(event, event_mask=X.SubstructureRedirectMask | X.SubstructureNotifyMask)
        d.flush()
        # Wait for it to be shown, then hidden again.
        deadline = start + 5
        shown = False
        while time.monotonic() < deadline:
            while d.pending_events():
                d.next_event()
            iconic = is_iconic()
            if not iconic:
                shown = True
            elif shown:
                break
            time.sleep(0.001)
        else:
            sys.exit("the window was not iconified within 5 s")
        times.append((time.monotonic() - start) * 1000)
        time.sleep(0.15)
    report("activation -> iconified", times)


def redirect(port, url, prefix, trials):
    base = "http://127.0.0.1:%s/json" % port
    times = []
    for i in range(trials):
        start = time.monotonic()
        request = urllib.request.Request(base + "/new?" + urllib.parse.quote(url + "?trial=%d" % i, safe=":/?&=%"),
                                         method="PUT")
        with urllib.request.urlopen(request, timeout=5) as reply:
            tab_id = json.load(reply)["id"]
        while True:
            with urllib.request.urlopen(base + "/list", timeout=5) as reply:
                tabs = {tab["id"]: tab.get("url", "") for tab in json.load(reply)}
            if tabs.get(tab_id, "").startswith(prefix):
                break
            if time.monotonic() - start > 5:
                sys.exit("tab %s was not redirected within 5 s" % tab_id)
            time.sleep(0.002)
        times.append((time.monotonic() - start) * 1000)
        urllib.request.urlopen(base + "/close/" + tab_id, timeout=5).read()
    report("navigation start -> block page", times)


if sys.argv[1] == "iconify":
    iconify(int(sys.argv[2], 0), int(sys.argv[3]))
else:
    redirect(sys.argv[2], sys.argv[3], sys.argv[4], int(sys.argv[5]))
