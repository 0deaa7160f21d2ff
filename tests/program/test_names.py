import songs
from quibel import CREATE
from scenario import Scenario


class Names(Scenario):
    """Songs called what files can be called."""

    def assert_usable(self, name, proposed):
        """A song of that name, in bytes, loads and can be saved as proposed."""
        path = bytes(self.desktop.home) + b"/" + name
        self.quibel.load(songs.tone(path, 1))
        self.quibel.click(CREATE)
        self.assertEqual(self.quibel.proposed_name(), proposed)
        self.quibel.pointer.type("Return")
        self.quibel.wait_for("label", f"Tono guardado: {proposed}", seconds=60)
        self.assertTrue((self.desktop.home / proposed).exists())

    def test_accents_and_blanks(self):
        self.assert_usable("Canción del ñandú.wav".encode(), "Canción del ñandú.m4r")

    def test_percent_signs(self):
        self.assert_usable(b"100%25 de %20 amor.wav", "100%25 de %20 amor.m4r")

    def test_characters_that_addresses_give_a_meaning(self):
        self.assert_usable(b"a#b?c&d;e+f.wav", "a#b?c&d;e+f.m4r")

    def test_markup_is_shown_as_it_is(self):
        self.assert_usable(b"<b>negrita</b> &amp;.wav".replace(b"/", b""), "<b>negrita<b> &amp;.m4r")
        self.assertIn("<b>negrita<b> &amp;.wav", self.quibel.labels())

    def test_a_newline(self):
        path = bytes(self.desktop.home) + "/dos\nlíneas.wav".encode()
        self.quibel.load(songs.tone(path, 1))

    def test_bytes_that_are_no_utf8(self):
        path = bytes(self.desktop.home) + b"/cami\xf3n.wav"
        self.quibel.load(songs.tone(path, 1))
        self.quibel.export(self.song("camión.m4r"))
        self.quibel.wait_for("label", "Tono guardado: camión.m4r", seconds=60)
