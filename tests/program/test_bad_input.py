import os

import songs
from quibel import LISTEN
from scenario import Scenario
from waiting import wait_until


class BadInput(Scenario):
    """What cannot be loaded says so, and the next song loads."""

    def assert_refused(self, path):
        self.quibel.drop_files(path)
        self.assertRegex(self.quibel.alert(), r"^No se ha podido abrir el audio\. \S.*\.$")
        self.quibel.accept_alert()
        self.assertIn(os.path.basename(path), self.quibel.labels())
        self.assert_next_song_loads()

    def assert_next_song_loads(self):
        self.quibel.load(songs.tone(self.song("la siguiente.wav"), 2))
        self.assertIn("la siguiente.wav", self.quibel.labels())
        self.assertEqual(self.quibel.fragment(), (0, 2, 2))

    def test_a_file_that_is_missing(self):
        self.assert_refused(self.song("no está.mp3"))

    def test_a_folder(self):
        self.song("carpeta.mp3").mkdir()
        self.assert_refused(self.song("carpeta.mp3"))

    def test_a_file_that_may_not_be_read(self):
        song = songs.tone(self.song("prohibida.wav"), 1)
        song.chmod(0)
        # A file of the kernel's that not even root may read.
        candidates = [song, "/proc/sys/vm/compact_memory"]
        unreadable = [path for path in candidates if not _readable(path)]
        if not unreadable:
            self.skipTest("Every file can be read by this user.")
        self.assert_refused(unreadable[0])

    def test_a_file_whose_reading_fails(self):
        # Opens, and every read at its beginning is an input/output error.
        self.assert_refused("/proc/self/mem")

    def test_an_empty_file(self):
        self.song("vacía.mp3").touch()
        self.assert_refused(self.song("vacía.mp3"))

    def test_a_song_without_frames(self):
        self.assert_refused(songs.tone(self.song("sin nada.wav"), 0))

    def test_a_text_named_like_a_song(self):
        self.song("letra.mp3").write_text("La, la, la.\n" * 500)
        self.assert_refused(self.song("letra.mp3"))

    def test_a_playlist_named_like_a_song(self):
        hidden = songs.tone(self.song("oculta.wav"), 1)
        self.song("lista.mp3").write_text(
            f"#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\n{hidden}\n#EXT-X-ENDLIST\n"
        )
        self.assert_refused(self.song("lista.mp3"))

    def test_a_picture(self):
        self.assert_refused(songs.picture(self.song("foto.png")))

    def test_a_video_without_sound(self):
        self.assert_refused(songs.silent_film(self.song("muda.mp4")))

    def test_a_cut_file_loads_as_far_as_it_goes(self):
        for name in ("cortada.mp3", "cortada.flac"):
            song = songs.encoded(self.song(name), 20)
            os.truncate(song, song.stat().st_size // 2)
            self.quibel.load(song)
            self.assertIn(name, self.quibel.labels())
            self.assert_next_song_loads()

    def test_a_file_that_vanishes_while_it_is_read(self):
        song = songs.endless(self.song("se esfuma.wav"))
        self.quibel.drop_files(song)
        self.quibel.wait_for("label", "Analizando audio…")
        os.truncate(song, 0)
        song.unlink()
        wait_until(
            lambda: not self.quibel.has("label", "Analizando audio…"), "an end", seconds=60
        )
        self.assertRegex(self.quibel.alert(), r"^No se ha podido abrir el audio\. \S.*\.$")
        self.quibel.accept_alert()
        self.assert_next_song_loads()

    def test_a_song_that_vanished_cannot_be_played(self):
        song = songs.tone(self.song("fugaz.wav"), 2)
        self.quibel.load(song)
        song.unlink()
        self.quibel.click(LISTEN)
        self.assertRegex(self.quibel.alert(), r"^No se ha podido reproducir el audio\. \S.*\.$")
        self.quibel.accept_alert()
        self.assertTrue(self.quibel.has_button(LISTEN))
        self.assert_next_song_loads()


def _readable(path):
    try:
        with open(path, "rb"):
            return True
    except OSError:
        return False
