import itertools

import songs
from desktop_scenario import GnomeScenario
from gnome import BUTTON_LAYOUT, COLOR_SCHEME, TEXT_SCALE
from quibel import PROGRAM
from waiting import wait_until

BUTTONS = ("Minimizar", "Maximizar", "Cerrar")


class GnomeAppearance(GnomeScenario):
    """What the desktop's settings do to the window, while it is open."""

    def test_follows_light_and_dark(self):
        self.desktop.set(COLOR_SCHEME, "prefer-dark")
        wait_until(lambda: self.brightness() < 90, "the window to be dark")
        self.desktop.set(COLOR_SCHEME, "default")
        wait_until(lambda: self.brightness() > 170, "the window to be light")

    def test_follows_the_size_of_text(self):
        self.quibel.load(songs.tone(self.song("canción.wav"), 3))
        title = self.quibel.wait_for("label", "Quibel").box
        self.desktop.set(TEXT_SCALE, "2.0")
        wait_until(
            lambda: self.quibel.wait_for("label", "Quibel").box.height > 1.8 * title.height,
            "the title to be twice as large",
        )
        self.assert_nothing_is_cut()

    def test_has_the_buttons_where_the_desktop_has_them(self):
        self.desktop.set(BUTTON_LAYOUT, "close,maximize:")
        wait_until(
            lambda: self.buttons() == ["Cerrar", "Maximizar"],
            lambda: f"the buttons, which are {self.buttons()}",
        )
        window = self.quibel.button("Cerrar").window.box
        self.assertLess(self.quibel.button("Maximizar").box.centre[0], window.centre[0])

    def assert_nothing_is_cut(self):
        """Every text is within the window, and none covers another."""
        labels = [e for e in self.quibel.screen.elements(PROGRAM) if e.role == "label" and e.name]
        window = labels[0].window.box
        boxes = {label.name: label.box for label in labels}
        for name, box in boxes.items():
            self.assertTrue(_contains(window, box), (name, box, window))
        for (one, first), (other, second) in itertools.combinations(boxes.items(), 2):
            self.assertFalse(_overlap(first, second), (one, first, other, second))

    def brightness(self):
        return self.desktop.brightness(self.quibel.box)

    def buttons(self):
        """The window's own, from left to right."""
        found = [e for e in self.quibel.screen.elements(PROGRAM) if e.name in BUTTONS]
        return [e.name for e in sorted(found, key=lambda e: e.box.x)]


def _contains(outer, inner):
    return (
        outer.x <= inner.x
        and outer.y <= inner.y
        and inner.x + inner.width <= outer.x + outer.width
        and inner.y + inner.height <= outer.y + outer.height
    )


def _overlap(one, other):
    return (
        one.x < other.x + other.width
        and other.x < one.x + one.width
        and one.y < other.y + other.height
        and other.y < one.y + one.height
    )
