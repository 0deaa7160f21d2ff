import songs
from quibel import END_HANDLE, START_HANDLE
from scenario import Scenario
from waiting import wait_until


class Fragment(Scenario):
    """Handles dragged with the mouse."""

    def load(self, seconds):
        self.quibel.load(songs.tone(self.song("canción.wav"), seconds, rate=8000))
        self.left, _, width, _ = self.quibel.box
        self.right = self.left + width - 2
        self.middle = self.left + width / 2

    def drag(self, handle, x):
        """Drags a handle and returns the fragment once it has changed."""
        before = self.quibel.fragment()
        self.quibel.drag_handle(handle, x)
        wait_until(lambda: self.quibel.fragment() != before, f"{handle} to move")
        return self.quibel.fragment()

    def test_handles_go_no_further_than_the_song(self):
        self.load(100)
        self.assertEqual(self.drag(END_HANDLE, self.right), (0, 100, 100))
        self.assertGreater(self.drag(START_HANDLE, self.middle)[0], 40)
        self.assertEqual(self.drag(START_HANDLE, self.left), (0, 100, 100))

    def test_the_end_stops_half_a_second_after_the_start(self):
        self.load(4)
        self.assertEqual(self.drag(END_HANDLE, self.left), (0, 0.5, 0.5))

    def test_the_start_stops_half_a_second_before_the_end(self):
        self.load(4)
        self.assertEqual(self.drag(START_HANDLE, self.right), (3.5, 0.5, 4))

    def test_a_handle_follows_the_pointer_before_it_is_let_go(self):
        self.load(100)
        x, y = self.quibel.handle(END_HANDLE)
        self.quibel.pointer.move(x, y)
        self.quibel.pointer.press()
        for target in (x + 60, x + 120, x - 40):
            self.quibel.pointer.move(target, y)
            wait_until(
                # The handle's middle comes to where the pointer is.
                lambda target=target: abs(self.quibel.handle(END_HANDLE)[0] + 3 - target) <= 1,
                f"the handle under the pointer at {target}",
            )
        self.quibel.pointer.release()

    def test_the_length_that_reads_is_end_minus_start(self):
        self.load(100)
        start, length, end = self.drag(START_HANDLE, self.left + 150)
        self.assertAlmostEqual(length, end - start, delta=0.11)
        self.assertEqual(end, 40)
