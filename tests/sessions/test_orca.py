import contextlib
import os
import pathlib
import re
import time
import unittest

import orca
import songs
from desktop_scenario import GnomeScenario
from gnome import GnomeDesktop
from quibel import (
    ACCEPT, CHANGE, CHOOSE, CREATE, END_HANDLE, LISTEN, OPEN_PANEL, SAVE_PANEL, START_HANDLE, STOP,
)  # fmt: skip
from waiting import PATIENCE, DeadlinePassed, wait_until

# The panels' own lines: their titles, their parts, and the path that is written.
PANELS = re.compile(rf"({OPEN_PANEL}|{SAVE_PANEL}|Gtk\w+) |/|Archivos\.")

TRANSCRIPT = pathlib.Path(__file__).with_name(f"orca-{orca.version()}.txt")


@unittest.skipUnless(TRANSCRIPT.exists(), f"there is no {TRANSCRIPT.name}")
class OrcaReads(GnomeScenario):
    """What the screen reader says on the way, line by line, is the transcript.

    Where it is not, what was said is left beside the failure's picture under the
    transcript's name, to be read and, if it reads well, to take its place. To hear a
    part afresh, take it out of the transcript. A line in parentheses may be left out, as
    it is where what it tells is over too soon.
    """

    maxDiff = None

    @classmethod
    def make_desktop(cls):
        return GnomeDesktop(x11=True)

    def start(self):
        self._heard = []
        self._orca = orca.Orca(self.desktop)
        return super().start()

    def test_the_whole_job(self):
        song = _aged(songs.tone(self.song("canción.wav"), 60))
        text = self.song("apuntes.mp3")
        text.write_text("No soy una canción.\n")
        _aged(text)

        self.listen("The window opens", lambda: wait_until(self.quibel.focused, "the focus"))
        self.listen("To the button that asks for a song", lambda: self.go_to(CHOOSE))
        self.listen("Return opens its panel", lambda: self.open_panel(OPEN_PANEL))
        self.listen("A song is chosen", lambda: self.answer(OPEN_PANEL, song))
        self.quibel.wait_until_loaded()
        self.listen("To the start", lambda: self.go_to(START_HANDLE))
        self.listen("Right", lambda: self.keys("Right"))
        self.listen("Page up", lambda: self.keys("Page_Up"))
        self.listen("To the end", lambda: self.go_to(END_HANDLE))
        self.listen("Page down", lambda: self.keys("Page_Down"))
        self.listen("To the loop", lambda: self.go_to(LISTEN))
        self.listen("Space plays", lambda: self.keys("space"), lambda: self.quibel.button(STOP))
        self.listen("Space stops", lambda: self.keys("space"), lambda: self.quibel.button(LISTEN))
        self.listen("To the button that exports", lambda: self.go_to(CREATE))
        self.listen("Return opens the save panel", lambda: self.open_panel(SAVE_PANEL))
        self.listen("The name is confirmed", lambda: self.answer(SAVE_PANEL, self.song("tono.m4r")))
        self.quibel.wait_for("label", "Tono guardado: tono.m4r", seconds=60)
        self.listen("To the button that changes the song", lambda: self.go_to(CHANGE))
        self.listen("Return opens the panel again", lambda: self.open_panel(OPEN_PANEL))
        self.listen("A text is chosen", lambda: self.answer(OPEN_PANEL, text), self.quibel.alert)
        self.listen("Return accepts the alert", lambda: self.keys("Return"), self.wait_until_over)
        self.compare()

    def listen(self, heading, *gestures):
        """Makes gestures and waits for the last that is to be said of them; where the
        transcript has nothing of that heading, until nothing more is said."""
        before = len(self.said())
        for gesture in gestures:
            gesture()
        expected = _sections(TRANSCRIPT.read_text()).get(heading)
        if expected is None:
            self.wait_for_silence()
        elif expected and not expected[-1].startswith("("):
            with contextlib.suppress(DeadlinePassed):
                wait_until(lambda: expected[-1] in self.said()[before:], heading, seconds=4)
        self._heard.append((heading, before))

    def wait_for_silence(self):
        said, since = None, None

        def silent():
            nonlocal said, since
            if said != (now := self.said()):
                said, since = now, time.monotonic()
            return time.monotonic() - since > 3 * PATIENCE

        wait_until(silent, "silence", seconds=60)

    def compare(self):
        said = self.said()
        headings, begins = zip(*self._heard)
        bounds = [0, *begins[1:], len(said)]
        heard = "\n".join(
            "\n".join([f"# {heading}", *said[begin:end], ""])
            for heading, begin, end in zip(headings, bounds, bounds[1:])
        )
        results = pathlib.Path(os.environ.get("QUIBEL_RESULTS", self.build))
        expected = _sections(TRANSCRIPT.read_text())
        passing = {heading: {line[1:-1] for line in lines if line.startswith("(")}
                   for heading, lines in expected.items()}
        must = [line for lines in expected.values() for line in lines if not line.startswith("(")]
        did = [line for heading, lines in _sections(heard).items()
               for line in lines if line not in passing.get(heading, ())]
        if did != must:
            (results / TRANSCRIPT.name).write_text(heard)
        self.assertEqual(did, must)

    def said(self):
        """From the window's first line on: before, the shell speaks of itself. What the
        desktop's panels say is theirs."""
        spoken = [line for line in self._orca.spoken() if not PANELS.match(line)]
        first = next((i for i, line in enumerate(spoken) if line.startswith("Quibel")), len(spoken))
        return spoken[first:]

    def go_to(self, name):
        """Presses Tab until that has the focus."""

        def arrived():
            before = self.quibel.focused()
            if before == name:
                return True
            self.keys("Tab")
            wait_until(lambda: self.quibel.focused() not in (before, None), "the focus to move")
            return False

        wait_until(arrived, f"the focus on {name}", seconds=60)

    def keys(self, *names):
        self.quibel.pointer.type(*names)

    def open_panel(self, title):
        self.keys("Return")
        self.quibel.panel(title)

    def answer(self, title, path):
        self.quibel.panel(title).answer(path)

    def wait_until_over(self):
        wait_until(lambda: not self.quibel.has_button(ACCEPT), "the alert to go")


def _aged(path):
    """Has a file a date that a panel names the same every day."""
    os.utime(path, (1577880000, 1577880000))
    return path


def _sections(transcript):
    """What is said under each heading."""
    blocks = (block.splitlines() for block in transcript.split("\n\n") if block.strip())
    return {heading.removeprefix("# "): lines for heading, *lines in blocks}
