from scenario import Scenario
from test_window import DESKTOP_ENTRY
from waiting import wait_until
from wayland import HEIGHT, WIDTH, WaylandQuibel


class Wayland(Scenario):
    def start(self):
        return WaylandQuibel(self.desktop, self.build)

    def test_the_window_is_known_to_docks_by_its_desktop_entry(self):
        self.wait_until_asked(f'.set_app_id("{DESKTOP_ENTRY.stem}")')

    def test_the_compositor_moves_it_by_its_empty_ground(self):
        x, y, width, height = self.quibel.box
        pointer = self.quibel.pointer
        pointer.move(x + width / 2, y + 60)
        pointer.press()
        pointer.move(x + width / 2 + 20, y + 60)
        self.wait_until_asked(".move(")
        pointer.move(x + width / 2 + 90, y + 130)
        wait_until(
            lambda: self.quibel.box[0] > x + 50 and self.quibel.box[1] > y + 50, "the window to move"
        )
        pointer.release()
        self.assertEqual(self.quibel.box[2:], (width, height))

    def test_the_compositor_resizes_it_by_its_corner(self):
        x, y, width, height = self.quibel.box
        corner = (x + width - 2, y + height - 2)
        self.quibel.pointer.drag(
            corner, (corner[0] + 60, corner[1] + 40), lambda: self.quibel.box[2] > width + 40
        )
        self.assertGreater(self.quibel.box[3], height + 20)
        self.wait_until_asked(".resize(")

    def test_a_double_click_maximises_it_and_another_brings_it_back(self):
        before = self.quibel.box[2:]
        self.double_click()
        wait_until(lambda: self.quibel.box[2:] == (WIDTH, HEIGHT), "the window to fill the screen")
        self.quibel.button("Restaurar")
        self.double_click()
        wait_until(lambda: self.quibel.box[2:] == before, "the window to come back")
        self.quibel.button("Maximizar")

    def double_click(self):
        x, y, width, _ = self.quibel.box
        self.quibel.pointer.double_click(x + width / 2, y + 15)

    def wait_until_asked(self, request):
        """Until the program has asked the compositor for that."""
        wait_until(lambda: request in self.quibel.log, lambda: f"{request} in\n{self.quibel.log}")
