"""The mouse and the keyboard, as the X server sees them."""

import itertools

from waiting import DeadlinePassed, wait_until


class Pointer:
    """Moves and presses through xdotool. Positions are pixels of the screen."""

    def __init__(self, desktop):
        self._desktop = desktop

    def move(self, x, y):
        self._do("mousemove", str(round(x)), str(round(y)))

    def press(self):
        self._do("mousedown", "1")

    def release(self):
        self._do("mouseup", "1")

    def click(self, x, y):
        self.move(x, y)
        self._do("click", "1")

    def double_click(self, x, y):
        self.move(x, y)
        self._do("click", "--repeat", "2", "1")

    def drag(self, start, end, arrived):
        """Drags from one place (x, y) to the other, trembling there as a hand does
        until arrived(); then lets go. Drags again, as a person would, where the press has
        grabbed nothing or the window manager has given the drag up: for that, start may be
        a function that says where to press now."""
        tremble = itertools.cycle((0, 1))

        def arrives():
            self.move(end[0] + next(tremble), end[1])
            return arrived()

        def attempt():
            self.release()
            self.move(*(start() if callable(start) else start))
            self.press()
            try:
                return wait_until(arrives, "the end of a drag", seconds=4)
            except DeadlinePassed:
                return False

        wait_until(attempt, f"a drag to arrive at {end}")
        self.release()

    def type(self, *keys):
        """Presses keys by their X names, one after the other, such as "Return"."""
        self._do("key", "--clearmodifiers", *keys)

    def write(self, text):
        """Types a text, letter by letter."""
        self._do("type", "--clearmodifiers", text)

    def _do(self, *action):
        self._desktop.run("xdotool", *action)
