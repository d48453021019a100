#!/usr/bin/python3
"""The program's showing widgets through AT-SPI, as a screen reader reads and presses them.
KIND is button, label, field (an editable text) or row (of a list or table).

  a11y.py PID has KIND TEXT     exit 0 when a showing KIND reads exactly TEXT
  a11y.py PID names KIND        the texts of the showing KINDs, one per line
  a11y.py PID press TEXT        presses the showing button TEXT by its action
  a11y.py PID center TEXT       "X Y", the screen point at the middle of button TEXT
  a11y.py PID field             the showing editable field's text; exit 3 when it lacks the focus
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


def showing(node, depth=0):
    """The showing objects below NODE, depth first, with their depth."""
    for i in range(node.childCount):
        try:
            child = node.getChildAtIndex(i)
            if child is None or not child.getState().contains(pyatspi.STATE_SHOWING):
                continue
        except Exception:  # gone meanwhile
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
    for obj, _ in showing(app):
        if obj.getRole() in KINDS[kind] and (kind != "field" or obj.getState().contains(pyatspi.STATE_EDITABLE)):
            yield obj


def pid_of(app):
    try:
        return app.get_process_id()
    except Exception:  # an application that went away meanwhile
        return None


def main(pid, command, *args):
    desktop = pyatspi.Registry.getDesktop(0)
    apps = [desktop.getChildAtIndex(i) for i in range(desktop.childCount)]
    app = next((a for a in apps if a is not None and pid_of(a) == int(pid)), None)
    if app is None:
        return 1
    if command == "has":
        return 0 if any(text_of(o) == args[1] for o in of_kind(app, args[0])) else 1
    if command == "names":
        print("\n".join(text_of(o) for o in of_kind(app, args[0])))
        return 0
    if command == "dump":
        for obj, depth in showing(app):
            print("%s%s %r" % ("  " * depth, obj.getRoleName(), text_of(obj)))
        return 0
    if command == "field":
        field = next(of_kind(app, "field"), None)
        if field is None:
            return 1
        print(text_of(field))
        return 0 if field.getState().contains(pyatspi.STATE_FOCUSED) else 3
    target = next((o for o in of_kind(app, "button") if o.name == args[0]), None)
    if target is None:
        return 1
    if command == "press":
        action = target.queryAction()
        names = [action.getName(i) for i in range(action.nActions)]
        press = next((i for i, n in enumerate(names) if n in ("press", "click", "Press")), 0)
        return 0 if action.doAction(press) else 1
    box = target.queryComponent().getExtents(pyatspi.DESKTOP_COORDS)
    if box.width <= 0 or box.height <= 0:
        return 1
    print(box.x + box.width // 2, box.y + box.height // 2)
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]) if len(sys.argv) > 2 else __doc__)
