#!/usr/bin/python3
"""window.py NAME [KEYLOG]: a plain Wayland application window whose app id is the lower-cased
NAME, filled red, writing each key it receives to KEYLOG."""
import sys

import gi

gi.require_version("Gtk", "3.0")
from gi.repository import GLib, Gtk  # noqa: E402

GLib.set_prgname(sys.argv[1].lower())
keylog = open(sys.argv[2], "a", buffering=1) if len(sys.argv) > 2 else None
window = Gtk.Window(title=sys.argv[1])
window.set_default_size(600, 400)
css = Gtk.CssProvider()
css.load_from_data(b"window { background: #ff0000; }")
Gtk.StyleContext.add_provider_for_screen(window.get_screen(), css, Gtk.STYLE_PROVIDER_PRIORITY_USER)
if keylog:
    window.connect("key-press-event", lambda w, e: keylog.write(f"{Gtk.accelerator_name(e.keyval, 0)}\n"))
window.connect("destroy", Gtk.main_quit)
window.show_all()
Gtk.main()
