"""KDE's compositor on a screen that it makes up itself, with the portal that its users
have."""

import os
import shutil
import threading

from gi.repository import Gio, GLib

from session import HEIGHT, SOCKET, WIDTH, Session
from waiting import PATIENCE, wait_until

KWIN = "org.kde.KWin"


class KdeDesktop(Session):
    name = "KDE"
    portals = ("kde",)

    def screenshot(self, path):
        picture = self._folder / "screen.bgra"
        picture.write_bytes(self.screen())
        self.run(
            "ffmpeg", "-nostdin", "-loglevel", "error", "-y", "-f", "rawvideo", "-pix_fmt", "bgr0",
            "-video_size", f"{WIDTH}x{HEIGHT}", "-i", str(picture), str(path),
        )  # fmt: skip

    def screen(self):
        """The screen, four bytes (blue, green, red, nothing) a pixel, by rows."""
        reading, writing = os.pipe()
        received = bytearray()

        def receive():
            with open(reading, "rb") as pipe:
                received.extend(pipe.read())

        receiver = threading.Thread(target=receive)
        receiver.start()
        try:
            descriptors = Gio.UnixFDList.new_from_array([writing])  # closes it with itself
            self._bus.call_with_unix_fd_list_sync(
                KWIN, "/org/kde/KWin/ScreenShot2", "org.kde.KWin.ScreenShot2", "CaptureWorkspace",
                GLib.Variant("(a{sv}h)", ({}, 0)), None, Gio.DBusCallFlags.NONE,
                round(15000 * PATIENCE), descriptors,
            )  # fmt: skip
        finally:
            del descriptors
            receiver.join()
        return bytes(received)

    def _prepare_shell(self):
        self.environment |= {
            "KDE_FULL_SESSION": "true",
            "KDE_SESSION_VERSION": "5",
            # Everybody may have a picture of the screen.
            "KWIN_SCREENSHOT_NO_PERMISSION_CHECKS": "1",
        }

    def _start_shell(self):
        # A copy of it has no file capability, which containers refuse to grant.
        program = shutil.copy(shutil.which("kwin_wayland"), self._folder)
        outside = {k: v for k, v in self.environment.items() if k != "WAYLAND_DISPLAY"}
        self.start(
            program, "--virtual", "--width", str(WIDTH), "--height", str(HEIGHT), "--no-lockscreen",
            "--socket", SOCKET, env=outside,
        )  # fmt: skip
        wait_until(
            (self._folder / "run" / SOCKET).exists, lambda: "KWin:\n" + self.log("kwin_wayland"),
            seconds=60,
        )  # fmt: skip
