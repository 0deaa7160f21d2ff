import re

import songs
from quibel import CHOOSE, END_HANDLE, LISTEN, OPEN_PANEL, START_HANDLE, STOP
from scenario import Scenario, not_under_thread_sanitizer
from test_window import DESKTOP_ENTRY
from virtual_desktop import SCREEN_HEIGHT
from waiting import PATIENCE, wait_until
from wayland import WIDTH, WaylandDesktop, WaylandQuibel


@not_under_thread_sanitizer("it does not see what Qt's Wayland plugin locks")
class Wayland(Scenario):
    @classmethod
    def make_desktop(cls):
        return WaylandDesktop()

    def start(self):
        return WaylandQuibel(self.desktop, self.build)

    def test_the_window_is_known_to_docks_by_its_desktop_entry(self):
        self.assertIn(f'.set_app_id("{DESKTOP_ENTRY.stem}")', self.quibel.log)

    def test_moves_when_its_empty_ground_is_dragged(self):
        x, y, width, height = self.quibel.box
        # The compositor opens it anywhere, and stops a move at the top of the screen.
        dy = 90 if y < 100 else -90
        self.move_window(-70, dy)
        self.assertEqual(self.quibel.box, (x - 70, y + dy, width, height))

    def test_is_resized_at_every_edge_and_corner(self):
        x, y, width, height = self.quibel.box
        self.move_window(100 - x, 100 - y)
        box = self.quibel.box
        for left, up in ((0, 1), (1, 1), (1, 0), (1, -1), (0, -1), (-1, -1), (-1, 0), (-1, 1)):
            # Outwards, from two pixels inside.
            x = box.x + (2 if left > 0 else box.width - 3 if left < 0 else box.width / 2)
            y = box.y + (2 if up > 0 else box.height - 3 if up < 0 else box.height / 2)
            dx, dy = -20 * left, -10 * up
            grown = box._replace(
                x=box.x + min(dx, 0),
                y=box.y + min(dy, 0),
                width=box.width + abs(dx),
                height=box.height + abs(dy),
            )
            # The compositor forgets the edge with the release, and would put what comes
            # later in another place.
            self.quibel.drag_window((x, y), (x + dx, y + dy), lambda: self.quibel.fills(grown))
            self.wait_until_there(grown)
            box = grown

    def test_a_double_click_maximises_and_brings_back(self):
        before = self.quibel.box
        self.quibel.pointer.double_click(before.centre[0], before.y + 20)
        self.wait_until_there((0, 0, WIDTH, SCREEN_HEIGHT))
        self.quibel.button("Restaurar")
        self.quibel.pointer.double_click(640, 20)
        self.wait_until_there(before)
        self.quibel.button("Maximizar")

    def test_has_round_corners_and_a_shadow_unless_it_fills_the_screen(self):
        x, y, width, height = self.quibel.box
        corners = [(x, y), (x + width - 1, y), (x, y + height - 1), (x + width - 1, y + height - 1)]
        self.quibel.pointer.move(WIDTH - 1, 0)
        for corner in corners:
            self.assertTrue(self.is_ground(*corner), corner)
        self.assertLess(self.green(x + width // 2, y + height + 3), 240)
        self.assertEqual(self.green(x + width // 2, y + height + 60), 255)
        self.quibel.button("Maximizar").press()
        wait_until(lambda: not self.is_ground(0, SCREEN_HEIGHT - 1), "the window to be everywhere")

    def test_its_shadow_takes_no_pointer(self):
        x, y, width, height = self.quibel.box
        left = self.quibel.times_left()
        self.quibel.pointer.move(x + width // 2, y + height - 20)
        self.quibel.pointer.move(x + width // 2, y + height + 6)
        wait_until(lambda: self.quibel.times_left() > left, "the pointer to leave the window")

    def test_cannot_be_made_smaller_than_its_content(self):
        smallest = re.findall(r"\.set_min_size\((\d+), (\d+)\)", self.quibel.log)[-1]
        self.assertEqual(tuple(map(int, smallest)), self.quibel.geometry[2:])

    def test_minimises(self):
        self.quibel.click("Minimizar")
        wait_until(lambda: ".set_minimized()" in self.quibel.log, "the window to go")

    def test_closes(self):
        self.quibel.click("Cerrar")
        self.assertEqual(self.quibel.process.wait(30 * PATIENCE), 0, self.quibel.log)

    def test_a_song_is_dropped_cut_and_heard(self):
        self.quibel.load(songs.tone(self.song("soltada.wav"), 25))
        self.assertEqual(self.quibel.fragment(), (0, 25, 25))
        x, _, width, _ = self.quibel.box
        self.quibel.drag_handle(START_HANDLE, x + width / 4)
        self.quibel.drag_handle(END_HANDLE, x + width * 3 / 4)
        start, length, end = self.quibel.fragment()
        self.assertTrue(4 < start < 8 and 17 < end < 21, (start, end))
        self.assertAlmostEqual(length, end - start, delta=0.11)
        self.quibel.click(LISTEN)
        self.quibel.click(STOP)
        self.quibel.button(LISTEN)

    def test_keys_open_the_panel_and_leave_it(self):
        choose = self.quibel.button(CHOOSE)

        def reached():
            self.quibel.pointer.type("Tab")
            return choose.focused

        self.quibel.pointer.move(*self.quibel.middle())  # keys go where the pointer is
        wait_until(reached, f"{CHOOSE!r} to have the focus")
        self.quibel.pointer.type("space")
        self.quibel.wait_for("dialog", OPEN_PANEL)
        self.quibel.pointer.type("Escape")
        wait_until(lambda: not self.quibel.has("dialog", OPEN_PANEL), "the panel to go")

    def test_what_is_no_file_is_refused(self):
        x, y = self.quibel.middle()
        drag = self.quibel.offer("text/plain", "hola").pick_up()
        for distance in (20, 10, 0):
            self.quibel.pointer.move(x, y - distance)
        # A program hears only when its answer changes.
        wait_until(
            lambda: re.search(r"wl_data_offer[@#]\d+\.accept\(\d+, (nil|\"\")\)", self.quibel.log),
            "the window to refuse",
        )
        self.assertEqual(drag.drop(), "cancelled")

    def green(self, x, y):
        return self.desktop.pixels(x, y, 1, 1)[1]

    def is_ground(self, x, y):
        red, _, blue = self.desktop.pixels(x, y, 1, 1)
        return red == blue == 0

    def move_window(self, dx, dy):
        x, y, width, _ = self.quibel.box
        ground = (x + width / 2, y + 60)
        self.quibel.drag_window(ground, (ground[0] + dx, ground[1] + dy))

    def wait_until_there(self, box):
        wait_until(
            lambda: self.quibel.box == box,
            lambda: f"the window to be at {box}, not at {self.quibel.box}",
        )
