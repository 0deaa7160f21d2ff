import songs
from quibel import CREATE, END_HANDLE, GUIDANCE, SAVE_PANEL, START_HANDLE
from ringtone import Ringtone
from scenario import Scenario
from waiting import wait_until


class Export(Scenario):
    def save(self, path):
        """Exports to path and waits until the status says so."""
        self.quibel.export(path)
        self.quibel.wait_for("label", f"Tono guardado: {path.name}", seconds=60)

    def assert_ringtone(self, path, seconds):
        tone = Ringtone(path)
        self.assertEqual((tone.brand, tone.codec, tone.stream_count), ("M4A ", "aac", 1))
        self.assertAlmostEqual(tone.seconds, seconds, delta=0.001)
        self.assertLessEqual(tone.seconds, 40)

    def test_writes_a_ringtone_and_shows_it_in_the_file_manager(self):
        self.desktop.start_file_manager()
        self.quibel.load(songs.tone(self.song("Mi canción.wav"), 60))
        folder = self.desktop.home / "tonos"
        folder.mkdir()
        saved = folder / "Mi canción.m4r"
        self.save(saved)

        self.assert_ringtone(saved, 40)
        self.assertGreater(Ringtone(saved).loudness(20), 10000)
        self.quibel.wait_until_revealed(saved)
        self.assertEqual(self.temporary_ringtones(), [])
        self.assertTrue(self.quibel.button(CREATE).enabled)

    def test_the_panel_proposes_the_songs_name(self):
        for song, proposed in (("a.b.wav", "a.b.m4r"), ("Mi canción", "Mi canción.m4r")):
            self.quibel.load(songs.tone(self.song(song), 1))
            self.quibel.wait_for("label", song)
            self.quibel.click(CREATE)
            self.assertEqual(self.quibel.proposed_name(), proposed)
            self.quibel.cancel_panel(SAVE_PANEL)

    def test_cancelling_the_panel_changes_nothing(self):
        self.quibel.load(songs.tone(self.song("canción.wav"), 2))
        before = self.quibel.labels()
        self.quibel.click(CREATE)
        self.quibel.cancel_panel(SAVE_PANEL)
        self.assertEqual(self.quibel.labels(), before)
        self.assertIn(GUIDANCE, before)
        self.assertEqual(list(self.desktop.home.glob("**/*.m4r")), [])

    def test_takes_the_fragment_between_the_handles(self):
        # All the sound lies before the fragment.
        self.quibel.load(songs.tone(self.song("canción.wav"), 20, sounding=5))
        x, _, width, _ = self.quibel.box
        self.quibel.drag_handle(START_HANDLE, x + width / 2)
        wait_until(lambda: self.quibel.fragment()[0] > 6, "the start to move")
        saved = self.song("parte.m4r")
        self.save(saved)
        _, length, _ = self.quibel.fragment()
        self.assertAlmostEqual(Ringtone(saved).seconds, length, delta=0.06)
        self.assertLess(Ringtone(saved).loudness(1), 10)

    def test_takes_40_seconds_of_a_longer_fragment(self):
        self.quibel.load(songs.tone(self.song("larga.wav"), 90, rate=22050))
        x, _, width, _ = self.quibel.box
        self.quibel.drag_handle(END_HANDLE, x + width - 2)
        wait_until(lambda: self.quibel.fragment() == (0, 90, 90), "the whole song")
        saved = self.song("larga.m4r")
        self.save(saved)
        self.assert_ringtone(saved, 40)

    def test_asks_before_it_replaces_an_existing_file(self):
        self.quibel.load(songs.tone(self.song("canción.wav"), 2))
        saved = self.song("ya está.m4r")
        saved.write_text("lo de antes")
        self.quibel.export(saved)
        self.quibel.click("No")
        self.assertEqual(saved.read_text(), "lo de antes")
        self.quibel.cancel_panel(SAVE_PANEL)

        self.quibel.export(saved)
        self.quibel.click("Sí")
        self.quibel.wait_for("label", "Tono guardado: ya está.m4r", seconds=60)
        self.assert_ringtone(saved, 2)

    def test_adds_the_extension_that_was_left_out(self):
        self.quibel.load(songs.tone(self.song("canción.wav"), 1))
        self.quibel.export(self.song("sin extensión"))
        self.quibel.wait_for("label", "Tono guardado: sin extensión.m4r", seconds=60)
        self.assert_ringtone(self.song("sin extensión.m4r"), 1)

    def test_a_drop_meanwhile_loads_its_song(self):
        self.quibel.load(songs.slow_to_export(self.song("antes.flac")))
        saved = self.song("antes.m4r")
        other = songs.tone(self.song("entretanto.wav"), 7)
        drag = self.quibel.offer_files(other)
        self.quibel.export(saved)
        self.quibel.wait_until_active()
        drag.pick_up().move_over(*self.quibel.middle())
        drag.drop()
        self.assertFalse(saved.exists(), "The export was over before the drop.")
        self.quibel.wait_for("label", "Tono guardado: antes.m4r", seconds=60)
        self.assert_ringtone(saved, 40)
        self.assertIn("entretanto.wav", self.quibel.labels())
        wait_until(lambda: self.quibel.fragment() == (0, 7, 7), "the other song")

    def test_a_folder_that_cannot_be_written_to_ends_in_the_alert(self):
        self.quibel.load(songs.tone(self.song("canción.wav"), 1))
        self.quibel.export("/proc/tono.m4r")
        self.assertRegex(self.quibel.alert(), r"^No se ha podido guardar el tono\. \S.*\.$")
        self.quibel.accept_alert()
        self.assertEqual(self.temporary_ringtones(), [])
        self.assertTrue(self.quibel.button(CREATE).enabled)

    def test_a_song_that_has_vanished_ends_in_the_alert(self):
        song = songs.tone(self.song("fugaz.wav"), 2)
        self.quibel.load(song)
        song.unlink()
        self.quibel.export(self.song("fugaz.m4r"))
        self.assertRegex(
            self.quibel.alert(),
            r"^(No se ha podido crear el tono\. \S.*"
            r"|Este formato no se puede convertir a AAC)\.$",
        )
        self.quibel.accept_alert()
        self.assertFalse(self.song("fugaz.m4r").exists())

    def temporary_ringtones(self):
        return list(self.desktop.temporary.glob("*.m4a"))
