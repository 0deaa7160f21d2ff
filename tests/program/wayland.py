"""Quibel as a window of a Wayland compositor, which itself is a window of the virtual
desktop, so that the pointer and pictures reach it."""

import re

from accessible import Box, Screen
from pointer import Pointer
from virtual_desktop import SCREEN_HEIGHT, SCREEN_WIDTH
from waiting import PATIENCE, wait_until

COMPOSITOR = "Weston Compositor - screen0"
SOCKET = "wayland-quibel"
WIDTH, HEIGHT = 1200, 900
GROUND = bytes([0x20, 0x20, 0x20])
CONFIGURATION = "[shell]\npanel-position=none\nbackground-color=0xff202020\nlocking=false\n"


class WaylandQuibel:
    def __init__(self, desktop, build):
        self.desktop = desktop
        self.pointer = Pointer(desktop)
        self._start_compositor()
        session = {
            "QT_QPA_PLATFORM": "wayland",
            "WAYLAND_DISPLAY": SOCKET,
            "WAYLAND_DEBUG": "client",
        }
        self.process = desktop.start(str(build / "quibel"), env=desktop.environment | session)
        self._screen = Screen(desktop)
        self.button("Cerrar")
        wait_until(self._drawn, "the window to be drawn")
        # A compositor that was opened under the pointer may not know that it is there.
        self.pointer.move(SCREEN_WIDTH - 1, SCREEN_HEIGHT - 1)

    @property
    def log(self):
        """What the program has said, all it has asked the compositor for included."""
        return self.desktop.log("quibel")

    @property
    def box(self):
        """Where the window is on the virtual desktop: by its size as it knows it, and
        by the compositor's ground around it."""
        _, _, width, height = self._frame()
        left, top = self._drawn() or self._compositor()
        return Box(left, top, width, height)

    def button(self, name):
        return self._screen.wait_for("quibel", "push button", name)

    def close(self):
        """Closes the window and returns what the process ended with."""
        self.button("Cerrar").press()
        return self.process.wait(30 * PATIENCE)

    def _start_compositor(self):
        configuration = self.desktop.root / "weston.ini"
        configuration.write_text(CONFIGURATION)
        self.desktop.start(
            "weston", "--backend=x11-backend.so", "--use-pixman", f"--config={configuration}",
            f"--width={WIDTH}", f"--height={HEIGHT}", f"--socket={SOCKET}",
        )  # fmt: skip
        socket = self.desktop.root / "run" / SOCKET
        wait_until(socket.exists, lambda: "the compositor:\n" + self.desktop.log("weston"))

    def _frame(self):
        return self._screen.wait_for("quibel", "frame").box

    def _compositor(self):
        """Where the compositor's window has its ground."""
        said = self.desktop.run("xwininfo", "-name", COMPOSITOR).decode()
        return tuple(int(re.search(rf"Absolute upper-left {axis}:\s+(\d+)", said)[1]) for axis in "XY")

    def _drawn(self):
        """The upper left corner of what stands on the compositor's ground, or None where
        there is none, or no ground yet."""
        left, top = self._compositor()
        pixels = self.desktop.pixels(left, top, WIDTH, HEIGHT)
        ground = GROUND * WIDTH
        rows = [pixels[i : i + len(ground)] for i in range(0, len(pixels), len(ground))]
        if rows[-1] != ground:
            return None
        for y, row in enumerate(rows):
            if row != ground:
                x = next(x for x in range(WIDTH) if row[3 * x : 3 * x + 3] != GROUND)
                return left + x, top + y
        return None
