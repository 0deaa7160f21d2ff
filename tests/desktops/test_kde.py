import contextlib

import songs
from ear import Ear
from kde import KdeDesktop
from quibel import (
    ACCEPT, CHANGE, CHOOSE, CREATE, END_HANDLE, LISTEN, OPEN_PANEL, SAVE_PANEL, START_HANDLE, STOP,
)  # fmt: skip
from ringtone import Ringtone
from scenario import Scenario
from session_quibel import SessionQuibel
from waiting import wait_until


class Kde(Scenario):
    @classmethod
    def make_desktop(cls):
        return KdeDesktop()

    def start(self):
        return SessionQuibel(self.desktop, self.build)

    def test_the_whole_job(self):
        song = songs.tone(self.song("Canción de otoño.wav"), 60)
        self.quibel.press(CHOOSE)
        self.quibel.panel(OPEN_PANEL).answer(song)
        self.quibel.wait_until_loaded()
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

    def test_the_panels_offer_music_and_downloads(self):
        self.quibel.press(CHOOSE)
        panel = self.quibel.panel(OPEN_PANEL)
        self.assertLessEqual({"Música", "Descargas"}, set(panel.places()))
        panel.cancel()

    def test_an_alert_ends_and_the_next_song_loads(self):
        text = self.song("apuntes.mp3")
        text.write_text("No soy una canción.\n")
        self.quibel.press(CHOOSE)
        self.quibel.panel(OPEN_PANEL).answer(text)
        self.assertRegex(self.quibel.alert(), r"^No se ha podido abrir el audio\. \S.*\.$")
        self.quibel.press(ACCEPT)
        wait_until(lambda: not self.quibel.has_button(ACCEPT), "the alert to go")
        self.quibel.press(CHANGE)
        self.quibel.panel(OPEN_PANEL).answer(songs.tone(self.song("canción.wav"), 3))
        self.quibel.wait_until_loaded()
        self.assertEqual(self.quibel.fragment(), (0, 3, 3))
