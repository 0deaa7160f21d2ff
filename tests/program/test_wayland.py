from scenario import Scenario
from test_window import DESKTOP_ENTRY
from waiting import wait_until

SOCKET = "wayland-quibel"


class Wayland(Scenario):
    def setUp(self):
        super().setUp()
        self.desktop.start(
            "weston", "--backend=headless-backend.so", "--no-config", f"--socket={SOCKET}"
        )
        socket = self.desktop.root / "run" / SOCKET
        wait_until(socket.exists, lambda: "the compositor:\n" + self.desktop.log("weston"))

    def test_the_window_is_known_to_docks_by_its_desktop_entry(self):
        session = {"QT_QPA_PLATFORM": "wayland", "WAYLAND_DISPLAY": SOCKET}
        window = self.desktop.start(
            str(self.build / "quibel"),
            env=self.desktop.environment | session | {"WAYLAND_DEBUG": "client"},
        )
        told = f'.set_app_id("{DESKTOP_ENTRY.stem}")'
        wait_until(lambda: told in self.quibel.log, lambda: f"{told} in\n{self.quibel.log}")
        window.terminate()
        window.wait()
