import contextlib

import songs
from accessible import Announcements, SpokenValues
from ear import Ear
from quibel import (
    ACCEPT, CHOOSE, CREATE, END_HANDLE, GUIDANCE, LISTEN, OPEN_PANEL, PROGRAM, SAVE_PANEL,
    START_HANDLE, STOP,
)  # fmt: skip
from ringtone import Ringtone
from scenario import Scenario
from waiting import wait_until


class Accessibility(Scenario):
    """Without a pointer and without the keyboard: through AT-SPI alone, as a switch or
    a voice would."""

    def setUp(self):
        super().setUp()
        self._announcements = self.enterContext(contextlib.closing(Announcements(self.desktop)))

    def test_the_whole_job_can_be_done(self):
        self.choose(songs.tone(self.song("canción.wav"), 60))
        self.wait_until_announced("notification", GUIDANCE)
        self.assertEqual(self.quibel.fragment(), (0, 40, 40))
        start, end = self.handle(START_HANDLE), self.handle(END_HANDLE)
        self.assertEqual((start.value, *start.range), (0, 0, 39.5))
        self.assertEqual((end.value, *end.range), (40, 0.5, 60))

        start.value = 12.5
        end.value = 20
        wait_until(lambda: self.quibel.fragment() == (12.5, 7.5, 20), "the fragment")
        self.assertEqual((start.value, *start.range), (12.5, 0, 19.5))
        self.assertEqual((end.value, *end.range), (20, 13, 60))

        with contextlib.closing(Ear(self.desktop)) as ear:
            self.press(LISTEN)
            ear.wait_for_sound()
        self.press(STOP)
        self.quibel.button(LISTEN)

        self.press(CREATE)
        saved = self.song("tono.m4r")
        self.answer(SAVE_PANEL, saved, "Guardar")
        self.wait_until_announced("notification", "Tono guardado: tono.m4r")
        self.assertAlmostEqual(Ringtone(saved).seconds, 7.5, delta=0.001)

    def test_a_handle_keeps_to_the_rules_of_a_drag(self):
        self.choose(songs.tone(self.song("canción.wav"), 60))
        self.quibel.wait_until_loaded()
        start, end = self.handle(START_HANDLE), self.handle(END_HANDLE)
        start.value = 50
        wait_until(lambda: self.quibel.fragment() == (39.5, 0.5, 40), "the start before the end")
        end.value = -7
        wait_until(lambda: end.value == 40, "the end after the start")
        end.value = 900
        wait_until(lambda: self.quibel.fragment() == (39.5, 20.5, 60), "the end of the song")
        self.assertEqual((start.value, end.value), (39.5, 60))

    def test_a_handle_says_its_time_and_the_fragment_when_a_drag_ends_and_at_each_key(self):
        self.quibel.load(songs.tone(self.song("canción.wav"), 100))
        values = self.enterContext(contextlib.closing(SpokenValues(self.desktop)))
        x, y = self.quibel.handle(END_HANDLE)
        pointer = self.quibel.pointer
        pointer.move(x, y)
        pointer.press()
        for target in (x + 40, x + 80):
            before = self.quibel.fragment()
            pointer.move(target, y)
            wait_until(lambda before=before: self.quibel.fragment() != before, "the end to move")
        self.assertEqual(values.heard(), [])
        pointer.release()
        wait_until(values.heard, "the end to be spoken")

        pointer.type("Home")
        half = "0,5 segundos, fragmento de 0,5 segundos"
        wait_until(lambda: half in values.heard(), lambda: f"{half!r} after {values.heard()}")
        pointer.type("End")
        minutes = "1 minuto 40 segundos"
        whole = f"{minutes}, fragmento de {minutes}, solo se guardan 40 segundos"
        wait_until(lambda: whole in values.heard(), lambda: f"{whole!r} after {values.heard()}")
        self.assertEqual(values.heard()[1:], [half, whole])

    def test_an_alert_is_announced_with_its_message(self):
        self.choose(self.text())
        _, _, message = self.wait_until_announced("alert", "Quibel")
        self.assertRegex(message, r"^No se ha podido abrir el audio\. \S.*\.$")
        self.press(ACCEPT)
        wait_until(lambda: not self.quibel.has_button(ACCEPT), "the alert to go")

    def test_everything_is_announced_once_and_nothing_that_is_empty(self):
        self.quibel.drop_files(self.text())
        self.quibel.alert()
        self.press(ACCEPT)
        wait_until(lambda: not self.quibel.has_button(ACCEPT), "the alert to go")
        self.quibel.load(songs.tone(self.song("canción.wav"), 3))
        self.wait_until_announced("notification", GUIDANCE)
        loading = ("notification", "Analizando audio…")
        self.assertEqual(
            [announcement[:2] for announcement in self._announcements.heard()],
            [loading, ("alert", "Quibel"), loading, ("notification", GUIDANCE)],
        )

    def test_a_load_is_busy(self):
        self.quibel.drop_files(songs.endless(self.song("eterna.wav")))
        self.assertTrue(self.quibel.wait_for("notification", "Analizando audio…").busy)
        self.quibel.load(songs.tone(self.song("breve.wav"), 2))
        self.assertFalse(self.quibel.wait_for("notification", GUIDANCE).busy)

    def test_below_the_alert_nothing_can_be_found_or_worked(self):
        self.quibel.load(songs.tone(self.song("canción.wav"), 60))
        start, listen = self.handle(START_HANDLE), self.quibel.button(LISTEN)
        self.quibel.drop_files(self.text())
        self.quibel.alert()
        shown = self.quibel.screen.elements(PROGRAM)
        self.assertEqual(
            [element.name for element in shown if element.role in ("push button", "spin button")],
            [ACCEPT, "Minimizar", "Maximizar", "Cerrar"],
        )
        # Nor by what has known of them since before.
        start.value = 20
        self.assertFalse(listen.can_be_pressed())
        self.press(ACCEPT)
        self.quibel.button(LISTEN)
        self.assertEqual(self.handle(START_HANDLE).value, 0)

    def test_no_screen_is_a_layer(self):
        self.assertNotIn("layered pane", self.roles())
        self.quibel.load(songs.tone(self.song("canción.wav"), 3))
        self.assertNotIn("layered pane", self.roles())

    def roles(self):
        return {element.role for element in self.quibel.screen.elements(PROGRAM)}

    def text(self):
        """A file that is no song."""
        path = self.song("apuntes.mp3")
        path.write_text("No soy una canción.\n")
        return path

    def choose(self, song):
        self.press(CHOOSE)
        self.answer(OPEN_PANEL, song, "Abrir")

    def answer(self, title, path, button):
        """Writes a path into a panel and confirms it."""
        self.quibel.wait_for("dialog", title)
        self.quibel.wait_for("text").text = str(path)
        wait_until(lambda: self.quibel.button(button).enabled, f"{button} to be enabled")
        self.press(button)

    def press(self, name):
        self.quibel.button(name).press()

    def handle(self, name):
        return self.quibel.wait_for("spin button", name)

    def wait_until_announced(self, role, name):
        """Until that is read out; returns it."""
        return wait_until(
            lambda: next((a for a in self._announcements.heard() if a[:2] == (role, name)), None),
            lambda: f"{role} {name!r}, having heard {self._announcements.heard()}",
            seconds=60,
        )
