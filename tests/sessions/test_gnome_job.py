import songs
from desktop_scenario import GnomeScenario
from quibel import CHOOSE, CREATE, END_HANDLE, LISTEN, OPEN_PANEL, SAVE_PANEL, START_HANDLE
from ringtone import Ringtone
from waiting import wait_until


class GnomeJob(GnomeScenario):
    """From a song to a ringtone."""

    def test_by_a_screen_readers_actions(self):
        self.do_the_whole_job()

    def test_by_pointer_and_keys(self):
        song = songs.tone(self.song("cancion.wav"), 25)
        self.quibel.click(CHOOSE)
        self.quibel.panel(OPEN_PANEL).answer(song)
        self.quibel.wait_until_loaded()
        x, _, width, _ = self.quibel.box
        self.quibel.drag_handle(START_HANDLE, x + width / 4)
        self.quibel.drag_handle(END_HANDLE, x + width * 3 / 4)
        start, length, end = self.quibel.fragment()
        self.assertTrue(4 < start < 8 and 17 < end < 21, (start, end))

        self.quibel.click(LISTEN)
        self.quibel.pointer.type("space")
        self.quibel.button(LISTEN)
        self.quibel.pointer.type("Tab")
        wait_until(lambda: self.quibel.focused() == CREATE, "the button to have the focus")
        self.quibel.pointer.type("Return")
        saved = self.song("tono.m4r")
        self.quibel.panel(SAVE_PANEL).answer(saved)
        self.quibel.wait_for("label", "Tono guardado: tono.m4r", seconds=60)
        self.assertAlmostEqual(Ringtone(saved).seconds, length, delta=0.06)
