#!/usr/bin/python3
"""Small X11 queries the shell tools cannot answer, for the integration scripts.

Run with Debian's /usr/bin/python3 (python3-xlib). Window ids are printed in hex (0x...).

  xutil.py tray-owner                 owner of _NET_SYSTEM_TRAY_S<screen>; exit 1 if none
  xutil.py tray-icons CLASS           viewable windows of WM_CLASS CLASS embedded in the tray
                                      (one "icon-id tray-window-id" per line); exit 1 if none
  xutil.py input-focus                the window that holds the keyboard focus
  xutil.py keyboard-grabbed           exit 0 when another client holds the keyboard grabbed
  xutil.py is-inside WINDOW ANCESTOR  exit 0 when WINDOW is ANCESTOR or lies inside it
  xutil.py screenshot FILE.png        the whole root window as a PNG
  xutil.py colours WINDOW             the colours shown where WINDOW lies on the screen,
                                      most frequent first ("RRGGBB count" per line)
"""

import struct
import sys
import zlib

from Xlib import X, display, error


def wm_class(win):
    try:
        value = win.get_wm_class()
    except error.XError:
        return None
    return value


def ancestors(d, win):
    """The window itself and its parents up to, not including, the root."""
    root = d.screen().root
    chain = []
    while win is not None and win.id != root.id:
        chain.append(win)
        try:
            win = win.query_tree().parent
        except error.XError:
            break
    return chain


def all_windows(root):
    pending = [root]
    while pending:
        win = pending.pop()
        yield win
        try:
            pending.extend(win.query_tree().children)
        except error.XError:
            pass


def tray_owner(d):
    atom = d.intern_atom("_NET_SYSTEM_TRAY_S%d" % d.get_default_screen())
    owner = d.get_selection_owner(atom)
    return 0 if owner in (X.NONE, None) else owner.id


def cmd_tray_owner(d):
    owner = tray_owner(d)
    if not owner:
        return 1
    print(hex(owner))
    return 0


def cmd_tray_icons(d, wanted):
    """An XEmbed tray icon is a client window that the tray has reparented into windows
    of its own: look for viewable windows of the wanted class with an ancestor created by
    the X client that owns the tray selection."""
    owner = tray_owner(d)
    if not owner:
        return 1
    client_bits = ~d.display.info.resource_id_mask
    found = 0
    for win in all_windows(d.screen().root):
        cls = wm_class(win)
        if not cls or wanted.lower() not in (c.lower() for c in cls):
            continue
        try:
            if win.get_attributes().map_state != X.IsViewable:
                continue
        except error.XError:
            continue
        for parent in ancestors(d, win)[1:]:
            if parent.id & client_bits == owner & client_bits:
                print(hex(win.id), hex(parent.id))
                found += 1
                break
    return 0 if found else 1


def cmd_input_focus(d):
    focus = d.get_input_focus().focus
    print(hex(focus.id) if hasattr(focus, "id") else hex(int(focus)))
    return 0


def cmd_keyboard_grabbed(d):
    """Exit 0 when another client holds an active keyboard grab (ours then fails)."""
    root = d.screen().root
    status = root.grab_keyboard(False, X.GrabModeAsync, X.GrabModeAsync, X.CurrentTime)
    if status == X.GrabSuccess:
        d.ungrab_keyboard(X.CurrentTime)
        d.sync()
        return 1
    return 0 if status == X.AlreadyGrabbed else 2


def cmd_is_inside(d, window, ancestor):
    win = d.create_resource_object("window", int(window, 0))
    return 0 if int(ancestor, 0) in (w.id for w in ancestors(d, win)) else 1


def png(path, width, height, rgb):
    def chunk(kind, data):
        body = kind + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body))

    stride = width * 3
    raw = b"".join(b"\0" + rgb[y * stride:(y + 1) * stride] for y in range(height))
    with open(path, "wb") as out:
        out.write(b"\x89PNG\r\n\x1a\n")
        out.write(chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)))
        out.write(chunk(b"IDAT", zlib.compress(raw, 6)))
        out.write(chunk(b"IEND", b""))


def cmd_screenshot(d, path):
    root = d.screen().root
    geo = root.get_geometry()
    image = root.get_image(0, 0, geo.width, geo.height, X.ZPixmap, 0xFFFFFFFF)
    data = image.data
    if len(data) != geo.width * geo.height * 4:
        print("screenshot: unexpected pixel format (depth %d)" % image.depth, file=sys.stderr)
        return 1
    # 24-bit TrueColor servers hand out little-endian BGRX pixels.
    rgb = bytearray(geo.width * geo.height * 3)
    rgb[0::3] = data[2::4]
    rgb[1::3] = data[1::4]
    rgb[2::3] = data[0::4]
    png(path, geo.width, geo.height, bytes(rgb))
    return 0


def cmd_colours(d, window):
    root = d.screen().root
    win = d.create_resource_object("window", int(window, 0))
    geo = win.get_geometry()
    at = win.translate_coords(root, 0, 0)
    x, y = -at.x, -at.y
    image = root.get_image(x, y, geo.width, geo.height, X.ZPixmap, 0xFFFFFFFF)
    counts = {}
    data = image.data
    for i in range(0, len(data) - 3, 4):
        key = "%02X%02X%02X" % (data[i + 2], data[i + 1], data[i])
        counts[key] = counts.get(key, 0) + 1
    for key, count in sorted(counts.items(), key=lambda kv: -kv[1])[:8]:
        print(key, count)
    return 0


def main(argv):
    if len(argv) < 2:
        print(__doc__, file=sys.stderr)
        return 2
    d = display.Display()
    command, args = argv[1], argv[2:]
    commands = {
        "tray-owner": (cmd_tray_owner, 0),
        "tray-icons": (cmd_tray_icons, 1),
        "input-focus": (cmd_input_focus, 0),
        "is-inside": (cmd_is_inside, 2),
        "keyboard-grabbed": (cmd_keyboard_grabbed, 0),
        "screenshot": (cmd_screenshot, 1),
        "colours": (cmd_colours, 1),
    }
    if command not in commands or len(args) != commands[command][1]:
        print(__doc__, file=sys.stderr)
        return 2
    return commands[command][0](d, *args)


if __name__ == "__main__":
    sys.exit(main(sys.argv))
