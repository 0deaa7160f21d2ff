import songs
from quibel import (
    ACCEPT, CHANGE, CHOOSE, CREATE, END_HANDLE, LISTEN, OPEN_PANEL, PROGRAM, SAVE_PANEL, START_HANDLE,
    STOP,
)  # fmt: skip
from scenario import Scenario
from virtual_desktop import FILE_MANAGER
from waiting import DeadlinePassed, wait_until


class Keyboard(Scenario):
    """Without a pointer: keys alone."""

    def test_the_whole_job_can_be_done(self):
        self.choose(songs.tone(self.song("cancion.wav"), 60))
        self.quibel.wait_until_active()
        self.quibel.wait_until_loaded()

        self.walk_to(START_HANDLE)
        self.keys("Page_Up", "Page_Up", "shift+Right", "Right")
        self.walk_to(END_HANDLE)
        self.keys("End", "Page_Down", "Left")
        wait_until(lambda: self.quibel.fragment() == (11.1, 43.8, 54.9), "the fragment")

        self.walk_to(LISTEN)
        self.keys("space")
        self.quibel.button(STOP)
        self.keys("Return")
        self.quibel.button(LISTEN)

        self.walk_to(CREATE)
        self.keys("Return")
        self.answer(SAVE_PANEL, self.song("tono.m4r"))
        self.wait_until_saved("tono.m4r")
        self.wait_until_focused(CREATE)

    def test_shortcuts_do_what_the_buttons_do(self):
        self.keys("ctrl+o")
        self.answer(OPEN_PANEL, songs.tone(self.song("cancion.wav"), 3))
        self.quibel.wait_until_loaded()
        self.wait_until_focused(START_HANDLE)
        self.keys("space")
        self.quibel.button(STOP)
        self.keys("space")
        self.quibel.button(LISTEN)
        self.keys("ctrl+s")
        self.answer(SAVE_PANEL, self.song("tono.m4r"))
        self.wait_until_saved("tono.m4r")
        self.wait_until_focused(START_HANDLE)

    def test_tab_goes_in_a_circle_without_the_windows_own_buttons(self):
        self.wait_until_focused(CHOOSE)
        self.choose(songs.tone(self.song("cancion.wav"), 3))
        self.quibel.wait_until_loaded()
        self.wait_until_focused(START_HANDLE)
        circle = [END_HANDLE, LISTEN, CREATE, CHANGE, START_HANDLE]
        self.assertEqual([self.step("Tab") for _ in circle], circle)

    def test_tab_goes_through_the_window_in_its_order_and_back(self):
        self.choose(songs.tone(self.song("cancion.wav"), 3))
        self.quibel.wait_until_active()
        self.quibel.wait_until_loaded()
        order = [CHANGE, START_HANDLE, END_HANDLE, LISTEN, CREATE]
        self.walk_to(CHANGE)
        self.assertEqual([CHANGE] + [self.step("Tab") for _ in order[1:]], order)
        back = [self.step("shift+Tab") for _ in order[1:]]
        self.assertEqual(back, order[-2::-1])

    def test_escape_ends_the_alert(self):
        text = self.song("apuntes.mp3")
        text.write_text("No soy una cancion.\n")
        self.choose(text)
        self.quibel.alert()
        self.wait_until_focused(ACCEPT)
        self.keys("Tab", "ctrl+o", "ctrl+s", "Escape")
        wait_until(lambda: not self.quibel.has_button(ACCEPT), "the alert to go")
        self.wait_until_focused(START_HANDLE)

    def choose(self, song):
        self.walk_to(CHOOSE)
        self.keys("Return")
        self.answer(OPEN_PANEL, song)

    def answer(self, title, path):
        self.quibel.wait_for("dialog", title)
        wait_until(lambda: self.quibel.wait_for("text").focused, "the name to be asked for")

        def written_and_confirmed():
            self.keys("ctrl+a")
            self.quibel.pointer.write(str(path))
            wait_until(lambda: self.quibel.proposed_name() == str(path), "the name to be written")
            self.keys("Return")
            try:
                return wait_until(lambda: not self.quibel.has("dialog", title), "it", seconds=4)
            except DeadlinePassed:
                return False

        # Writes it again, as a person would, where the completion of names took the key.
        wait_until(written_and_confirmed, f"the panel {title!r} to go")
        wait_until(self.quibel.wait_for("frame", "Quibel").is_active, "the focus to be the window's")

    def keys(self, *names):
        self.quibel.pointer.type(*names)

    def wait_until_saved(self, name):
        """Until the file manager shows it, and comes back to the window then."""
        self.quibel.wait_for("label", f"Tono guardado: {name}", seconds=60)
        self.quibel.screen.wait_for(FILE_MANAGER, "frame", seconds=30)
        self.desktop.run("xdotool", "windowactivate", "--sync", self.quibel.window_id)

    def wait_until_focused(self, name):
        wait_until(
            lambda: self.focused() == name, lambda: f"the focus on {name}, not on {self.focused()}"
        )

    def walk_to(self, name):
        """Presses Tab until that has the focus."""
        wait_until(lambda: self.focused() == name or self.step("Tab") == name, f"the focus on {name}")

    def step(self, key):
        """Moves the focus on and returns the name of what has it then."""
        before = self.focused()
        self.keys(key)
        return wait_until(lambda: self.focused() != before and self.focused(), "the focus to move")

    def focused(self):
        """The name of what has the keyboard's focus, or None."""
        elements = self.quibel.screen.elements(PROGRAM)
        return next((e.name for e in elements if e.name and e.focused), None)
