from scenario import Scenario
from test_window import DESKTOP_ENTRY
from waiting import wait_until
from wayland import WaylandQuibel


class Wayland(Scenario):
    def start(self):
        return WaylandQuibel(self.desktop, self.build)

    def test_the_window_is_known_to_docks_by_its_desktop_entry(self):
        self.wait_until_asked(f'.set_app_id("{DESKTOP_ENTRY.stem}")')

    def wait_until_asked(self, request):
        """Until the program has asked the compositor for that."""
        wait_until(lambda: request in self.quibel.log, lambda: f"{request} in\n{self.quibel.log}")
