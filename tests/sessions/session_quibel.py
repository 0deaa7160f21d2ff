"""Quibel in the session of a person."""

from drag import Drag
from gnome_pointer import GnomePointer
from panel import Panel
from quibel import OPEN_PANEL, PROGRAM, Quibel
from waiting import PATIENCE, DeadlinePassed, wait_until

TITLE = "Quibel"


class SessionQuibel(Quibel):
    """Worked as a screen reader does, where there is no other way."""

    def panel(self, title):
        """The open or save panel of that title, once it shows."""
        return Panel(self.screen, title)

    def press(self, name):
        """Presses a button."""
        self.button(name).press()

    def move_handle(self, name, seconds):
        """Sets a handle's value."""
        elements = self.screen.elements(PROGRAM)
        next(element for element in elements if element.name == name).value = seconds

    def focused(self):
        """The name of what has the keyboard's focus, or None."""
        return next((e.name for e in self.screen.elements(PROGRAM) if e.focused), None)

    def close(self):
        if self.process.poll() is None:
            self.press("Cerrar")
        return self.process.wait(30 * PATIENCE)

    def _find_window(self):
        """No program on Wayland can be asked."""


class GnomeDrag(Drag):
    def _find(self, desktop, ready):
        window = wait_until(
            lambda: desktop.windows("quibel_drag_source"), "the window to drag from"
        )  # fmt: skip
        return window[0].box.centre


class GnomePanel:
    """The chooser of GNOME's portal, once it has the keys, and worked by keys: GTK 4.8
    tells screen readers too little of it."""

    def __init__(self, quibel, title):
        self._quibel = quibel
        self._title = title
        window = wait_until(self._active, f"{title!r} to have the keys", seconds=30)
        self.box = window.box
        self.process = window.process

    def answer(self, path):
        """Writes a path into it and confirms it."""
        keys = self._quibel.pointer
        if self._title == OPEN_PANEL:
            keys.type("ctrl+l")  # shows the field
        keys.type("ctrl+a")
        keys.write(str(path))
        self.accept()

    def accept(self):
        """Confirms what it proposes."""
        self._end_by("Return")

    def cancel(self):
        self._end_by("Escape")

    def _end_by(self, key):
        """Presses it again, as a person would, where the field's completions took it."""

        def gone():
            return not self._quibel.desktop.windows(self._title)

        def ended():
            self._quibel.pointer.type(key)
            try:
                return wait_until(gone, "a panel to go", seconds=3)
            except DeadlinePassed:
                return False

        wait_until(ended, f"the panel {self._title!r} to go", seconds=30)

    def _active(self):
        windows = self._quibel.desktop.windows(self._title)
        return next((window for window in windows if window.has_focus), None)


class GnomeQuibel(SessionQuibel):
    """With pointer and keys. Where windows are, and which has the keys, the shell says."""

    pointing = GnomePointer
    drag = GnomeDrag

    def panel(self, title):
        return GnomePanel(self, title)

    def _active(self):
        return next((w.number for w in self.desktop.windows() if w.has_focus), None)

    def _frame(self, number):
        return 0, 0, 0, 0

    @property
    def box(self):
        return self._window(self.window_id).box

    def _box_of(self, number):
        # Elements know their place in it.
        return self._window(number).surface

    def _window(self, number):
        return next(w for w in self.desktop.windows() if w.number == number)

    def _find_window(self):
        windows = wait_until(
            lambda: self._check_running() or self.desktop.windows(TITLE),
            lambda: "the window:\n" + self.log,
        )
        return windows[0].number
