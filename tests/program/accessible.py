"""What the windows on a desktop show, read as a screen reader would."""

import enum
import pathlib
from typing import NamedTuple

from gi.repository import GLib

from accessibility_bus import NOTHING, ROOT, AccessibilityBus, CallFailed
from waiting import wait_until

# The names that differ between versions of the toolkits, as the others give them.
ROLES = {
    "button": "push button",
    "spin box": "spin button",
    "status bar": "statusbar",
    "alert message": "alert",
}


class State(enum.IntEnum):
    """The bits of AT-SPI's set of states."""

    ACTIVE = 1
    BUSY = 3
    ENABLED = 8
    FOCUSED = 12
    SELECTED = 23
    SHOWING = 25
    VISIBLE = 30


class Box(NamedTuple):
    """A rectangle in pixels."""

    x: int
    y: int
    width: int
    height: int

    @property
    def centre(self):
        return self.x + self.width / 2, self.y + self.height / 2


class Accessible:
    """One element of a program's tree: what it was when it was found, and where it
    is and what it holds now.

    role is a name such as "push button" or "spin button".
    """

    def __init__(self, bus, node):
        self._bus = bus
        self._node = node
        self.name = bus.get(node, "Accessible", "Name")
        self.description = bus.get(node, "Accessible", "Description")
        role = bus.call(node, "Accessible", "GetRoleName")
        self.role = ROLES.get(role, role)
        self.showing = self._has(State.SHOWING, State.VISIBLE)

    @property
    def text(self):
        """The text of an entry."""
        return self._bus.call(self._node, "Text", "GetText", "(ii)", 0, -1)

    @text.setter
    def text(self, value):
        self._bus.call(self._node, "EditableText", "SetTextContents", "(s)", value)

    @property
    def value(self):
        """Where a spin button stands."""
        return self._bus.get(self._node, "Value", "CurrentValue")

    @value.setter
    def value(self, value):
        self._bus.set(self._node, "Value", "CurrentValue", GLib.Variant("d", value))

    @property
    def range(self):
        """The least and the greatest value of a spin button."""
        ends = ("MinimumValue", "MaximumValue")
        return tuple(self._bus.get(self._node, "Value", end) for end in ends)

    def press(self):
        """Presses a button, as a screen reader does for a person."""
        actions = self._actions()
        # Other toolkits than Qt translate the name.
        press = actions.index("Press") if "Press" in actions else 0
        self._bus.call(self._node, "Action", "DoAction", "(i)", press)

    def can_be_pressed(self):
        return "Press" in self._actions()

    @property
    def box(self):
        """Where it is on the screen, as far as its program knows: a window manager
        that has moved the window does not always tell."""
        return Box(*self._bus.call(self._node, "Component", "GetExtents", "(u)", 0))

    @property
    def window(self):
        """The window that it is in: the element below the program itself."""
        node = self._node
        while (parent := self._bus.get(node, "Accessible", "Parent"))[1] != ROOT:
            node = parent
        return Accessible(self._bus, node)

    def is_active(self):
        """Whether a window is the one that keys go to, as its program knows."""
        return self._has(State.ACTIVE)

    @property
    def busy(self):
        return self._has(State.BUSY)

    @property
    def enabled(self):
        return self._has(State.ENABLED)

    @property
    def selected(self):
        return self._has(State.SELECTED)

    @property
    def focused(self):
        return self._has(State.FOCUSED)

    def walk(self):
        """This element and all below it, parents first, in their order."""
        yield self
        for child in self._bus.call(self._node, "Accessible", "GetChildren"):
            if child[1] != NOTHING:
                yield from Accessible(self._bus, child).walk()

    def _actions(self):
        return [name for name, *_ in self._bus.call(self._node, "Action", "GetActions")]

    def _has(self, *states):
        low, high = self._bus.call(self._node, "Accessible", "GetState")
        return all((low | high << 32) >> state & 1 for state in states)


class Announcements:
    """What a screen reader reads out without being asked: notifications and alerts
    as they appear, each as (role, name, description)."""

    def __init__(self, desktop):
        self._bus = AccessibilityBus(desktop)
        self._heard = []
        self._appeared = []
        self.close = self._bus.subscribe(
            "object:state-changed:showing", "StateChanged", "showing", self._notice
        )

    def heard(self):
        """All of them so far, the first one first."""
        while GLib.MainContext.default().iteration(False):
            pass
        while self._appeared:
            try:
                element = Accessible(self._bus, self._appeared.pop(0))
            except CallFailed:
                continue  # gone again already
            if element.role in ("notification", "alert"):
                self._heard.append((element.role, element.name, element.description))
        return self._heard

    def _notice(self, node, on):
        if on:
            self._appeared.append(node)


class SpokenValues:
    """What a screen reader would say of values on a desktop from now on, whenever one
    is announced to have changed: the text of its element."""

    def __init__(self, desktop):
        self._bus = AccessibilityBus(desktop)
        self._texts = []
        self._changed = []
        self.close = self._bus.subscribe(
            "object:property-change:accessible-value", "PropertyChange", "accessible-value",
            lambda node, _: self._changed.append(node),
        )  # fmt: skip

    def heard(self):
        """All of them so far, the first one first."""
        while GLib.MainContext.default().iteration(False):
            pass
        while self._changed:
            self._texts.append(Accessible(self._bus, self._changed.pop(0)).text)
        return self._texts


class Screen:
    """All programs on a desktop's accessibility bus."""

    def __init__(self, desktop):
        self._bus = AccessibilityBus(desktop)

    def elements(self, program):
        """Every showing element of a program; none while it is not there."""
        (found,) = wait_until(lambda: self._showing(program), f"{program} to stand still")
        return found

    def find(self, program, role, name=None):
        """The first showing element with that role and name, or None."""
        for element in self.elements(program):
            if element.role == role and name in (None, element.name):
                return element
        return None

    def wait_for(self, program, role, name=None, seconds=15.0):
        """The element with that role and name, once it shows."""
        return wait_until(
            lambda: self.find(program, role, name),
            lambda: f"{role} {name!r} of {program}, which shows:\n" + self.describe(program),
            seconds,
        )

    def describe(self, program):
        """What a program shows, a line an element, for a person to read."""
        shown = [f"  {element.role} {element.name!r}" for element in self.elements(program)]
        return "\n".join(shown) or "  nothing"

    def _showing(self, program):
        """The showing elements in a tuple of one, or None if the program has changed
        while it was looked at."""
        try:
            return ([element for element in self._walk(program) if element.showing],)
        except CallFailed:
            return None

    def _walk(self, program):
        for root in self._bus.programs():
            if self._program_of(root) == program:
                yield from Accessible(self._bus, root).walk()

    def _program_of(self, root):
        """The name of the program with that root, or None if it has just ended."""
        try:
            return pathlib.Path(f"/proc/{self._bus.process_of(root)}/comm").read_text().strip()
        except (CallFailed, OSError):
            return None
