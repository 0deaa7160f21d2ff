"""Quibel itself, worked from outside as a person would."""

import pathlib
import subprocess

from accessible import Box, Screen
from drag import Drag, uri_list
from pointer import Pointer
from virtual_desktop import FILE_MANAGER
from waiting import PATIENCE, wait_until

CHOOSE = "Seleccionar canción…"
CHANGE = "Cambiar canción…"
LISTEN = "Escuchar en bucle"
STOP = "Detener"
CREATE = "Crear tono .m4r…"
ACCEPT = "Aceptar"
GUIDANCE = "Mueve los tiradores verde y naranja para escoger el fragmento."
START_HANDLE = "Inicio del fragmento"
END_HANDLE = "Final del fragmento"

OPEN_PANEL = "Selecciona una canción"
SAVE_PANEL = "Guardar tono para iPhone"

PROGRAM = "quibel"

GTK_SOURCE = ["/usr/bin/python3", "-B", str(pathlib.Path(__file__).with_name("gtk_drag_source.py"))]


class Quibel:
    """A running Quibel on a virtual desktop.

    build is the folder that holds the programs quibel and quibel_drag_source.
    """

    # What its environment holds beside the desktop's.
    environment = {}
    pointing = Pointer
    drag = Drag

    def __init__(self, desktop, build):
        self.desktop = desktop
        self._qt_source = [str(build / "quibel_drag_source")]
        self.pointer = self.pointing(desktop)
        environment = desktop.environment | self.environment
        self.process = desktop.start(str(build / "quibel"), env=environment)
        self.screen = Screen(desktop)
        self.window_id = self._find_window()
        wait_until(self._first_labels, lambda: "the window's texts:\n" + self.log, seconds=30)

    @property
    def log(self):
        return self.desktop.log(PROGRAM)

    @property
    def box(self):
        """Where the main window is on the screen."""
        return self._box_of(self.window_id)

    def wait_until_active(self):
        """Until the panel that was in front has gone."""
        wait_until(lambda: self._active() == self.window_id, "the main window to be active")

    def labels(self):
        """Every text that shows, in the window's order."""
        return [e.name for e in self.screen.elements(PROGRAM) if e.role == "label" and e.name]

    def wait_for(self, role, name=None, seconds=15.0):
        """The element with that role and name, once it shows."""
        return self.screen.wait_for(PROGRAM, role, name, seconds)

    def has(self, role, name=None):
        """Whether an element with that role and name shows now."""
        return self.screen.find(PROGRAM, role, name) is not None

    def button(self, name):
        return self.wait_for("push button", name)

    def has_button(self, name):
        return self.has("push button", name)

    def click(self, name):
        """Clicks on a button."""
        self.pointer.click(*self.centre_of(self.button(name)))

    def close(self):
        """Closes the window, also if another one comes in front of it meanwhile or the
        alert shows, and returns what the process ended with."""
        if self.process.poll() is None:
            button = self.button("Cerrar")
            window = button.window.box
            x, y = button.box.centre
            wait_until(
                lambda: self._gone_by_click_at(x - window.x, y - window.y),
                "the window to close",
                seconds=45,
            )
        return self.process.wait(30 * PATIENCE)

    def _gone_by_click_at(self, x, y):
        """Clicks on a place of the main window if it is in front, else brings it there."""
        try:
            box = self.box
            if self._active() == self.window_id:
                self.pointer.click(box.x + x, box.y + y)
            else:
                self.desktop.run("xdotool", "windowactivate", self.window_id)
        except subprocess.CalledProcessError:
            pass  # it is gone
        return self.process.poll() is not None

    # Songs.

    def offer(self, mime_type, data, source=None):
        """Opens another program's window from which that can be dragged; see Drag. It
        is one of Qt, unless source is the command of another program."""
        return self.drag(self.desktop, self.pointer, source or self._qt_source, mime_type, data)

    def offer_files(self, *paths, source=None):
        return self.offer("text/uri-list", uri_list(*paths), source)

    def drop_files(self, *paths):
        """Drags files onto the window's middle and lets go; returns how that ended."""
        middle = self.middle()
        drag = self.offer_files(*paths).pick_up()
        drag.move_over(*middle)
        return drag.drop()

    def is_highlighted(self):
        """Whether the welcome panel shows that a file is over the window."""
        x, y, width, height = self.box
        # Across the panel's lower edge.
        column = self.desktop.pixels(x + width - 100, y + height - 100, 40, 60)
        pixels = zip(column[::3], column[1::3], column[2::3])
        return any(blue - red > 150 for red, _, blue in pixels)

    def middle(self):
        return self.box.centre

    def load(self, path):
        """Drops a song and waits until it is ready to be edited."""
        self.drop_files(path)
        self.wait_until_loaded()

    def wait_until_loaded(self):
        self.wait_for("label", GUIDANCE, seconds=60)

    # Panels and the file manager.

    def answer_panel(self, title, path):
        """Writes a path into an open or save panel and confirms it."""
        self.wait_for("dialog", title)
        entry = self.wait_for("text")
        entry.text = str(path)
        self.pointer.type("Return")

    def proposed_name(self):
        return self.wait_for("text").text

    def cancel_panel(self, title):
        self.wait_for("dialog", title)
        self.click("Cancelar")
        wait_until(lambda: not self.has("dialog", title), f"the panel {title!r} to go")

    def export(self, path):
        """Asks for a ringtone at path; does not wait for it."""
        self.click(CREATE)
        self.answer_panel(SAVE_PANEL, path)

    def wait_until_revealed(self, path):
        """Until the file manager shows the folder with that file pointed out."""
        self.screen.wait_for(FILE_MANAGER, "frame", path.parent.name, seconds=30)

        def pointed_out():
            item = self.screen.find(FILE_MANAGER, "list item", path.name)
            return item and item.selected

        wait_until(pointed_out, lambda: f"{path.name} in\n" + self.screen.describe(FILE_MANAGER))

    # The fragment.

    def fragment(self):
        """The fragment's start, length and end in seconds, as they read."""
        return tuple(map(self._read_out, ("INICIO", "DURACIÓN", "FINAL")))

    def drag_handle(self, name, x):
        """Drags a handle with the mouse to a column of the screen."""
        at, y = self.handle(name)
        self.pointer.move(at, y)
        self.pointer.press()
        # A person's pointer passes through what lies between.
        self.pointer.move((at + x) / 2, y)
        self.pointer.move(x, y)
        self.pointer.release()

    def handle(self, name):
        """Where a handle can be taken: near its middle, on the side of the fragment,
        as the other side is cut off at the song's ends."""
        x, y = self.centre_of(self.wait_for("spin button", name))
        return x + (3 if name == START_HANDLE else -3), y

    # The alert.

    def alert(self, seconds=30.0):
        """The alert's message, once it shows."""
        return self.wait_for("alert", "Quibel", seconds).description

    def accept_alert(self):
        self.click(ACCEPT)
        wait_until(lambda: not self.has_button(ACCEPT), "the alert to go")

    def centre_of(self, element):
        """Where on the screen an element of the active window has its middle, once
        that window stands still."""
        window = element.window
        previous = None

        def still():
            nonlocal previous
            before, previous = previous, self._active_box()
            return previous if before == previous and _same_size(previous, window.box) else None

        there = wait_until(still, f"the window of {element.name!r} to be active")
        # Where a program believes its window to be, its frame is counted in.
        left, _, top, _ = self._frame(self._active())
        x, y = element.box.centre
        return there.x + x - window.box.x - left, there.y + y - window.box.y - top

    def _active(self):
        """The active window, or None."""
        try:
            return self.desktop.run("xdotool", "getactivewindow").decode().strip()
        except subprocess.CalledProcessError:
            return None

    def _frame(self, window_id):
        """What the window manager drew around a window: left, right, top, bottom."""
        extents = self.desktop.run("xprop", "-id", window_id, "-notype", "_NET_FRAME_EXTENTS")
        return map(int, extents.decode().split("=")[1].split(","))

    def _active_box(self):
        active = self._active()
        return active and self._box_of(active)

    def _box_of(self, window_id):
        geometry = self.desktop.run("xdotool", "getwindowgeometry", "--shell", window_id)
        values = dict(line.split("=") for line in geometry.decode().split())
        return Box(*(int(values[key]) for key in ("X", "Y", "WIDTH", "HEIGHT")))

    def _read_out(self, title):
        """The time under a title, in seconds."""
        times = (e for e in self.screen.elements(PROGRAM) if e.description == title)
        minutes, seconds = next(times).name.split(":")
        return int(minutes) * 60 + float(seconds)

    def _check_running(self):
        if self.process.poll() is not None:
            raise AssertionError(f"quibel ended with {self.process.returncode}:\n{self.log}")

    def _first_labels(self):
        self._check_running()
        return self.labels()

    def _find_window(self):
        """The window manager's number of the main window."""
        return wait_until(self._window_id, lambda: "the window:\n" + self.log)

    def _window_id(self):
        self._check_running()
        try:
            found = self.desktop.run("xdotool", "search", "--onlyvisible", "--name", "^Quibel$")
        except subprocess.CalledProcessError:  # while there is none
            return None
        return found.decode().split()[0]


def _same_size(one, other):
    return one is not None and (one.width, one.height) == (other.width, other.height)
