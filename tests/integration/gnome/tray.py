#!/usr/bin/python3
"""tray.py FILE: the tray host a GNOME user adds with an extension (org.kde.StatusNotifierWatcher);
writes the bus name and path of each item that registers to FILE."""
import sys

from gi.repository import Gio, GLib

XML = """<node><interface name="org.kde.StatusNotifierWatcher">
<method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
<method name="RegisterStatusNotifierHost"><arg type="s" direction="in"/></method>
<property name="RegisteredStatusNotifierItems" type="as" access="read"/>
<property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
<property name="ProtocolVersion" type="i" access="read"/>
<signal name="StatusNotifierItemRegistered"><arg type="s"/></signal>
</interface></node>"""
items = []


def call(connection, sender, path, interface, method, params, invocation):
    if method == "RegisterStatusNotifierItem":
        item = params.unpack()[0]
        item = f"{sender} {item}" if item.startswith("/") else f"{item} /StatusNotifierItem"
        items.append(item)
        with open(sys.argv[1], "a") as out:
            out.write(item + "\n")
    invocation.return_value(None)


def get(connection, sender, path, interface, name):
    return {"RegisteredStatusNotifierItems": GLib.Variant("as", items),
            "IsStatusNotifierHostRegistered": GLib.Variant("b", True),
            "ProtocolVersion": GLib.Variant("i", 0)}[name]


bus = Gio.bus_get_sync(Gio.BusType.SESSION)
bus.register_object("/StatusNotifierWatcher", Gio.DBusNodeInfo.new_for_xml(XML).interfaces[0], call, get, None)
Gio.bus_own_name_on_connection(bus, "org.kde.StatusNotifierWatcher", Gio.BusNameOwnerFlags.NONE, None, None)
GLib.MainLoop().run()
