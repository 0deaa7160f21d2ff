"""What every whole-program test stands on."""

import os
import pathlib
import unittest

import waiting
from quibel import Quibel
from virtual_desktop import VirtualDesktop


def not_under_thread_sanitizer(reason):
    return unittest.skipIf("TSAN_OPTIONS" in os.environ, reason)


class Scenario(unittest.TestCase):
    """Tests that share a desktop. For each of them Quibel has just been started there, with
    an empty home folder, and must leave in good order.

    The folder of the programs comes from the environment, set by ctest.
    """

    language = "C.UTF-8"
    window_manager = "openbox"

    def run(self, result=None):
        self._result = result
        return super().run(result)

    @classmethod
    def setUpClass(cls):
        cls.build = pathlib.Path(os.environ["QUIBEL_BUILD"])
        cls.desktop = cls.enterClassContext(cls.make_desktop())

    def setUp(self):
        waiting.begin_test()
        self.desktop.begin_session()
        self.addCleanup(self._keep_evidence)
        self.quibel = self.start()

    @classmethod
    def make_desktop(cls):
        return VirtualDesktop(cls.language, cls.window_manager)

    def start(self):
        """Starts Quibel on the desktop."""
        return Quibel(self.desktop, self.build)

    def tearDown(self):
        """Ends Quibel as a person does, and sees it leave without a complaint."""
        if not self._failed():
            self.assertEqual(self.quibel.close(), 0, self.quibel.log)

    def song(self, name):
        """Where a song of that name goes."""
        return self.desktop.home / name

    def _failed(self):
        return any(test is self for test, _ in self._result.failures + self._result.errors)

    def _keep_evidence(self):
        """After a failure: the screen as it is, and what the session's programs said."""
        if self._failed():
            folder = pathlib.Path(os.environ.get("QUIBEL_RESULTS", self.build))
            picture = folder / f"{self.id()}.png"
            self.desktop.screenshot(picture)
            print(f"The screen: {picture}\n{self.desktop.logs()}")
