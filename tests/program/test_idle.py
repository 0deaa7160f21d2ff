import pathlib
import time

import songs
from quibel import LISTEN, STOP
from scenario import Scenario, not_under_thread_sanitizer
from waiting import wait_until

QUIET_SECONDS = 4


NOT_QUIET = "it has a thread of its own that wakes up"


@not_under_thread_sanitizer(NOT_QUIET)
class Idle(Scenario):
    """No thread of the program wakes up while nothing happens: no timer, no repaint."""

    def test_with_no_song(self):
        wait_until_quiet(self.quibel)

    def test_with_a_song_that_was_heard(self):
        self.quibel.load(songs.tone(self.song("canción.wav"), 3))
        self.quibel.click(LISTEN)
        self.quibel.click(STOP)
        self.quibel.button(LISTEN)
        wait_until_quiet(self.quibel)

    def test_with_a_ringtone_made(self):
        self.quibel.load(songs.tone(self.song("canción.wav"), 3))
        self.quibel.export(self.song("tono.m4r"))
        self.quibel.wait_for("label", "Tono guardado: tono.m4r", seconds=60)
        wait_until_quiet(self.quibel)


@not_under_thread_sanitizer(NOT_QUIET)
class IdleWithoutSound(Scenario):
    """The same where there is no sound server."""

    def start(self):
        self.desktop.environment["PULSE_SERVER"] = f"unix:{self.desktop.root}/none"
        return super().start()

    def test_with_a_song_that_could_not_be_heard(self):
        self.quibel.load(songs.tone(self.song("canción.wav"), 3))
        wait_until_quiet(self.quibel)
        self.quibel.click(LISTEN)
        self.assertRegex(self.quibel.alert(), r"^No se ha podido reproducir el audio\. \S.*\.$")
        self.quibel.accept_alert()
        wait_until_quiet(self.quibel)


def wait_until_quiet(quibel):
    """Until no thread has woken up for some seconds."""
    before, since = None, None

    def quiet():
        nonlocal before, since
        now = wake_ups(quibel)
        if now != before:
            before, since = now, time.monotonic()
        return time.monotonic() - since > QUIET_SECONDS

    wait_until(quiet, lambda: f"all threads to sleep on: {wake_ups(quibel)}", seconds=40)


def wake_ups(quibel):
    """How often each thread has gone to sleep so far."""
    tasks = pathlib.Path(f"/proc/{quibel.process.pid}/task")
    states = ((task.name, (task / "status").read_text()) for task in tasks.iterdir())
    return {
        task: int(state.split("\nvoluntary_ctxt_switches:")[1].split("\n")[0])
        for task, state in states
    }
