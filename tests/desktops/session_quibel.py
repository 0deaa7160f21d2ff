"""Quibel in the session of a person."""

from drag import Drag
from gnome_pointer import GnomePointer
from panel import Panel
from quibel import PROGRAM, Quibel
from waiting import PATIENCE, wait_until

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


class GnomePanel(Panel):
    """On GNOME, where it is known to have the keys and where it is."""

    def __init__(self, quibel, title):
        super().__init__(quibel.screen, title, lambda: quibel.pointer.type("ctrl+l"))
        self._desktop = quibel.desktop
        self.box = wait_until(self._active, f"{title!r} to have the keys").box

    def wait_until_gone(self):
        super().wait_until_gone()
        wait_until(lambda: not self._desktop.windows(self._title), "the panel's window to go")

    def _active(self):
        return next((w for w in self._desktop.windows(self._title) if w.has_focus), None)


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

    def _box_of(self, number):
        return next(w.box for w in self.desktop.windows() if w.number == number)

    def _find_window(self):
        windows = wait_until(
            lambda: self._check_running() or self.desktop.windows(TITLE),
            lambda: "the window:\n" + self.log,
        )
        return windows[0].number
