"""Dragging something out of another program's window."""

import itertools
import os
import urllib.parse

from waiting import wait_until


class Drag:
    """Something to be dragged, in a window of its own.

    It is data, as it is, under one MIME type; command is the program that offers it.
    """

    def __init__(self, desktop, pointer, command, mime_type, data):
        self._pointer = pointer
        self._log = desktop.log_path(command[0].split("/")[-1])
        self._earlier = self._log.stat().st_size if self._log.exists() else 0
        self._process = desktop.start(*command, mime_type, data)
        ready = wait_until(lambda: self._said("ready"), "the window to drag from")
        self._place = self._find(desktop, ready)

    def pick_up(self):
        self._pointer.move(*self._place)
        self._pointer.press()
        return self

    def move_over(self, x, y):
        """Drags to a place of the screen and returns what the window there answers:
        "accepts" or "refuses"."""
        tremble = itertools.cycle((4, 0))

        def answer():
            # As a hand does: a drag begins with one movement and asks with the next.
            offset = next(tremble)
            self._pointer.move(x - offset, y - offset)
            return self._said("accepts", "refuses")

        return wait_until(answer, "an answer from the window under the drag")

    def drop(self):
        """Lets go and returns how the drag ended: "finished" where the window took it,
        "cancelled" where it did not."""
        self._pointer.release()
        ending = wait_until(lambda: self._said("finished", "cancelled"), "the end of the drag")
        self._process.wait()
        return ending

    def _find(self, desktop, ready):
        """Where on the screen to press, from what the program has said of it."""
        return tuple(map(int, ready.split()[1:]))

    def _said(self, *words):
        """The last line that begins with one of the words."""
        with open(self._log, "rb") as log:
            log.seek(self._earlier)
            lines = log.read().decode(errors="replace").splitlines()
        return next((line for line in reversed(lines) if line.split(" ")[0] in words), None)


def uri_list(*paths):
    """Paths as a list of file URLs. A path may be bytes, which need not be UTF-8."""
    return "".join(f"file://{urllib.parse.quote(os.fsencode(path))}\r\n" for path in paths)
