#!/usr/bin/python3
"""Reads and drives the program's widgets through AT-SPI, as a screen reader does.

Run with Debian's /usr/bin/python3 (python3-pyatspi), inside a session where
/usr/libexec/at-spi-bus-launcher runs and the program was started with
QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1. PID is the program's process id. Only widgets
that are showing count; KIND is button, label, field (an editable text) or row (of a
list or table).

  a11y.py PID has KIND TEXT     exit 0 when a showing KIND reads exactly TEXT
  a11y.py PID names KIND        the texts of the showing KINDs, one per line
  a11y.py PID press TEXT        press the showing button TEXT by its action
  a11y.py PID center TEXT       "X Y", the screen point at the middle of button TEXT
  a11y.py PID field             the text of the showing editable field; exit 1 when
                                there is none, 3 when it does not hold the focus
  a11y.py PID dump              the tree of showing objects
Exit status 1 means "not there (yet)": callers poll.
"""

import sys

import pyatspi

KINDS = {
    "button": {pyatspi.ROLE_PUSH_BUTTON},
    "label": {pyatspi.ROLE_LABEL},
    "field": {pyatspi.ROLE_TEXT, pyatspi.ROLE_ENTRY},
    # a row of a list or table, or a label standing in for one
    "row": {pyatspi.ROLE_LIST_ITEM, pyatspi.ROLE_TABLE_CELL, pyatspi.ROLE_LABEL},
}


def application(pid):
    desktop = pyatspi.Registry.getDesktop(0)
    for i in range(desktop.childCount):
        app = desktop.getChildAtIndex(i)
        try:
            if app is not None and app.get_process_id() == pid:
                return app
        except Exception:  # an application that went away meanwhile
            continue
    return None


def showing(node, depth=0):
    """The showing objects below NODE, depth first, with their depth."""
    for i in range(node.childCount):
        try:
            child = node.getChildAtIndex(i)
            if child is None or not child.getState().contains(pyatspi.STATE_SHOWING):
                continue
        except Exception:
            continue
        yield child, depth
        yield from showing(child, depth + 1)


def text_of(obj):
    """What the user reads: the name, or the contents of a text field."""
    if obj.getRole() in KINDS["field"]:
        try:
            text = obj.queryText()
            return text.getText(0, text.characterCount)
        except NotImplementedError:
            pass
    return obj.name or ""


def of_kind(app, kind):
    roles = KINDS[kind]
    for obj, _ in showing(app):
        if obj.getRole() not in roles:
            continue
        if kind == "field" and not obj.getState().contains(pyatspi.STATE_EDITABLE):
            continue
        yield obj


def button(app, text):
    for obj in of_kind(app, "button"):
        if obj.name == text:
            return obj
    return None


def main(argv):
    if len(argv) < 3 or argv[2] not in ("has", "names", "press", "center", "field", "dump"):
        print(__doc__, file=sys.stderr)
        return 2
    pid, command, args = int(argv[1]), argv[2], argv[3:]
    app = application(pid)
    if app is None:
        print("a11y: no accessible application with process id %d" % pid, file=sys.stderr)
        return 1

    if command == "has":
        kind, text = args
        return 0 if any(text_of(o) == text for o in of_kind(app, kind)) else 1
    if command == "names":
        for obj in of_kind(app, args[0]):
            print(text_of(obj))
        return 0
    if command == "press":
        target = button(app, args[0])
        if target is None:
            return 1
        action = target.queryAction()
        for i in range(action.nActions):
            if action.getName(i) in ("press", "click", "Press"):
                return 0 if action.doAction(i) else 1
        return 0 if action.doAction(0) else 1
    if command == "center":
        target = button(app, args[0])
        if target is None:
            return 1
        box = target.queryComponent().getExtents(pyatspi.DESKTOP_COORDS)
        if box.width <= 0 or box.height <= 0:
            return 1
        print(box.x + box.width // 2, box.y + box.height // 2)
        return 0
    if command == "field":
        fields = list(of_kind(app, "field"))
        if not fields:
            return 1
        print(text_of(fields[0]))
        return 0 if fields[0].getState().contains(pyatspi.STATE_FOCUSED) else 3
    for obj, depth in showing(app):
        print("%s%s %r" % ("  " * depth, obj.getRoleName(), text_of(obj)))
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
