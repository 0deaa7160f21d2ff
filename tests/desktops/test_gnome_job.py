import contextlib

import songs
from desktop_scenario import GnomeScenario
from ear import Ear
from quibel import (
    CHOOSE, CREATE, END_HANDLE, LISTEN, OPEN_PANEL, SAVE_PANEL, START_HANDLE, STOP,
)  # fmt: skip
from ringtone import Ringtone
from waiting import wait_until


class GnomeJob(GnomeScenario):
    """From a song to a ringtone."""

    def test_by_a_screen_readers_actions(self):
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
        panel = self.quibel.panel(SAVE_PANEL)
        self.assertEqual(panel.proposed_name(), "Canción de otoño.m4r")
        saved = self.desktop.home / "Música" / "Otoño.m4r"
        panel.answer(saved)
        self.quibel.wait_for("label", f"Tono guardado: {saved.name}", seconds=60)
        self.assertAlmostEqual(Ringtone(saved).seconds, 7.5, delta=0.001)
        wait_until(
            lambda: self.desktop.revealed() == [saved.as_uri()],
            lambda: f"{saved} to be revealed, not {self.desktop.revealed()}",
        )

    def test_by_pointer_and_keys(self):
        song = songs.tone(self.song("cancion.wav"), 25)
        self.quibel.click(CHOOSE)
        self.quibel.panel(OPEN_PANEL).answer(song)
        self.quibel.wait_until_loaded()
        x, _, width, _ = self.quibel.box
        self.quibel.drag_handle(START_HANDLE, x + width / 4)
        self.quibel.drag_handle(END_HANDLE, x + width * 3 / 4)
        start, length, end = self.quibel.fragment()
        self.assertTrue(4 < start < 8 and 17 < end < 21, (start, end))

        self.quibel.click(LISTEN)
        self.quibel.pointer.type("space")
        self.quibel.button(LISTEN)
        self.quibel.pointer.type("Tab")
        wait_until(lambda: self.quibel.focused() == CREATE, "the button to have the focus")
        self.quibel.pointer.type("Return")
        saved = self.song("tono.m4r")
        self.quibel.panel(SAVE_PANEL).answer(saved)
        self.quibel.wait_for("label", "Tono guardado: tono.m4r", seconds=60)
        self.assertAlmostEqual(Ringtone(saved).seconds, length, delta=0.06)
