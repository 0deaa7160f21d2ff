"""What the windows on a desktop show, read as a screen reader would."""

import os
import pathlib
from typing import NamedTuple

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

from waiting import PATIENCE, wait_until  # noqa: E402

# How long a program may take to answer a single question.
ANSWER_SECONDS = 15

# As AT-SPI 2.56 calls them, by the names of 2.46.
RENAMED_ROLES = {"button": "push button"}


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

    role is a name such as "push button" or "slider".
    """

    def __init__(self, node):
        self._node = node
        self.name = node.get_name()
        self.description = node.get_description()
        role = node.get_role_name()
        self.role = RENAMED_ROLES.get(role, role)
        self.showing = self._has(Atspi.StateType.SHOWING) and self._has(Atspi.StateType.VISIBLE)

    @property
    def text(self):
        """The text of an entry."""
        return Atspi.Text.get_text(self._node, 0, -1)

    @text.setter
    def text(self, value):
        Atspi.EditableText.set_text_contents(self._node, value)

    @property
    def value(self):
        """Where a slider stands."""
        return Atspi.Value.get_current_value(self._node)

    @value.setter
    def value(self, value):
        Atspi.Value.set_current_value(self._node, value)

    @property
    def range(self):
        """The least and the greatest value of a slider."""
        return (
            Atspi.Value.get_minimum_value(self._node),
            Atspi.Value.get_maximum_value(self._node),
        )

    def press(self):
        """Presses a button, as a screen reader does for a person."""
        actions = range(Atspi.Action.get_n_actions(self._node))
        press = next(i for i in actions if Atspi.Action.get_action_name(self._node, i) == "Press")
        Atspi.Action.do_action(self._node, press)

    @property
    def box(self):
        """Where it is on the screen, as far as its program knows: a window manager
        that has moved the window does not always tell."""
        extents = Atspi.Component.get_extents(self._node, Atspi.CoordType.SCREEN)
        return Box(extents.x, extents.y, extents.width, extents.height)

    @property
    def window(self):
        """The window that it is in: the element below the program itself."""
        node = self._node
        while (parent := node.get_parent()).get_role() != Atspi.Role.APPLICATION:
            node = parent
        return Accessible(node)

    @property
    def enabled(self):
        return self._has(Atspi.StateType.ENABLED)

    @property
    def selected(self):
        return self._has(Atspi.StateType.SELECTED)

    def walk(self):
        """This element and all below it, parents first, in their order."""
        yield self
        for index in range(self._node.get_child_count()):
            child = self._node.get_child_at_index(index)
            if child is not None:
                yield from Accessible(child).walk()

    @property
    def focused(self):
        return self._has(Atspi.StateType.FOCUSED)

    def _has(self, state):
        return self._node.get_state_set().contains(state)


class Announcements:
    """What a screen reader reads out without being asked: notifications and alerts
    as they appear, each as (role, name, description)."""

    EVENT = "object:state-changed:showing"

    def __init__(self):
        self._heard = []
        self._appeared = []
        self._listener = Atspi.EventListener.new(self._notice)
        self._listener.register(self.EVENT)

    def close(self):
        self._listener.deregister(self.EVENT)

    def heard(self):
        """All of them so far, the first one first."""
        while GLib.MainContext.default().iteration(False):
            pass
        while self._appeared:
            source = self._appeared.pop(0)
            try:
                role = source.get_role_name()
                if role in ("notification", "alert"):
                    self._heard.append((role, source.get_name(), source.get_description()))
            except GLib.Error:
                pass  # gone again already
        return self._heard

    def _notice(self, event):
        # This may be called while a call waits for its answer: to make one more here
        # would be to wait for an answer that nobody reads.
        if event.detail1:
            self._appeared.append(event.source)


class Screen:
    """All programs on a desktop's accessibility bus.

    The bus is found through the environment once in a process: a process reads one
    desktop only.
    """

    def __init__(self, desktop):
        os.environ.update(desktop.environment)
        Atspi.init()
        # As is, a call that a busy program leaves unanswered for 0.8 s fails, and
        # what it asked about looks as if it were not there.
        patience = round(ANSWER_SECONDS * PATIENCE * 1000)
        Atspi.set_timeout(patience, patience)
        self._root = Atspi.get_desktop(0)
        # Nobody runs the loop that would keep a cache fresh.
        self._root.set_cache_mask(Atspi.Cache.NONE)

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
        except GLib.Error:
            return None

    def _walk(self, program):
        for index in range(self._root.get_child_count()):
            child = self._root.get_child_at_index(index)
            if child is not None and _program_of(child) == program:
                child.set_cache_mask(Atspi.Cache.NONE)
                yield from Accessible(child).walk()


def _program_of(application):
    """The name of an application's program, found without asking the application,
    which might not answer."""
    try:
        process = application.get_process_id()
        return pathlib.Path(f"/proc/{process}/comm").read_text().strip()
    except (GLib.Error, OSError):  # it has just ended
        return None
