"""Quibel on Wayland. The compositor's one window fills the virtual screen: the X server's
pointer and picture are the compositor's."""

import re

from accessible import Box
from drag import Drag
from quibel import Quibel
from virtual_desktop import SCREEN_HEIGHT, SCREEN_WIDTH, VirtualDesktop
from waiting import PATIENCE, DeadlinePassed, wait_until

SOCKET = "wayland-quibel"

# Of the compositor's screen, in pixels.
WIDTH = SCREEN_WIDTH - 1

# Nothing but the programs' windows, and those at once.
SHELL = """
[core]
idle-time=0
[shell]
# Where no window is: green, as no window of Quibel is.
panel-position=none
background-color=0xff00ff00
startup-animation=none
close-animation=none
"""

# Where in a window the pointer is, as its program is told.
TOLD = (
    r"wl_pointer[@#]\d+\.(?:enter\(\d+, wl_surface[@#]\d+|motion\(\d+)"
    r", (-?[\d.]+), (-?[\d.]+)\)"
)


class WaylandDesktop(VirtualDesktop):
    # Outside the compositor's window: a pointer that is in it from the start it may never
    # notice.
    pointer_rests_at = (WIDTH, 0)

    def __init__(self):
        super().__init__(window_manager=None)

    def _start(self):
        super()._start()
        self.run("xdotool", "mousemove", *map(str, self.pointer_rests_at))
        shell = self.root / "weston.ini"
        shell.write_text(SHELL)
        self.start(
            "weston", f"--config={shell}", "--backend=x11-backend.so", "--use-pixman",
            f"--width={WIDTH}", f"--height={SCREEN_HEIGHT}", f"--socket={SOCKET}",
        )  # fmt: skip
        wait_until(
            (self.root / "run" / SOCKET).exists, lambda: "the compositor:\n" + self.log("weston")
        )
        self.environment |= {"QT_QPA_PLATFORM": "wayland", "WAYLAND_DISPLAY": SOCKET}


class WaylandDrag(Drag):
    def _find(self, desktop, ready):
        """The middle of the first ten pixels in a row that have the window's colour."""
        row = b"\xff\x00\xff" * 10

        def found():
            return desktop.pixels(0, 0, SCREEN_WIDTH, SCREEN_HEIGHT).find(row) // 3 + 1

        place = wait_until(found, "the window to drag from, of its colour") + 4
        return place % SCREEN_WIDTH, place // SCREEN_WIDTH + 5


class WaylandQuibel(Quibel):
    environment = {
        "WAYLAND_DEBUG": "client",
        # Qt's plugin leaks as it closes, and is gone when that is counted, so that no
        # suppression can name it.
        "LSAN_OPTIONS": "detect_leaks=0",
    }
    drag = WaylandDrag

    @property
    def geometry(self):
        """What of its surface counts as the window, without its shadow."""
        *_, geometry = re.findall(
            r"\.set_window_geometry\((\d+), (\d+), (\d+), (\d+)\)", self.log
        )
        return Box(*map(int, geometry))

    def fills(self, box):
        """Whether the window is painted up to all four edges of a box and no further,
        away from the edges' middles and ends, where the pointer may be painted too."""
        if self.geometry[2:] != box[2:]:
            return False
        picture = self.desktop.pixels(0, 0, SCREEN_WIDTH, SCREEN_HEIGHT)

        def is_ground(x, y):
            at = 3 * (y * SCREEN_WIDTH + x)
            # Also in the window's shadow.
            return picture[at] == picture[at + 2] == 0

        x, y, right, bottom = box.x, box.y, box.x + box.width - 1, box.y + box.height - 1
        column, row = x + box.width // 4, y + box.height // 4
        inside = ((column, y), (column, bottom), (x, row), (right, row))
        outside = ((column, y - 1), (column, bottom + 1), (x - 1, row), (right + 1, row))
        return all(is_ground(*at) for at in outside) and not any(is_ground(*at) for at in inside)

    @property
    def box(self):
        """Where the window is, which has to cover the screen's middle. No program is
        told that on Wayland, but where in its window the pointer is."""
        earlier = len(self.log)

        def origin():
            # Both near the screen's middle.
            self.pointer.move(600, 500)
            self.pointer.move(640, 512)
            told = re.findall(TOLD, self.log[earlier:])
            places = [(float(x), float(y)) for x, y in told]
            for (x, y), (next_x, next_y) in zip(places, places[1:]):
                if (next_x - x, next_y - y) == (40, 12):
                    return 600 - x, 500 - y
            return None

        x, y = map(int, wait_until(origin, "the pointer to be told of"))
        left, top, width, height = self.geometry
        return Box(x + left, y + top, width, height)

    def drag_window(self, start, end, arrived=lambda: True):
        """Has the compositor move or resize the window from one place (x, y) of the
        screen to the other, and lets go when arrived()."""
        def grab():
            taken = self.times_left()
            self.pointer.release()
            self.pointer.move(*start)
            self.pointer.press()
            self.pointer.move((start[0] + end[0]) / 2, (start[1] + end[1]) / 2)
            try:
                # From then on the pointer is the compositor's own.
                return wait_until(lambda: self.times_left() > taken, "a grab", seconds=4)
            except DeadlinePassed:
                return False

        # Presses again, as a person would, where nothing was grabbed.
        wait_until(grab, f"the window to be taken at {start}")
        self.pointer.move(*end)
        wait_until(arrived, f"the drag to arrive at {end}")
        self.pointer.release()

    def centre_of(self, element):
        x, y = element.box.centre
        window = element.window.box
        there = self.box
        left, top, *_ = self.geometry
        return there.x + x - window.x - left, there.y + y - window.y - top

    def close(self):
        """Closes the window, also a minimised one, unless it was closed before, and
        returns what the process ended with."""
        if self.process.poll() is None:
            self.button("Cerrar").press()
        return self.process.wait(30 * PATIENCE)

    def times_left(self):
        """How often the pointer has left the window."""
        return len(re.findall(r"wl_pointer[@#]\d+\.leave\(", self.log))

    def _find_window(self):
        """There is no window manager to ask."""
