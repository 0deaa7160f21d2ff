"""Quibel as a window of a Wayland compositor, which itself is a window of the virtual
desktop."""

from accessible import Screen
from waiting import PATIENCE, wait_until

SOCKET = "wayland-quibel"


class WaylandQuibel:
    def __init__(self, desktop, build):
        self.desktop = desktop
        desktop.start("weston", "--backend=x11-backend.so", "--use-pixman", f"--socket={SOCKET}")
        wait_until(
            (desktop.root / "run" / SOCKET).exists,
            lambda: "the compositor:\n" + desktop.log("weston"),
        )
        session = {
            "QT_QPA_PLATFORM": "wayland",
            "WAYLAND_DISPLAY": SOCKET,
            "WAYLAND_DEBUG": "client",
            # Qt's plugin leaks as it closes, and is gone when that is counted, so that
            # no suppression can name it.
            "LSAN_OPTIONS": "detect_leaks=0",
        }
        self.process = desktop.start(str(build / "quibel"), env=desktop.environment | session)
        self._screen = Screen(desktop)

    @property
    def log(self):
        """What the program has said, all it has asked the compositor for included."""
        return self.desktop.log("quibel")

    def close(self):
        """Closes the window and returns what the process ended with."""
        self._screen.wait_for("quibel", "push button", "Cerrar").press()
        return self.process.wait(30 * PATIENCE)
