import contextlib

import songs
from ear import Ear
from quibel import CREATE, LISTEN, SAVE_PANEL, START_HANDLE, STOP
from scenario import Scenario
from waiting import wait_until

class Loop(Scenario):
    """What is heard is read from the null sink's monitor."""

    def setUp(self):
        super().setUp()
        self._ear = self.enterContext(contextlib.closing(Ear(self.desktop)))

    def test_sounds_until_it_is_stopped(self):
        self.quibel.load(songs.tone(self.song("bucle.wav"), 3))
        self._ear.wait_for_silence()
        self.quibel.click(LISTEN)
        self.quibel.button(STOP)
        self._ear.wait_for_sound()
        self.quibel.click(STOP)
        self.quibel.button(LISTEN)
        self._ear.wait_for_silence()

    def test_goes_on_beyond_the_end_of_the_song(self):
        self.quibel.load(songs.tone(self.song("corta.wav"), 0.6))
        self.quibel.click(LISTEN)
        self._ear.wait_for_sound(seconds=2)
        self.assertTrue(self.quibel.has_button(STOP))
        self.quibel.click(STOP)

    def test_plays_the_fragment_alone(self):
        self.quibel.load(songs.tone(self.song("mitad.wav"), 4, sounding=2))
        x, _, width, _ = self.quibel.box
        self.quibel.drag_handle(START_HANDLE, x + width * 0.7)
        wait_until(lambda: self.quibel.fragment()[0] > 2, "the start in the silence")
        self.quibel.click(LISTEN)
        self.quibel.button(STOP)
        self._ear.wait_for_silence(seconds=3)
        self.quibel.click(STOP)

    def test_exporting_stops_it_even_when_the_panel_is_cancelled(self):
        self.quibel.load(songs.tone(self.song("bucle.wav"), 3))
        self.quibel.click(LISTEN)
        self._ear.wait_for_sound()
        self.quibel.click(CREATE)
        self.quibel.cancel_panel(SAVE_PANEL)
        self.assertTrue(self.quibel.has_button(LISTEN))
        self._ear.wait_for_silence()
