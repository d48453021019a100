#!/usr/bin/python3
"""tray.py FILE: the tray host a GNOME user adds with an extension (org.kde.StatusNotifierWatcher);
writes the bus name and path of each item that registers to FILE."""
import sys

from gi.repository import Gio, GLib

XML = """<node><interface name="org.kde.StatusNotifierWatcher">
<method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
<property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
<property name="ProtocolVersion" type="i" access="read"/></interface></node>"""


def call(connection, sender, path, interface, method, params, invocation):
    item = params.unpack()[0]
    with open(sys.argv[1], "a") as out:
        out.write(f"{sender} {item}\n" if item.startswith("/") else f"{item} /StatusNotifierItem\n")
    invocation.return_value(None)


bus = Gio.bus_get_sync(Gio.BusType.SESSION)
bus.register_object("/StatusNotifierWatcher", Gio.DBusNodeInfo.new_for_xml(XML).interfaces[0], call,
                    lambda c, s, p, i, name: GLib.Variant(*{"ProtocolVersion": ("i", 0)}.get(name, ("b", True))), None)
Gio.bus_own_name_on_connection(bus, "org.kde.StatusNotifierWatcher", Gio.BusNameOwnerFlags.NONE, None, None)
GLib.MainLoop().run()
