import configparser
import pathlib

import songs
from scenario import Scenario
from waiting import wait_until

PACKAGING = pathlib.Path(__file__).resolve().parents[2] / "packaging"
DESKTOP_ENTRY = PACKAGING / "desktop" / "org.quibel.quibel.desktop"


class Window(Scenario):
    def properties(self, *names):
        return self.desktop.run("xprop", "-id", self.quibel.window_id, *names).decode()

    def test_has_no_title_bar(self):
        # Left, right, top, bottom: what the window manager drew around it.
        self.assertIn("= 0, 0, 0, 0", self.properties("_NET_FRAME_EXTENTS"))

    def test_is_known_to_docks_by_its_desktop_entry(self):
        entry = configparser.ConfigParser(interpolation=None)
        entry.read(DESKTOP_ENTRY)
        window_class = entry["Desktop Entry"]["StartupWMClass"]
        self.assertIn(f'"quibel", "{window_class}"', self.properties("WM_CLASS"))
        self.assertIn("Icon (16 x 16)", self.properties("_NET_WM_ICON"))
        self.assertEqual(entry["Desktop Entry"]["Icon"], DESKTOP_ENTRY.stem)

    def test_grows_by_its_corner(self):
        self.drag_corner(150, 100, lambda width, height: width > 900 and height > 650)

    def test_cannot_be_made_smaller_than_its_content(self):
        # Not dragged larger too: while the window manager still ends one drag, it
        # takes the press that should begin the next.
        self.desktop.run("xdotool", "windowsize", self.quibel.window_id, "930", "680")
        wait_until(lambda: self.quibel.box[2:] == (930, 680), self.size)
        self.drag_corner(-500, -500, lambda width, height: (width, height) == (780, 580))

    def test_moves_when_its_empty_ground_is_dragged(self):
        x, y, width, height = self.quibel.box
        ground = (x + width / 2, y + 60)
        self.quibel.pointer.drag(
            ground, (ground[0] - 80, ground[1] - 50), lambda: self.quibel.box[:2] != (x, y)
        )
        self.assertEqual(self.quibel.box[2:], (width, height))

    def test_maximises_and_comes_back(self):
        before = self.quibel.box
        self.quibel.click("Maximizar")
        wait_until(lambda: self.quibel.box == (0, 0, 1280, 1024), self.size)
        self.quibel.click("Restaurar")
        wait_until(lambda: self.quibel.box == before, self.size)

    def test_minimises(self):
        self.quibel.click("Minimizar")
        wait_until(lambda: "Iconic" in self.properties("WM_STATE"), "the window to go")
        self.desktop.run("xdotool", "windowactivate", self.quibel.window_id)
        wait_until(lambda: "Normal" in self.properties("WM_STATE"), "the window to come back")
        self.quibel.button("Minimizar")

    def test_closing_during_a_load_ends_the_program(self):
        self.quibel.drop_files(songs.endless(self.song("eterna.wav")))
        self.quibel.wait_for("label", "Analizando audio…")
        self.assertEqual(self.quibel.close(), 0, self.quibel.log)

    def test_another_song_loads_while_an_endless_one_does(self):
        self.quibel.drop_files(songs.endless(self.song("eterna.wav")))
        self.quibel.wait_for("label", "Analizando audio…")
        self.quibel.load(songs.tone(self.song("breve.wav"), 2))
        self.assertEqual(self.quibel.fragment(), (0, 2, 2))
        self.assertEqual(self.quibel.close(), 0, self.quibel.log)

    def test_closing_during_the_loop_ends_the_program(self):
        self.quibel.load(songs.tone(self.song("bucle.wav"), 2))
        self.quibel.click("Escuchar en bucle")
        self.quibel.button("Detener")
        self.assertEqual(self.quibel.close(), 0, self.quibel.log)

    def drag_corner(self, dx, dy, arrived):
        """Drags the window's lower right corner until arrived(width, height)."""
        x, y = self.corner()
        self.quibel.pointer.drag(
            self.corner, (x + dx, y + dy), lambda: arrived(*self.quibel.box[2:])
        )

    def corner(self):
        x, y, width, height = self.quibel.box
        return x + width - 2, y + height - 2

    def size(self):
        return f"another place or size than {self.quibel.box}"


class WithoutAWindowManager(Scenario):
    window_manager = None

    def test_moves_and_resizes_by_itself(self):
        x, y, width, height = self.quibel.box
        ground = (x + width / 2, y + 60)
        self.quibel.pointer.drag(
            ground, (ground[0] + 80, ground[1] + 50), lambda: self.quibel.box[:2] != (x, y)
        )
        x, y, _, _ = self.quibel.box
        corner = (x + width - 2, y + height - 2)
        self.quibel.pointer.drag(
            corner, (corner[0] + 60, corner[1] + 40), lambda: self.quibel.box[2] > width + 40
        )
        self.assertEqual(self.quibel.box[:2], (x, y))

    def test_maximises_by_itself_and_comes_back(self):
        before = self.quibel.box
        self.quibel.button("Maximizar").press()
        wait_until(lambda: self.quibel.box == (0, 0, 1280, 1024), "the window to fill the screen")
        self.quibel.button("Restaurar").press()
        wait_until(lambda: self.quibel.box == before, "the window to come back")
        self.quibel.button("Maximizar")

    def tearDown(self):
        if not self._failed():
            self.quibel.button("Cerrar").press()
            self.assertEqual(self.quibel.process.wait(30), 0, self.quibel.log)
