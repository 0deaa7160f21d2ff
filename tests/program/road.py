"""Quibel's main job, from a dropped song to a ringtone shown in the file manager, on
a virtual screen with real input. Prints where the ringtone and a picture of each step
lie. Run as: road.py FOLDER-OF-THE-PROGRAMS FOLDER-FOR-THE-RESULTS
"""

import contextlib
import pathlib
import sys

from ear import Ear
from quibel import CREATE, END_HANDLE, LISTEN, SAVE_PANEL, START_HANDLE, STOP, Quibel
from ringtone import Ringtone
from virtual_desktop import VirtualDesktop
from waiting import wait_until

SONG = "/usr/share/games/asc/music/frontiers.mp3"


class Road:
    def __init__(self, desktop, build, results):
        self._desktop = desktop
        self._results = results
        self._steps = 0
        self.quibel = Quibel(desktop, build)

    def picture(self, step):
        self._steps += 1
        path = self._results / f"{self._steps}-{step}.png"
        self._desktop.screenshot(path)
        print(f"{step}: {path}", flush=True)

    def take(self):
        quibel = self.quibel
        self.picture("welcome")
        self._drop()
        self._choose_fragment()
        self._listen()
        ringtone = self._export()
        self._reveal(ringtone)
        quibel.close()
        return ringtone

    def _drop(self):
        drag = self.quibel.offer_files(SONG).pick_up()
        drag.move_over(*self.quibel.middle())
        self.picture("drag")
        drag.drop()
        self.quibel.wait_until_loaded()
        self.picture("song")

    def _choose_fragment(self):
        x, _, width, _ = self.quibel.box
        self.quibel.drag_handle(END_HANDLE, x + width * 0.65)
        self.quibel.drag_handle(START_HANDLE, x + width * 0.6)
        wait_until(lambda: self.quibel.fragment()[0] > 0, "the handles to move")
        self.picture("fragment")

    def _listen(self):
        self.quibel.click(LISTEN)
        self.quibel.button(STOP)
        with contextlib.closing(Ear(self._desktop)) as ear:
            ear.wait_for_sound()
        self.picture("loop")
        self.quibel.click(STOP)

    def _export(self):
        ringtone = self._results / "Frontiers.m4r"
        ringtone.unlink(missing_ok=True)
        self.quibel.click(CREATE)
        self.quibel.wait_for("dialog", SAVE_PANEL)
        self.picture("panel")
        self.quibel.answer_panel(SAVE_PANEL, ringtone)
        self.quibel.wait_for("label", f"Tono guardado: {ringtone.name}", seconds=60)
        self.picture("saved")
        return ringtone

    def _reveal(self, ringtone):
        self.quibel.wait_until_revealed(ringtone)
        self.picture("revealed")


def main():
    build, results = (pathlib.Path(argument).resolve() for argument in sys.argv[1:])
    results.mkdir(parents=True, exist_ok=True)
    with VirtualDesktop() as desktop:
        desktop.start_file_manager()
        ringtone = Road(desktop, build, results).take()
    facts = Ringtone(ringtone)
    print(f"ringtone: {ringtone} ({facts.codec}, {facts.seconds:.3f} s)")


if __name__ == "__main__":
    main()
