"""Stands in for the desktop's file manager: writes every item that it is asked to show into a file, one JSON a line."""
import json
import sys

from gi.repository import Gio, GLib

NAME = "org.freedesktop.FileManager1"
INTERFACE = f"""
<node><interface name="{NAME}"><method name="ShowItems">
  <arg type="as" name="URIs" direction="in"/><arg type="s" name="StartupId" direction="in"/>
</method></interface></node>"""


def show_items(_connection, _sender, _path, _interface, method, parameters, invocation):
    uris, startup_id = parameters.unpack()
    with open(sys.argv[1], "a", encoding="utf-8") as calls:
        calls.write(json.dumps({"method": method, "uris": uris, "startupId": startup_id}) + "\n")
    invocation.return_value(None)


def on_bus(connection, _name):
    interface = Gio.DBusNodeInfo.new_for_xml(INTERFACE).interfaces[0]
    connection.register_object("/org/freedesktop/FileManager1", interface, show_items)


def main():
    loop = GLib.MainLoop()
    Gio.bus_own_name(Gio.BusType.SESSION, NAME, Gio.BusNameOwnerFlags.NONE, on_bus,
                     lambda *_: print("ready", flush=True), lambda *_: loop.quit())
    loop.run()


if __name__ == "__main__":
    main()
