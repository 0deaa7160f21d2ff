import songs
from desktop_scenario import SessionScenario
from kde import KdeDesktop
from quibel import ACCEPT, CHANGE, CHOOSE, OPEN_PANEL
from session_quibel import SessionQuibel
from waiting import wait_until


class Kde(SessionScenario):
    @classmethod
    def make_desktop(cls):
        return KdeDesktop()

    def start(self):
        return SessionQuibel(self.desktop, self.build)

    def test_the_whole_job(self):
        self.do_the_whole_job()

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
