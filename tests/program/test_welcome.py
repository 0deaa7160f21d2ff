import contextlib
import pathlib
import re
import unittest

import songs
from quibel import CHANGE, CHOOSE, CREATE, LISTEN, OPEN_PANEL
from scenario import Scenario
from waiting import wait_until


class Welcome(Scenario):
    def test_shows_the_invitation_and_no_song(self):
        labels = self.quibel.labels()
        self.assertIn("Quibel", labels)
        self.assertIn("Tu canción favorita, convertida en tono para iPhone", labels)
        self.assertIn("Arrastra aquí un archivo de audio", labels)
        self.assertIn("MP3, M4A, WAV, AIFF y otros formatos compatibles con macOS", labels)
        self.assertTrue(self.quibel.has_button(CHOOSE))
        self.assertFalse(self.quibel.has_button(CHANGE))

    def test_choosing_a_song_leads_to_the_workspace(self):
        song = songs.tone(self.song("elegida.wav"), 50)
        self.quibel.click(CHOOSE)
        self.quibel.answer_panel(OPEN_PANEL, song)
        self.quibel.wait_until_loaded()

        self.assertIn("elegida.wav", self.quibel.labels())
        self.assertIn("00:50.0", self.quibel.labels())
        self.assertEqual(self.quibel.fragment(), (0, 40, 40))
        self.assertFalse(self.quibel.has_button(CHOOSE))
        for button in (CHANGE, LISTEN, CREATE):
            self.assertTrue(self.quibel.has_button(button), button)

    def test_cancelling_the_open_panel_leaves_it_as_it_was(self):
        before = self.quibel.labels()
        self.quibel.click(CHOOSE)
        self.quibel.cancel_panel(OPEN_PANEL)
        self.assertEqual(self.quibel.labels(), before)
        self.assertTrue(self.quibel.has_button(CHOOSE))

    def test_the_open_panel_offers_audio_only(self):
        songs.tone(self.song("audio.wav"), 1)
        self.song("texto.txt").write_text("hola")
        self.quibel.click(CHOOSE)
        self.quibel.wait_for("tree item", "audio.wav")
        self.assertFalse(self.quibel.has("tree item", "texto.txt"))
        self.quibel.cancel_panel(OPEN_PANEL)


class Panels(Scenario):
    def start(self):
        music = self.desktop.home / "Music"
        music.mkdir()
        songs.tone(music / "entre las mías.wav", 2)
        return super().start()

    def test_the_first_panel_opens_among_the_persons_music(self):
        self.quibel.click(CHOOSE)
        self.quibel.wait_for("tree item", "entre las mías.wav")
        self.quibel.cancel_panel(OPEN_PANEL)

    def test_a_later_panel_opens_where_the_last_was_confirmed(self):
        folder = self.song("otras")
        folder.mkdir()
        song = songs.tone(folder / "una.wav", 2)
        songs.tone(folder / "vecina.wav", 2)
        self.quibel.click(CHOOSE)
        self.quibel.answer_panel(OPEN_PANEL, song)
        self.quibel.wait_until_loaded()
        self.quibel.click(CHANGE)
        self.quibel.wait_for("tree item", "vecina.wav")
        self.quibel.cancel_panel(OPEN_PANEL)

    def test_no_folder_of_a_panel_stays_in_use(self):
        stick = self.song("lápiz")
        stick.mkdir()
        self.quibel.click(CHOOSE)
        self.quibel.answer_panel(OPEN_PANEL, songs.tone(stick / "canción.wav", 2))
        self.quibel.wait_until_loaded()
        process = pathlib.Path(f"/proc/{self.quibel.process.pid}")
        self.assertEqual((process / "cwd").readlink(), pathlib.Path("/"))

        def in_use():
            files = []
            for link in (process / "fd").iterdir():
                with contextlib.suppress(FileNotFoundError):  # closed meanwhile
                    files.append(link.readlink())
            return [file for file in files if file.is_relative_to(stick)]

        wait_until(lambda: not in_use(), lambda: f"what is in use still: {in_use()}")

    def test_nothing_of_a_panel_is_kept_on_disk(self):
        self.quibel.click(CHOOSE)
        self.quibel.answer_panel(OPEN_PANEL, self.song("Music") / "entre las mías.wav")
        self.quibel.wait_until_loaded()
        self.assertEqual(self.quibel.close(), 0, self.quibel.log)
        kept = {path.name for path in (self.desktop.home / ".config").rglob("*")}
        self.assertFalse({name for name in kept if re.search("Qt|quibel", name)}, kept)


class WelcomeInTheCLocale(Scenario):
    language = "C"

    def test_texts_are_spanish(self):
        self.assertIn("Arrastra aquí un archivo de audio", self.quibel.labels())
        song = songs.tone(self.song("canción.wav"), 1)
        self.quibel.load(song)
        self.assertIn("canción.wav", self.quibel.labels())
        self.assertIn("DURACIÓN", self.quibel.labels())
        self.quibel.click(CHANGE)
        self.assertTrue(self.quibel.button("Abrir"))
        self.quibel.cancel_panel(OPEN_PANEL)


if __name__ == "__main__":
    unittest.main()
