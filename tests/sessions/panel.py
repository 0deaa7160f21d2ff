"""An open or save panel that describes itself to a screen reader, whatever program's it is."""

from accessibility_bus import CallFailed
from quibel import PROGRAM
from waiting import wait_until

# The portal's names are cut off after 15 letters by the system.
PROGRAMS = (PROGRAM, "xdg-desktop-por")

ROLES = ("dialog", "file chooser", "frame", "window")

CONFIRMATIONS = ("Abrir", "Guardar")


class Panel:
    """The panel of that title, once it shows."""

    def __init__(self, screen, title):
        self._screen = screen
        self._title = title
        wait_until(self._shows, self._describe, seconds=30)

    def places(self):
        """The names of what is beside the files."""
        return [e.name for e in self._elements() if e.role in ("label", "list item")]

    def answer(self, path):
        """Writes a path into it and confirms it."""
        self._name_field().text = str(path)
        wait_until(lambda: self._name_field().text == str(path), "the name to be written")
        self.accept()

    def accept(self):
        """Confirms what it proposes."""
        wait_until(self._confirmation, "the panel to take the name").press()
        self.wait_until_gone()

    def cancel(self):
        self._element("push button", "Cancelar").press()
        self.wait_until_gone()

    def wait_until_gone(self):
        wait_until(lambda: not self._shows(), f"the panel {self._title!r} to go")

    def _shows(self):
        return self._element("push button", "Cancelar")

    def _confirmation(self):
        """The button that confirms, once it can be pressed."""
        for element in self._elements():
            if element.role == "push button" and element.name in CONFIRMATIONS and element.enabled:
                return element
        return None

    def _name_field(self):
        return wait_until(lambda: self._element("text"), self._describe)

    def _element(self, role, name=None):
        return next(
            (e for e in self._elements() if e.role == role and name in (None, e.name)), None
        )

    def _elements(self):
        """Every showing element in it."""
        found = []
        for program in PROGRAMS:
            for element in self._screen.elements(program):
                if element.name == self._title and element.role in ROLES:
                    try:
                        found += [inner for inner in element.walk() if inner.showing]
                    except CallFailed:
                        continue  # it changes
        return found

    def _describe(self):
        shown = [f"{program}:\n{self._screen.describe(program)}" for program in PROGRAMS]
        return f"the panel {self._title!r} in\n" + "\n".join(shown)
