#!/usr/bin/python3
"""testwin.py CLASS: a plain X11 application window with WM_CLASS and _NET_WM_PID."""
import os
import sys

from Xlib import X, Xatom, display

d = display.Display()
screen = d.screen()
w = screen.root.create_window(100, 100, 400, 300, 0, screen.root_depth, X.InputOutput, X.CopyFromParent,
                              background_pixel=screen.white_pixel)
w.set_wm_class(sys.argv[1].lower(), sys.argv[1])
w.set_wm_name(sys.argv[1])
w.change_property(d.intern_atom("_NET_WM_PID"), Xatom.CARDINAL, 32, [os.getpid()])
w.map()
while True:
    d.next_event()
