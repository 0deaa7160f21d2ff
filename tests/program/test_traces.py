import songs
from quibel import LISTEN, STOP
from scenario import Scenario


class Traces(Scenario):
    """What stays on the disk of a person who has not used a program before."""

    def start(self):
        self.settings = self.desktop.root / "settings"
        self.settings.mkdir()
        self.desktop.environment["XDG_CONFIG_HOME"] = str(self.settings)
        return super().start()

    def test_a_song_that_was_heard_leaves_none(self):
        self.quibel.load(songs.tone(self.song("canción.wav"), 3))
        self.quibel.click(LISTEN)
        self.quibel.click(STOP)
        self.quibel.button(LISTEN)
        self.assertEqual(self.quibel.close(), 0, self.quibel.log)
        self.assertEqual(list(self.settings.rglob("*")), [])
