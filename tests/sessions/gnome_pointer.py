"""The mouse and the keyboard of a GNOME session, as its remote desktop has them."""

import gi

gi.require_version("Gdk", "3.0")
from gi.repository import Gdk  # noqa: E402

from pointer import Pointer  # noqa: E402
from waiting import wait_until  # noqa: E402

SERVICE = "org.gnome.Mutter.RemoteDesktop"
LEFT_BUTTON = 0x110

MODIFIERS = {"ctrl": "Control_L", "shift": "Shift_L", "alt": "Alt_L"}


class GnomePointer(Pointer):
    def __init__(self, desktop):
        super().__init__(desktop)
        path = "/" + SERVICE.replace(".", "/")
        (self._session,) = desktop.call(SERVICE, path, "CreateSession")
        self._call("Start")
        # The seat has a keyboard from the first key on; a program that is told of it
        # only then misses that key.
        self.type("Shift_L")

    def move(self, x, y):
        there = [round(x), round(y)]

        def arrived():
            at = self._desktop.evaluate("global.get_pointer().slice(0, 2)")
            way = [end - begin for begin, end in zip(at, there)]
            if any(way):
                self._call("NotifyPointerMotionRelative", "(dd)", *way)
            return not any(way)

        wait_until(arrived, f"the pointer to be at {there}")

    def press(self):
        self._button(True)

    def release(self):
        self._button(False)

    def click(self, x, y):
        self.move(x, y)
        self.press()
        self.release()

    def double_click(self, x, y):
        self.click(x, y)
        self.click(x, y)

    def type(self, *keys):
        for key in keys:
            *modifiers, last = key.split("+")
            names = [MODIFIERS[modifier] for modifier in modifiers] + [last]
            symbols = [Gdk.keyval_from_name(name) for name in names]
            for symbol in symbols:
                self._key(symbol, True)
            for symbol in reversed(symbols):
                self._key(symbol, False)

    def write(self, text):
        for letter in text:
            if letter.isascii():
                symbol = Gdk.unicode_to_keyval(ord(letter))
                self._key(symbol, True)
                self._key(symbol, False)
            else:  # by its number, as GTK takes what the keyboard has not
                self.type("ctrl+shift+u", *f"{ord(letter):x}", "space")

    def _button(self, down):
        self._call("NotifyPointerButton", "(ib)", LEFT_BUTTON, down)

    def _key(self, symbol, down):
        self._call("NotifyKeyboardKeysym", "(ub)", symbol, down)

    def _call(self, method, signature="()", *arguments):
        interface = f"{SERVICE}.Session"
        self._desktop.call(
            SERVICE, self._session, method, signature, *arguments, interface=interface
        )
