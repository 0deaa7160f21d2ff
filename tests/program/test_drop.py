import songs
from quibel import CHANGE, CHOOSE, CREATE, GTK_SOURCE, LISTEN, OPEN_PANEL, STOP
from scenario import Scenario
from virtual_desktop import FILE_MANAGER
from waiting import wait_until


class Drop(Scenario):
    def test_a_file_leads_to_the_workspace(self):
        self.quibel.load(songs.tone(self.song("soltada.wav"), 25))
        self.assertIn("soltada.wav", self.quibel.labels())
        self.assertEqual(self.quibel.fragment(), (0, 25, 25))
        self.assertTrue(self.quibel.button(CREATE).enabled)

    def test_of_two_files_only_the_first_is_loaded(self):
        first = songs.tone(self.song("primera.wav"), 3)
        second = songs.tone(self.song("segunda.wav"), 2)
        self.assertEqual(self.quibel.drop_files(first, second), "finished")
        self.quibel.wait_until_loaded()
        self.assertIn("primera.wav", self.quibel.labels())
        self.assertEqual(self.quibel.fragment(), (0, 3, 3))

    def test_a_text_file_is_accepted_and_ends_in_the_alert(self):
        text = self.song("apuntes.txt")
        text.write_text("No soy una canción.\n")
        self.assertEqual(self.quibel.drop_files(text), "finished")
        self.assertRegex(self.quibel.alert(), r"^No se ha podido abrir el audio\. \S.*\.$")
        self.quibel.accept_alert()
        self.assertIn("apuntes.txt", self.quibel.labels())
        self.assertTrue(self.quibel.has_button(LISTEN))
        self.assertTrue(self.quibel.button(CREATE).enabled)

    def test_the_alert_takes_a_drop_on_the_veil_and_on_the_card_and_stays(self):
        text = self.song("apuntes.txt")
        text.write_text("No soy una canción.\n")
        self.quibel.drop_files(text)
        message = self.quibel.alert()
        x, y, width, height = self.quibel.box
        veil, card = (x + width / 4, y + height - 30), self.quibel.middle()
        for name, place in (("velo.wav", veil), ("tarjeta.wav", card)):
            drag = self.quibel.offer_files(songs.tone(self.song(name), 3)).pick_up()
            self.assertEqual(drag.move_over(*place), "accepts")
            self.assertEqual(drag.drop(), "finished")
            self.assertEqual(self.quibel.alert(), message)
        self.quibel.accept_alert()
        self.quibel.wait_until_loaded()
        self.assertIn("tarjeta.wav", self.quibel.labels())

    def test_what_is_no_file_is_refused(self):
        self.assert_refused("text/plain", "hola")

    def test_an_address_that_is_no_file_is_refused(self):
        self.assert_refused("text/uri-list", "https://example.org/cancion.mp3\r\n")

    def test_a_gtk_programs_file_leads_to_the_workspace(self):
        song = songs.tone(self.song("de otro.wav"), 3)
        drag = self.quibel.offer_files(song, source=GTK_SOURCE).pick_up()
        self.assertEqual(drag.move_over(*self.quibel.middle()), "accepts")
        self.assertEqual(drag.drop(), "finished")
        self.quibel.wait_until_loaded()
        self.assertIn("de otro.wav", self.quibel.labels())

    def test_a_file_managers_file_leads_to_the_workspace(self):
        folder = self.song("canciones")
        folder.mkdir()
        songs.tone(folder / "elegida.wav", 3)
        self.desktop.start(FILE_MANAGER, str(folder))
        icon = self.quibel.screen.wait_for(FILE_MANAGER, "list item", "elegida.wav", seconds=30)
        x, y, width, height = self.quibel.box
        # A corner that no other window lies upon.
        self.quibel.pointer.drag(
            self.quibel.centre_of(icon), (x + width - 40, y + height - 40), self.quibel.is_highlighted
        )
        self.quibel.wait_until_loaded()
        self.assertIn("elegida.wav", self.quibel.labels())

    def test_a_file_replaces_the_song_and_stops_the_loop(self):
        self.quibel.load(songs.tone(self.song("antes.wav"), 30))
        self.quibel.click(LISTEN)
        self.quibel.button(STOP)
        self.quibel.drop_files(songs.tone(self.song("ahora.wav"), 4))
        self.quibel.wait_for("label", "ahora.wav")
        self.quibel.wait_until_loaded()
        self.assertTrue(self.quibel.has_button(LISTEN))
        self.assertEqual(self.quibel.fragment(), (0, 4, 4))

    def test_a_drag_over_the_header_highlights_the_welcome_panel(self):
        song = songs.tone(self.song("sobrevuela.wav"), 1)
        drag = self.quibel.offer_files(song).pick_up()
        x, y, width, _ = self.quibel.box
        self.assertEqual(drag.move_over(x + width / 2, y + 60), "accepts")
        wait_until(self.quibel.is_highlighted, "the highlight")
        drag.move_over(x + width / 2, y - 30)
        wait_until(lambda: not self.quibel.is_highlighted(), "the highlight to go")
        drag.drop()

    def test_changing_the_song_through_the_panel_replaces_it(self):
        self.quibel.load(songs.tone(self.song("una.wav"), 2))
        other = songs.tone(self.song("otra.wav"), 5)
        self.quibel.click(CHANGE)
        self.quibel.answer_panel(OPEN_PANEL, other)
        self.quibel.wait_for("label", "otra.wav")
        self.quibel.wait_until_loaded()
        self.assertEqual(self.quibel.fragment(), (0, 5, 5))

    def test_a_cancelled_panel_keeps_the_song(self):
        self.quibel.load(songs.tone(self.song("queda.wav"), 2))
        before = self.quibel.labels()
        self.quibel.click(CHANGE)
        self.quibel.cancel_panel(OPEN_PANEL)
        self.assertEqual(self.quibel.labels(), before)

    def assert_refused(self, mime_type, data):
        before = self.quibel.labels()
        drag = self.quibel.offer(mime_type, data).pick_up()
        self.assertEqual(drag.move_over(*self.quibel.middle()), "refuses")
        self.assertEqual(drag.drop(), "cancelled")
        self.assertEqual(self.quibel.labels(), before)
        self.assertTrue(self.quibel.has_button(CHOOSE))
