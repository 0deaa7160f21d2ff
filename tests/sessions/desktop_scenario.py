"""What the scenarios in a person's session stand on."""

import contextlib

import songs
from ear import Ear
from gnome import GnomeDesktop
from quibel import (
    CHOOSE, CREATE, END_HANDLE, LISTEN, OPEN_PANEL, SAVE_PANEL, START_HANDLE, STOP,
)  # fmt: skip
from ringtone import Ringtone
from scenario import Scenario
from session_quibel import GnomeQuibel
from waiting import wait_until


class SessionScenario(Scenario):
    def do_the_whole_job(self):
        """From a song to a ringtone, by a screen reader's actions."""
        song = songs.tone(self.song("Canción de otoño.wav"), 60)
        self.quibel.press(CHOOSE)
        self.quibel.panel(OPEN_PANEL).answer(song)
        self.quibel.wait_until_loaded()
        self.assertIn(song.name, self.quibel.labels())
        self.assertEqual(self.quibel.fragment(), (0, 40, 40))

        self.quibel.move_handle(START_HANDLE, 12.5)
        self.quibel.move_handle(END_HANDLE, 20)
        wait_until(lambda: self.quibel.fragment() == (12.5, 7.5, 20), "the fragment")

        with contextlib.closing(Ear(self.desktop)) as ear:
            self.quibel.press(LISTEN)
            ear.wait_for_sound()
        self.quibel.press(STOP)
        self.quibel.button(LISTEN)

        self.quibel.press(CREATE)
        # The panel proposes the song's folder, and its name.
        saved = song.with_suffix(".m4r")
        self.quibel.panel(SAVE_PANEL).accept()
        self.quibel.wait_for("label", f"Tono guardado: {saved.name}", seconds=60)
        self.assertAlmostEqual(Ringtone(saved).seconds, 7.5, delta=0.001)
        wait_until(
            lambda: self.desktop.revealed() == [saved.as_uri()],
            lambda: f"{saved} to be revealed, not {self.desktop.revealed()}",
        )


class GnomeScenario(SessionScenario):
    @classmethod
    def make_desktop(cls):
        return GnomeDesktop()

    def start(self):
        return GnomeQuibel(self.desktop, self.build)
