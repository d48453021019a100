#!/usr/bin/python3
"""X11 queries the shell tools cannot answer (python3-xlib). Window ids in hex (0x...).

  tray-owner               owner of the system tray selection; exit 1 if none
  tray-icons CLASS         viewable windows of WM_CLASS CLASS embedded in the tray,
                           "icon tray-window" per line; exit 1 if none
  focus-in WINDOW          exit 0 when the keyboard focus is in WINDOW
  keyboard-grabbed         exit 0 when another client holds the keyboard grabbed
  screenshot FILE.png      the whole screen
  colours WINDOW           the colours shown where WINDOW lies, most frequent first
"""
import collections, struct, sys, zlib

from Xlib import X, display, error


def ancestors(d, win):
    """The window itself and its parents up to, not including, the root."""
    chain = []
    while win is not None and win.id != d.screen().root.id:
        chain.append(win)
        try:
            win = win.query_tree().parent
        except error.XError:
            break
    return chain


def owner_of_tray(d):
    owner = d.get_selection_owner(d.intern_atom("_NET_SYSTEM_TRAY_S%d" % d.get_default_screen()))
    return None if owner in (X.NONE, None) else owner.id


def tray_owner(d):
    print(hex(owner_of_tray(d) or 0))
    return 0 if owner_of_tray(d) else 1


def tray_icons(d, wanted):
    """An XEmbed icon is a client window the tray has reparented into windows of its own:
    viewable windows of the class with an ancestor made by the tray selection's owner."""
    owner = owner_of_tray(d) or 0
    client_bits = ~d.display.info.resource_id_mask
    found, pending = 0, [d.screen().root]
    while pending:
        win = pending.pop()
        try:
            pending.extend(win.query_tree().children)
            cls = win.get_wm_class()
            if not cls or wanted.lower() not in (c.lower() for c in cls):
                continue
            if win.get_attributes().map_state != X.IsViewable:
                continue
        except error.XError:
            continue
        for parent in ancestors(d, win)[1:]:
            if owner and parent.id & client_bits == owner & client_bits:
                print(hex(win.id), hex(parent.id))
                found += 1
                break
    return 0 if found else 1


def focus_in(d, window):
    """Exit 0 when the keyboard focus is on WINDOW or a window inside it."""
    focus = d.get_input_focus().focus
    return 0 if hasattr(focus, "id") and int(window, 0) in (w.id for w in ancestors(d, focus)) else 1


def keyboard_grabbed(d):
    status = d.screen().root.grab_keyboard(False, X.GrabModeAsync, X.GrabModeAsync, X.CurrentTime)
    if status == X.GrabSuccess:
        d.ungrab_keyboard(X.CurrentTime)
        d.sync()
        return 1
    return 0 if status == X.AlreadyGrabbed else 2


def pixels(d, x, y, width, height):
    """RGB bytes of a part of the screen (24-bit TrueColor: little-endian BGRX pixels)."""
    data = d.screen().root.get_image(x, y, width, height, X.ZPixmap, 0xFFFFFFFF).data
    rgb = bytearray(width * height * 3)
    rgb[0::3], rgb[1::3], rgb[2::3] = data[2::4], data[1::4], data[0::4]
    return bytes(rgb)


def screenshot(d, path):
    geo = d.screen().root.get_geometry()
    rgb, stride = pixels(d, 0, 0, geo.width, geo.height), geo.width * 3

    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    raw = b"".join(b"\0" + rgb[y * stride:(y + 1) * stride] for y in range(geo.height))
    with open(path, "wb") as out:
        out.write(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", geo.width, geo.height, 8, 2, 0, 0, 0))
                  + chunk(b"IDAT", zlib.compress(raw, 6)) + chunk(b"IEND", b""))
    return 0


def colours(d, window):
    win = d.create_resource_object("window", int(window, 0))
    geo = win.get_geometry()
    at = win.translate_coords(d.screen().root, 0, 0)
    rgb = pixels(d, -at.x, -at.y, geo.width, geo.height)
    for key, count in collections.Counter(rgb[i:i + 3].hex().upper() for i in range(0, len(rgb), 3)).most_common(8):
        print(key, count)
    return 0


if __name__ == "__main__":
    commands = {"tray-owner": tray_owner, "tray-icons": tray_icons, "focus-in": focus_in,
                "keyboard-grabbed": keyboard_grabbed, "screenshot": screenshot,
                "colours": colours}
    if len(sys.argv) < 2 or sys.argv[1] not in commands:
        sys.exit(__doc__)
    sys.exit(commands[sys.argv[1]](display.Display(), *sys.argv[2:]))
