"""The mouse and the keyboard, as the X server sees them."""


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

    def type(self, *keys):
        """Presses keys by their X names, one after the other, such as "Return"."""
        self._do("key", "--clearmodifiers", *keys)

    def _do(self, *action):
        self._desktop.run("xdotool", *action)
