"""The accessibility bus of a desktop, asked over GDBus. libatspi asks on while it waits
for an answer, and then at times waits for itself forever."""

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

from waiting import PATIENCE  # noqa: E402

# How long a program may take to answer a single question.
ANSWER_SECONDS = 15

REGISTRY = "org.a11y.atspi.Registry"
ROOT = "/org/a11y/atspi/accessible/root"
NOTHING = "/org/a11y/atspi/null"

# What a call raises that is not answered well: what it asks about may just have gone.
CallFailed = GLib.Error


class AccessibilityBus:
    """A connection to it. An object there is a pair of a bus name and a path."""

    def __init__(self, desktop):
        session = _connect(desktop.environment["DBUS_SESSION_BUS_ADDRESS"])
        launcher = ("org.a11y.Bus", "/org/a11y/bus")
        (address,) = _call(session, launcher, "org.a11y.Bus", "GetAddress")
        self._connection = _connect(address)

    def programs(self):
        """The root object of every program there is."""
        return self.call((REGISTRY, ROOT), "Accessible", "GetChildren")

    def process_of(self, node):
        """The process of an object, asked of the bus, as the process itself may hang."""
        bus = ("org.freedesktop.DBus", "/org/freedesktop/DBus")
        name = GLib.Variant("(s)", (node[0],))
        (process,) = _call(self._connection, bus, bus[0], "GetConnectionUnixProcessID", name)
        return process

    def call(self, node, interface, method, signature="()", *arguments):
        """What a method of an object answers with; the interface is one of AT-SPI's.
        Raises CallFailed."""
        arguments = GLib.Variant(signature, arguments)
        answer = _call(self._connection, node, f"org.a11y.atspi.{interface}", method, arguments)
        return answer[0] if answer else None

    def get(self, node, interface, name):
        """A property of an object."""
        return self._property(node, "Get", "(ss)", interface, name)[0]

    def set(self, node, interface, name, value):
        """Sets a property to a GLib.Variant."""
        self._property(node, "Set", "(ssv)", interface, name, value)

    def subscribe(self, event, member, detail, notice):
        """Has notice(node, on) called while the default main context runs, whenever an
        object says that a detail of that event is on or off now. Call it off by what
        this returns."""
        registry = (REGISTRY, "/org/a11y/atspi/registry")
        self.call(registry, "Registry", "RegisterEvent", "(s)", event)
        subscription = self._connection.signal_subscribe(
            None, "org.a11y.atspi.Event.Object", member, None, detail, Gio.DBusSignalFlags.NONE,
            lambda _, name, path, *rest: notice((name, path), rest[-1][1] != 0),
        )  # fmt: skip

        def call_off():
            self._connection.signal_unsubscribe(subscription)
            self.call(registry, "Registry", "DeregisterEvent", "(s)", event)

        return call_off

    def _property(self, node, method, signature, interface, *arguments):
        arguments = GLib.Variant(signature, (f"org.a11y.atspi.{interface}", *arguments))
        properties = "org.freedesktop.DBus.Properties"
        return _call(self._connection, node, properties, method, arguments)


def _connect(address):
    flags = Gio.DBusConnectionFlags
    return Gio.DBusConnection.new_for_address_sync(
        address, flags.AUTHENTICATION_CLIENT | flags.MESSAGE_BUS_CONNECTION
    )


def _call(connection, node, interface, method, arguments=None):
    patience = round(ANSWER_SECONDS * PATIENCE * 1000)
    answer = connection.call_sync(
        *node, interface, method, arguments, None, Gio.DBusCallFlags.NONE, patience
    )
    return answer.unpack()
