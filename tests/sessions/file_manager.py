"""A file manager without a window, which would take the keys: prints the address of each
file that it is asked to show."""

from gi.repository import Gio, GLib

NAME = "org.freedesktop.FileManager1"

INTERFACE = """
<node><interface name="org.freedesktop.FileManager1">
  <method name="ShowItems"><arg type="as" direction="in"/><arg type="s" direction="in"/></method>
</interface></node>
"""


def show(connection, sender, path, interface, method, arguments, invocation):
    for address in arguments.unpack()[0]:
        print(address, flush=True)
    invocation.return_value(None)


def main():
    bus = Gio.bus_get_sync(Gio.BusType.SESSION)
    interface = Gio.DBusNodeInfo.new_for_xml(INTERFACE).interfaces[0]
    bus.register_object("/org/freedesktop/FileManager1", interface, show, None, None)
    loop = GLib.MainLoop()
    flags = Gio.BusNameOwnerFlags.NONE
    Gio.bus_own_name_on_connection(
        bus, NAME, flags, lambda *_: print("ready", flush=True), lambda *_: loop.quit()
    )
    loop.run()


if __name__ == "__main__":
    main()
