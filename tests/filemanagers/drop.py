"""Drags a song out of Thunar's window into Quibel's on a virtual desktop, and prints
where a picture of the end lies.
Run as: drop.py FOLDER-OF-THE-PROGRAMS FOLDER-FOR-THE-PICTURE
"""

import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "program"))

import songs  # noqa: E402
from quibel import Quibel  # noqa: E402
from virtual_desktop import VirtualDesktop  # noqa: E402
from waiting import wait_until  # noqa: E402


def first_icon(quibel):
    """Where on the screen the first icon of Thunar's window is, once it shows: it is
    no element, but stands in a corner of one."""
    view = quibel.screen.wait_for("thunar", "directory pane", seconds=60)
    icon = view.box.x + 50, view.box.y + 45

    def shows():
        return len(set(quibel.desktop.pixels(*icon, 16, 16))) > 1

    wait_until(shows, f"an icon at {icon}")
    return icon


def main():
    build, pictures = (pathlib.Path(argument).resolve() for argument in sys.argv[1:])
    pictures.mkdir(parents=True, exist_ok=True)
    picture = pictures / "a-song-is-dragged-out-of-thunar.png"
    with VirtualDesktop() as desktop:
        quibel = Quibel(desktop, build)
        folder = desktop.home / "canciones"
        folder.mkdir()
        songs.tone(folder / "elegida.wav", 3)
        desktop.start("thunar", str(folder))
        try:
            icon = first_icon(quibel)
            x, y, width, height = quibel.box
            # A corner that no other window lies upon.
            corner = (x + width - 40, y + height - 40)
            quibel.pointer.drag(icon, corner, quibel.is_highlighted)
            quibel.wait_until_loaded()
            assert "elegida.wav" in quibel.labels(), quibel.labels()
        finally:
            desktop.screenshot(picture)
    print(f"a song is dragged out of Thunar: {picture}")


if __name__ == "__main__":
    main()
