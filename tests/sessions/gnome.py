"""GNOME Shell on a screen that it makes up itself, with the portal that its users have."""

import json
import pathlib
from typing import NamedTuple

from gi.repository import GLib

from accessible import Box
from session import HEIGHT, SOCKET, WIDTH, Session
from waiting import wait_until

SHELL = "org.gnome.Shell"

# Settings of a session.
COLOR_SCHEME = "org.gnome.desktop.interface color-scheme"
TEXT_SCALE = "org.gnome.desktop.interface text-scaling-factor"
NOTIFICATIONS = "org.gnome.desktop.notifications show-banners"
KEY_REPEAT = "org.gnome.desktop.peripherals.keyboard repeat"
BUTTON_LAYOUT = "org.gnome.desktop.wm.preferences button-layout"

WINDOWS = """
global.get_window_actors().map(actor => actor.meta_window).map(window => {
  const numbers = ({x, y, width, height}) => [x, y, width, height];
  return [window.get_id(), window.get_pid(), window.get_title(),
          numbers(window.get_frame_rect()), numbers(window.get_buffer_rect()), window.has_focus()];
})
"""


class Window(NamedTuple):
    """A window as the compositor knows it; its box is without the shadow, its surface with."""

    number: int
    process: int
    title: str
    box: Box
    surface: Box
    has_focus: bool


class GnomeDesktop(Session):
    """A session with the desktop showing instead of the overview.

    settings are what it starts with: schemas with keys, and values as gsettings takes
    them. With x11 it has an X server for older programs.
    """

    name = "GNOME"
    portals = ("gnome", "gtk")

    def __init__(self, settings=None, x11=False):
        super().__init__()
        self._settings = {NOTIFICATIONS: "false", KEY_REPEAT: "false"} | (settings or {})
        self._x11 = x11

    def evaluate(self, script):
        """What a script gives that runs inside the shell."""
        done, answer = self.call(SHELL, "/org/gnome/Shell", "Eval", "(s)", script)
        if not done:
            raise RuntimeError(answer)
        return json.loads(answer) if answer else None

    def windows(self, title=None):
        """All windows, or those of a title, from the lowest to the uppermost."""
        known = self.evaluate(WINDOWS)
        windows = [
            Window(*names, Box(*box), Box(*surface), has_focus)
            for *names, box, surface, has_focus in known
        ]
        return [window for window in windows if title in (None, window.title)]

    def move_window(self, number, x, y):
        self.evaluate(
            "global.get_window_actors().map(actor => actor.meta_window)"
            f".find(window => window.get_id() === {number}).move_frame(true, {x}, {y})"
        )

    def set(self, key, value):
        """Changes a setting of the session."""
        schema, name = key.split()
        self.run("gsettings", "set", schema, name, value)

    def screenshot(self, path):
        # The shell need not be allowed to write there.
        picture = self._folder / "screen.png"
        self.call(
            SHELL, "/org/gnome/Shell/Screenshot", "Screenshot", "(bbs)", False, False, str(picture),
            interface="org.gnome.Shell.Screenshot",
        )  # fmt: skip
        pathlib.Path(path).write_bytes(picture.read_bytes())

    def screen(self):
        """The whole screen's pixels."""
        return self.pixels(0, 0, WIDTH, HEIGHT)

    def pixels(self, x, y, width, height):
        picture = self._folder / "pixels.png"
        self.screenshot(picture)
        return self.run(
            "ffmpeg", "-nostdin", "-loglevel", "error", "-i", str(picture),
            "-vf", f"crop={width}:{height}:{x}:{y}", "-f", "rawvideo", "-pix_fmt", "rgb24", "-",
        )  # fmt: skip

    def brightness(self, box):
        """How bright a part of the screen is on the whole, from 0 to 255."""
        pixels = self.pixels(*box)
        return sum(pixels) / len(pixels)

    def _prepare_shell(self):
        self.environment["GSETTINGS_BACKEND"] = "keyfile"

    def _start_shell(self):
        for key, value in self._settings.items():
            self.set(key, value)
        self.start(
            "gnome-shell", "--headless", "--virtual-monitor", f"{WIDTH}x{HEIGHT}", "--wayland",
            f"--wayland-display={SOCKET}", "--unsafe-mode", *([] if self._x11 else ["--no-x11"]),
        )  # fmt: skip
        wait_until(self._started, lambda: "the shell:\n" + self.log("gnome-shell"), seconds=60)
        if self._x11:
            for name in ("DISPLAY", "XAUTHORITY"):
                self.environment[name] = self.evaluate(f"imports.gi.GLib.getenv('{name}')")
        self.evaluate("Main.overview.hide()")
        wait_until(lambda: not self.evaluate("Main.overview.visible"), "the overview to go")

    def _started(self):
        try:
            return not self.evaluate("Main.layoutManager._startingUp")
        except (GLib.Error, RuntimeError):
            return False
