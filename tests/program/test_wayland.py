from scenario import Scenario, not_under_thread_sanitizer
from test_window import DESKTOP_ENTRY
from waiting import wait_until
from wayland import WaylandQuibel


@not_under_thread_sanitizer("it does not see what Qt's Wayland plugin locks")
class Wayland(Scenario):
    def start(self):
        return WaylandQuibel(self.desktop, self.build)

    def test_the_window_is_known_to_docks_by_its_desktop_entry(self):
        self.wait_until_asked(f'.set_app_id("{DESKTOP_ENTRY.stem}")')

    def wait_until_asked(self, request):
        """Until the program has asked the compositor for that."""

        def asked_or_ended():
            return request in self.quibel.log or self.quibel.process.poll() is not None

        wait_until(asked_or_ended, lambda: f"{request} in\n{self.quibel.log}")
        self.assertIn(request, self.quibel.log)
