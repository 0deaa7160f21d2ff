import pathlib

import songs
from desktop_scenario import GnomeScenario
from gnome import COLOR_SCHEME
from session import HEIGHT, WIDTH
from quibel import CHOOSE, CREATE, OPEN_PANEL, SAVE_PANEL
from waiting import wait_until


class GnomePanels(GnomeScenario):
    def open_panel(self):
        self.quibel.press(CHOOSE)
        return self.quibel.panel(OPEN_PANEL)

    def save_panel(self):
        self.open_panel().answer(songs.tone(self.song("canción.wav"), 2))
        self.quibel.wait_until_loaded()
        self.quibel.press(CREATE)
        return self.quibel.panel(SAVE_PANEL)

    def assert_placed_well(self, panel):
        """Around the middle of the window, and smaller than the screen."""
        box, window = panel.box, self.quibel.box
        self.assertLess(box.width, WIDTH * 0.9)
        self.assertLess(box.height, HEIGHT * 0.9)
        self.assertAlmostEqual(box.centre[0], window.centre[0], delta=2)
        self.assertAlmostEqual(box.centre[1], window.centre[1], delta=window.height / 4)

    def test_the_open_panel_is_over_the_window(self):
        self.desktop.move_window(self.quibel.window_id, 320, 150)
        self.assert_placed_well(self.open_panel())

    def test_the_save_panel_is_over_the_window(self):
        self.desktop.move_window(self.quibel.window_id, 320, 150)
        self.assert_placed_well(self.save_panel())

    def test_the_panels_are_the_desktops_own(self):
        for panel in (self.open_panel, self.save_panel):
            shown = panel()
            program = pathlib.Path(f"/proc/{shown.process}/exe").resolve().name
            self.assertEqual(program, "xdg-desktop-portal-gnome")
            shown.cancel()

    def test_the_panels_are_dark_when_the_desktop_is(self):
        self.desktop.set(COLOR_SCHEME, "prefer-dark")
        panel = self.open_panel()
        wait_until(lambda: self.desktop.brightness(panel.box) < 90, "the open panel to be dark")
        panel.cancel()
        panel = self.save_panel()
        wait_until(lambda: self.desktop.brightness(panel.box) < 90, "the save panel to be dark")

    def test_the_keys_go_back_to_the_window(self):
        before = self.quibel.focused()
        self.assertIsNotNone(before)
        self.open_panel().cancel()
        self.assert_keys_are_the_windows(before)

        self.save_panel().cancel()
        self.assert_keys_are_the_windows()

        self.quibel.press(CREATE)
        self.quibel.panel(SAVE_PANEL).answer(self.song("tono.m4r"))
        self.quibel.wait_for("label", "Tono guardado: tono.m4r", seconds=60)
        self.assert_keys_are_the_windows()

    def assert_keys_are_the_windows(self, name=None):
        """One of its elements has them, or the one of that name."""
        self.quibel.wait_until_active()
        wait_until(
            lambda: (f := self.quibel.focused()) and name in (None, f),
            lambda: f"{name or 'any element'} to have the keys, not {self.quibel.focused()}",
        )
