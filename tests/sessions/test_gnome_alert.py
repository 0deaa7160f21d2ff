import songs
from desktop_scenario import GnomeScenario
from quibel import ACCEPT, CHOOSE, OPEN_PANEL, PROGRAM, START_HANDLE
from waiting import wait_until

MESSAGE = r"^No se ha podido abrir el audio\. \S.*\.$"


class GnomeAlert(GnomeScenario):
    """The alert of a text that was chosen as a song."""

    def setUp(self):
        super().setUp()
        text = self.song("apuntes.mp3")
        text.write_text("No soy una canción.\n")
        self.quibel.press(CHOOSE)
        self.quibel.panel(OPEN_PANEL).answer(text)
        self.assertRegex(self.quibel.alert(), MESSAGE)

    def test_shows_in_the_middle_of_the_window(self):
        self.assertEqual(
            [window.number for window in self.desktop.windows()], [self.quibel.window_id]
        )
        accept = self.quibel.button(ACCEPT)
        window = accept.window.box
        text = self.quibel.alert()
        message = next(e for e in self.quibel.screen.elements(PROGRAM) if e.name == text)
        for element in (accept, message):
            self.assertAlmostEqual(element.box.centre[0], window.centre[0], delta=1)
        # The one above the middle, the other below it.
        self.assertTrue(window.y < message.box.y < window.centre[1], (message.box, window))
        bottom = accept.box.y + accept.box.height
        self.assertTrue(window.centre[1] < bottom < window.y + window.height, (accept.box, window))

    def test_has_the_keys_and_gives_them_back(self):
        self.assertEqual(self.quibel.focused(), ACCEPT)
        self.quibel.pointer.type("Tab")
        self.assertEqual(self.quibel.focused(), ACCEPT)
        self.quibel.pointer.type("Escape")
        self.wait_until_over()
        self.quibel.wait_until_active()
        self.assertEqual(self.quibel.focused(), START_HANDLE)

    def test_is_ended_by_its_button(self):
        self.quibel.click(ACCEPT)
        self.wait_until_over()

    def test_stays_while_a_song_is_dropped(self):
        song = songs.tone(self.song("soltada.wav"), 7)
        self.assertEqual(self.quibel.drop_files(song), "finished")
        self.assertRegex(self.quibel.alert(), MESSAGE)
        self.quibel.press(ACCEPT)
        self.wait_until_over()
        self.quibel.wait_until_loaded()
        self.assertEqual(self.quibel.fragment(), (0, 7, 7))

    def wait_until_over(self):
        wait_until(lambda: not self.quibel.has_button(ACCEPT), "the alert to go")
