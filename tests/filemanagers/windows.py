"""What the windows of a desktop show, asked over the accessibility bus itself: with
Thunar on it, libatspi comes to wait for itself forever."""

from typing import NamedTuple

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, Gio, GLib  # noqa: E402

REGISTRY = ("org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root")
ACCESSIBLE = "org.a11y.atspi.Accessible"
ANSWER_MILLISECONDS = 5000


class Element(NamedTuple):
    name: str
    role: str
    selected: bool


class Windows:
    """All programs on the accessibility bus of a desktop with that environment."""

    def __init__(self, environment):
        session = _connect(environment["DBUS_SESSION_BUS_ADDRESS"])
        (address,) = _call(session, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress")
        self._bus = _connect(address)

    def elements(self):
        """Everything that shows, parents first; nothing of a program that hangs, or
        whose windows change meanwhile."""
        programs = self._ask(REGISTRY, "GetChildren")
        return [element for program in programs for element in self._of(program)]

    def _of(self, program):
        try:
            return list(self._walk(program))
        except GLib.Error:
            return []

    def _walk(self, node):
        state = self._state(node)
        # A program itself, at the root, has no state.
        if state and Atspi.StateType.SHOWING not in state:
            return
        yield Element(
            self._name(node), self._ask(node, "GetRoleName"), Atspi.StateType.SELECTED in state
        )
        for child in self._ask(node, "GetChildren"):
            yield from self._walk(child)

    def _state(self, node):
        low, high = self._ask(node, "GetState")
        bits = low | high << 32
        return {kind for kind in range(bits.bit_length()) if bits >> kind & 1}

    def _name(self, node):
        properties = "org.freedesktop.DBus.Properties"
        which = GLib.Variant("(ss)", (ACCESSIBLE, "Name"))
        (name,) = _call(self._bus, *node, properties, "Get", which)
        return name

    def _ask(self, node, method):
        (answer,) = _call(self._bus, *node, ACCESSIBLE, method)
        return answer


def _connect(address):
    flags = Gio.DBusConnectionFlags
    return Gio.DBusConnection.new_for_address_sync(
        address, flags.AUTHENTICATION_CLIENT | flags.MESSAGE_BUS_CONNECTION
    )


def _call(bus, name, path, interface, method, arguments=None):
    answer = bus.call_sync(
        name, path, interface, method, arguments, None, Gio.DBusCallFlags.NONE, ANSWER_MILLISECONDS
    )
    return answer.unpack()
