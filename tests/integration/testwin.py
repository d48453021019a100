#!/usr/bin/python3
"""testwin.py CLASS [TITLE]: a plain X11 application window with WM_CLASS and _NET_WM_PID."""
import os
import sys

from Xlib import X, Xatom, display

cls = sys.argv[1]
title = sys.argv[2] if len(sys.argv) > 2 else cls
d = display.Display()
screen = d.screen()
w = screen.root.create_window(100, 100, 400, 300, 0, screen.root_depth, X.InputOutput, X.CopyFromParent,
                              background_pixel=screen.white_pixel, event_mask=X.StructureNotifyMask)
w.set_wm_class(cls.lower(), cls)
w.set_wm_name(title)
w.change_property(d.intern_atom("_NET_WM_PID"), Xatom.CARDINAL, 32, [os.getpid()])
w.map()
d.flush()
while True:
    e = d.next_event()
    if e.type == X.MapNotify:
        print("mapped", hex(w.id), flush=True)
