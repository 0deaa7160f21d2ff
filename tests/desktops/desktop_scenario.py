"""What the scenarios in a person's session stand on."""

from gnome import GnomeDesktop
from scenario import Scenario
from session_quibel import GnomeQuibel


class GnomeScenario(Scenario):
    @classmethod
    def make_desktop(cls):
        return GnomeDesktop()

    def start(self):
        return GnomeQuibel(self.desktop, self.build)
