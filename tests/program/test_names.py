import songs
from quibel import CREATE, LISTEN, STOP
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

    def test_a_newline_is_shown_on_one_line(self):
        self.assert_loads("dos\nlíneas.wav".encode(), "dos␊líneas.wav")

    def test_bytes_that_are_no_utf8(self):
        self.assert_loads(b"cami\xf3n.wav", "cami\N{REPLACEMENT CHARACTER}n.wav")

    def assert_loads(self, name, shown):
        """A song of that name, in bytes, loads, plays and makes a ringtone."""
        self.quibel.load(songs.tone(bytes(self.desktop.home) + b"/" + name, 1))
        self.assertIn(shown, self.quibel.labels())
        self.quibel.click(LISTEN)
        self.quibel.click(STOP)
        self.quibel.export(self.song("tono.m4r"))
        self.quibel.wait_for("label", "Tono guardado: tono.m4r", seconds=60)
