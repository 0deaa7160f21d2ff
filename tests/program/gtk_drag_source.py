"""A window of a GTK program from which something is dragged, as out of most file
managers. Run as: gtk_drag_source.py MIME-TYPE DATA

Says what quibel_drag_source says on its standard output.
"""

import sys

import gi

gi.require_version("Gdk", "3.0")  # where GTK 4 is installed too, it comes first
gi.require_version("Gtk", "3.0")
from gi.repository import Gdk, Gtk  # noqa: E402

WIDTH, HEIGHT = 60, 40


def say(line):
    print(line, flush=True)


class Source(Gtk.Window):
    def __init__(self, mime_type, data):
        super().__init__(type=Gtk.WindowType.POPUP)
        self._data = data.encode()
        target = Gtk.TargetEntry.new(mime_type, 0, 0)
        self.drag_source_set(Gdk.ModifierType.BUTTON1_MASK, [target], Gdk.DragAction.COPY)
        self.connect("drag-begin", self._begin)
        self.connect("drag-data-get", self._give)
        self.connect("drag-failed", self._fail)
        self.connect("drag-end", self._end)
        self.connect("map-event", self._ready)
        self._ending = "finished"
        screen = Gdk.Screen.get_default()
        self.resize(WIDTH, HEIGHT)
        # Out of the way of other windows, which open at the left and in the middle.
        self.move(screen.get_width() - WIDTH - 1, screen.get_height() - HEIGHT - 1)

    def _ready(self, *_):
        x, y = self.get_position()
        say(f"ready {x + WIDTH // 2} {y + HEIGHT // 2}")

    def _begin(self, _, context):
        context.connect("action-changed", self._answered)

    def _answered(self, _, action):
        say("accepts" if action else "refuses")

    def _give(self, _widget, _context, selection, *_):
        selection.set(selection.get_target(), 8, self._data)

    def _fail(self, *_):
        self._ending = "cancelled"
        return False

    def _end(self, *_):
        say(self._ending)
        Gtk.main_quit()


if __name__ == "__main__":
    Source(*sys.argv[1:]).show()
    Gtk.main()
