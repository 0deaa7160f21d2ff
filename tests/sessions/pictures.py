"""Takes pictures of Quibel in sessions of GNOME and KDE into the folder QUIBEL_RESULTS;
the programs are in QUIBEL_BUILD."""

import contextlib
import os
import pathlib

from gnome import COLOR_SCHEME, TEXT_SCALE, GnomeDesktop
from kde import KdeDesktop
from quibel import (
    ACCEPT, CHANGE, CHOOSE, CREATE, END_HANDLE, LISTEN, OPEN_PANEL, SAVE_PANEL, START_HANDLE,
)  # fmt: skip
from session_quibel import GnomeQuibel, SessionQuibel
from waiting import DeadlinePassed, wait_until

GNOME_LOOKS = {
    "light": {},
    "dark": {COLOR_SCHEME: "prefer-dark"},
    "large-text": {TEXT_SCALE: "2.0"},
}

SONG = pathlib.Path("/usr/share/games/asc/music/frontiers.mp3")


class Album:
    """The pictures of one look, numbered in their order."""

    def __init__(self, quibel, results, look):
        self._desktop = quibel.desktop
        self._results = results
        self._look = look
        self._count = 0
        self._quibel = quibel

    def take_all(self):
        quibel, music = self._quibel, self._desktop.home / "Música"
        song = music / "Frontiers.mp3"
        song.write_bytes(SONG.read_bytes())
        text = music / "Apuntes.mp3"
        text.write_text("No soy una canción.\n")

        self._take("welcome")
        quibel.press(CHOOSE)
        panel = quibel.panel(OPEN_PANEL)
        self._take("open-panel")
        panel.answer(song)
        quibel.wait_until_loaded()
        self._take("song")
        quibel.move_handle(END_HANDLE, 79.6)
        quibel.move_handle(START_HANDLE, 48.2)
        wait_until(lambda: quibel.fragment() == (48.2, 31.4, 79.6), "the fragment")
        quibel.press(LISTEN)
        self._take("loop")
        quibel.press(CREATE)
        panel = quibel.panel(SAVE_PANEL)
        self._take("save-panel")
        panel.answer(music / "Frontiers.m4r")
        quibel.wait_for("label", "Tono guardado: Frontiers.m4r", seconds=60)
        self._take("saved")
        quibel.press(CHANGE)
        quibel.panel(OPEN_PANEL).answer(text)
        quibel.button(ACCEPT)
        self._take("alert")

    def _take(self, state):
        self._wait_until_still()
        self._count += 1
        self._desktop.screenshot(self._results / f"{self._look}-{self._count}-{state}.png")

    def _wait_until_still(self):
        """Until two pictures in a row show the same, but not for ever where something
        moves."""
        previous = None

        def still():
            nonlocal previous
            before, previous = previous, self._desktop.screen()
            return before == previous

        with contextlib.suppress(DeadlinePassed):
            wait_until(still, "a still screen", seconds=3)


def main():
    build, results = (pathlib.Path(os.environ[f"QUIBEL_{name}"]) for name in ("BUILD", "RESULTS"))
    for look, settings in GNOME_LOOKS.items():
        with GnomeDesktop(settings) as desktop:
            desktop.begin_session()
            quibel = GnomeQuibel(desktop, build)
            # The shell's sign that the screen is remotely controlled.
            desktop.evaluate("Main.panel.statusArea.screenSharing.container.hide()")
            Album(quibel, results, f"gnome-{look}").take_all()
    with KdeDesktop() as desktop:
        desktop.begin_session()
        Album(SessionQuibel(desktop, build), results, "kde").take_all()


if __name__ == "__main__":
    main()
